// What happens to long runs: killed, stopped, out of disk, two at once, inputs that go away. The results are the same bytes
// in the end.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "files/files_read.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "host/process/running_program.hpp"
#include "user_error.hpp"

namespace {

using orvik::test::contentOf;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;
using orvik::test::RunningProgram;
namespace fs = std::filesystem;

class Survival : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string sea = directory.file("sea.nc");
    std::string result = directory.file("waves.nc");
    std::string journal = result + ".unfinished";
    std::string log = directory.file("log");

    void simulate(const std::string &path, const std::string &bursts,
                  const std::string &start = "2024-11-05") const {
        ASSERT_EQ(orvik({"simulate", "-o", path, "--bursts", bursts, "--samples", "1024", "--start",
                         start})
                      .exitCode,
                  0);
    }
    std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"process", sea, "-o", result});
        return more;
    }
    // The bytes of a run that nothing happened to.
    std::string undisturbed(const std::vector<std::string> &inputs) const {
        const std::string path = directory.file("undisturbed.nc");
        std::vector<std::string> all{"process", "-o", path, "--quiet"};
        all.insert(all.end(), inputs.begin(), inputs.end());
        EXPECT_EQ(orvik(all).exitCode, 0);
        return contentOf(path);
    }
    [[nodiscard]] std::size_t journalSize() const {
        return fs::exists(journal) ? fs::file_size(journal) : 0;
    }
    // A run that is killed as soon as so much is in its journal [bytes].
    void killOnce(std::size_t written) const {
        RunningProgram program(arguments({"--quiet", "--threads", "1"}), log);
        ASSERT_TRUE(RunningProgram::until([&] { return journalSize() > written; }));
        program.signal(SIGKILL);
        program.wait();
    }
    [[nodiscard]] std::size_t leftovers() const {
        std::size_t count = 0;
        for (const auto &entry : fs::directory_iterator(fs::path(result).parent_path())) {
            count += entry.path().extension() == ".part" ? 1 : 0;
        }
        return count;
    }
};

TEST_F(Survival, TheNumberOfThreadsDoesNotMatter) {
    simulate(sea, "70"); // more than are written at once
    const std::string expected = undisturbed({sea, "--threads", "1"});
    for (const char *threads : {"2", "3", "16"}) {
        ASSERT_EQ(orvik(arguments({"--quiet", "--threads", threads})).exitCode, 0);
        EXPECT_TRUE(contentOf(result) == expected) << threads;
    }
}

TEST_F(Survival, KilledAtAnyInstantItGoesOnToTheSameBytes) {
    simulate(sea, "40");
    const std::string expected = undisturbed({sea});
    int kills = 0;
    for (int wait = 30; !fs::exists(result); wait += 17) {
        RunningProgram program(arguments({"--resume", "--quiet"}), log);
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
        program.signal(SIGKILL);
        const int status = program.wait();
        kills += status == -1 ? 1 : 0;
        EXPECT_TRUE(status == -1 || status == 0) << contentOf(log);
    }
    EXPECT_GE(kills, 2);
    EXPECT_TRUE(contentOf(result) == expected);
    EXPECT_FALSE(fs::exists(journal));
    ASSERT_EQ(orvik(arguments({"--quiet"})).exitCode,
              0); // and what the killed ones left is swept up
    EXPECT_EQ(leftovers(), 0U);
}

TEST_F(Survival, ATornRecordIsDoneAgain) {
    simulate(sea, "12");
    const std::string expected = undisturbed({sea});
    killOnce(100000);
    ASSERT_TRUE(fs::exists(journal));
    fs::resize_file(journal, journalSize() - 1000);
    {
        std::fstream file(journal, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(-5000, std::ios::end);
        file << "garbage";
    }
    ASSERT_EQ(orvik(arguments({"--resume", "--quiet"})).exitCode, 0);
    EXPECT_TRUE(contentOf(result) == expected);
}

// A bit that turned over in a record of the right length.
TEST_F(Survival, ADamagedRecordAndAllAfterItAreDoneAgain) {
    simulate(sea, "12");
    const std::string expected = undisturbed({sea});
    killOnce(200000);
    ASSERT_TRUE(fs::exists(journal));
    {
        std::fstream file(journal, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(60000);
        file << "garbage";
    }
    ASSERT_EQ(orvik(arguments({"--resume", "--quiet"})).exitCode, 0);
    EXPECT_TRUE(contentOf(result) == expected);
}

TEST_F(Survival, ZerosBehindTheLastRecordAreNone) {
    simulate(sea, "12");
    const std::string expected = undisturbed({sea});
    killOnce(200000);
    ASSERT_TRUE(fs::exists(journal));
    fs::resize_file(journal, fs::file_size(journal) + 4096);
    ASSERT_EQ(orvik(arguments({"--resume", "--quiet"})).exitCode, 0);
    EXPECT_TRUE(contentOf(result) == expected);
}

// Each file is opened by the thread that needs it first.
TEST_F(Survival, SeveralFilesAndThreadsSayNothing) {
    std::vector<std::string> call{"process", "-o", result, "--quiet", "--threads", "3"};
    for (const char *day : {"05", "06", "07", "08"}) {
        call.push_back(directory.file(std::string(day) + ".nc"));
        simulate(call.back(), "4", std::string("2024-11-") + day);
    }
    const Outcome outcome = orvik(call);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(Survival, NoMoreThreadsThanAsked) {
    simulate(sea, "60");
    for (const std::size_t threads : {std::size_t{1}, std::size_t{3}}) {
        RunningProgram program(arguments({"--quiet", "--threads", std::to_string(threads)}), log);
        std::size_t most = 0;
        ASSERT_TRUE(RunningProgram::until([&] {
            most = std::max(most, program.threads());
            return program.hasEnded();
        }));
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(most, threads);
    }
}

// A program that cannot go on because nobody takes its output does not get to the next burst.
TEST_F(Survival, ASecondSignalEndsItAtOnce) {
    simulate(sea, "120");
    ASSERT_EQ(mkfifo(log.c_str(), 0600), 0);
    const int pipe = open(log.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(fcntl(pipe, F_SETPIPE_SZ, 4096), 0);
    RunningProgram program(arguments({"--table"}), log);
    int waiting = 0;
    int still = 0; // looks at a pipe that does not fill any more
    ASSERT_TRUE(RunningProgram::until([&] {
        const int before = waiting;
        ioctl(pipe, FIONREAD, &waiting);
        still = waiting > 2048 && waiting == before ? still + 1 : 0;
        return still == 50;
    }));
    program.signal(SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(program.hasEnded());
    program.signal(SIGINT);
    ASSERT_TRUE(RunningProgram::until([&] { return program.hasEnded(); }));
    EXPECT_EQ(program.wait(), -1);
    close(pipe);
}

TEST_F(Survival, StoppedByTheUserItSaysSoAndGoesOn) {
    simulate(sea, "60");
    const std::string expected = undisturbed({sea});
    RunningProgram program(arguments({"--quiet"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 100000; }));
    program.signal(SIGINT);
    ASSERT_EQ(program.wait(), 3);
    EXPECT_TRUE(holds(contentOf(log), "go on with --resume")) << contentOf(log);
    EXPECT_FALSE(fs::exists(result));
    EXPECT_EQ(leftovers(), 0U);
    const Outcome resumed = orvik(arguments({"--resume", "--quiet", "--timing"}));
    ASSERT_EQ(resumed.exitCode, 0) << resumed.errors;
    EXPECT_TRUE(contentOf(result) == expected);
    std::size_t bursts = 0; // of this run
    ASSERT_EQ(std::sscanf(resumed.errors.c_str(), "orvik: %zu bursts in", &bursts), 1)
        << resumed.errors;
    EXPECT_LT(bursts, 60U);
}

// Whatever else the results depend on: the finished bursts would not go with the others.
TEST_F(Survival, OtherOptionsOrDataAreAnotherRun) {
    simulate(sea, "60");
    RunningProgram program(arguments({"--quiet"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 100000; }));
    program.signal(SIGKILL);
    program.wait();
    const std::vector<std::vector<std::string>> others{{"--method", "3"},
                                                       {"--freq-max", "0.5"},
                                                       {"--going-to"},
                                                       {"--set", "heading=10"},
                                                       {"--trough-margin", "80"}};
    for (std::vector<std::string> other : others) {
        other.insert(other.end(), {"--resume", "--quiet"});
        const Outcome outcome = orvik(arguments(other));
        EXPECT_EQ(outcome.exitCode, 1) << other.front();
        EXPECT_TRUE(holds(outcome.errors, "cannot be resumed")) << outcome.errors;
    }
    const std::string before = contentOf(sea);
    simulate(sea, "60", "2024-11-06"); // the same name, other bursts
    const Outcome outcome = orvik(arguments({"--resume", "--quiet"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot be resumed")) << outcome.errors;
    std::ofstream(sea, std::ios::binary) << before;
    EXPECT_EQ(orvik(arguments({"--resume", "--quiet"})).exitCode, 0);
}

// What a killed run leaves beside its output goes with the next one; what is not its own, or still in use, stays.
TEST_F(Survival, OnlyFilesOfDeadRunsAreSweptUp) {
    simulate(sea, "1");
    const pid_t dead = fork();
    if (dead == 0) {
        _exit(0);
    }
    waitpid(dead, nullptr, 0);
    const auto beside = [this](const std::string &name) { return directory.file("." + name); };
    const std::string ofDead = beside("waves.nc." + std::to_string(dead) + ".part");
    const std::string copyOfDead = beside("waves.nc." + std::to_string(dead) + ".copy.part");
    const std::string ofLiving = beside("waves.nc." + std::to_string(getpid()) + ".part");
    const std::string ofOther = beside("other.nc." + std::to_string(dead) + ".part");
    const std::string users = beside("waves.nc.old.part");
    for (const std::string &path : {ofDead, copyOfDead, ofLiving, ofOther, users}) {
        std::ofstream(path) << "x";
    }
    ASSERT_EQ(orvik(arguments({"--quiet"})).exitCode, 0);
    EXPECT_FALSE(fs::exists(ofDead) || fs::exists(copyOfDead));
    EXPECT_TRUE(fs::exists(ofLiving) && fs::exists(ofOther) && fs::exists(users));
}

TEST_F(Survival, ChangedFactsAreAnotherRun) {
    simulate(sea, "60");
    const std::string facts = directory.file("deployment.toml");
    std::ofstream(facts) << "magnetic_declination = 2.0\n";
    RunningProgram program(arguments({"--quiet", "--facts", facts}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 100000; }));
    program.signal(SIGKILL);
    program.wait();
    std::ofstream(facts) << "magnetic_declination = 2.0\nheading = 10.0\n";
    const Outcome other = orvik(arguments({"--resume", "--quiet", "--facts", facts}));
    EXPECT_EQ(other.exitCode, 1);
    EXPECT_TRUE(holds(other.errors, "cannot be resumed")) << other.errors;
    std::ofstream(facts) << "magnetic_declination = 2.0\n";
    EXPECT_EQ(orvik(arguments({"--resume", "--quiet", "--facts", facts})).exitCode, 0);
}

TEST_F(Survival, AFullDiskKeepsWhatIsFinished) {
    simulate(sea, "20");
    const std::string expected = undisturbed({sea});
    const Outcome full = orvik(arguments({"--quiet"}), [] {
        const rlimit limit{300000, 300000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_TRUE(holds(full.errors, "is the disk full?")) << full.errors;
    EXPECT_FALSE(fs::exists(result));
    EXPECT_GT(journalSize(), 100000U);
    EXPECT_EQ(leftovers(), 0U);
    ASSERT_EQ(orvik(arguments({"--resume", "--quiet"})).exitCode, 0);
    EXPECT_TRUE(contentOf(result) == expected);
}

TEST_F(Survival, TwoRunsDoNotWriteTheSameOutput) {
    simulate(sea, "200");
    RunningProgram first(arguments({"--quiet", "--threads", "1"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 0; }));
    const Outcome second = orvik(arguments({"--quiet"}));
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(holds(second.errors, "another run")) << second.errors;
    EXPECT_EQ(first.wait(), 0) << contentOf(log);
}

TEST_F(Survival, TwoRunsDoNotWriteTheSameOutputByALink) {
    simulate(sea, "200");
    const std::string link = directory.file("link.nc");
    fs::create_symlink(result, link);
    RunningProgram first(arguments({"--quiet", "--threads", "1"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 0; }));
    const Outcome second = orvik({"process", sea, "-o", link, "--quiet"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(holds(second.errors, "another run is writing " + link)) << second.errors;
    EXPECT_EQ(first.wait(), 0) << contentOf(log);
}

TEST_F(Survival, AnInputThatVanishesCanComeBack) {
    const std::string folder = directory.file("deployment");
    fs::create_directory(folder);
    simulate(folder + "/a.nc", "30", "2024-11-05");
    simulate(folder + "/b.nc", "30", "2024-11-10");
    simulate(folder + "/c.nc", "30", "2024-11-15");
    const std::string expected = undisturbed({folder});
    RunningProgram program({"process", folder, "-o", result, "--quiet", "--threads", "1"}, log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 50000; }));
    fs::rename(folder + "/c.nc", directory.file("away.nc"));
    EXPECT_EQ(program.wait(), 1);
    EXPECT_TRUE(holds(contentOf(log), "c.nc is no longer there")) << contentOf(log);
    EXPECT_FALSE(fs::exists(result));
    fs::rename(directory.file("away.nc"), folder + "/c.nc");
    const Outcome outcome = orvik({"process", folder, "-o", result, "--quiet", "--resume"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(contentOf(result) == expected);
}

TEST_F(Survival, AnInputThatLosesItsEndCanComeBack) {
    simulate(sea, "200");
    const std::string expected = undisturbed({sea});
    const std::string whole = contentOf(sea);
    RunningProgram program(arguments({"--quiet", "--threads", "1"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 50000; }));
    fs::resize_file(sea, whole.size() / 3);
    EXPECT_EQ(program.wait(), 1);
    EXPECT_TRUE(holds(contentOf(log), sea + " has changed while it was read")) << contentOf(log);
    EXPECT_FALSE(fs::exists(result));
    std::ofstream(sea, std::ios::binary) << whole;
    const Outcome outcome = orvik(arguments({"--quiet", "--resume"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(contentOf(result) == expected);
}

// By an instrument or a logger that still writes to it.
TEST_F(Survival, AnInputThatGrowsIsTold) {
    simulate(sea, "100");
    const std::string expected = undisturbed({sea});
    const std::string whole = contentOf(sea);
    RunningProgram program(arguments({"--quiet", "--threads", "1"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return journalSize() > 50000; }));
    fs::resize_file(sea, whole.size() + 1);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(holds(contentOf(log), sea + " has grown since it was opened")) << contentOf(log);
    EXPECT_TRUE(contentOf(result) == expected);
}

TEST(FilesRead, OnlyWhatLostItsEndIsRefused) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("a.csv");
    std::ofstream(path) << "twelve bytes";
    const ::orvik::FilesRead files({path, directory.file("none")});
    fs::resize_file(path, 13);
    EXPECT_NO_THROW(files.requireNoneShorter());
    EXPECT_EQ(files.longer(), std::vector<std::string>{path});
    fs::resize_file(path, 11);
    EXPECT_THROW(files.requireNoneShorter(), ::orvik::UserError);
    EXPECT_TRUE(files.longer().empty());
    fs::remove(path);
    EXPECT_NO_THROW(files.requireNoneShorter());
}

TEST_F(Survival, TruncatedAndCorruptInputs) {
    simulate(sea, "10");
    const std::string whole = contentOf(sea);
    fs::resize_file(sea, whole.size() / 2);
    const Outcome truncated = orvik(arguments({"--quiet"}));
    EXPECT_EQ(truncated.exitCode, 1);
    EXPECT_TRUE(holds(truncated.errors, sea)) << truncated.errors;
    EXPECT_FALSE(fs::exists(result));
    std::string damaged = whole;
    for (std::size_t i = whole.size() * 2 / 3; i < whole.size() * 2 / 3 + 20000; ++i) {
        damaged[i] = static_cast<char>(damaged[i] ^ 0x5A);
    }
    std::ofstream(sea, std::ios::binary) << damaged;
    const Outcome corrupt = orvik(arguments({"--quiet"}));
    // Either the file cannot be opened, or single bursts are bad and the others come out.
    EXPECT_TRUE(corrupt.exitCode == 1 ||
                (corrupt.exitCode == 0 && holds(corrupt.errors, "has no results")))
        << corrupt.exitCode << corrupt.errors;
}

TEST_F(Survival, ADryRunWritesNothing) {
    simulate(sea, "2");
    const Outcome outcome = orvik(arguments({"--dry-run"}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(holds(outcome.output, "method      4, chosen by what the files hold"))
        << outcome.output;
    EXPECT_FALSE(fs::exists(result));
    EXPECT_FALSE(fs::exists(journal));
}

TEST_F(Survival, ADryRunNamesWhatIsAskedFor) {
    simulate(sea, "1");
    const Outcome plain = orvik(arguments({"--dry-run"}));
    EXPECT_FALSE(holds(plain.output, "\nsource ")) << plain.output;
    const std::string table = result + ".csv";
    std::ofstream(table) << "old\n";
    const Outcome outcome =
        orvik(arguments({"--dry-run", "--source", "pressure", "--csv", table, "--swan",
                         result + ".spc", "--ww3", result + ".ww3", "--json", result + ".json"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    for (const std::string &line :
         {std::string("source      pressure"), "swan        " + result + ".spc",
          "ww3         " + result + ".ww3",
          "csv         " + table + " (is there and would be replaced)",
          "json        " + result + ".json"}) {
        EXPECT_TRUE(holds(outcome.output, "\n" + line + "\n")) << outcome.output;
    }
    EXPECT_EQ(contentOf(table), "old\n");
}

TEST_F(Survival, ProgressIsPlainLinesElsewhereThanOnATerminal) {
    simulate(sea, "201"); // longer than the longest table
    const Outcome outcome = orvik(arguments());
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "orvik: 20 of 201 bursts, "));
    EXPECT_TRUE(holds(outcome.errors, " a second, "));
    EXPECT_EQ(outcome.errors.find('\r'), std::string::npos);
    EXPECT_TRUE(holds(outcome.output, "errors against the truth"));
    EXPECT_FALSE(holds(outcome.output, "  200  2024-11-13"));
    const Outcome table = orvik(arguments({"--table"}));
    EXPECT_TRUE(holds(table.output, "  200  2024-11-13")) << table.output;
    EXPECT_TRUE(table.errors.empty()) << table.errors; // it shows how far the run is
    const Outcome quiet = orvik(arguments({"--quiet"}));
    EXPECT_TRUE(quiet.errors.empty()) << quiet.errors;
    EXPECT_TRUE(quiet.output.empty()) << quiet.output;
}

} // namespace
