// Text files that appear under their name only when they are complete.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvik {

// Writes the parts one after the other under a temporary name beside `path`, then renames. Throws WriteError and leaves
// nothing behind when that fails.
void writePageFile(const std::string &path, const std::vector<std::string_view> &parts);

} // namespace orvik
