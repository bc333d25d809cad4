#include "files/text_file.hpp"

#include <cerrno>
#include <cstring>

#include "user_error.hpp"

namespace orvik {

TextFile::TextFile(const std::string &path) : part_(path), stream_(part_.path(), std::ios::binary) {
    if (!stream_) {
        throw WriteError("cannot create " + path + ": " + std::strerror(errno) +
                         " (does the directory exist, and may you write there?)");
    }
}

void TextFile::check() const {
    if (!stream_) {
        throw WriteError("cannot write " + part_.target() + ": " + std::strerror(errno) +
                         " (is the disk full?)");
    }
}

void TextFile::write(std::string_view text) {
    stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
    check();
}

void TextFile::commit() {
    stream_.close();
    check();
    part_.commit();
}

} // namespace orvik
