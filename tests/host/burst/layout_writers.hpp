// The bursts of a burst file in the other layouts, as other programs write them.
#pragma once

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "burst/burst_file.hpp"
#include "host/burst/nc_sketch.hpp"
#include "orvikbase/orvikbase.hpp"
#include "run/burst_runner.hpp"

namespace orvik::test {

struct Deployment {
    Instrument instrument;
    VelocitySystem system = VelocitySystem::none;
    std::vector<Burst> bursts;

    explicit Deployment(const std::string &path) {
        const BurstFileReader reader(path, {});
        instrument = reader.instrument();
        system = reader.velocitySystem();
        for (std::size_t i = 0; i < reader.burstCount(); ++i) {
            bursts.push_back(reader.readBurst(i));
        }
    }

    [[nodiscard]] std::size_t samples() const { return bursts.front().pressure.size(); }
    [[nodiscard]] std::size_t cells() const {
        return instrument.profile ? instrument.profile->cells : 1;
    }
    [[nodiscard]] double velocity(const Burst &burst, std::size_t i, std::size_t b,
                                  std::size_t c) const {
        return burst.profile
                   ? static_cast<double>(burst.profile->velocity[burst.profile->at(i, b, c)])
                   : static_cast<double>(burst.velocity.at(b)[i]);
    }
};

template <typename Series> void append(std::vector<double> &all, const Series &series) {
    for (const auto value : series) {
        all.push_back(static_cast<double>(value));
    }
}

// Packed in chunks when their lengths are told.
inline void writeFields(const std::string &path, const Deployment &deployment,
                        const std::map<std::string, std::size_t> &chunks = {}) {
    const std::size_t samples = deployment.samples();
    const std::size_t beams = deployment.instrument.beams;
    const std::size_t cells = deployment.cells();
    const bool earth = deployment.system == VelocitySystem::enu;
    std::vector<double> time;
    std::vector<double> pressure;
    std::vector<double> track;
    std::array<std::vector<double>, 3> attitude;
    std::array<std::vector<double>, 3> components;
    std::vector<double> along; // by burst, beam, cell, sample
    std::vector<double> correlation;
    for (const Burst &burst : deployment.bursts) {
        time.push_back(burst.startTime);
        append(pressure, burst.pressure);
        append(track, burst.surfaceTrack);
        const std::array<double, 3> angles{burst.heading, burst.pitch, burst.roll};
        for (std::size_t a = 0; a < 3; ++a) {
            attitude[a].insert(attitude[a].end(), samples, angles[a]);
        }
        for (std::size_t b = 0; b < beams; ++b) {
            for (std::size_t c = 0; c < cells; ++c) {
                for (std::size_t i = 0; i < samples; ++i) {
                    const double value = deployment.velocity(burst, i, b, c);
                    along.push_back(value);
                    if (earth) {
                        components[b].push_back(value);
                    }
                    if (burst.profile) {
                        correlation.push_back(
                            burst.profile->correlation[burst.profile->at(i, b, c)]);
                    }
                }
            }
        }
    }
    NcSketch file(path);
    file.dimension("time", deployment.bursts.size()).dimension("sample", samples);
    file.dimension("beam", beams).dimension("z", cells).dimension("sample2", 2 * samples);
    if (!chunks.empty()) {
        file.packed(chunks);
    }
    file.variable("time", {"time"}, "seconds since 1970-01-01 00:00:00", time);
    file.variable("P_1ac", {"time", "sample"}, "dbar", pressure);
    file.variable("P_1", {"time", "sample"}, "dbar", std::vector<double>(pressure.size(), 99.0));
    if (earth) {
        file.variable("u_1205", {"time", "z", "sample"}, "m s^-1", components[0]);
        file.variable("v_1206", {"time", "z", "sample"}, "m s^-1", components[1]);
        file.variable("w_1204", {"time", "z", "sample"}, "m s^-1", components[2]);
    } else {
        file.variable("vel", {"time", "beam", "z", "sample"}, "m s-1", along);
    }
    if (!correlation.empty()) {
        file.variable("cor", {"time", "beam", "z", "sample"}, "percent", correlation);
    }
    if (!track.empty()) {
        file.variable("brangeAST", {"time", track.size() == pressure.size() ? "sample" : "sample2"},
                      "m", track);
    }
    file.variable("Hdg_1215", {"time", "sample"}, "degrees", attitude[0]);
    file.variable("Ptch_1216", {"time", "sample"}, "degrees", attitude[1]);
    file.variable("Roll_1217", {"time", "sample"}, "degrees", attitude[2]);
    file.number("sample_interval", 1.0 / deployment.instrument.samplingRate);
    file.number("initial_instrument_height", deployment.instrument.pressureHeight);
    file.text("beam_angle", std::to_string(deployment.instrument.slantAngle) + " degrees");
}

inline std::vector<double> timesOf(const Deployment &deployment) {
    std::vector<double> times;
    for (const Burst &burst : deployment.bursts) {
        for (std::size_t i = 0; i < deployment.samples(); ++i) {
            times.push_back(burst.startTime +
                            static_cast<double>(i) / deployment.instrument.samplingRate);
        }
    }
    return times;
}

// Packed in chunks when their lengths are told.
inline void writeContinuous(const std::string &path, const Deployment &deployment,
                            const std::map<std::string, std::size_t> &chunks = {}) {
    const std::size_t samples = deployment.samples();
    const std::size_t beams = deployment.instrument.beams;
    const std::size_t cells = deployment.cells();
    const std::vector<double> times = timesOf(deployment);
    std::vector<double> pressure;
    std::vector<double> track;
    std::vector<double> trackTimes;
    std::array<std::vector<double>, 3> attitude;
    std::vector<double> velocity; // by beam, cell, time
    std::vector<double> correlation;
    for (std::size_t b = 0; b < beams; ++b) {
        for (std::size_t c = 0; c < cells; ++c) {
            for (const Burst &burst : deployment.bursts) {
                for (std::size_t i = 0; i < samples; ++i) {
                    velocity.push_back(deployment.velocity(burst, i, b, c));
                    correlation.push_back(
                        burst.profile ? burst.profile->correlation[burst.profile->at(i, b, c)]
                                      : 90.0);
                }
            }
        }
    }
    for (const Burst &burst : deployment.bursts) {
        append(pressure, burst.pressure);
        append(track, burst.surfaceTrack);
        const double rate = deployment.instrument.trackSamplingRate;
        for (std::size_t m = 0; m < burst.surfaceTrack.size(); ++m) {
            trackTimes.push_back(burst.startTime + static_cast<double>(m) / rate);
        }
        const std::array<double, 3> angles{burst.heading, burst.pitch, burst.roll};
        for (std::size_t a = 0; a < 3; ++a) {
            attitude[a].insert(attitude[a].end(), samples, angles[a]);
        }
    }
    NcSketch file(path);
    file.dimension("time", times.size()).dimension("range", cells);
    file.dimension("dir", beams).dimension("beam", beams).dimension("time_alt", track.size());
    if (!chunks.empty()) {
        file.packed(chunks);
    }
    file.variable("time", {"time"}, "seconds since 1970-01-01 00:00:00", times);
    file.variable("pressure", {"time"}, "dbar", pressure);
    file.variable("vel", {"dir", "range", "time"}, "m s-1", velocity);
    file.variable("corr", {"beam", "range", "time"}, "%", correlation);
    file.variable("heading", {"time"}, "degree", attitude[0]);
    file.variable("pitch", {"time"}, "degree", attitude[1]);
    file.variable("roll", {"time"}, "degree", attitude[2]);
    if (deployment.instrument.profile) {
        std::vector<double> range;
        for (std::size_t c = 0; c < cells; ++c) {
            range.push_back(deployment.instrument.profile->blanking +
                            static_cast<double>(c + 1) * deployment.instrument.cellSize);
        }
        file.variable("range", {"range"}, "m", range);
    }
    if (!track.empty()) {
        file.variable("time_alt", {"time_alt"}, "seconds since 1970-01-01 00:00:00", trackTimes);
        file.variable("ast_dist_alt", {"time_alt"}, "m", track);
    }
    file.text("coord_sys", deployment.system == VelocitySystem::beam  ? "beam"
                           : deployment.system == VelocitySystem::xyz ? "inst"
                                                                      : "earth");
    file.number("fs", deployment.instrument.samplingRate);
}

// A point instrument's, with dates; `first` and `count` bursts of it.
inline void writeCsv(const std::string &path, const Deployment &deployment, std::size_t first,
                     std::size_t count) {
    std::ofstream file(path);
    file.precision(17);
    file << "# a comment\ntime [seconds since 1970-01-01],Pressure [kPa],";
    const bool earth = deployment.system == VelocitySystem::enu;
    file << (earth ? "velocity_east [cm/s],velocity_north [cm/s],velocity_up [cm/s]"
                   : "velocity_beam_1 [cm/s],velocity_beam_2 [cm/s],velocity_beam_3 [cm/s]");
    const bool track = !deployment.bursts.front().surfaceTrack.empty();
    file << (track ? ",\"surface track distance 1\",surface_track_distance_2 [m]" : "")
         << ",heading,pitch,roll\n";
    for (std::size_t b = first; b < first + count; ++b) {
        const Burst &burst = deployment.bursts.at(b);
        for (std::size_t i = 0; i < deployment.samples(); ++i) {
            file << burst.startTime + static_cast<double>(i) / deployment.instrument.samplingRate
                 << ',' << static_cast<double>(burst.pressure[i]) * 10.0;
            for (std::size_t c = 0; c < 3; ++c) {
                file << ',' << deployment.velocity(burst, i, c, 0) * 100.0;
            }
            if (track) {
                file << ',' << static_cast<double>(burst.surfaceTrack[2 * i]) << ','
                     << static_cast<double>(burst.surfaceTrack[2 * i + 1]);
            }
            file << ',' << burst.heading << ',' << burst.pitch << ',' << burst.roll << '\n';
        }
    }
}

} // namespace orvik::test
