#include "commands/deployment_options.hpp"

#include <string>

#include <CLI/CLI.hpp>

namespace orvik {

namespace {

VelocitySystem systemNamed(const std::string &name) {
    if (name == "beam") {
        return VelocitySystem::beam;
    }
    return name == "xyz" ? VelocitySystem::xyz : VelocitySystem::enu;
}

} // namespace

void addDeploymentOptions(CLI::App &command, DeploymentOptions &deployment) {
    command
        .add_option("--layout", deployment.layout,
                    "how the files are laid out; by default what they look like")
        ->check(CLI::IsMember(layoutNames()));
    command
        .add_option("--burst-length", deployment.burstLength,
                    "samples: cuts what was recorded without a pause into bursts")
        ->check(CLI::Range(16U, 16384U));
    command
        .add_option_function<std::string>(
            "--velocities",
            [&deployment](const std::string &name) { deployment.wanted = systemNamed(name); },
            "beam, xyz or enu: which velocities to take from a file that has several")
        ->check(CLI::IsMember({"beam", "xyz", "enu"}));
}

} // namespace orvik
