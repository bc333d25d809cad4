// What can be told of an instrument and its deployment, by the names of the burst file's variables.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "netcdf/units.hpp"
#include "user_error.hpp"

namespace orvik {

// Values that the user gives for what a file lacks, by the file's variable names ("cell_range" -> "7.4").
struct Overrides : std::map<std::string, std::string> {
    using std::map<std::string, std::string>::map;
    // Those of `facts` that are not there yet.
    void addFrom(const Overrides &facts);
    // "--set cell_range", or "cell_range in deployment.toml".
    [[nodiscard]] std::string nameWithOrigin(const std::string &name) const;

    std::map<std::string, std::string> factsFiles; // of values that a facts file told, its path
};

enum class FactScope { deployment, burst };

struct Fact {
    const char *name;
    Quantity quantity;
    std::size_t least; // numbers that it takes
    std::size_t most;
    FactScope scope;     // `burst`: files may tell another value for every burst
    const char *asked;   // what an error message asks for
    const char *example; // as a facts file writes it
    const char *why;

    [[nodiscard]] bool takes(std::size_t numbers) const {
        return numbers >= least && numbers <= most;
    }
};

std::span<const Fact> factTable();
const Fact *findFact(const std::string &name);
std::string countText(const Fact &fact); // "1", "3 to 4"

// A fact as data tell it, in the unit of burst files.
struct KnownFact {
    std::vector<double> values;
    std::string origin; // "attribute sample_rate of a.nc"
};

using KnownFacts = std::map<std::string, KnownFact>;

// Something that is needed and that nothing tells.
class MissingFact : public UserError {
public:
    MissingFact(const std::string &name, const std::string &path,
                const std::string &alternative = "");
    [[nodiscard]] const std::string &fact() const { return fact_; }

private:
    std::string fact_;
};

// Throws UsageError for a name that is not in the table and for a value that is not a list of numbers; the time may be a
// date too.
void checkOverrides(const Overrides &overrides);

// The user's numbers for `name`, if given.
std::optional<std::vector<double>> overrideNumbers(const Overrides &overrides,
                                                   const std::string &name);

// The user's value, else that of the data, else nothing.
std::optional<double> factNumber(const KnownFacts &known, const Overrides &overrides,
                                 const std::string &name);

} // namespace orvik
