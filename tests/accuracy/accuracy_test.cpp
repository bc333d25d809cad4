// Physical class: simulated seas come out with the height, period, direction and spread they were made with. Each sea
// is the mean of four 17-minute bursts, whose own sampling error is part of what is left.
#include <cmath>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "accuracy/seas.hpp"

namespace {

using namespace orvik::accuracy;

const std::vector<Outcome> &outcomes() {
    static const std::vector<Outcome> all = runAll();
    return all;
}

std::vector<double> collect(const std::string &way, Group group,
                            const std::function<double(const Errors &)> &value) {
    std::vector<double> values;
    for (const Outcome &outcome : outcomes()) {
        if (outcome.way.name == way && outcome.sea.group == group) {
            values.push_back(std::abs(value(outcome.errors)));
        }
    }
    return values;
}

class EveryWay : public testing::TestWithParam<std::tuple<Way, Group>> {
protected:
    [[nodiscard]] static Way way() { return std::get<0>(GetParam()); }
    [[nodiscard]] std::vector<double>
    single(const std::function<double(const Errors &)> &value) const {
        return collect(way().name, std::get<1>(GetParam()), value);
    }
};

TEST(Accuracy, CoversTheSeasItClaims) {
    std::size_t singles = 0;
    for (const Sea &sea : allSeas()) {
        singles += sea.group == Group::single ? 1 : 0;
    }
    EXPECT_GE(singles, 24U);
    for (const Way &way : allWays()) {
        const auto height = [](const Errors &e) { return e.heightPercent; };
        EXPECT_GE(collect(way.name, Group::single, height).size(), 12U) << way.name;
        EXPECT_GE(collect(way.name, Group::threeBeamProfile, height).size(), 6U) << way.name;
        EXPECT_GE(collect(way.name, Group::fourBeamProfile, height).size(), 6U) << way.name;
    }
}

TEST_P(EveryWay, GivesEveryBurstAResult) {
    for (const Outcome &outcome : outcomes()) {
        if (outcome.way.name == way().name) {
            EXPECT_EQ(outcome.errors.bursts, kBursts) << outcome.sea.name;
        }
    }
}

TEST_P(EveryWay, FindsTheHeight) {
    const double limit = way().usesTrack ? 2.0 : 5.0; // [%]
    EXPECT_LE(median(single([](const Errors &e) { return e.heightPercent; })), limit);
}

TEST_P(EveryWay, FindsTheMeanDirection) {
    const std::vector<double> errors = single([](const Errors &e) { return e.meanDirection; });
    EXPECT_LE(median(errors), 2.0);
    for (const double error : errors) {
        EXPECT_LE(error, 8.0);
    }
}

TEST_P(EveryWay, FindsThePeak) {
    for (const double bins : single([](const Errors &e) { return e.peakBins; })) {
        EXPECT_LE(bins, 1.0);
    }
    EXPECT_LE(median(single([](const Errors &e) { return e.peakDirection; })), 3.0);
}

TEST_P(EveryWay, FindsTheSpread) {
    EXPECT_LE(median(single([](const Errors &e) { return e.peakSpread; })), 5.0);
}

const char *nameOf(Group group) {
    switch (group) {
    case Group::threeBeamProfile:
        return "ThreeBeamProfile";
    case Group::fourBeamProfile:
        return "FourBeamProfile";
    default:
        return "Point";
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryWay,
                         testing::Combine(testing::ValuesIn(allWays()),
                                          testing::ValuesIn(kSingleGroups)),
                         [](const auto &param) {
                             std::string name = std::get<0>(param.param).name;
                             for (char &c : name) {
                                 c = c == ' ' ? '_' : c;
                             }
                             return std::string("Method") + name + nameOf(std::get<1>(param.param));
                         });

} // namespace
