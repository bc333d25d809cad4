#include "allocation_counter.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

using orvik::test::AllocationCounter;

namespace {

// Reading the pointer back through volatile keeps the compiler from dropping a pair of allocation and release.
void release(void *block) {
    void *volatile kept = block;
    std::free(kept);
}

TEST(AllocationCounter, CountsNothingWhenNothingIsAllocated) {
    const AllocationCounter counter;
    volatile int sum = 0;
    for (int i = 0; i < 100; ++i) {
        sum = sum + i;
    }
    EXPECT_EQ(counter.count(), 0U);
}

TEST(AllocationCounter, CountsEachKindOnce) {
    const AllocationCounter all;
    release(std::malloc(10));
    release(std::calloc(3, 7));
    EXPECT_EQ(all.count(), 2U);

    void *volatile block = std::malloc(10);
    const AllocationCounter growing;
    release(std::realloc(block, 1000));
    EXPECT_EQ(growing.count(), 1U);

#if !defined(_WIN32)
    const AllocationCounter aligned;
    release(std::aligned_alloc(64, 128));
    EXPECT_EQ(aligned.count(), 1U);
#endif
}

TEST(AllocationCounter, CountsOperatorNewAndContainers) {
    const AllocationCounter counter;
    const auto number = std::make_unique<volatile int>(3);
    EXPECT_EQ(counter.count(), 1U);
    const std::vector<int> numbers(static_cast<std::size_t>(*number), 1);
    EXPECT_EQ(counter.count(), 2U);
    EXPECT_EQ(numbers.size(), 3U);
}

TEST(AllocationCounter, MarksAreIndependent) {
    const AllocationCounter early;
    release(std::malloc(1));
    const AllocationCounter late;
    release(std::malloc(1));
    EXPECT_EQ(early.count(), 2U);
    EXPECT_EQ(late.count(), 1U);
}

} // namespace
