// netCDF files: handles that close themselves, errors that name file and variable, values in physical form.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <netcdf.h>

#include "files/part_file.hpp"
#include "netcdf/nc_slab.hpp"

namespace orvik {

struct NcDimension {
    std::string name;
    std::size_t length = 0;
};

struct NcVariable {
    int id = -1;
    std::string name;
    nc_type type = NC_NAT;
    std::vector<NcDimension> dimensions;

    [[nodiscard]] std::optional<std::size_t> axis(const std::string &dimension) const;
    [[nodiscard]] std::vector<std::size_t> lengths() const; // of the dimensions
    [[nodiscard]] std::size_t size() const;                 // number of values
    [[nodiscard]] std::string shapeText() const;            // "(time, sample)"
};

// Of each variable that is read or written [bytes].
inline constexpr std::size_t kChunkCache = std::size_t{1} << 20U;

// Of all variables together that are read ahead [bytes]: two threads are to process profiles of the longest bursts in
// 300 MB.
inline constexpr std::size_t kReadAhead = std::size_t{48} << 20U;

// For files that are opened from now on.
void useSmallChunkCaches();

// A file open for reading.
class NcReader {
public:
    explicit NcReader(const std::string &path);
    ~NcReader();
    NcReader(const NcReader &) = delete;
    NcReader &operator=(const NcReader &) = delete;

    [[nodiscard]] const std::string &path() const { return path_; }
    [[nodiscard]] std::optional<std::size_t> dimensionLength(const std::string &name) const;
    [[nodiscard]] std::vector<NcVariable> variables() const;
    [[nodiscard]] std::optional<NcVariable> find(const std::string &name) const;
    // Names of the file's own attributes, in their order.
    [[nodiscard]] std::vector<std::string> attributeNames() const;
    // Attribute of a variable, or of the file when `variable` is null.
    [[nodiscard]] std::optional<std::string> text(const NcVariable *variable,
                                                  const std::string &attribute) const;
    [[nodiscard]] std::optional<double> number(const NcVariable &variable,
                                               const std::string &attribute) const;

    // Values with scale_factor and add_offset applied; fill and missing values are NaN. One start and count for each
    // of the variable's dimensions.
    [[nodiscard]] std::vector<double> read(const NcVariable &variable,
                                           const std::vector<std::size_t> &start,
                                           const std::vector<std::size_t> &count) const;
    [[nodiscard]] std::vector<double> readAll(const NcVariable &variable) const;
    // Of a variable with one dimension the first value and every `step`th one after it.
    [[nodiscard]] std::vector<double> readEvery(const NcVariable &variable, std::size_t step) const;
    // The same values where they are needed, without a copy of them all: those at some places of the dimension `axis`, or
    // all of them when there is none. Valid as long as the reader.
    [[nodiscard]] NcSlab readSlab(const NcVariable &variable, std::optional<std::size_t> axis,
                                  std::size_t first, std::size_t places) const;

    // What is going to be read by slabs that follow one another, each variable along one dimension. A packed chunk that
    // reaches beyond its slab is then unpacked for the following ones too, not anew for each, as far as `most` bytes of
    // all of them go.
    struct Course {
        NcVariable variable;
        std::size_t axis = 0;
    };
    void readAhead(const std::vector<Course> &courses, std::size_t most = kReadAhead) const;
    // One text of a variable of type NC_STRING.
    [[nodiscard]] std::string readText(const NcVariable &variable,
                                       const std::vector<std::size_t> &start) const;

private:
    // Of a variable that is read ahead: what is in memory of it.
    struct Ahead {
        std::size_t axis = 0;
        std::size_t chunk = 1; // places along the axis that are packed together
        std::size_t most = 0;  // places that may be in memory
        std::size_t first = 0;
        std::size_t places = 0;
        NcSlab::Bytes bytes;
    };

    // Empty when there is no such attribute.
    [[nodiscard]] std::vector<double> numbers(const NcVariable &variable,
                                              const std::string &attribute) const;
    [[nodiscard]] std::vector<double> markers(const NcVariable &variable) const;
    [[nodiscard]] bool isUnsigned(const NcVariable &variable) const;
    [[nodiscard]] const NcPacking &packing(const NcVariable &variable) const;
    [[nodiscard]] std::vector<std::byte> readRaw(const NcVariable &variable,
                                                 const std::vector<std::size_t> &start,
                                                 const std::vector<std::size_t> &count,
                                                 std::ptrdiff_t step = 1) const;
    [[nodiscard]] NcSlab::Bytes readPlaces(const NcVariable &variable,
                                           std::optional<std::size_t> axis, std::size_t first,
                                           std::size_t places) const;
    [[nodiscard]] std::vector<double> unpacked(const NcVariable &variable,
                                               const std::vector<std::byte> &raw) const;
    [[nodiscard]] std::vector<std::size_t> chunkLengths(const NcVariable &variable) const;
    void advance(Ahead &ahead, const NcVariable &variable, std::size_t first,
                 std::size_t places) const;
    [[nodiscard]] NcVariable describe(int id) const;
    void check(int status, const std::string &what) const;

    std::string path_;
    int id_ = -1;
    // By the variables' ids.
    mutable std::map<int, NcPacking> packings_;
    mutable std::map<int, Ahead> ahead_;
};

// A new netCDF-4 file under a temporary name beside `path`. commit() puts it under its own name in one step; without
// it nothing is left behind.
class NcWriter {
public:
    explicit NcWriter(const std::string &path);
    ~NcWriter();
    NcWriter(const NcWriter &) = delete;
    NcWriter &operator=(const NcWriter &) = delete;

    using Attributes = std::vector<std::pair<std::string, std::string>>;

    int addDimension(const std::string &name, std::size_t length); // length NC_UNLIMITED grows
    [[nodiscard]] int dimension(const std::string &name) const;    // one added before
    // Floating-point variables get the fill value NaN, integer ones none. Variables of numbers with dimensions are
    // deflated.
    int addVariable(const std::string &name, nc_type type, const std::vector<int> &dimensions,
                    const Attributes &attributes);
    // Coordinates, and the bounds of these, are to have no fill value: NaN in them is written as any other number.
    int addCoordinate(const std::string &name, nc_type type, const std::vector<int> &dimensions,
                      const Attributes &attributes);
    // What is compressed together, one length for each of the variable's dimensions.
    void setChunks(int variable, const std::vector<std::size_t> &lengths);
    void setFill(int variable, unsigned short value);
    void setFill(int variable, short value);
    void setFill(int variable, int value);
    void setText(int variable, const std::string &attribute,
                 const std::string &value); // NC_GLOBAL: the file
    void setNumber(int variable, const std::string &attribute, double value);
    void setIntegers(int variable, const std::string &attribute, const std::vector<int> &values);
    void endDefinitions();

    // The values become those of the variable's type.
    void write(int variable, const std::vector<std::size_t> &start,
               const std::vector<std::size_t> &count, const std::vector<double> &values);
    void write(int variable, const std::vector<std::size_t> &start,
               const std::vector<std::size_t> &count, const std::vector<float> &values);
    void write(int variable, const std::vector<std::size_t> &start,
               const std::vector<std::size_t> &count, const std::vector<unsigned short> &values);
    void write(int variable, const std::vector<std::size_t> &start,
               const std::vector<std::size_t> &count, const std::vector<unsigned char> &values);
    void write(int variable, const std::vector<std::size_t> &start,
               const std::vector<std::size_t> &count, const std::vector<short> &values);
    void write(int variable, const std::vector<std::size_t> &start,
               const std::vector<std::size_t> &count, const std::vector<std::string> &values);
    void write(int variable, const std::vector<std::size_t> &start, double value);
    void writeCharacters(int variable, const std::vector<std::size_t> &start,
                         const std::vector<std::size_t> &count, const std::string &characters);
    void writeScalar(int variable, double value) { write(variable, {}, value); }

    // Puts a copy of what was written so far under the file's own name and goes on.
    void publish();
    void commit();

private:
    int define(const std::string &name, nc_type type, const std::vector<int> &dimensions);
    void check(int status, const std::string &what) const;
    void checkCount(const std::vector<std::size_t> &count, std::size_t values) const;

    PartFile part_;
    int id_ = -1;
    bool open_ = false;
};

} // namespace orvik
