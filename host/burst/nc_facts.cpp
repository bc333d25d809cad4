#include "burst/nc_facts.hpp"

#include <charconv>
#include <cmath>

namespace orvik {

std::optional<double> attributeNumber(const NcReader &file, const std::string &name) {
    if (const auto text = file.text(nullptr, name)) {
        const auto first = text->find_first_not_of(" \t+");
        if (first == std::string::npos) {
            return std::nullopt;
        }
        double value = 0.0;
        const auto parsed =
            std::from_chars(text->data() + first, text->data() + text->size(), value);
        return parsed.ec == std::errc{} && std::isfinite(value) ? std::optional<double>(value)
                                                                : std::nullopt;
    }
    NcVariable whole; // the file's attributes are those of no variable
    whole.id = NC_GLOBAL;
    whole.name = "the file";
    return file.number(whole, name);
}

void addAttributeFacts(const NcReader &file, const std::vector<AttributeFact> &wanted,
                       KnownFacts &known) {
    for (const AttributeFact &fact : wanted) {
        const auto value = attributeNumber(file, fact.attribute);
        if (value && known.count(fact.fact) == 0) {
            known[fact.fact] = {{*value * fact.factor},
                                std::string("attribute ") + fact.attribute + " of " + file.path()};
        }
    }
}

void addMatrix(const NcReader &file, const std::string &name, const std::string &beamDimension,
               KnownFacts &known) {
    const auto variable = file.find(name);
    if (!variable || variable->size() != 9 || variable->dimensions.size() != 2) {
        return;
    }
    const std::vector<double> values = file.readAll(*variable);
    const bool byColumns = variable->axis(beamDimension) == 0;
    std::vector<double> matrix(9);
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        matrix[i] = values[byColumns ? 3 * (i % 3) + i / 3 : i];
        if (!std::isfinite(matrix[i])) {
            return;
        }
    }
    known["beam_to_xyz"] = {matrix, "variable " + name + " of " + file.path()};
}

} // namespace orvik
