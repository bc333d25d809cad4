#include "burst/missing_velocities.hpp"

namespace orvik {

namespace {

std::string text(const std::string &path, VelocitySystem wanted) {
    switch (wanted) {
    case VelocitySystem::beam:
        return "--velocities beam: " + path + " has no velocities along the beams";
    case VelocitySystem::xyz:
        return "--velocities xyz: " + path + " has no velocities along the instrument's axes";
    case VelocitySystem::enu:
        return "--velocities enu: " + path + " has no velocities east, north, up";
    case VelocitySystem::none:
        break;
    }
    return path + " has no velocities";
}

} // namespace

MissingVelocities::MissingVelocities(const std::string &path, VelocitySystem wanted)
    : UserError(text(path, wanted)) {}

} // namespace orvik
