// Runs the host program as a user would.
#pragma once

#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvik::test {

struct Outcome {
    int exitCode = -1; // -1: ended by a signal
    std::string output;
    std::string errors;
};

inline std::string contentOf(const std::string &path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// `prepare` runs in the new process, before the program.
inline Outcome orvik(
    std::vector<std::string> arguments, const std::function<void()> &prepare = [] {}) {
    arguments.insert(arguments.begin(), ORVIK_PROGRAM);
    char outputName[] = "/tmp/orvik-out-XXXXXX";
    char errorName[] = "/tmp/orvik-err-XXXXXX";
    const int outputFile = mkstemp(outputName);
    const int errorFile = mkstemp(errorName);
    const pid_t child = fork();
    if (child == 0) {
        dup2(outputFile, STDOUT_FILENO);
        dup2(errorFile, STDERR_FILENO);
        prepare();
        std::vector<char *> argv;
        for (std::string &argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        execv(argv.front(), argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(outputFile);
    close(errorFile);
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(outputName),
                    contentOf(errorName)};
    std::remove(outputName);
    std::remove(errorName);
    return outcome;
}

inline bool holds(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

} // namespace orvik::test
