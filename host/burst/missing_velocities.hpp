// The error of a file without velocities of the kind that was asked for.
#pragma once

#include <string>

#include "burst/burst.hpp"
#include "user_error.hpp"

namespace orvik {

class MissingVelocities : public UserError {
public:
    MissingVelocities(const std::string &path, VelocitySystem wanted); // none: any would do
};

} // namespace orvik
