// Memory between two inaccessible pages: a read or write one byte past the guarded edge ends the test at once.
#pragma once

#include <cstddef>

namespace orvik::test {

// The edge that is guarded to the byte. At the other one up to a page of slack may lie before the guard page.
enum class GuardedEdge { front, back };

// Zeroed. The front edge is page-aligned; behind `back` the alignment is that of `bytes`.
class GuardedMemory {
public:
    GuardedMemory(std::size_t bytes, GuardedEdge edge);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory &) = delete;
    GuardedMemory &operator=(const GuardedMemory &) = delete;

    std::byte *data() const { return data_; }
    std::size_t size() const { return bytes_; }

    // The same memory as a structure or an opaque record. T must not need more alignment than the edge gives.
    template <class T> T *as() const { return reinterpret_cast<T *>(data_); }

    // All zero again, by giving the pages back: as cheap as the pages that were touched.
    void clear();

    // After this a write anywhere in the memory ends the test: for arguments that must only be read.
    void makeReadOnly();

private:
    std::size_t bytes_;
    std::size_t usableBytes_; // whole pages
    std::byte *mapping_;      // the front guard page
    std::byte *data_;
};

} // namespace orvik::test
