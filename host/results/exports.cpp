#include "results/exports.hpp"

#include <array>
#include <cmath>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "files/part_file.hpp"
#include "files/same_file.hpp"
#include "results/csv_file.hpp"
#include "results/json_file.hpp"
#include "results/swan_file.hpp"
#include "results/ww3_file.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct Target {
    const char *option;
    std::string path;
    bool needsTime; // the spectra of a wave model are of a time
    std::unique_ptr<ResultSink> sink;
};

std::vector<Target> openTargets(const ResultReader &results, const ExportPaths &paths) {
    std::vector<Target> targets;
    if (!paths.swan.empty()) {
        targets.push_back(
            {"--swan", paths.swan, true, std::make_unique<SwanFile>(paths.swan, results)});
    }
    if (!paths.ww3.empty()) {
        targets.push_back(
            {"--ww3", paths.ww3, true, std::make_unique<Ww3File>(paths.ww3, results)});
    }
    if (!paths.csv.empty()) {
        targets.push_back(
            {"--csv", paths.csv, false, std::make_unique<CsvFile>(paths.csv, results)});
    }
    if (!paths.json.empty()) {
        targets.push_back(
            {"--json", paths.json, false, std::make_unique<JsonFile>(paths.json, results)});
    }
    return targets;
}

void refuseTimeless(const std::vector<Target> &targets, std::size_t timeless,
                    const ResultReader &results) {
    for (const Target &target : targets) {
        if (target.needsTime && timeless == results.burstCount()) {
            throw UserError(fmt::format("{} has no times, which {} needs: give the bursts a time "
                                        "(orvik process --set time=SECONDS_SINCE_1970) or take "
                                        "--csv or --json",
                                        results.path(), target.option));
        }
    }
}

// A long run would otherwise end without what it was for.
void requireFolder(const std::string &option, const std::string &path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code ignored;
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
        throw UserError(fmt::format("cannot write {} {}: there is no folder {}; make it first",
                                    option, path, folder.string()));
    }
}

} // namespace

void checkExportPaths(const ExportPaths &paths, const std::string &resultFile,
                      const std::vector<std::string> &filesRead) {
    const std::array<std::pair<const char *, std::string>, 4> exports{{{"--swan", paths.swan},
                                                                       {"--ww3", paths.ww3},
                                                                       {"--csv", paths.csv},
                                                                       {"--json", paths.json}}};
    refuseOverwriting("--output", resultFile, filesRead);
    std::vector<std::pair<const char *, std::string>> before{{"the result file", resultFile}};
    for (const auto &[option, path] : exports) {
        if (path.empty()) {
            continue;
        }
        for (const auto &[other, otherPath] : before) {
            if (isSameFile(path, otherPath)) {
                throw UsageError(fmt::format("{} and {} are the same file {}: give one of them "
                                             "another name",
                                             other, option, path));
            }
        }
        refuseOverwriting(option, path, filesRead);
        requireFolder(option, path);
        checkTarget(path);
        before.emplace_back(option, path);
    }
}

std::vector<std::string> exportResults(const std::string &resultFile, const ExportPaths &paths) {
    if (!paths.any()) {
        return {};
    }
    checkExportPaths(paths, resultFile);
    const ResultReader results(resultFile);
    const std::vector<Target> targets = openTargets(results, paths);
    std::size_t timeless = 0;
    for (std::size_t row = 0; row < results.burstCount(); ++row) {
        const StoredBurst burst = results.read(row);
        const bool hasTime = std::isfinite(burst.startTime);
        timeless += hasTime ? 0 : 1;
        for (const Target &target : targets) {
            if (hasTime || !target.needsTime) {
                target.sink->append(burst);
            }
        }
    }
    refuseTimeless(targets, timeless, results);
    std::vector<std::string> notes;
    for (const Target &target : targets) {
        target.sink->commit();
        if (target.needsTime && timeless > 0) {
            notes.push_back(fmt::format("{} of {} bursts have no time and are not in {}", timeless,
                                        results.burstCount(), target.path));
        }
    }
    return notes;
}

} // namespace orvik
