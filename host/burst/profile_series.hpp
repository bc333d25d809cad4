// The series of a profile instrument in a burst file: velocity, amplitude and correlation by beam and cell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "burst/column.hpp"

namespace orvik {

// Whether the file's velocities have a dimension `cell`.
bool holdsProfiles(const NcReader &file);

class ProfileSeries {
public:
    // Of several velocity variables that of `wanted`; with `none` along beams before instrument axes before east, north,
    // up. Throws UserError when the file's variables do not fit together.
    ProfileSeries(const NcReader &file, const std::string &burstDimension, VelocitySystem wanted);

    [[nodiscard]] VelocitySystem system() const { return system_; }
    [[nodiscard]] std::size_t beams() const { return beams_; }
    [[nodiscard]] std::size_t cells() const { return cells_; }
    [[nodiscard]] Profile read(std::size_t burst) const;
    // What it reads burst by burst.
    void addCourses(std::vector<NcReader::Course> &courses) const;

private:
    [[nodiscard]] std::vector<std::uint8_t> readEchoes(const Column &column, std::size_t burst,
                                                       std::uint8_t missing) const;
    void checkLengths(const Column &column, const std::string &component) const;

    const NcReader &file_;
    std::string burstDimension_;
    std::string component_; // dimension of `velocity_`
    VelocitySystem system_ = VelocitySystem::none;
    std::size_t beams_ = 0;
    std::size_t cells_ = 0;
    std::optional<Column> velocity_;
    std::optional<Column> amplitude_;
    std::optional<Column> correlation_;
};

} // namespace orvik
