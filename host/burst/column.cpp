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

namespace {

// Of each of a variable's dimensions how far apart neighbours along it are in the order wanted; 0 where that lacks it.
std::vector<std::size_t> stridesIn(const std::vector<std::string> &order,
                                   const NcVariable &variable,
                                   const std::vector<std::size_t> &count) {
    std::vector<std::size_t> strides(count.size(), 0);
    std::size_t step = 1;
    for (auto name = order.rbegin(); name != order.rend(); ++name) {
        if (const auto axis = variable.axis(*name)) {
            strides[*axis] = step;
            step *= count[*axis];
        }
    }
    return strides;
}

void requireKnown(const NcReader &file, const NcVariable &variable, const Extent &extent,
                  const std::vector<std::string> &order) {
    for (const NcDimension &axis : variable.dimensions) {
        const bool known = axis.name == extent.dimension ||
                           std::find(order.begin(), order.end(), axis.name) != order.end();
        if (!known && axis.length != 1) {
            throw UserError("variable " + variable.name + " in " + file.path() +
                            " has the dimensions " + variable.shapeText() + ": " + axis.name +
                            " is not expected");
        }
    }
}

} // namespace

std::size_t valuesOf(const Column &column, const Extent &extent) {
    std::size_t values = 1;
    for (const NcDimension &axis : column.variable.dimensions) {
        values *= axis.name == extent.dimension ? extent.count : axis.length;
    }
    return values;
}

void readRuns(const NcReader &file, const Column &column, const Extent &extent,
              const std::vector<std::string> &order, const std::function<void(const Run &)> &use) {
    const NcVariable &variable = column.variable;
    requireKnown(file, variable, extent, order);
    const NcSlab slab =
        file.readSlab(variable, variable.axis(extent.dimension), extent.start, extent.count);
    const std::vector<std::size_t> strides = stridesIn(order, variable, slab.count());
    const std::size_t rank = slab.count().size();
    const std::size_t length = rank > 0 ? slab.count().back() : 1;
    const std::size_t lines = slab.size() / std::max<std::size_t>(length, 1);
    // Long lines are taken in parts, all of one part before the next: what is written stays in the processor's cache.
    constexpr std::size_t kPart = 128;
    std::vector<double> values;
    for (std::size_t from = 0; from < length; from += kPart) {
        values.resize(std::min(kPart, length - from));
        for (std::size_t line = 0; line < lines; ++line) {
            std::size_t number = from;
            std::size_t place = rank > 0 ? from * strides.back() : 0;
            std::size_t rest = line;
            for (std::size_t i = rank > 0 ? rank - 1 : 0; i-- > 0;) {
                number += rest % slab.count()[i] * slab.stride()[i];
                place += rest % slab.count()[i] * strides[i];
                rest /= slab.count()[i];
            }
            slab.unpackFrom(number, values);
            for (double &value : values) {
                value *= column.factor;
            }
            use({values, place, rank > 0 ? strides.back() : 1});
        }
    }
}

void addCourse(const std::optional<Column> &column, const std::string &dimension,
               std::vector<NcReader::Course> &courses) {
    if (!column) {
        return;
    }
    if (const auto axis = column->variable.axis(dimension)) {
        courses.push_back({column->variable, *axis});
    }
}

} // namespace orvik
