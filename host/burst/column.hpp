// A variable of a burst file together with the factor that brings it into the units of bursts in memory.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "netcdf/nc_file.hpp"
#include "netcdf/units.hpp"

namespace orvik {

struct Column {
    NcVariable variable;
    double factor = 1.0;
};

// Throws UserError unless the variable has just these dimensions, in any order.
void requireShape(const NcReader &file, const NcVariable &variable,
                  const std::vector<std::string> &expected);

// Nothing when the file has no such variable. Throws UserError when shape or unit do not fit.
std::optional<Column> findColumn(const NcReader &file, const std::string &name, Quantity quantity,
                                 const std::vector<std::string> &shape);

// The values at one place of `dimension`, all others whole, in the order of the variable's dimensions.
std::vector<double> readSlice(const NcReader &file, const Column &column,
                              const std::string &dimension, std::size_t place);

// Places of one dimension.
struct Extent {
    std::string dimension;
    std::size_t start = 0;
    std::size_t count = 1;
};

// The values at these places, ordered by the dimensions of `order`; one that the variable lacks counts as 1 long.
// Throws UserError when the variable has another dimension longer than 1.
std::vector<float> readOrdered(const NcReader &file, const Column &column, const Extent &extent,
                               const std::vector<std::string> &order);

} // namespace orvik
