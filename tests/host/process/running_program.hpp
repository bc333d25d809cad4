// The host program running beside the test, to be stopped, killed and waited for.
#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvik::test {

class RunningProgram {
public:
    // Its output and messages go to `log`.
    RunningProgram(std::vector<std::string> arguments, const std::string &log) : pid_(fork()) {
        if (pid_ != 0) {
            return;
        }
        const int file = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
        arguments.insert(arguments.begin(), ORVIK_PROGRAM);
        std::vector<char *> argv;
        for (std::string &argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        execv(argv.front(), argv.data());
        _exit(127);
    }
    ~RunningProgram() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    RunningProgram(const RunningProgram &) = delete;
    RunningProgram &operator=(const RunningProgram &) = delete;

    void signal(int number) const { kill(pid_, number); }

    // Whether it is gone; its end is then known to wait().
    [[nodiscard]] bool hasEnded() {
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
        return info.si_pid == pid_;
    }

    [[nodiscard]] std::size_t threads() const {
        std::error_code gone;
        const auto tasks = "/proc/" + std::to_string(pid_) + "/task";
        const auto all = std::filesystem::directory_iterator(tasks, gone);
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    // From now on its files cannot grow beyond this.
    void limitFiles(rlim_t bytes) const {
        const rlimit limit{bytes, bytes};
        prlimit(pid_, RLIMIT_FSIZE, &limit, nullptr);
    }

    // Exit code, or -1 when a signal ended it.
    int wait() {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Waits until something is so; false when it is not within a minute.
    static bool until(const std::function<bool()> &isSo) {
        for (int i = 0; i < 6000; ++i) {
            if (isSo()) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

private:
    pid_t pid_;
};

} // namespace orvik::test
