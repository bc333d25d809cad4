// Exact class: units by any spelling, and what must not pass for a unit of the wanted kind.
#include "netcdf/units.hpp"

#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "user_error.hpp"

namespace {

using orvik::Quantity;
using orvik::timeUnit;
using orvik::unitFactor;

struct Row {
    const char *text;
    Quantity quantity;
    double factor;
};

TEST(Units, WhatConverts) {
    const Row rows[] = {
        {"dbar", Quantity::pressure, 1.0},
        {"decibars", Quantity::pressure, 1.0},
        {"Pa", Quantity::pressure, 1e-4},
        {"mbar", Quantity::pressure, 1e-2},
        {"kPa", Quantity::pressure, 0.1},
        {"bar", Quantity::pressure, 10.0},
        {"psi", Quantity::pressure, 0.6894757293168361}, // 6894.757293168361 Pa
        {"atm", Quantity::pressure, 10.1325},
        {"m s-1", Quantity::velocity, 1.0},
        {"m/s", Quantity::velocity, 1.0},
        {"m s^-1", Quantity::velocity, 1.0},
        {"m.s-1", Quantity::velocity, 1.0},
        {"cm/s", Quantity::velocity, 1e-2},
        {"mm s-1", Quantity::velocity, 1e-3},
        {"knot", Quantity::velocity, 1852.0 / 3600.0},
        {"international_foot", Quantity::length, 0.3048},
        {"metres", Quantity::length, 1.0},
        {"meter", Quantity::length, 1.0},
        {" mm ", Quantity::length, 1e-3},
        {"Hz", Quantity::frequency, 1.0},
        {"1/s", Quantity::frequency, 1.0},
        {"s-1", Quantity::frequency, 1.0},
        {"kHz", Quantity::frequency, 1e3},
        {"MHz", Quantity::frequency, 1e6},
        {"1/min", Quantity::frequency, 1.0 / 60.0},
        {"degree", Quantity::angle, 1.0},
        {"Degrees", Quantity::angle, 1.0},
        {"deg", Quantity::angle, 1.0},
        {"degrees_true", Quantity::angle, 1.0},
        {"\u00b0", Quantity::angle, 1.0},
        {"radians", Quantity::angle, 57.29577951308232},
        {"0.1 degree", Quantity::angle, 0.1},
        {"ms", Quantity::duration, 1e-3},
        {"hours", Quantity::duration, 3600.0},
        {"percent", Quantity::share, 1.0},
        {"%", Quantity::share, 1.0},
        {"1", Quantity::share, 100.0},
        {"count", Quantity::plain, 1.0},
        {"Counts", Quantity::plain, 1.0},
        {"1", Quantity::plain, 1.0},
        {"", Quantity::plain, 1.0},
    };
    for (const Row &row : rows) {
        const auto factor = unitFactor(row.text, row.quantity);
        ASSERT_TRUE(factor) << row.text;
        EXPECT_NEAR(*factor, row.factor, 1e-12 * row.factor) << row.text;
    }
}

TEST(Units, WhatIsOfAnotherKind) {
    const Row rows[] = {
        {"m", Quantity::pressure, 0},
        {"dbar", Quantity::length, 0},
        {"m", Quantity::velocity, 0},
        {"1", Quantity::angle, 0},
        {"percent", Quantity::angle, 0},
        {"radian/s", Quantity::frequency, 0},
        {"s", Quantity::frequency, 0},
        {"degree", Quantity::plain, 0},
        {"count", Quantity::share, 0},
        {"", Quantity::share, 0},
        {"", Quantity::pressure, 0},
        {"dB", Quantity::plain, 0},
        {"furlongs per", Quantity::velocity, 0},
        {"seconds since 1970-01-01", Quantity::duration, 0},
        {"degree_Celsius", Quantity::length, 0},
        {"m @ 5", Quantity::length, 0},
    };
    for (const Row &row : rows) {
        EXPECT_FALSE(unitFactor(row.text, row.quantity)) << row.text;
    }
}

struct TimeRow {
    const char *text;
    double value;
    double seconds;
};

TEST(Units, TimesSinceAnyDay) {
    const TimeRow rows[] = {
        {"seconds since 1970-01-01 00:00:00", 12.25, 12.25},
        {"seconds since 1970-01-01T00:00:00Z", 1.0, 1.0},
        {"milliseconds since 1970-01-01", 1500.0, 1.5},
        {"days since 1950-01-01 00:00:00", 7305.5, 43200.0},
        {"hours since 2000-01-01 12:00:00", 1.5, 946733400.0},
        {"seconds since 1970-01-01 02:00:00 +2:00", 0.0, 0.0},
        {"minutes since 2008-09-08 23:59 UTC", 1.0, 1220918400.0},
    };
    for (const TimeRow &row : rows) {
        const auto unit = timeUnit(row.text);
        ASSERT_TRUE(unit) << row.text;
        EXPECT_NEAR(row.value * unit->scale + unit->epoch, row.seconds, 1e-6) << row.text;
    }
    // A year in milliseconds: the step is exact to better than a microsecond in it.
    EXPECT_NEAR(timeUnit("milliseconds since 2020-01-01")->scale * 31536000000.0, 31536000.0, 1e-6);
}

// 5 November 2024 in days since the first day of the year 1, by both calendars.
TEST(Units, CalendarsOfTimes) {
    const orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("times.nc");
    const char *const first = "days since 0001-01-01 00:00:00";
    {
        orvik::test::NcSketch file(path);
        const auto add = [&file](const char *name, const char *units, const char *calendar) {
            file.variable(name, {}, units, {0.0}).textOf(name, "calendar", calendar);
        };
        file.variable("none", {}, first, {0.0});
        add("standard", first, "standard");
        add("gregorian", first, "Gregorian");
        add("proleptic", first, "proleptic_gregorian");
        add("recent", "days since 1582-10-15", "proleptic_gregorian");
        add("before", "days since 1582-10-14 12:00", "proleptic_gregorian");
        add("julian", "days since 1970-01-01", "julian");
        add("noleap", "days since 1970-01-01", "noleap");
        add("written", "days since 15000101", "proleptic_gregorian");
    }
    const orvik::NcReader file(path);
    const auto epoch = [&file](const char *name) { return timeUnit(file, *file.find(name)).epoch; };
    constexpr double kDay = 86400.0;
    for (const char *name : {"none", "standard", "gregorian"}) {
        EXPECT_EQ(epoch(name), (20032.0 - 739196.0) * kDay) << name;
    }
    EXPECT_EQ(epoch("proleptic"), (20032.0 - 739194.0) * kDay);
    EXPECT_EQ(epoch("recent"), -141427.0 * kDay);
    EXPECT_EQ(epoch("before"), -141427.5 * kDay);
    for (const std::string name : {"julian", "noleap", "written"}) {
        try {
            epoch(name.c_str());
            ADD_FAILURE() << name;
        } catch (const orvik::UserError &error) {
            const std::string message = error.what();
            for (const std::string &part : {"variable " + name, path, std::string("calendar")}) {
                EXPECT_NE(message.find(part), std::string::npos) << message;
            }
        }
    }
}

TEST(Units, WhatIsNoTime) {
    for (const char *text : {"seconds", "", "m since 1970-01-01", "seconds since yesterday",
                             "seconds since 1970-13-01"}) {
        EXPECT_FALSE(timeUnit(text)) << text;
    }
}

} // namespace
