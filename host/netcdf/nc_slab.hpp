// Numbers of a variable as its file keeps them, which become physical values where they are used: a whole burst of doubles
// would take up to eight times the room.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include <netcdf.h>

namespace orvik {

// How a variable's numbers are to be understood.
struct NcPacking {
    nc_type type = NC_DOUBLE;
    std::vector<double> missing; // numbers that stand for "nothing here"
    double scale = 1.0;
    double offset = 0.0;
};

// Whether the type is one of numbers that NcPacking can tell.
bool isPackable(nc_type type);
std::size_t bytesOf(nc_type type); // of a packable type

// Physical values of the numbers that lie one behind the other from `raw` on; missing ones are NaN.
void unpack(const NcPacking &packing, const std::byte *raw, std::span<double> values);

// A variable's numbers at some places of one dimension, those of all others whole.
class NcSlab {
public:
    using Bytes = std::shared_ptr<const std::vector<std::byte>>;

    // `held` is how long each dimension is in `bytes`; the slab is `count` long and begins at the number `first`.
    NcSlab(const NcPacking &packing, Bytes bytes, const std::vector<std::size_t> &held,
           std::vector<std::size_t> count, std::size_t first);

    // Of each of the variable's dimensions.
    [[nodiscard]] const std::vector<std::size_t> &count() const { return count_; }
    [[nodiscard]] std::size_t size() const;
    // How far apart neighbours along a dimension are; along the last one they are adjacent.
    [[nodiscard]] const std::vector<std::size_t> &stride() const { return stride_; }
    // Physical values of adjacent numbers, from one of the slab on.
    void unpackFrom(std::size_t number, std::span<double> values) const;

private:
    const NcPacking *packing_;
    Bytes bytes_;
    std::vector<std::size_t> count_;
    std::vector<std::size_t> stride_;
    std::size_t first_;
};

} // namespace orvik
