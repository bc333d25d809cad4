// A journal's row as bytes and back.
#pragma once

#include <string>

#include "process/journal.hpp"

namespace orvik {

std::string bytesOfRow(const JournalRow &row);

// Throws std::exception when the bytes are not a row's.
JournalRow rowOfBytes(const std::string &bytes);

} // namespace orvik
