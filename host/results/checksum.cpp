#include "results/checksum.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include <openssl/evp.h>

#include "user_error.hpp"

namespace orvik {

namespace {

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};

class Sha256 {
public:
    Sha256() : context_(EVP_MD_CTX_new()) {
        must(context_ != nullptr && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1);
    }
    void add(const unsigned char *bytes, std::size_t count) {
        must(EVP_DigestUpdate(context_.get(), bytes, count) == 1);
    }
    std::string hexadecimal() {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned length = 0;
        must(EVP_DigestFinal_ex(context_.get(), digest.data(), &length) == 1);
        constexpr const char *kDigits = "0123456789abcdef";
        std::string text;
        for (unsigned i = 0; i < length; ++i) {
            text += kDigits[digest[i] / 16];
            text += kDigits[digest[i] % 16];
        }
        return text;
    }

private:
    struct Free {
        void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
    };

    static void must(bool done) {
        if (!done) {
            throw std::runtime_error("the cryptographic library does not offer SHA-256");
        }
    }

    std::unique_ptr<EVP_MD_CTX, Free> context_;
};

} // namespace

std::string sha256Of(const std::string &path) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        throw UserError("cannot open " + path + ": " + std::strerror(errno));
    }
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    std::vector<unsigned char> piece(kPiece);
    Sha256 sum;
    std::size_t count = 0;
    while ((count = std::fread(piece.data(), 1, piece.size(), file.get())) > 0) {
        sum.add(piece.data(), count);
    }
    if (std::ferror(file.get()) != 0) {
        throw UserError("cannot read " + path + " to its end: " + std::strerror(errno));
    }
    return sum.hexadecimal();
}

std::string checksumsOf(const std::vector<std::string> &paths) {
    std::string text;
    for (const std::string &path : paths) {
        text += text.empty() ? "" : ", ";
        text += std::filesystem::path(path).filename().string() + " " + sha256Of(path);
    }
    return text;
}

} // namespace orvik
