#include "burst/column.hpp"

#include <algorithm>

#include "user_error.hpp"

namespace orvik {

void requireShape(const NcReader &file, const NcVariable &variable,
                  const std::vector<std::string> &expected) {
    bool fits = variable.dimensions.size() == expected.size();
    std::string names;
    for (const std::string &name : expected) {
        fits = fits && variable.axis(name).has_value();
        names += (names.empty() ? "" : ", ") + name;
    }
    if (!fits) {
        throw UserError("variable " + variable.name + " in " + file.path() +
                        " has the dimensions " + variable.shapeText() + ", expected (" + names +
                        ") in any order");
    }
}

std::optional<Column> findColumn(const NcReader &file, const std::string &name, Quantity quantity,
                                 const std::vector<std::string> &shape) {
    const auto variable = file.find(name);
    if (!variable) {
        return std::nullopt;
    }
    requireShape(file, *variable, shape);
    return Column{*variable, unitFactor(file, *variable, quantity)};
}

std::vector<double> readSlice(const NcReader &file, const Column &column,
                              const std::string &dimension, std::size_t place) {
    std::vector<std::size_t> start;
    std::vector<std::size_t> count;
    for (const NcDimension &axis : column.variable.dimensions) {
        const bool fixed = axis.name == dimension;
        start.push_back(fixed ? place : 0);
        count.push_back(fixed ? 1 : axis.length);
    }
    std::vector<double> values = file.read(column.variable, start, count);
    for (double &value : values) {
        value *= column.factor;
    }
    return values;
}

std::vector<float> readOrdered(const NcReader &file, const Column &column, const Extent &extent,
                               const std::vector<std::string> &order) {
    std::vector<std::size_t> start;
    std::vector<std::size_t> count;
    for (const NcDimension &axis : column.variable.dimensions) {
        const bool cut = axis.name == extent.dimension;
        const bool known = cut || std::find(order.begin(), order.end(), axis.name) != order.end();
        if (!known && axis.length != 1) {
            throw UserError("variable " + column.variable.name + " in " + file.path() +
                            " has the dimensions " + column.variable.shapeText() + ": " +
                            axis.name + " is not expected");
        }
        start.push_back(cut ? extent.start : 0);
        count.push_back(cut ? extent.count : axis.length);
    }
    const std::vector<double> values = file.read(column.variable, start, count);
    std::vector<std::size_t> length(order.size(), 1);
    std::vector<std::size_t> stride(order.size(), 0);
    std::size_t step = 1;
    for (std::size_t i = count.size(); i-- > 0;) {
        const auto at = std::find(order.begin(), order.end(), column.variable.dimensions[i].name);
        if (at != order.end()) {
            length[static_cast<std::size_t>(at - order.begin())] = count[i];
            stride[static_cast<std::size_t>(at - order.begin())] = step;
        }
        step *= count[i];
    }
    std::vector<float> ordered(values.size());
    for (std::size_t place = 0; place < ordered.size(); ++place) {
        std::size_t rest = place;
        std::size_t from = 0;
        for (std::size_t i = order.size(); i-- > 0;) {
            from += rest % length[i] * stride[i];
            rest /= length[i];
        }
        ordered[place] = static_cast<float>(values[from] * column.factor);
    }
    return ordered;
}

} // namespace orvik
