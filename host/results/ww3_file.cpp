#include "results/ww3_file.hpp"

#include <cmath>
#include <limits>
#include <numbers>

namespace orvik {

namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr double kEpoch = 631152000.0; // 1990-01-01 00:00:00 in seconds since 1970
constexpr std::size_t kNameLength = 16;
constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

NcWriter::Attributes text(const char *units, const char *standardName, const char *longName) {
    NcWriter::Attributes attributes{{"units", units}, {"long_name", longName}};
    if (*standardName != '\0') {
        attributes.emplace_back("standard_name", standardName);
    }
    return attributes;
}

} // namespace

Ww3File::Ww3File(const std::string &path, const ResultReader &results)
    : results_(results), axis_(directionAxis(results, false)), file_(path) {
    file_.setText(NC_GLOBAL, "Conventions", "CF-1.8");
    file_.setText(NC_GLOBAL, "title", "directional wave spectra measured at a point");
    file_.setText(NC_GLOBAL, "source", results.attribute("source"));
    file_.setText(NC_GLOBAL, "comment", "times are starts of bursts; there is no wind");
    define();
    file_.endDefinitions();
    writeAxes();
}

void Ww3File::define() {
    const int time = file_.addDimension("time", NC_UNLIMITED);
    const int station = file_.addDimension("station", 1);
    const int letter = file_.addDimension("string16", kNameLength);
    const int frequency = file_.addDimension("frequency", results_.frequencies().size());
    const int direction = file_.addDimension("direction", axis_.degrees.size());
    time_ = file_.addCoordinate("time", NC_DOUBLE, {time},
                                {{"units", "days since 1990-01-01 00:00:00"},
                                 {"calendar", "standard"},
                                 {"standard_name", "time"},
                                 {"axis", "T"},
                                 {"long_name", "start of the burst"}});
    station_ = file_.addVariable("station", NC_INT, {station}, {{"long_name", "station id"}});
    name_ = file_.addVariable("station_name", NC_CHAR, {station, letter},
                              {{"long_name", "station name"}});
    longitude_ = file_.addVariable("longitude", NC_FLOAT, {time, station},
                                   text("degrees_east", "longitude", "longitude"));
    latitude_ = file_.addVariable("latitude", NC_FLOAT, {time, station},
                                  text("degrees_north", "latitude", "latitude"));
    frequency_ = file_.addCoordinate("frequency", NC_FLOAT, {frequency},
                                     text("s-1", "wave_frequency", "frequency"));
    frequencyBelow_ = file_.addVariable("frequency1", NC_FLOAT, {frequency},
                                        text("s-1", "", "lower edge of the frequency band"));
    frequencyAbove_ = file_.addVariable("frequency2", NC_FLOAT, {frequency},
                                        text("s-1", "", "upper edge of the frequency band"));
    direction_ = file_.addCoordinate(
        "direction", NC_FLOAT, {direction},
        text("degree", "sea_surface_wave_to_direction", "direction that waves go to"));
    spectrum_ = file_.addVariable("efth", NC_FLOAT, {time, station, frequency, direction},
                                  text("m2 s rad-1",
                                       "sea_surface_wave_directional_variance_spectral_density",
                                       "directional variance spectral density"));
    depth_ = file_.addVariable("dpt", NC_FLOAT, {time, station},
                               text("m", "sea_floor_depth_below_sea_surface", "depth"));
    wind_ = file_.addVariable("wnd", NC_FLOAT, {time, station},
                              text("m s-1", "wind_speed", "wind speed at 10 m"));
    windDirection_ =
        file_.addVariable("wnddir", NC_FLOAT, {time, station},
                          text("degree", "wind_from_direction", "direction wind comes from"));
    current_ = file_.addVariable("cur", NC_FLOAT, {time, station},
                                 text("m s-1", "sea_water_speed", "current speed"));
    currentDirection_ = file_.addVariable(
        "curdir", NC_FLOAT, {time, station},
        text("degree", "sea_water_velocity_to_direction", "direction that the current goes to"));
}

void Ww3File::writeAxes() {
    const double halfStep = results_.frequencyStep() / 2.0;
    for (std::size_t i = 0; i < results_.frequencies().size(); ++i) {
        const double frequency = results_.frequencies()[i];
        file_.write(frequency_, {i}, frequency);
        file_.write(frequencyBelow_, {i}, frequency - halfStep);
        file_.write(frequencyAbove_, {i}, frequency + halfStep);
    }
    for (std::size_t i = 0; i < axis_.degrees.size(); ++i) {
        file_.write(direction_, {i}, axis_.degrees[i]);
    }
    file_.write(station_, {0}, 1.0);
    std::string name = "burst";
    name.resize(kNameLength, ' ');
    file_.writeCharacters(name_, {0, 0}, {1, kNameLength}, name);
}

void Ww3File::append(const StoredBurst &burst) {
    const std::size_t at = written_++;
    const std::size_t bins = results_.frequencies().size();
    const std::size_t directions = axis_.degrees.size();
    file_.write(time_, {at}, (burst.startTime - kEpoch) / kSecondsPerDay);
    file_.write(longitude_, {at, 0}, results_.longitude());
    file_.write(latitude_, {at, 0}, results_.latitude());
    file_.write(depth_, {at, 0}, burst.value("water_depth"));
    file_.write(wind_, {at, 0}, kUnknown);
    file_.write(windDirection_, {at, 0}, kUnknown);
    file_.write(current_, {at, 0}, burst.value("current_speed"));
    file_.write(currentDirection_, {at, 0}, burst.value("current_direction"));
    std::vector<float> values(bins * directions, std::numeric_limits<float>::quiet_NaN());
    if (const auto grid = directionalGrid(results_, burst, axis_)) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<float>((*grid)[i] * kDegreesPerRadian);
        }
    }
    file_.write(spectrum_, {at, 0, 0, 0}, {1, 1, bins, directions}, values);
}

} // namespace orvik
