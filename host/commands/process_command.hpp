// `orvik process`: a burst file through the library into a result file.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addProcessCommand(CLI::App &app);

} // namespace orvik
