// `orvik init`: what data tell of a deployment and what they lack, as a file to fill in.
#pragma once

namespace CLI {
class App;
}

namespace orvik {

void addInitCommand(CLI::App &app);

} // namespace orvik
