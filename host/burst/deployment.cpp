#include "burst/deployment.hpp"

#include <algorithm>
#include <filesystem>

#include "burst/continuous_layout.hpp"
#include "burst/csv_layout.hpp"
#include "burst/facts_file.hpp"
#include "burst/fields_layout.hpp"
#include "burst/joined_source.hpp"
#include "burst/layout_source.hpp"
#include "lower_case.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

std::unique_ptr<BurstSource> openBurst(const std::string &path, const DeploymentOptions &options) {
    return std::make_unique<BurstFileReader>(path, options.overrides, options.wanted);
}

std::unique_ptr<BurstSource> openFields(const std::string &path, const DeploymentOptions &options) {
    return std::make_unique<LayoutSource>(openFieldsLayout(path, options.wanted),
                                          options.overrides);
}

std::unique_ptr<BurstSource> openContinuous(const std::string &path,
                                            const DeploymentOptions &options) {
    return std::make_unique<LayoutSource>(
        openContinuousLayout(path, options.wanted, options.burstLength), options.overrides);
}

std::unique_ptr<BurstSource> openCsv(const std::string &path, const DeploymentOptions &options) {
    checkOverrides(options.overrides);
    CsvChoices choices{options.wanted, options.burstLength, std::nullopt};
    if (const auto origin = overrideNumbers(options.overrides, "time")) {
        choices.origin = origin->front();
    }
    return std::make_unique<LayoutSource>(openCsvLayout(path, choices), options.overrides);
}

struct Layout {
    const char *name;
    std::unique_ptr<BurstSource> (*open)(const std::string &path, const DeploymentOptions &options);
    bool cuts; // whether --burst-length has a meaning
};

constexpr Layout kBurst{"burst", openBurst, false};
constexpr Layout kFields{"fields", openFields, false};
constexpr Layout kContinuous{"continuous", openContinuous, true};
constexpr Layout kCsv{"csv", openCsv, true};
constexpr Layout kLayouts[] = {kBurst, kFields, kContinuous, kCsv};

Layout recognised(const std::string &path) {
    if (endingOf(path) == ".csv") {
        return kCsv;
    }
    const NcReader file(path);
    if (isFieldsLayout(file)) {
        return kFields;
    }
    return !file.dimensionLength("sample") && isContinuousLayout(file) ? kContinuous : kBurst;
}

std::vector<std::string> filesOf(const std::filesystem::path &folder) {
    std::vector<std::string> found;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file() && isBurstFileName(entry.path())) {
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

Layout layoutOf(const std::string &path, const DeploymentOptions &options) {
    if (options.layout.empty()) {
        return recognised(path);
    }
    const auto *named =
        std::find_if(std::begin(kLayouts), std::end(kLayouts),
                     [&](const Layout &layout) { return options.layout == layout.name; });
    if (named == std::end(kLayouts)) {
        std::string names;
        for (const std::string &name : layoutNames()) {
            names += (names.empty() ? "" : ", ") + name;
        }
        throw UsageError("--layout " + options.layout + ": no such layout; known are " + names);
    }
    return *named;
}

std::unique_ptr<BurstSource> openFile(const std::string &path, const DeploymentOptions &options) {
    const Layout layout = layoutOf(path, options);
    if (options.burstLength && !layout.cuts) {
        throw UsageError("--burst-length is for what was recorded without a pause; the bursts of " +
                         path + " have their lengths");
    }
    return layout.open(path, options);
}

} // namespace

std::vector<std::string> layoutNames() {
    std::vector<std::string> names;
    for (const Layout &layout : kLayouts) {
        names.emplace_back(layout.name);
    }
    return names;
}

std::string endingOf(const std::filesystem::path &path) {
    return lowerCase(path.extension().string());
}

bool isBurstFileName(const std::filesystem::path &path) {
    const std::string ending = endingOf(path);
    return !path.filename().string().starts_with(".") &&
           (ending == ".nc" || ending == ".nc4" || ending == ".csv");
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
                                            const DeploymentOptions &given) {
    const std::vector<std::string> files = deploymentFiles(paths);
    checkOverrides(given.overrides);
    DeploymentOptions options = given;
    if (!options.factsFile.empty()) {
        options.overrides.addFrom(readFacts(options.factsFile));
    }
    if (files.size() == 1) {
        return openFile(files.front(), options);
    }
    return std::make_unique<JoinedSource>(
        files, [options](const std::string &path) { return openFile(path, options); });
}

} // namespace orvik
