#include "process/stop_request.hpp"

#include <csignal>

namespace orvik {

namespace {

volatile std::sig_atomic_t stopWanted = 0;

extern "C" void noteStop(int signal) {
    stopWanted = 1;
    std::signal(signal, SIG_DFL);
}

} // namespace

StopRequest::StopRequest() {
    stopWanted = 0;
    std::signal(SIGINT, noteStop);
    std::signal(SIGTERM, noteStop);
}

StopRequest::~StopRequest() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

bool StopRequest::wanted() { return stopWanted != 0; }

} // namespace orvik
