// A variable of a burst file together with the factor that brings it into the units of bursts in memory.
#pragma once

#include <cstddef>
#include <functional>
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

// Places of one dimension.
struct Extent {
    std::string dimension;
    std::size_t start = 0;
    std::size_t count = 1;
};

// Physical values in the unit of bursts in memory that follow one another along the variable's last dimension; the
// first one's place in the result, and how far apart they are there.
struct Run {
    const std::vector<double> &values;
    std::size_t place = 0;
    std::size_t step = 1;
};

// Calls `use` with run after run, whose places are those of an order by the dimensions of `order`; one that the variable
// lacks counts as 1 long. Throws UserError when the variable has another dimension longer than 1.
void readRuns(const NcReader &file, const Column &column, const Extent &extent,
              const std::vector<std::string> &order, const std::function<void(const Run &)> &use);

// The number of values of the extent.
std::size_t valuesOf(const Column &column, const Extent &extent);

// The values of the extent in that order, each as `convert` makes it of a double.
template <typename Value, typename Convert>
std::vector<Value> readOrdered(const NcReader &file, const Column &column, const Extent &extent,
                               const std::vector<std::string> &order, const Convert &convert) {
    std::vector<Value> ordered(valuesOf(column, extent));
    readRuns(file, column, extent, order, [&](const Run &run) {
        for (std::size_t i = 0; i < run.values.size(); ++i) {
            ordered[run.place + i * run.step] = convert(run.values[i]);
        }
    });
    return ordered;
}

template <typename Value = float>
std::vector<Value> readOrdered(const NcReader &file, const Column &column, const Extent &extent,
                               const std::vector<std::string> &order) {
    return readOrdered<Value>(file, column, extent, order,
                              [](double value) { return static_cast<Value>(value); });
}

// What readAhead() of the file is to know of a column that is read along a dimension.
void addCourse(const std::optional<Column> &column, const std::string &dimension,
               std::vector<NcReader::Course> &courses);

} // namespace orvik
