#include "accuracy/seas.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "run/burst_runner.hpp"

namespace orvik::accuracy {
namespace {

constexpr double kPressureHeight = 0.5; // [m] above the bed
constexpr std::size_t kBurstSeconds = 1024;

struct Row {
    double height;    // [m]
    double period;    // [s]
    double direction; // [degrees] from
    double spread;    // [degrees]
    double depth;     // [m]
    double heading;   // [degrees]
    double pitch;     // [degrees]
    double roll;      // [degrees]
    int rate;         // [Hz]
};

// One wave system, no current: all quarters of the compass, 5 to 35 m, 0.3 to 5 m, 4 to 15 s, 10 to 40 degrees.
// clang-format off
constexpr Row kSingle[] = {
    {0.3,  4.0,  20.0, 30.0,  5.0,   0.0,  0.0,  0.0, 2},
    {0.5,  5.0, 110.0, 25.0,  5.0,  90.0,  0.0,  0.0, 2},
    {1.0,  6.0, 200.0, 20.0,  5.0, 200.0,  3.0, -2.0, 2},
    {1.5, 10.0, 290.0, 15.0,  5.0, 310.0, -2.0,  4.0, 1},
    {0.5,  4.5, 340.0, 35.0,  8.0,  45.0,  0.0,  0.0, 2},
    {1.0,  6.0,  70.0, 30.0,  8.0, 135.0,  5.0,  0.0, 2},
    {2.0,  8.0, 160.0, 25.0,  8.0, 225.0,  0.0,  5.0, 1},
    {2.0, 12.0, 250.0, 12.0,  8.0, 315.0, -4.0, -4.0, 2},
    {0.4,  5.0, 310.0, 40.0, 10.0,  10.0,  2.0,  1.0, 2},
    {1.5,  7.0,  40.0, 30.0, 10.0, 100.0,  0.0,  0.0, 1},
    {2.5,  9.0, 130.0, 22.0, 10.0, 190.0, -3.0,  2.0, 2},
    {3.0, 14.0, 220.0, 10.0, 10.0, 280.0,  1.0,  1.0, 2},
    {0.6,  5.5, 280.0, 35.0, 12.0, 350.0,  0.0,  0.0, 2},
    {1.2,  6.5,   5.0, 28.0, 12.0,  75.0,  4.0,  4.0, 2},
    {2.8, 10.0, 355.0, 20.0, 12.0, 155.0,  0.0, -6.0, 1},
    {4.0, 12.0, 185.0, 15.0, 12.0, 240.0,  2.0,  0.0, 2},
    {0.8,  6.0,  95.0, 40.0, 15.0,  30.0,  0.0,  0.0, 2},
    {2.0,  8.0, 175.0, 25.0, 15.0, 120.0, -5.0,  3.0, 1},
    {3.5, 10.0, 265.0, 22.0, 15.0, 210.0,  0.0,  0.0, 2},
    {5.0, 13.0, 325.0, 18.0, 15.0, 330.0,  3.0,  3.0, 2},
    {1.0,  7.0, 145.0, 32.0, 20.0,  60.0,  0.0,  0.0, 2},
    {2.5,  9.0, 235.0, 26.0, 20.0, 165.0,  6.0, -2.0, 1},
    {4.5, 12.0,  55.0, 20.0, 20.0, 255.0,  0.0,  2.0, 2},
    {1.5,  8.0, 300.0, 30.0, 25.0, 345.0, -2.0, -2.0, 2},
    {3.0, 10.0,  15.0, 24.0, 25.0,  20.0,  0.0,  0.0, 1},
    {5.0, 14.0, 105.0, 14.0, 25.0, 140.0,  4.0,  0.0, 2},
    {2.0,  9.0, 195.0, 28.0, 30.0, 230.0,  0.0,  0.0, 2},
    {4.0, 12.0, 285.0, 20.0, 30.0, 300.0, -3.0, -3.0, 2},
    {3.0, 11.0, 345.0, 25.0, 35.0,  85.0,  0.0,  0.0, 2},
    {5.0, 15.0,  80.0, 12.0, 35.0, 175.0,  2.0, -2.0, 1},
};
// clang-format on

Sea seaFrom(const Row &row) {
    Sea sea;
    WaveSystem system;
    system.significantHeight = row.height;
    system.peakPeriod = row.period;
    system.direction = row.direction;
    system.spread = row.spread;
    sea.state.systems = {system};
    sea.state.waterDepth = row.depth;
    sea.state.heading = row.heading;
    sea.state.pitch = row.pitch;
    sea.state.roll = row.roll;
    sea.samplingRate = row.rate;
    return sea;
}

// The same sea on a following, opposing and crossing current.
void addCurrentSeas(std::vector<Sea> &seas) {
    struct Current {
        const char *name;
        double speed;
        double turn; // [degrees] from where the waves go
    };
    for (const Current &current :
         {Current{"following 0.3 m/s", 0.3, 0.0}, Current{"following 0.8 m/s", 0.8, 0.0},
          Current{"opposing 0.3 m/s", 0.3, 180.0}, Current{"opposing 0.8 m/s", 0.8, 180.0},
          Current{"crossing 0.8 m/s", 0.8, 90.0}}) {
        Sea sea = seaFrom({2.0, 8.0, 250.0, 25.0, 15.0, 120.0, 2.0, 1.0, 2});
        sea.group = Group::current;
        sea.name = current.name;
        sea.state.currentSpeed = current.speed;
        sea.state.currentDirection = std::fmod(250.0 + 180.0 + current.turn, 360.0);
        seas.push_back(sea);
    }
}

// Swell under a wind sea.
void addTwoSystemSeas(std::vector<Sea> &seas) {
    struct Swell {
        const char *name;
        double height;
        double direction;
    };
    for (const Swell &swell :
         {Swell{"swell 1.5 m from 200 under wind sea 1 m from 280", 1.5, 200.0},
          Swell{"swell 1 m from 280 under wind sea 1 m from 280", 1.0, 280.0},
          Swell{"swell 0.8 m from 160 under wind sea 1 m from 280", 0.8, 160.0}}) {
        Sea sea = seaFrom({1.0, 5.5, 280.0, 30.0, 12.0, 30.0, 0.0, 0.0, 2});
        sea.group = Group::twoSystems;
        sea.name = swell.name;
        WaveSystem system;
        system.significantHeight = swell.height;
        system.peakPeriod = 13.0;
        system.direction = swell.direction;
        system.spread = 12.0;
        sea.state.systems.push_back(system);
        seas.push_back(sea);
    }
}

// Every third of the single seas, its number of cells and the system of its velocities varying from one to the next.
void addProfileSeas(std::vector<Sea> &seas, Group group) {
    static constexpr std::array<std::size_t, 5> kCells{20, 32, 64, 45, 128};
    static constexpr std::array<VelocitySystem, 3> kSystems{
        VelocitySystem::beam, VelocitySystem::xyz, VelocitySystem::enu};
    std::size_t number = 0;
    for (std::size_t row = group == Group::threeBeamProfile ? 0 : 1; row < std::size(kSingle);
         row += 2, ++number) {
        Sea sea = seaFrom(kSingle[row]);
        sea.group = group;
        sea.cells = row == 16 || row == 17 ? OV_MAX_CELLS : kCells[number % kCells.size()];
        sea.system = kSystems[number % kSystems.size()];
        seas.push_back(sea);
    }
}

double signedTurn(double from, double to) { return std::remainder(to - from, 360.0); }

// Shortest period that a height from pressure or from velocity should be asked for: 1.4 times that of the deep-water
// limit of the sensor, where its spectrum is cut and a tail takes over.
double shortestPeriod(double depthOfSensor) { return 1.4 * std::sqrt(2.0 * depthOfSensor / 1.56); }

class Statistics {
public:
    void add(const BurstResult &result, const Truth &truth) {
        if (!result.processed) {
            return;
        }
        const auto wave = [&result](float orvikbase::WaveParameters::*value) {
            return static_cast<double>(result.waves.*value);
        };
        heights_.push_back(
            100.0 *
            (wave(&orvikbase::WaveParameters::significantHeight) / truth.realisedHeight - 1.0));
        const double peak = 1.0 / wave(&orvikbase::WaveParameters::peakPeriod);
        peaks_.push_back((peak - 1.0 / truth.peakPeriod) / kFrequencyStep);
        means_.push_back(
            signedTurn(truth.meanDirection, wave(&orvikbase::WaveParameters::meanDirection)));
        peakDirections_.push_back(
            signedTurn(truth.peakDirection, wave(&orvikbase::WaveParameters::peakDirection)));
        spreads_.push_back(wave(&orvikbase::WaveParameters::peakSpread) - truth.peakSpread);
    }

    [[nodiscard]] Errors errors() const {
        return {mean(heights_),  scatter(heights_),
                mean(peaks_),    mean(means_),
                scatter(means_), mean(peakDirections_),
                mean(spreads_),  static_cast<int>(heights_.size())};
    }

private:
    static double mean(const std::vector<double> &values) {
        double sum = 0.0;
        for (const double value : values) {
            sum += value;
        }
        return sum / static_cast<double>(values.size());
    }
    static double scatter(const std::vector<double> &values) {
        double sum = 0.0;
        for (const double value : values) {
            sum += (value - mean(values)) * (value - mean(values));
        }
        return std::sqrt(sum / static_cast<double>(values.size() - 1));
    }

    std::vector<double> heights_;
    std::vector<double> peaks_;
    std::vector<double> means_;
    std::vector<double> peakDirections_;
    std::vector<double> spreads_;
};

} // namespace

std::vector<Sea> allSeas() {
    std::vector<Sea> seas;
    for (const Row &row : kSingle) {
        seas.push_back(seaFrom(row));
    }
    addCurrentSeas(seas);
    addTwoSystemSeas(seas);
    addProfileSeas(seas, Group::threeBeamProfile);
    addProfileSeas(seas, Group::fourBeamProfile);
    return seas;
}

const std::vector<Way> &allWays() {
    static const std::vector<Way> ways = {{"1", 1, 0, false},
                                          {"2", 2, 2, true},
                                          {"3 pressure", 3, 0, false},
                                          {"3 velocity", 3, 1, false},
                                          {"4", 4, 2, true}};
    return ways;
}

namespace {

void makeProfiler(const Sea &sea, Instrument &instrument) {
    const bool four = sea.group == Group::fourBeamProfile;
    instrument.instrumentType = 16;
    instrument.trackSamplingRate = sea.samplingRate;
    instrument.beams = four ? 4 : 3;
    instrument.beamAzimuth = four ? std::vector<double>{0.0, 90.0, 180.0, 270.0}
                                  : std::vector<double>{0.0, 120.0, 240.0};
    instrument.cellSize = 1.1 * sea.state.waterDepth / static_cast<double>(sea.cells);
    instrument.profile = ProfileFacts{sea.cells, 0.4, 0.14, 2.5};
}

} // namespace

Instrument instrumentFor(const Sea &sea) {
    Instrument instrument;
    instrument.samplingRate = sea.samplingRate;
    instrument.trackSamplingRate = 2.0 * sea.samplingRate;
    instrument.pressureHeight = kPressureHeight;
    if (sea.cells > 0) {
        makeProfiler(sea, instrument);
        return instrument;
    }
    instrument.cellRange =
        0.6 * sea.state.waterDepth / std::cos(instrument.slantAngle * std::numbers::pi / 180.0);
    return instrument;
}

bool allows(const Sea &sea, const Way &way) {
    if (way.usesTrack) {
        return true;
    }
    const double sensor = sea.state.waterDepth - kPressureHeight;
    const double longest = sea.state.systems.front().peakPeriod; // of the shorter system
    return longest >= shortestPeriod(sensor);
}

std::vector<Outcome> runAll() {
    std::vector<Outcome> outcomes;
    std::uint64_t seed = 1;
    for (const Sea &sea : allSeas()) {
        const Instrument instrument = instrumentFor(sea);
        std::vector<SimulatedBurst> bursts;
        for (int b = 0; b < kBursts; ++b) {
            const std::size_t samples = kBurstSeconds * static_cast<std::size_t>(sea.samplingRate);
            bursts.push_back(
                simulateBurst(instrument, sea.state, SensorFaults{}, samples, sea.system, seed++));
        }
        for (const Way &way : allWays()) {
            if (!allows(sea, way)) {
                continue;
            }
            ProcessingChoices choices;
            choices.method = way.method;
            choices.directionalInputMode = way.directionalInputMode;
            BurstRunner runner(instrument, choices);
            Statistics statistics;
            for (const SimulatedBurst &burst : bursts) {
                statistics.add(runner.run(burst.burst), burst.truth);
            }
            outcomes.push_back({sea, way, statistics.errors()});
        }
    }
    return outcomes;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

} // namespace orvik::accuracy
