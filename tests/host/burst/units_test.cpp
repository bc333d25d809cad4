// Exact class: units by any spelling, and what must not pass for a unit of the wanted kind.
#include "netcdf/units.hpp"

#include <gtest/gtest.h>

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

TEST(Units, WhatIsNoTime) {
    for (const char *text : {"seconds", "", "m since 1970-01-01", "seconds since yesterday",
                             "seconds since 1970-13-01"}) {
        EXPECT_FALSE(timeUnit(text)) << text;
    }
}

} // namespace
