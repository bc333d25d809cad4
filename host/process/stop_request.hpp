// Ctrl-C and SIGTERM as a wish to stop at the next burst instead of in the middle of one.
#pragma once

namespace orvik {

// While it lives, the signals only set a flag. A second signal ends the program at once.
class StopRequest {
public:
    StopRequest();
    ~StopRequest();
    StopRequest(const StopRequest &) = delete;
    StopRequest &operator=(const StopRequest &) = delete;

    [[nodiscard]] static bool wanted();
};

} // namespace orvik
