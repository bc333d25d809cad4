// `orvik show`: what a burst file or a result file holds, at a glance.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addShowCommand(CLI::App &app);

} // namespace orvik
