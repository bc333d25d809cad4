#include "burst/burst_file.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "netcdf/nc_file.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr unsigned short kMissingAmplitude = 65535;

const char *systemName(VelocitySystem system) {
    switch (system) {
    case VelocitySystem::beam:
        return "beam";
    case VelocitySystem::xyz:
        return "xyz";
    case VelocitySystem::enu:
        return "enu";
    case VelocitySystem::none:
        break;
    }
    return "";
}

const char *systemLongName(VelocitySystem system) {
    switch (system) {
    case VelocitySystem::beam:
        return "velocity along the beams, positive away from the head";
    case VelocitySystem::xyz:
        return "velocity in instrument axes, Z up";
    default:
        return "velocity east, north, up";
    }
}

struct ScalarVariable {
    const char *name;
    const char *units;
    const char *longName;
    double Instrument::*field;
};

constexpr ScalarVariable kScalars[] = {
    {"sampling_rate", "Hz", "sampling rate of pressure and velocity", &Instrument::samplingRate},
    {"acoustic_frequency", "Hz", "acoustic frequency", &Instrument::acousticFrequency},
    {"beam_slant_angle", "degree", "slant of the velocity beams from the vertical",
     &Instrument::slantAngle},
    {"cell_range", "m", "distance from the head to the measurement cell along the beam",
     &Instrument::cellRange},
    {"cell_size", "m",
     "length of a velocity cell: along the beam, of a profile instrument vertical",
     &Instrument::cellSize},
    {"pressure_sensor_height_above_bed", "m", "height of the pressure sensor above the bed",
     &Instrument::pressureHeight},
    {"magnetic_declination", "degree", "angle added to every direction", &Instrument::declination},
    {"roll_offset", "degree", "angle added to every roll: 180 for a head that looks down",
     &Instrument::rollOffset},
};

struct ProfileScalar {
    const char *name;
    const char *units;
    const char *longName;
    double ProfileFacts::*field;
};

constexpr ProfileScalar kProfileScalars[] = {
    {"blanking_distance", "m",
     "vertical distance from the head to one cell size before the centre of the first cell",
     &ProfileFacts::blanking},
    {"surface_track_time_offset", "s",
     "surface track and pressure are taken this much after the velocities",
     &ProfileFacts::trackTimeOffset},
    {"ambiguity_velocity", "m s-1",
     "greatest velocity along a beam that is told apart from its opposite",
     &ProfileFacts::ambiguityVelocity},
};

// Velocities of profiles are kept in whole millimetres per second, as the instrument tells them.
constexpr double kVelocityStep = 0.001;
constexpr short kMissingVelocity = -32768;

std::vector<short> inMillimetres(const std::vector<float> &velocities) {
    std::vector<short> values(velocities.size());
    std::transform(velocities.begin(), velocities.end(), values.begin(), [](float velocity) {
        const double steps = std::round(static_cast<double>(velocity) / kVelocityStep);
        return std::isfinite(steps) ? static_cast<short>(std::clamp(steps, -32767.0, 32767.0))
                                    : kMissingVelocity;
    });
    return values;
}

template <typename Value>
std::vector<Value> interleaved(const std::array<std::vector<Value>, 3> &rows, std::size_t samples) {
    std::vector<Value> values(3 * samples);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t i = 0; i < samples; ++i) {
            values[3 * i + row] = rows[row].at(i);
        }
    }
    return values;
}

} // namespace

struct BurstFileWriter::Impl {
    Impl(const std::string &path, VelocitySystem velocitySystem, std::size_t sampleCount,
         std::size_t trackCount)
        : file(path), system(velocitySystem), samples(sampleCount), trackSamples(trackCount) {}

    void defineInstrument(const Instrument &instrument);
    void defineBursts();
    void defineProfiles();
    void writeInstrument(const Instrument &instrument);
    void writeProfile(std::size_t row, const Profile &profile);

    NcWriter file;
    VelocitySystem system;
    std::size_t samples;
    std::size_t trackSamples;
    std::size_t written = 0;
    int timeDimension = -1;
    int sampleDimension = -1;
    int beamDimension = -1;
    std::vector<int> scalars;
    std::vector<int> profileScalars;
    std::size_t beams = 3;
    std::size_t cells = 0; // 0: a point instrument
    int trackRate = -1;
    int instrumentType = -1;
    int pings = -1;
    int azimuth = -1;
    int matrix = -1;
    int time = -1;
    std::array<int, 3> attitude{};
    int pressure = -1;
    int velocity = -1;
    int track = -1;
    int amplitude = -1;
    int correlation = -1;
    int valid = -1;
    std::array<int, kTruthVariables.size()> truth{};
};

void BurstFileWriter::Impl::defineInstrument(const Instrument &instrument) {
    for (const ScalarVariable &scalar : kScalars) {
        scalars.push_back(file.addVariable(
            scalar.name, NC_DOUBLE, {}, {{"units", scalar.units}, {"long_name", scalar.longName}}));
    }
    if (trackSamples > 0) {
        trackRate = file.addVariable(
            "surface_track_sampling_rate", NC_DOUBLE, {},
            {{"units", "Hz"}, {"long_name", "sampling rate of the surface track"}});
    }
    instrumentType = file.addVariable("instrument_type", NC_INT, {},
                                      {{"units", "1"}, {"long_name", "instrument type code"}});
    pings =
        file.addVariable("pings_per_sample", NC_INT, {},
                         {{"units", "1"}, {"long_name", "acoustic pings averaged into a sample"}});
    beams = instrument.beams;
    beamDimension = file.addDimension("beam", beams);
    if (instrument.profile) {
        cells = instrument.profile->cells;
        for (const ProfileScalar &scalar : kProfileScalars) {
            profileScalars.push_back(
                file.addVariable(scalar.name, NC_DOUBLE, {},
                                 {{"units", scalar.units}, {"long_name", scalar.longName}}));
        }
    }
    if (!instrument.beamAzimuth.empty()) {
        azimuth = file.addVariable(
            "beam_azimuth", NC_DOUBLE, {beamDimension},
            {{"units", "degree"},
             {"long_name", "azimuth of the slanted beams from X towards Y, seen from above"}});
    }
    if (instrument.beamToXyz) {
        const int xyz = file.addDimension("xyz", 3);
        matrix = file.addVariable(
            "beam_to_xyz", NC_DOUBLE, {xyz, beamDimension},
            {{"units", "1"},
             {"long_name", "turns along-beam velocities into instrument axes, Z up"}});
    }
}

void BurstFileWriter::Impl::defineBursts() {
    const std::vector<int> byBurst{timeDimension};
    const std::vector<int> bySample{timeDimension, sampleDimension};
    time = file.addVariable("time", NC_DOUBLE, byBurst,
                            {{"units", "seconds since 1970-01-01 00:00:00"},
                             {"calendar", "standard"},
                             {"standard_name", "time"},
                             {"axis", "T"},
                             {"long_name", "start of the burst"}});
    const std::array<const char *, 3> names{"heading", "pitch", "roll"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        attitude[i] = file.addVariable(names[i], NC_DOUBLE, byBurst,
                                       {{"units", "degree"}, {"long_name", names[i]}});
    }
    pressure = file.addVariable("pressure", NC_FLOAT, bySample,
                                {{"units", "dbar"},
                                 {"long_name", "pressure relative to the atmosphere"},
                                 {"standard_name", "sea_water_pressure"}});
    if (cells > 0) {
        defineProfiles();
    } else if (system != VelocitySystem::none) {
        const std::string name = systemName(system);
        int components = beamDimension;
        if (system == VelocitySystem::enu || (system == VelocitySystem::xyz && matrix < 0)) {
            components = file.addDimension(name, 3);
        } else if (system == VelocitySystem::xyz) {
            components = file.dimension("xyz");
        }
        velocity = file.addVariable("velocity_" + name, NC_FLOAT,
                                    {timeDimension, sampleDimension, components},
                                    {{"units", "m s-1"}, {"long_name", systemLongName(system)}});
        amplitude = file.addVariable("amplitude", NC_USHORT,
                                     {timeDimension, sampleDimension, beamDimension},
                                     {{"units", "count"}, {"long_name", "echo strength"}});
        file.setFill(amplitude, kMissingAmplitude);
    }
    if (trackSamples > 0) {
        track = file.addVariable(
            "surface_track_distance", NC_FLOAT,
            {timeDimension, trackSamples == samples
                                ? sampleDimension
                                : file.addDimension("surface_track_sample", trackSamples)},
            {{"units", "m"}, {"long_name", "distance from the head to the surface"}});
    }
    valid = file.addVariable("sample_valid", NC_UBYTE, bySample,
                             {{"units", "1"}, {"long_name", "0 marks a missing sample"}});
    for (std::size_t i = 0; i < kTruthVariables.size(); ++i) {
        truth[i] = file.addVariable(
            kTruthVariables[i].name, NC_DOUBLE, byBurst,
            {{"units", kTruthVariables[i].units}, {"long_name", kTruthVariables[i].longName}});
    }
}

void BurstFileWriter::Impl::defineProfiles() {
    const std::string name = systemName(system);
    const int cell = file.addDimension("cell", cells);
    const int components =
        system == VelocitySystem::beam ? beamDimension : file.addDimension(name, beams);
    velocity = file.addVariable("velocity_" + name, NC_SHORT,
                                {timeDimension, sampleDimension, components, cell},
                                {{"units", "m s-1"}, {"long_name", systemLongName(system)}});
    file.setFill(velocity, kMissingVelocity);
    file.setNumber(velocity, "scale_factor", kVelocityStep);
    const std::vector<int> byCell{timeDimension, sampleDimension, beamDimension, cell};
    amplitude = file.addVariable("amplitude", NC_UBYTE, byCell,
                                 {{"units", "count"}, {"long_name", "echo strength"}});
    correlation = file.addVariable(
        "correlation", NC_UBYTE, byCell,
        {{"units", "percent"}, {"long_name", "correlation of the echoes of a ping pair"}});
}

void BurstFileWriter::Impl::writeProfile(std::size_t row, const Profile &profile) {
    const std::vector<std::size_t> start{row, 0, 0, 0};
    const std::vector<std::size_t> count{1, samples, beams, cells};
    file.write(velocity, start, count, inMillimetres(profile.velocity));
    file.write(amplitude, start, count, profile.amplitude);
    file.write(correlation, start, count, profile.correlation);
}

void BurstFileWriter::Impl::writeInstrument(const Instrument &instrument) {
    for (std::size_t i = 0; i < scalars.size(); ++i) {
        file.writeScalar(scalars[i], instrument.*kScalars[i].field);
    }
    for (std::size_t i = 0; i < profileScalars.size(); ++i) {
        file.writeScalar(profileScalars[i], (*instrument.profile).*kProfileScalars[i].field);
    }
    if (trackRate >= 0) {
        file.writeScalar(trackRate, instrument.trackSamplingRate);
    }
    file.writeScalar(instrumentType, instrument.instrumentType);
    file.writeScalar(pings, instrument.pingsPerSample);
    for (std::size_t i = 0; azimuth >= 0 && i < beams; ++i) {
        file.write(azimuth, {i}, instrument.beamAzimuth.at(i));
    }
    for (std::size_t i = 0; matrix >= 0 && i < 9; ++i) {
        file.write(matrix, {i / 3, i % 3}, (*instrument.beamToXyz)[i]);
    }
}

BurstFileWriter::BurstFileWriter(const std::string &path, const Instrument &instrument,
                                 VelocitySystem system, std::size_t samples,
                                 std::size_t trackSamples,
                                 const std::map<std::string, std::string> &attributes)
    : impl_(std::make_unique<Impl>(path, system, samples, trackSamples)) {
    impl_->file.setText(NC_GLOBAL, "Conventions", "CF-1.8");
    for (const auto &[name, value] : attributes) {
        impl_->file.setText(NC_GLOBAL, name, value);
    }
    impl_->timeDimension = impl_->file.addDimension("time", NC_UNLIMITED);
    impl_->sampleDimension = impl_->file.addDimension("sample", samples);
    impl_->defineInstrument(instrument);
    impl_->defineBursts();
    impl_->file.endDefinitions();
    impl_->writeInstrument(instrument);
}

BurstFileWriter::~BurstFileWriter() = default;

void BurstFileWriter::append(const Burst &burst, const Truth &truth) {
    Impl &impl = *impl_;
    const std::size_t row = impl.written;
    impl.file.write(impl.time, {row}, burst.startTime);
    const std::array<double, 3> angles{burst.heading, burst.pitch, burst.roll};
    for (std::size_t i = 0; i < angles.size(); ++i) {
        impl.file.write(impl.attitude[i], {row}, angles[i]);
    }
    impl.file.write(impl.pressure, {row, 0}, {1, impl.samples}, burst.pressure);
    if (burst.profile) {
        impl.writeProfile(row, *burst.profile);
    } else if (impl.velocity >= 0) {
        impl.file.write(impl.velocity, {row, 0, 0}, {1, impl.samples, 3},
                        interleaved(burst.velocity, impl.samples));
        const std::vector<unsigned short> strengths =
            burst.amplitude[0].empty()
                ? std::vector<unsigned short>(3 * impl.samples, kMissingAmplitude)
                : interleaved(burst.amplitude, impl.samples);
        impl.file.write(impl.amplitude, {row, 0, 0}, {1, impl.samples, 3}, strengths);
    }
    if (impl.track >= 0) {
        impl.file.write(impl.track, {row, 0}, {1, impl.trackSamples}, burst.surfaceTrack);
    }
    const std::vector<unsigned char> allValid(impl.samples, 1);
    impl.file.write(impl.valid, {row, 0}, {1, impl.samples},
                    burst.valid.empty() ? allValid : burst.valid);
    for (std::size_t i = 0; i < kTruthVariables.size(); ++i) {
        impl.file.write(impl.truth[i], {row}, truth.*kTruthVariables[i].field);
    }
    ++impl.written;
}

void BurstFileWriter::commit() { impl_->file.commit(); }

} // namespace orvik
