#include "results/exports.hpp"

#include <array>
#include <cmath>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

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

std::string wholePath(const std::string &path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path), ignored).string();
}

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

} // namespace

void checkExportPaths(const ExportPaths &paths, const std::string &resultFile) {
    const std::array<std::pair<const char *, std::string>, 5> files{
        {{"the result file", resultFile},
         {"--swan", paths.swan},
         {"--ww3", paths.ww3},
         {"--csv", paths.csv},
         {"--json", paths.json}}};
    for (std::size_t i = 0; i < files.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const bool given = !files[i].second.empty() && !files[j].second.empty();
            if (given && wholePath(files[i].second) == wholePath(files[j].second)) {
                throw UsageError(fmt::format("{} and {} are the same file {}: give one of them "
                                             "another name",
                                             files[j].first, files[i].first, files[i].second));
            }
        }
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
