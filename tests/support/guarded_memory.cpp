#include "guarded_memory.hpp"

#include <cerrno>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace orvik::test {

namespace {

std::size_t pageBytes() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

[[noreturn]] void throwErrno(const char *what) {
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, GuardedEdge edge)
    : bytes_(bytes), usableBytes_((bytes + pageBytes() - 1) / pageBytes() * pageBytes()) {
    const std::size_t page = pageBytes();
    void *mapping = mmap(nullptr, usableBytes_ + 2 * page, PROT_NONE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) {
        throwErrno("mmap of guarded memory");
    }
    mapping_ = static_cast<std::byte *>(mapping);
    std::byte *usable = mapping_ + page;
    if (usableBytes_ > 0 && mprotect(usable, usableBytes_, PROT_READ | PROT_WRITE) != 0) {
        throwErrno("mprotect of guarded memory");
    }
    data_ = edge == GuardedEdge::front ? usable : usable + (usableBytes_ - bytes_);
}

GuardedMemory::~GuardedMemory() { munmap(mapping_, usableBytes_ + 2 * pageBytes()); }

void GuardedMemory::clear() {
    if (madvise(mapping_ + pageBytes(), usableBytes_, MADV_DONTNEED) != 0) {
        throwErrno("madvise of guarded memory");
    }
}

void GuardedMemory::makeReadOnly() {
    if (mprotect(mapping_ + pageBytes(), usableBytes_, PROT_READ) != 0) {
        throwErrno("mprotect of guarded memory");
    }
}

} // namespace orvik::test
