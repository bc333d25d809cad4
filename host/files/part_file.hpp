// Output files that appear under their name only when they are complete, whatever writes them.
#pragma once

#include <string>

namespace orvik {

// Throws WriteError when `target` cannot be a file's name, or is something else than a file.
void checkTarget(const std::string &target);

// Where the finished bursts of a run are kept that writes `output`: beside the file that links lead to, so that two runs
// that write one file find one another.
std::string unfinishedName(const std::string &output);

// The place where an output is written: a hidden neighbour of its target, so that the final rename stays on one file system.
// Gone with this object unless committed. What killed programs left of the same target is swept up.
class PartFile {
public:
    // Throws as checkTarget does. Creates nothing.
    explicit PartFile(const std::string &target);
    ~PartFile();
    PartFile(const PartFile &) = delete;
    PartFile &operator=(const PartFile &) = delete;

    [[nodiscard]] const std::string &path() const { return path_; }
    // As it was named: where that is a link, the file it points to is replaced.
    [[nodiscard]] const std::string &target() const { return target_; }

    // Puts a copy of what is there so far under the target's name.
    void publish() const;
    // Gives the file its name.
    void commit();

private:
    std::string target_;
    std::string place_; // the target, links followed
    std::string path_;
    bool committed_ = false;
};

} // namespace orvik
