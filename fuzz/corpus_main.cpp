// Runs a fuzz target over the files of a folder, so that the corpus is an ordinary test with every compiler.
// C input and output: MemorySanitizer cannot see what the C++ library's streams write.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include <dirent.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

constexpr std::size_t kMostBytes = 1 << 20;

// False for what is no readable file, such as the folder itself.
bool readFile(const char *path, std::vector<std::uint8_t> &bytes) {
    std::FILE *const file = std::fopen(path, "rb");
    if (file == nullptr) {
        return false;
    }
    bytes.resize(kMostBytes);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    const bool sound = std::ferror(file) == 0;
    std::fclose(file);
    return sound;
}

int runFolder(const char *folder) {
    DIR *const entries = opendir(folder);
    if (entries == nullptr) {
        std::perror(folder);
        return 0;
    }
    int count = 0;
    std::vector<std::uint8_t> bytes;
    while (const dirent *const entry = readdir(entries)) {
        char path[4096];
        std::snprintf(path, sizeof path, "%s/%s", folder, static_cast<const char *>(entry->d_name));
        if (entry->d_name[0] != '.' && readFile(path, bytes)) {
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++count;
        }
    }
    closedir(entries);
    return count;
}

} // namespace

int main(int argc, char **argv) {
    int count = 0;
    for (int a = 1; a < argc; ++a) {
        count += runFolder(argv[a]);
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
