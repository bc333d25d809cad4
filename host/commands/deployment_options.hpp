// The options that say how a deployment's files are read: the same wherever they are offered.
#pragma once

#include "burst/deployment.hpp"

namespace CLI {
class App;
}

namespace orvik {

// `deployment` must live as long as the command.
void addDeploymentOptions(CLI::App &command, DeploymentOptions &deployment);

} // namespace orvik
