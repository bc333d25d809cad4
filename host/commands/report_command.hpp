// `orvik report`: a result file as a page with pictures.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addReportCommand(CLI::App &app);

} // namespace orvik
