// `orvik convert`: results for other programs.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addConvertCommand(CLI::App &app);

} // namespace orvik
