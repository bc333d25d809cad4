// The report's page, which the build makes from page/ and puts into the program.
#pragma once

#include <string_view>

namespace orvik {

// HTML with kDataMark where the deployment's data belong; empty when the program was built without it.
std::string_view reportPage();

// Why there is no page, as a sentence; empty when there is one.
std::string_view reportPageMissing();

inline constexpr std::string_view kDataMark = "@ORVIK_DATA@";

} // namespace orvik
