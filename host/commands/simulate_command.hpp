// `orvik simulate`: a burst file of a simulated deployment.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addSimulateCommand(CLI::App &app);

} // namespace orvik
