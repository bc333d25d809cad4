#include "results/exports.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numeric>

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
    bool needsTime; // wave models read spectra from one time to the next
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

// Rows of a result file.
struct Rows {
    std::vector<std::size_t> all;   // as they are there
    std::vector<std::size_t> timed; // in time order; of those with the same time the first
    std::size_t timeless = 0;

    explicit Rows(const std::vector<double> &times) : all(times.size()) {
        std::iota(all.begin(), all.end(), std::size_t{0});
        std::copy_if(all.begin(), all.end(), std::back_inserter(timed),
                     [&](std::size_t row) { return std::isfinite(times[row]); });
        timeless = all.size() - timed.size();
        std::stable_sort(timed.begin(), timed.end(), [&](std::size_t left, std::size_t right) {
            return times[left] < times[right];
        });
        timed.erase(std::unique(timed.begin(), timed.end(),
                                [&](std::size_t left, std::size_t right) {
                                    return times[left] == times[right];
                                }),
                    timed.end());
    }
    [[nodiscard]] std::size_t repeated() const { return all.size() - timeless - timed.size(); }
};

void append(const ResultReader &results, const std::vector<std::size_t> &rows,
            const std::vector<Target> &targets, bool needTime) {
    if (std::none_of(targets.begin(), targets.end(),
                     [&](const Target &target) { return target.needsTime == needTime; })) {
        return;
    }
    for (const std::size_t row : rows) {
        const StoredBurst burst = results.read(row);
        for (const Target &target : targets) {
            if (target.needsTime == needTime) {
                target.sink->append(burst);
            }
        }
    }
}

void refuseTimeless(const std::vector<Target> &targets, const Rows &rows,
                    const ResultReader &results) {
    for (const Target &target : targets) {
        if (target.needsTime && rows.timed.empty()) {
            throw UserError(fmt::format("{} has no times, which {} needs: give the bursts a time "
                                        "(orvik process --set time=YYYY-MM-DDTHH:MM:SSZ) or take "
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
    const std::string unfinished = unfinishedName(resultFile);
    refuseOverwriting("--output", resultFile, filesRead);
    refuseOverwriting("what is kept for --resume in", unfinished, filesRead);
    std::vector<std::pair<const char *, std::string>> before{
        {"the result file", resultFile}, {"what is kept for --resume", unfinished}};
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
    const Rows rows(results.times());
    refuseTimeless(targets, rows, results);
    append(results, rows.timed, targets, true);
    append(results, rows.all, targets, false);
    std::vector<std::string> notes;
    for (const Target &target : targets) {
        target.sink->commit();
        if (target.needsTime && rows.timeless > 0) {
            notes.push_back(fmt::format("{} of {} bursts have no time and are not in {}",
                                        rows.timeless, results.burstCount(), target.path));
        }
        if (target.needsTime && rows.repeated() > 0) {
            notes.push_back(fmt::format("{} of {} bursts have the time of another one and are not "
                                        "in {}",
                                        rows.repeated(), results.burstCount(), target.path));
        }
    }
    return notes;
}

} // namespace orvik
