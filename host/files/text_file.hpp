// A text file that appears under its name when it is complete.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "files/part_file.hpp"

namespace orvik {

class TextFile {
public:
    // Throws WriteError, naming the file, when it cannot be written; so do the others.
    explicit TextFile(const std::string &path);

    void write(std::string_view text);
    void commit();

private:
    void check() const;

    PartFile part_;
    std::ofstream stream_;
};

} // namespace orvik
