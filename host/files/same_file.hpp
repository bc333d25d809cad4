// Outputs that would take the place of what they are made from.
#pragma once

#include <string>
#include <vector>

namespace orvik {

// Links and other spellings of a name count, those of files that are yet to be written too.
bool isSameFile(const std::string &one, const std::string &other);

// Throws UsageError, naming `option` and the file, when `output` is one of the files that are read.
void refuseOverwriting(const std::string &option, const std::string &output,
                       const std::vector<std::string> &filesRead);

} // namespace orvik
