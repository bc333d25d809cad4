#include "guarded_memory.hpp"

#include <gtest/gtest.h>

#include <algorithm>

using orvik::test::GuardedEdge;
using orvik::test::GuardedMemory;

namespace {

// Volatile: the access must happen although nothing uses it.
void touch(std::byte *at) {
    volatile std::byte *target = at;
    *target = std::byte{1};
}

std::byte look(const std::byte *at) {
    const volatile std::byte *source = at;
    return *source;
}

constexpr std::size_t kOddSize = 12009;

TEST(GuardedMemory, IsZeroedAndWritableThroughout) {
    for (const GuardedEdge edge : {GuardedEdge::front, GuardedEdge::back}) {
        const GuardedMemory memory(kOddSize, edge);
        ASSERT_EQ(memory.size(), kOddSize);
        EXPECT_TRUE(std::all_of(memory.data(), memory.data() + kOddSize,
                                [](std::byte value) { return value == std::byte{0}; }));
        std::fill_n(memory.data(), kOddSize, std::byte{0x5a});
        EXPECT_EQ(look(memory.data() + kOddSize - 1), std::byte{0x5a});
    }
}

TEST(GuardedMemoryDeathTest, OneByteBeforeTheFrontEdge) {
    const GuardedMemory memory(kOddSize, GuardedEdge::front);
    EXPECT_DEATH(touch(memory.data() - 1), "");
    EXPECT_DEATH(look(memory.data() - 1), "");
}

TEST(GuardedMemoryDeathTest, OneByteBehindTheBackEdge) {
    const GuardedMemory memory(kOddSize, GuardedEdge::back);
    EXPECT_DEATH(touch(memory.data() + kOddSize), "");
    EXPECT_DEATH(look(memory.data() + kOddSize), "");
}

TEST(GuardedMemoryDeathTest, ReadOnlyMemoryRefusesWrites) {
    GuardedMemory memory(kOddSize, GuardedEdge::back);
    touch(memory.data());
    memory.makeReadOnly();
    EXPECT_EQ(look(memory.data()), std::byte{1});
    EXPECT_DEATH(touch(memory.data()), "");
}

} // namespace
