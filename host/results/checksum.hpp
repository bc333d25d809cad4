// Checksums that tell whether a file is the one that results were made of.
#pragma once

#include <string>
#include <vector>

namespace orvik {

// SHA-256 of a file's bytes in hexadecimal, as `sha256sum` prints it; the file is read once, in pieces. Throws UserError
// when it cannot be read.
std::string sha256Of(const std::string &path);

// "storm.nc 9f86d0..., swell.nc 60303a...": names without folders, in order.
std::string checksumsOf(const std::vector<std::string> &paths);

} // namespace orvik
