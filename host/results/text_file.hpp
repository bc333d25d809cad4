// A text file that appears under its name when it is complete.
#pragma once

#include <fstream>
#include <string>

namespace orvik {

class TextFile {
public:
    // Throws WriteError, naming the file, when it cannot be written; so do the others.
    explicit TextFile(const std::string &path);
    ~TextFile();
    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    void write(const std::string &text);
    void commit();

private:
    void check() const;

    std::string path_;
    std::string temporaryPath_;
    std::ofstream stream_;
};

// "2026-03-01T12:30:00Z", or nothing when the time is not known.
std::string isoTime(double secondsSince1970);

} // namespace orvik
