#include "burst/deployment.hpp"

#include <algorithm>
#include <filesystem>

#include "burst/joined_source.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

using Opener = std::unique_ptr<BurstSource> (*)(const std::string &path,
                                                const DeploymentOptions &options);

std::unique_ptr<BurstSource> openBurstFile(const std::string &path,
                                           const DeploymentOptions &options) {
    return std::make_unique<BurstFileReader>(path, options.overrides, options.wanted);
}

struct Layout {
    const char *name;
    Opener open;
};

constexpr Layout kLayouts[] = {{"burst", openBurstFile}};

std::vector<std::string> filesOf(const std::filesystem::path &folder) {
    std::vector<std::string> found;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (entry.is_regular_file() &&
            (extension == ".nc" || extension == ".nc4" || extension == ".csv")) {
            found.push_back(entry.path().string());
        }
    }
    std::sort(found.begin(), found.end());
    if (found.empty()) {
        throw UserError("the folder " + folder.string() +
                        " holds no burst files: none ends in .nc, .nc4 or .csv");
    }
    return found;
}

const Layout &layoutOf(const DeploymentOptions &options) {
    for (const Layout &layout : kLayouts) {
        if (options.layout.empty() || options.layout == layout.name) {
            return layout;
        }
    }
    throw UsageError("--layout " + options.layout + ": no such layout");
}

} // namespace

std::vector<std::string> layoutNames() {
    std::vector<std::string> names;
    for (const Layout &layout : kLayouts) {
        names.emplace_back(layout.name);
    }
    return names;
}

std::vector<std::string> deploymentFiles(const std::vector<std::string> &paths) {
    std::vector<std::string> files;
    for (const std::string &path : paths) {
        if (std::filesystem::is_directory(path)) {
            const auto inside = filesOf(path);
            files.insert(files.end(), inside.begin(), inside.end());
        } else {
            files.push_back(path);
        }
    }
    if (files.empty()) {
        throw UsageError("no burst file is named");
    }
    return files;
}

std::unique_ptr<BurstSource> openDeployment(const std::vector<std::string> &paths,
                                            const DeploymentOptions &options) {
    const std::vector<std::string> files = deploymentFiles(paths);
    const Layout &layout = layoutOf(options);
    if (files.size() == 1) {
        return layout.open(files.front(), options);
    }
    return std::make_unique<JoinedSource>(
        files, [options, &layout](const std::string &path) { return layout.open(path, options); });
}

} // namespace orvik
