// `orvik explain`: why a burst's numbers are what they are.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addExplainCommand(CLI::App &app);

} // namespace orvik
