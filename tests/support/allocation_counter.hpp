// Counts memory allocations of the calling thread: malloc, calloc, realloc, aligned forms and operator new. On Windows of
// all threads, and without the aligned forms.
#pragma once

#include <cstddef>

namespace orvik::test {

// A mark in time: count() tells how many allocations this thread has made since construction.
class AllocationCounter {
public:
    AllocationCounter();
    std::size_t count() const;

private:
    std::size_t atStart_;
};

} // namespace orvik::test
