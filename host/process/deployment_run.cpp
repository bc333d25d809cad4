#include "process/deployment_run.hpp"

#include <atomic>
#include <chrono>
#include <memory>
#include <new>
#include <optional>
#include <thread>
#include <tuple>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <fmt/format.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/flow_graph.h>
#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include "netcdf/hdf5_messages.hpp"
#include "process/journal.hpp"
#include "process/stop_request.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct Work {
    ResultRow row;
    std::optional<Burst> burst; // nothing: it could not be read
};

// A burst that cannot be read is one bad burst, not the end of the deployment, as long as its files are what they were.
std::shared_ptr<Work> readWork(const BurstSource &source, const FilesRead &inputs,
                               std::size_t index) {
    auto work = std::make_shared<Work>();
    work->row.burst = index;
    try {
        work->row.startTime = source.startTime(index);
        work->burst = source.readBurst(index);
        work->row.truth = source.readTruth(index);
        work->row.facts = factsOf(*work->burst, source.instrument());
    } catch (const UserError &error) {
        inputs.requireUntouched();
        work->burst.reset();
        work->row.result.reason = error.what();
    } catch (const std::bad_alloc &) {
        work->burst.reset();
        work->row.result.reason = "it needs more memory than there is";
    }
    return work;
}

// Adds the time that it lives to a sum that several threads share.
class Stopwatch {
public:
    explicit Stopwatch(std::atomic<double> &sum) : sum_(sum) {}
    ~Stopwatch() { sum_.fetch_add(std::chrono::duration<double>(Clock::now() - start_).count()); }
    Stopwatch(const Stopwatch &) = delete;
    Stopwatch &operator=(const Stopwatch &) = delete;

private:
    using Clock = std::chrono::steady_clock;
    std::atomic<double> &sum_;
    Clock::time_point start_ = Clock::now();
};

class Deployment {
public:
    Deployment(const BurstSource &source, const Plan &plan, const DeploymentRun &run)
        : source_(source), plan_(plan), run_(run),
          journal_(run.output, identityOf(plan), run.resume), writer_(run.output, plan.layout),
          progress_(run.progress, source.burstCount(), journal_.rowCount()) {}

    void takeFinished() {
        for (; next_ < journal_.rowCount(); ++next_) {
            keep(journal_.row(next_).row);
        }
    }

    void run() {
        const unsigned threads =
            run_.threads > 0 ? run_.threads : std::max(1U, std::thread::hardware_concurrency());
        const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
        tbb::task_arena arena(static_cast<int>(threads));
        arena.execute([this, threads] { runThreads(threads); });
    }

    // Not every reader notices that a file was cut under it: what was read since cannot be told from what was before.
    void requireWholeInputs() {
        try {
            run_.inputs.requireNoneShorter();
        } catch (const UserError &) {
            journal_.remove();
            throw;
        }
    }

    void finish() {
        writer_.commit();
        journal_.remove();
    }

    [[nodiscard]] std::size_t finished() const { return finished_; }
    [[nodiscard]] RunOutcome outcome() const {
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start_;
        return {bad_,
                {reading_, processing_, writing_, wall.count(), finished_ - journal_.rowCount()}};
    }

private:
    using Runners = tbb::enumerable_thread_specific<std::unique_ptr<BurstRunner>>;
    using Item = std::shared_ptr<Work>;

    // Reading and writing both go through the netCDF library, which serves one thread at a time: each burst that is
    // written makes room for the next one, and while one thread does that, the others have bursts in store.
    void runThreads(unsigned threads) {
        namespace flow = tbb::flow;
        Runners runners(
            [this] { return std::make_unique<BurstRunner>(source_.instrument(), plan_.choices); });
        flow::graph graph;
        using Files = flow::multifunction_node<Item, std::tuple<Item>>;
        Files files(graph, flow::serial, [this](const Item &work, Files::output_ports_type &read) {
            silenceHdf5InThisThread();
            if (work) {
                write(*work);
            }
            if (const Item next = readNext()) {
                std::get<0>(read).try_put(next);
            }
        });
        flow::function_node<Item, Item> processor(graph, flow::unlimited,
                                                  [this, &runners](const Item &work) {
                                                      process(*work, *runners.local());
                                                      return work;
                                                  });
        flow::sequencer_node<Item> order(
            graph, [first = next_](const Item &work) { return work->row.burst - first; });
        flow::make_edge(flow::output_port<0>(files), processor);
        flow::make_edge(processor, order);
        flow::make_edge(order, files);
        // In memory at once; profiles can be large.
        const unsigned burstsPerThread = source_.instrument().profile ? 1 : 4;
        for (unsigned i = 0; i < burstsPerThread * threads; ++i) {
            files.try_put({});
        }
        graph.wait_for_all();
    }

    Item readNext() {
        if (next_ == source_.burstCount() || StopRequest::wanted()) {
            return {};
        }
        const Stopwatch watch(reading_);
        return readWork(source_, run_.inputs, next_++);
    }

    void process(Work &work, BurstRunner &runner) {
        const Stopwatch watch(processing_);
        if (work.burst) {
            work.row.result = runner.run(*work.burst);
            work.burst.reset();
        }
    }

    void write(const Work &work) {
        const Stopwatch watch(writing_);
        journal_.append({work.row, {}});
        keep(work.row);
        progress_.advance();
    }

    void keep(const ResultRow &row) {
        writer_.append(row);
        if (!row.result.processed) {
            bad_.push_back({row.burst, row.result.reason});
        }
        ++finished_;
        if (!row.result.notes.empty()) {
            progress_.clear(); // they may be shown
        }
        run_.onRow(row);
    }

    const BurstSource &source_;
    const Plan &plan_;
    const DeploymentRun &run_;
    Journal journal_;
    ResultFileWriter writer_;
    Progress progress_;
    std::size_t next_ = 0;
    std::size_t finished_ = 0;
    std::vector<BadBurst> bad_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::atomic<double> reading_ = 0.0;
    std::atomic<double> processing_ = 0.0;
    std::atomic<double> writing_ = 0.0;
};

// Whichever thread is free reads the next burst, and each has a heap of its own, which by default keeps the room of the
// largest series that it ever held.
void giveBackLargeBlocks() {
#ifdef __GLIBC__
    constexpr int kLarge = 4 << 20; // [bytes] less than the series of a long burst of profiles
    mallopt(M_MMAP_THRESHOLD, kLarge);
    mallopt(M_TRIM_THRESHOLD, 2 * kLarge);
#endif
}

} // namespace

RunOutcome runDeployment(const BurstSource &source, const Plan &plan, const DeploymentRun &run) {
    giveBackLargeBlocks();
    const StopRequest stop;
    Deployment deployment(source, plan, run);
    deployment.takeFinished();
    deployment.run();
    if (deployment.finished() < source.burstCount()) {
        throw Stopped(fmt::format("stopped: {} of {} bursts are done and kept; go on with --resume",
                                  deployment.finished(), source.burstCount()));
    }
    deployment.requireWholeInputs();
    deployment.finish();
    return deployment.outcome();
}

} // namespace orvik
