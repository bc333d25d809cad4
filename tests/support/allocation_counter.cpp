#include "allocation_counter.hpp"

#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORVIK_SANITIZER_ALLOCATOR 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) ||                         \
    __has_feature(thread_sanitizer)
#define ORVIK_SANITIZER_ALLOCATOR 1
#endif
#endif

namespace {

// Constant-initialised: malloc runs before any constructor does.
constinit thread_local std::size_t allocations = 0;

} // namespace

#if defined(ORVIK_SANITIZER_ALLOCATOR)

// The sanitizer owns malloc, and reports every allocation to whoever asks. Declared here: not every compiler ships
// sanitizer/allocator_interface.h.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void *,
                                                                          std::size_t),
                                                         void (*onFree)(const volatile void *));

namespace {

void countAllocation(const volatile void *, std::size_t) { ++allocations; }
void ignoreRelease(const volatile void *) {}

const int kHooksInstalled =
    __sanitizer_install_malloc_and_free_hooks(countAllocation, ignoreRelease);

} // namespace

#elif defined(__GLIBC__)

// These take the place of the C library's functions throughout the program, shared libraries included. Its operator
// new ends in malloc, so it is counted too.
extern "C" {

void *__libc_malloc(std::size_t);
void *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void *, std::size_t);
void *__libc_memalign(std::size_t, std::size_t);

void *malloc(std::size_t bytes) {
    ++allocations;
    return __libc_malloc(bytes);
}

void *calloc(std::size_t count, std::size_t bytes) {
    ++allocations;
    return __libc_calloc(count, bytes);
}

void *realloc(void *block, std::size_t bytes) {
    ++allocations;
    return __libc_realloc(block, bytes);
}

void *aligned_alloc(std::size_t alignment, std::size_t bytes) {
    ++allocations;
    return __libc_memalign(alignment, bytes);
}

int posix_memalign(void **block, std::size_t alignment, std::size_t bytes) {
    constexpr int kNoMemory = 12; // ENOMEM; errno itself must stay as it is
    ++allocations;
    *block = __libc_memalign(alignment, bytes);
    return *block == nullptr && bytes != 0 ? kNoMemory : 0;
}

} // extern "C"

#else
#error                                                                                             \
    "Counting allocations needs glibc or a sanitizer's allocator: build with ORVIK_SANITIZE=address."
#endif

namespace orvik::test {

AllocationCounter::AllocationCounter() : atStart_(allocations) {}

std::size_t AllocationCounter::count() const { return allocations - atStart_; }

} // namespace orvik::test
