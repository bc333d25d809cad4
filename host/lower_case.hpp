// Words of files that capitals do not tell apart.
#pragma once

#include <algorithm>
#include <cctype>
#include <string>

namespace orvik {

// Letters of ASCII only.
inline std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

} // namespace orvik
