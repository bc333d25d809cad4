#include "process/follow.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "burst/deployment.hpp"
#include "burst/joined_source.hpp"
#include "process/journal.hpp"
#include "process/stop_request.hpp"
#include "results/result_reader.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

class FolderWatch {
public:
    explicit FolderWatch(const std::string &folder)
        : folder_(folder), handle_(inotify_init1(IN_CLOEXEC)) {
        if (handle_ < 0 || inotify_add_watch(handle_, folder.c_str(),
                                             IN_MOVED_TO | IN_MOVE_SELF | IN_ONLYDIR) < 0) {
            const std::string reason = std::strerror(errno);
            close(handle_);
            throw UserError(
                fmt::format("cannot watch {}: {}; --follow takes a folder", folder, reason));
        }
    }
    ~FolderWatch() { close(handle_); }
    FolderWatch(const FolderWatch &) = delete;
    FolderWatch &operator=(const FolderWatch &) = delete;

    [[nodiscard]] std::vector<std::string> present() const {
        std::vector<std::string> files;
        for (const auto &entry : std::filesystem::directory_iterator(folder_)) {
            if (entry.is_regular_file() && isBurstFileName(entry.path())) {
                files.push_back(entry.path().string());
            }
        }
        std::sort(files.begin(), files.end());
        return files;
    }

    // Files that arrived; none after a signal or a while, since a signal may come just before the waiting begins.
    std::vector<std::string> wait() const {
        constexpr int kWhile = 1000; // [ms]
        pollfd ready{handle_, POLLIN, 0};
        if (poll(&ready, 1, kWhile) <= 0) {
            return {};
        }
        alignas(inotify_event) std::array<char, 65536> buffer{};
        const ssize_t length = read(handle_, buffer.data(), buffer.size());
        std::vector<std::string> files;
        for (ssize_t at = 0; at < length;) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                return present();
            }
            if ((event.mask & (IN_IGNORED | IN_MOVE_SELF)) != 0) {
                throw UserError(fmt::format("{} is no longer there: bring it back and go on with "
                                            "--resume",
                                            folder_));
            }
            const std::string name =
                event.len > 0 ? std::string(buffer.data() + at + sizeof event) : std::string();
            const auto path = std::filesystem::path(folder_) / name;
            if (!name.empty() && isBurstFileName(path)) {
                files.push_back(path.string());
            }
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
        return files;
    }

private:
    std::string folder_;
    int handle_;
};

class Follower {
public:
    explicit Follower(const FollowRun &run) : run_(run) {}

    // Of a file that arrives again only bursts beyond those that are done are new.
    void take(const std::string &path) {
        const std::string name = std::filesystem::path(path).filename().string();
        if (isOutput(path)) {
            return;
        }
        std::unique_ptr<BurstSource> source;
        Plan plan;
        try {
            source = run_.open(path);
            plan = planOf(*source);
        } catch (const UsageError &error) {
            if (!plan_) {
                throw; // no file was good with these options yet
            }
            leaveOut(path, error.what());
            return;
        } catch (const UserError &error) {
            leaveOut(path, error.what());
            return;
        } catch (const std::bad_alloc &) {
            leaveOut(path, "it needs more memory than there is");
            return;
        }
        if (!plan_) {
            start(*source, plan); // what fails here would for every file
        }
        completePlace(facts_.instrument, source->instrument());
        processFile(*source, name);
        if (fresh_) {
            writer_->publish();
            fresh_ = false;
        }
    }

    void finish() {
        if (writer_) {
            writer_->commit();
        }
    }

private:
    [[nodiscard]] bool isOutput(const std::string &path) const {
        return std::filesystem::weakly_canonical(path) ==
               std::filesystem::weakly_canonical(run_.output);
    }

    void leaveOut(const std::string &path, const std::string &reason) const {
        if (finished_.count(std::filesystem::path(path).filename().string()) == 0) {
            run_.onBadFile(path, reason);
        }
    }

    // A file for which anything but its name is different is not of this deployment.
    Plan planOf(const BurstSource &source) const {
        Plan plan = run_.plan(source);
        plan.layout.attributes["burst_file"] = "files of a folder, as they arrived";
        plan.layout.attributes.erase("burst_file_sha256");
        if (plan_) {
            requireSame(plan, commonFactsOf(source));
        }
        return plan;
    }

    void requireSame(Plan &plan, const CommonFacts &facts) const {
        std::string differs = difference(facts_, facts);
        plan.instrument = plan_->instrument; // of what else these tell, rounding alone is different
        plan.layout.attributes["instrument"] = plan_->layout.attributes.at("instrument");
        if (differs.empty() && identityOf(plan) != identityOf(*plan_)) {
            differs = "the way it would be processed";
        }
        if (!differs.empty()) {
            throw UserError("it is of another instrument or setting than the files before it: " +
                            differs + " differs");
        }
    }

    void start(const BurstSource &source, const Plan &plan) {
        plan_ = std::make_unique<Plan>(plan);
        facts_ = commonFactsOf(source);
        run_.onStart(*plan_);
        journal_ = std::make_unique<Journal>(run_.output, identityOf(plan), run_.resume);
        writer_ = std::make_unique<ResultFileWriter>(run_.output, plan.layout);
        runner_ = std::make_unique<BurstRunner>(source.instrument(), plan.choices);
        for (std::size_t i = 0; i < journal_->rowCount(); ++i) {
            const JournalRow kept = journal_->row(i);
            doneOf_[kept.file] = kept.row.burst + 1;
            append(kept.row);
        }
    }

    void processFile(const BurstSource &source, const std::string &name) {
        std::size_t &done = doneOf_[name];
        for (; done < source.burstCount() && !StopRequest::wanted(); ++done) {
            ResultRow row;
            row.burst = done;
            try {
                row.startTime = source.startTime(done);
                const Burst burst = source.readBurst(done);
                row.facts = factsOf(burst, source.instrument());
                row.truth = source.readTruth(done);
                row.result = runner_->run(burst);
            } catch (const UserError &error) {
                row.result.reason = error.what();
            } catch (const std::bad_alloc &) {
                row.result.reason = "it needs more memory than there is";
            }
            journal_->append({row, name});
            append(std::move(row));
        }
        if (done == source.burstCount()) {
            finished_.insert(name);
        }
    }

    // Results number bursts through all files: those of a file alone would name several bursts.
    void append(ResultRow row) {
        row.burst = rows_++;
        writer_->append(row);
        fresh_ = true;
        run_.onRow(row);
    }

    const FollowRun &run_;
    std::unique_ptr<Plan> plan_;
    CommonFacts facts_; // of the files so far
    std::unique_ptr<Journal> journal_;
    std::unique_ptr<ResultFileWriter> writer_;
    std::unique_ptr<BurstRunner> runner_;
    std::set<std::string> finished_;            // files whose bursts are all done
    std::map<std::string, std::size_t> doneOf_; // bursts of a file, those of an earlier run too
    std::size_t rows_ = 0;
    bool fresh_ = false; // rows that the result file does not show yet
};

// The results may lie in the folder, but not in the place of a burst file.
void refuseBurstsAsOutput(const FollowRun &run) {
    if (!std::filesystem::exists(run.output)) {
        return;
    }
    try {
        const ResultReader results(run.output);
    } catch (const UserError &) {
        throw UsageError(
            fmt::format("--output {} is there and holds no results: give the results another name",
                        run.output));
    }
}

} // namespace

void follow(const FollowRun &run) {
    refuseBurstsAsOutput(run);
    const StopRequest stop;
    const FolderWatch watch(run.folder); // before the first look, so that nothing slips in between
    Follower follower(run);
    std::vector<std::string> files = watch.present();
    while (!StopRequest::wanted()) {
        for (const std::string &file : files) {
            if (!StopRequest::wanted()) {
                follower.take(file);
            }
        }
        if (!StopRequest::wanted()) {
            files = watch.wait();
        }
    }
    follower.finish();
}

} // namespace orvik
