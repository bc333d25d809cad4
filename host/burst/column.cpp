#include "burst/column.hpp"

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

} // namespace orvik
