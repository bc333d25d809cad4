#include "allocation_counter.hpp"

#include <atomic>
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
#if defined(_WIN32)
// Of all threads: with MinGW a thread-local variable is itself allocated.
constinit std::atomic<std::size_t> allocations{0};
#else
constinit thread_local std::size_t allocations = 0;
#endif

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

#elif defined(__MINGW32__)

// The linker is told to let every call of these functions, operator new's included, come here (--wrap).
extern "C" {

void *__real_malloc(std::size_t);
void *__real_calloc(std::size_t, std::size_t);
void *__real_realloc(void *, std::size_t);

void *__wrap_malloc(std::size_t bytes) {
    ++allocations;
    return __real_malloc(bytes);
}

void *__wrap_calloc(std::size_t count, std::size_t bytes) {
    ++allocations;
    return __real_calloc(count, bytes);
}

void *__wrap_realloc(void *block, std::size_t bytes) {
    ++allocations;
    return __real_realloc(block, bytes);
}

} // extern "C"

#else
#error                                                                                             \
    "Counting allocations needs glibc, MinGW or a sanitizer's allocator: build with ORVIK_SANITIZE=address."
#endif

namespace orvik::test {

AllocationCounter::AllocationCounter() : atStart_(allocations) {}

std::size_t AllocationCounter::count() const { return allocations - atStart_; }

} // namespace orvik::test
