#include "guarded_memory.hpp"

#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <system_error>
#include <windows.h>

namespace orvik::test {

namespace {

std::size_t pageBytes() {
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    return system.dwPageSize;
}

[[noreturn]] void throwLastError(const char *what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

void commit(void *address, std::size_t bytes) {
    if (bytes > 0 && VirtualAlloc(address, bytes, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        throwLastError("VirtualAlloc of guarded memory");
    }
}

} // namespace

// Pages that are reserved and not committed cannot be touched: they are the guards.
GuardedMemory::GuardedMemory(std::size_t bytes, GuardedEdge edge)
    : bytes_(bytes), usableBytes_((bytes + pageBytes() - 1) / pageBytes() * pageBytes()) {
    const std::size_t page = pageBytes();
    void *mapping = VirtualAlloc(nullptr, usableBytes_ + 2 * page, MEM_RESERVE, PAGE_NOACCESS);
    if (mapping == nullptr) {
        throwLastError("VirtualAlloc of guarded memory");
    }
    mapping_ = static_cast<std::byte *>(mapping);
    std::byte *usable = mapping_ + page;
    commit(usable, usableBytes_);
    data_ = edge == GuardedEdge::front ? usable : usable + (usableBytes_ - bytes_);
}

GuardedMemory::~GuardedMemory() { VirtualFree(mapping_, 0, MEM_RELEASE); }

void GuardedMemory::clear() {
    std::byte *usable = mapping_ + pageBytes();
    if (VirtualFree(usable, usableBytes_, MEM_DECOMMIT) == 0) {
        throwLastError("VirtualFree of guarded memory");
    }
    commit(usable, usableBytes_);
}

void GuardedMemory::makeReadOnly() {
    DWORD before = 0;
    if (VirtualProtect(mapping_ + pageBytes(), usableBytes_, PAGE_READONLY, &before) == 0) {
        throwLastError("VirtualProtect of guarded memory");
    }
}

} // namespace orvik::test
