// Exact class: values as files keep them, in any type, packed or not, read in any steps.
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include "burst/column.hpp"
#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "netcdf/nc_file.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;
using test::NcSketch;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class NcSlabs : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string path = directory.file("slabs.nc");
};

// Bit by bit, but any NaN is like another.
template <typename Value>
void expectSame(const std::vector<Value> &found, const std::vector<Value> &expected,
                const char *what) {
    ASSERT_EQ(found.size(), expected.size()) << what;
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(found[i])) << what << " " << i << ": " << found[i];
        } else {
            EXPECT_EQ(found[i], expected[i]) << what << " " << i;
            EXPECT_EQ(std::signbit(found[i]), std::signbit(expected[i])) << what << " " << i;
        }
    }
}

TEST_F(NcSlabs, EveryTypeOfNumber) {
    struct Row {
        const char *name;
        nc_type type;
        double least, most;
        double fill; // of cells that were never written; NaN: the type has none
    };
    const Row rows[] = {
        {"byte", NC_BYTE, -128, 127, kNaN},
        {"ubyte", NC_UBYTE, 0, 255, kNaN},
        {"short", NC_SHORT, -32768, 32766, NC_FILL_SHORT},
        {"ushort", NC_USHORT, 0, 65534, NC_FILL_USHORT},
        {"int", NC_INT, -2147483648.0, 2147483647, NC_FILL_INT},
        {"uint", NC_UINT, 0, 4294967294.0, NC_FILL_UINT},
        {"int64", NC_INT64, -9007199254740992.0, 9007199254740992.0, kNaN},
        {"uint64", NC_UINT64, 0, 9007199254740992.0, kNaN},
        {"float", NC_FLOAT, static_cast<double>(-3e38F), static_cast<double>(0.1F),
         static_cast<double>(NC_FILL_FLOAT)},
        {"double", NC_DOUBLE, -1e300, 0.1, NC_FILL_DOUBLE},
    };
    {
        NcSketch file(path);
        file.dimension("sample", 3);
        for (const Row &row : rows) {
            const double third = std::isnan(row.fill) ? 1.0 : row.fill;
            file.variable(row.name, {"sample"}, "1", {row.least, row.most, third}, row.type);
        }
    }
    const NcReader file(path);
    for (const Row &row : rows) {
        const Column column{*file.find(row.name), 1.0};
        const std::vector<double> expected{row.least, row.most, std::isnan(row.fill) ? 1.0 : kNaN};
        expectSame(file.readAll(column.variable), expected, row.name);
        expectSame(readOrdered<double>(file, column, {"sample", 0, 3}, {"sample"}), expected,
                   row.name);
    }
}

// -999.9 in double precision is no number of single precision.
TEST_F(NcSlabs, MarkersOfAnotherTypeAndSeveralOfThem) {
    {
        NcSketch file(path);
        file.dimension("sample", 4);
        file.variable("single", {"sample"}, "1", {-999.9, 1, 1e20, 0.1}, NC_FLOAT);
        file.numbersOf("single", "missing_value", {-999.9, 1e20, 1e300});
        file.variable("packed", {"sample"}, "1", {-999, 1, 2, -1}, NC_SHORT);
        file.numbersOf("packed", "missing_value", {-999.0, -1.0});
    }
    const NcReader file(path);
    expectSame(file.readAll(*file.find("single")),
               std::vector<double>{kNaN, 1, kNaN, static_cast<double>(0.1F)}, "single");
    expectSame(file.readAll(*file.find("packed")), std::vector<double>{kNaN, 1, 2, kNaN}, "packed");
}

// A marker of lost values does not say what cells hold that were never written.
TEST_F(NcSlabs, CellsNeverWrittenBesideAMarkerOfLostValues) {
    {
        NcSketch file(path);
        file.dimension("sample", 3);
        file.variable("marked", {"sample"}, "1", {1, -999, NC_FILL_SHORT}, NC_SHORT,
                      {{"missing_value", -999}});
        file.variable("filled", {"sample"}, "1", {1, -999, NC_FILL_SHORT}, NC_SHORT,
                      {{"_FillValue", -999}});
    }
    const NcReader file(path);
    expectSame(file.readAll(*file.find("marked")), std::vector<double>{1, kNaN, kNaN}, "marked");
    expectSame(file.readAll(*file.find("filled")), std::vector<double>{1, kNaN, NC_FILL_SHORT},
               "filled");
}

TEST_F(NcSlabs, UnsignedIsSaidByOneOfTwoWords) {
    {
        NcSketch file(path);
        file.dimension("sample", 2);
        for (const char *name : {"upper", "lower", "number", "yes"}) {
            file.variable(name, {"sample"}, "1", {1, -2}, NC_BYTE);
        }
        file.textOf("upper", "_Unsigned", "TRUE").textOf("lower", "_Unsigned", "False");
        file.numbersOf("number", "_Unsigned", {1.0}).textOf("yes", "_Unsigned", "yes");
    }
    const NcReader file(path);
    expectSame(file.readAll(*file.find("upper")), std::vector<double>{1, 254}, "upper");
    expectSame(file.readAll(*file.find("lower")), std::vector<double>{1, -2}, "lower");
    for (const std::string name : {"number", "yes"}) {
        try {
            ADD_FAILURE() << name << file.readAll(*file.find(name)).size();
        } catch (const ::orvik::UserError &error) {
            EXPECT_EQ(std::string(error.what()), "attribute _Unsigned of " + name + " in " + path +
                                                     " must be the text \"true\" or \"false\"");
        }
    }
}

TEST_F(NcSlabs, SignedTypesThatHoldUnsignedNumbers) {
    {
        NcSketch file(path);
        file.dimension("sample", 4);
        const std::vector<double> raw{1, -2, -1, 127};
        file.variable("byte", {"sample"}, "1", raw, NC_BYTE, {{"missing_value", -1}});
        file.variable("short", {"sample"}, "1", raw, NC_SHORT,
                      {{"missing_value", -1}, {"scale_factor", 0.5}, {"add_offset", 3.0}});
        file.variable("int", {"sample"}, "1", raw, NC_INT, {{"missing_value", -1}});
        file.variable("default", {"sample"}, "1", {NC_FILL_SHORT, -1, 0, 1}, NC_SHORT);
        file.variable("signed", {"sample"}, "1", raw, NC_SHORT);
        for (const char *name : {"byte", "short", "int", "default"}) {
            file.textOf(name, "_Unsigned", "true");
        }
        file.textOf("signed", "_Unsigned", "false");
    }
    const NcReader file(path);
    const auto read = [&file](const char *name) { return file.readAll(*file.find(name)); };
    expectSame(read("byte"), std::vector<double>{1, 254, kNaN, 127}, "byte");
    expectSame(read("short"), std::vector<double>{3.5, 32770, kNaN, 66.5}, "short");
    expectSame(read("int"), std::vector<double>{1, 4294967294.0, kNaN, 127}, "int");
    expectSame(read("default"), std::vector<double>{kNaN, 65535, 0, 1}, "default");
    expectSame(read("signed"), std::vector<double>{1, -2, -1, 127}, "signed");
}

// A number is scaled, shifted, brought to the unit and rounded once, in double precision, whatever it is kept in.
TEST_F(NcSlabs, ScalesOffsetsUnitsAndMarkers) {
    const std::vector<double> raw{-3, 0, 7, 9, 1234, -32000};
    const std::array<nc_type, 3> types{NC_SHORT, NC_FLOAT, NC_DOUBLE};
    {
        NcSketch file(path);
        file.dimension("sample", raw.size());
        for (const nc_type type : types) {
            file.variable("v" + std::to_string(type), {"sample"}, "1", raw, type,
                          {{"scale_factor", 0.001},
                           {"add_offset", 0.3},
                           {"_FillValue", 7},
                           {"missing_value", 9}});
        }
        file.variable("plain", {"sample"}, "1", {-0.0, 1, 2, 3, 4, 5}, NC_FLOAT);
    }
    const NcReader file(path);
    for (const nc_type type : types) {
        std::vector<double> values;
        std::vector<float> rounded;
        for (const double number : raw) {
            values.push_back(number == 7 || number == 9 ? kNaN : number * 0.001 + 0.3);
            rounded.push_back(static_cast<float>(values.back() * 0.3048));
        }
        const NcVariable variable = *file.find("v" + std::to_string(type));
        expectSame(file.readAll(variable), values, "values");
        expectSame(readOrdered(file, {variable, 0.3048}, {"sample", 0, raw.size()}, {"sample"}),
                   rounded, "in the unit of bursts");
    }
    expectSame(file.readEvery(*file.find("plain"), 4), {0.0, 4.0}, "every fourth");
}

TEST_F(NcSlabs, TextIsNoNumber) {
    {
        NcSketch file(path);
        file.dimension("sample", 3);
        file.variable("letters", {"sample"}, "-", {}, NC_CHAR);
    }
    const NcReader file(path);
    const NcVariable letters = *file.find("letters");
    EXPECT_THROW(static_cast<void>(file.readAll(letters)), UserError);
    EXPECT_THROW(static_cast<void>(file.readSlab(letters, 0, 0, 3)), UserError);
}

TEST_F(NcSlabs, AnyOrderOfDimensions) {
    std::vector<double> numbers(4 * 300 * 5);
    std::iota(numbers.begin(), numbers.end(), 0.0);
    {
        NcSketch file(path);
        file.dimension("beam", 4).dimension("sample", 300).dimension("cell", 5);
        file.dimension("one", 1);
        file.variable("bsc", {"beam", "sample", "cell"}, "1", numbers);
        file.variable("csb", {"cell", "one", "sample", "beam"}, "1", numbers);
        file.variable("s", {"sample"}, "1", std::vector<double>(300, 2.0));
    }
    const NcReader file(path);
    const Extent extent{"sample", 20, 200};
    const std::vector<std::string> order{"sample", "beam", "cell"};
    const auto bsc = readOrdered<double>(file, {*file.find("bsc"), 1.0}, extent, order);
    const auto csb = readOrdered<double>(file, {*file.find("csb"), 1.0}, extent, order);
    ASSERT_EQ(bsc.size(), 200U * 4U * 5U);
    ASSERT_EQ(csb.size(), bsc.size());
    for (std::size_t i = 0; i < bsc.size(); ++i) {
        const std::size_t s = i / 20 + 20;
        const std::size_t b = i / 5 % 4;
        const std::size_t c = i % 5;
        EXPECT_EQ(bsc[i], static_cast<double>((b * 300 + s) * 5 + c));
        EXPECT_EQ(csb[i], static_cast<double>((c * 300 + s) * 4 + b));
    }
    const auto narrow = readOrdered<double>(file, {*file.find("s"), 1.0}, extent, order);
    EXPECT_EQ(narrow, std::vector<double>(200, 2.0));
    EXPECT_THROW(readOrdered(file, {*file.find("bsc"), 1.0}, extent, {"sample", "beam"}),
                 UserError);
}

// Steps forward over the ends of chunks and of what is in memory, back, and longer than what may be in memory.
TEST_F(NcSlabs, ReadingAheadChangesNoValue) {
    constexpr std::size_t kPlaces = 20000;
    constexpr std::size_t kLines = 3 * 20;
    std::vector<double> numbers(kLines * kPlaces);
    std::iota(numbers.begin(), numbers.end(), 0.0);
    {
        NcSketch file(path);
        file.dimension("dir", 3).dimension("range", 20).dimension("time", kPlaces);
        file.packed({{"dir", 1}, {"time", 5000}});
        file.variable("vel", {"dir", "range", "time"}, "1", numbers, NC_INT);
        file.variable("turned", {"time", "range", "dir"}, "1", numbers, NC_INT);
    }
    const NcReader file(path);
    const NcVariable vel = *file.find("vel");
    const NcVariable turned = *file.find("turned");
    const std::size_t ofPlace = 2 * kLines * sizeof(std::int32_t);
    for (const std::size_t most : {100 * ofPlace, 7000 * ofPlace, kReadAhead}) {
        file.readAhead({{vel, 2}, {turned, 0}}, most);
        std::vector<std::pair<std::size_t, std::size_t>> steps;
        for (std::size_t first = 0; first < kPlaces; first += 1024) {
            steps.emplace_back(first, std::min<std::size_t>(1024, kPlaces - first));
        }
        steps.insert(steps.end(), {{300, 64}, {360, 64}, {4990, 9000}, {19999, 1}, {0, kPlaces}});
        for (const auto &[first, places] : steps) {
            const Extent extent{"time", first, places};
            const auto values =
                readOrdered<double>(file, {vel, 1.0}, extent, {"time", "dir", "range"});
            const auto others =
                readOrdered<double>(file, {turned, 1.0}, extent, {"time", "range", "dir"});
            ASSERT_EQ(values.size(), places * kLines);
            ASSERT_EQ(others.size(), places * kLines);
            std::size_t wrong = 0;
            for (std::size_t i = 0; i < values.size(); ++i) {
                const std::size_t place = first + i / kLines;
                const std::size_t line = i % kLines;
                wrong += values[i] == static_cast<double>(line * kPlaces + place) ? 0U : 1U;
                wrong += others[i] == static_cast<double>(place * kLines + line) ? 0U : 1U;
            }
            EXPECT_EQ(wrong, 0U) << most << " bytes, " << places << " from " << first;
        }
    }
}

} // namespace
