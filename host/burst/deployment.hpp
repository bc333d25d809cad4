// A deployment as the user names it: one file, several, or a folder of them, in any layout that is known.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst_file.hpp"
#include "burst/burst_source.hpp"

namespace orvik {

struct DeploymentOptions {
    std::string layout{}; // one of layoutNames(); empty: recognised by what the files hold
    std::optional<std::size_t>
        burstLength{};     // [samples] cuts what was recorded without a pause into bursts
    Overrides overrides{}; // win over the facts file, which wins over the data
    VelocitySystem wanted = VelocitySystem::none;
    std::string factsFile{}; // TOML: what the data lack; empty: none
};

// What `--layout` takes.
std::vector<std::string> layoutNames();

// The ending of a file's name in lower case, ".csv" of B1.CSV: loggers and cards may know capitals only.
std::string endingOf(const std::filesystem::path &path);

// Whether a file in a folder of bursts is one of them, by its name. Hidden files are still being written, or not the user's.
bool isBurstFileName(const std::filesystem::path &path);

// The files that `paths` name: folders stand for the files in them, by name.
std::vector<std::string> deploymentFiles(const std::vector<std::string> &paths);

// Bursts of several files come in time order. Throws UserError when a file cannot be used or when the files are not of one
// instrument, UsageError when an option does not fit.
std::unique_ptr<BurstSource> openDeployment(const std::vector<std::string> &paths,
                                            const DeploymentOptions &options);

} // namespace orvik
