// Why a burst's numbers are what they are, in plain words.
#pragma once

#include <string>

#include "results/result_reader.hpp"

namespace orvik {

// One screen of text. What the file does not tell is left out.
std::string explanationOf(const ResultReader &results, const StoredBurst &burst);

} // namespace orvik
