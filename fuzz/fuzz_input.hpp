// Reads a fuzzer's bytes as values, and keeps a record between guard pages for it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "guarded_memory.hpp"
#include "orvikbase/orvikbase.h"

namespace orvik::fuzz {

class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) : data_(data), left_(size) {}

    [[nodiscard]] bool empty() const { return left_ == 0; }

    // The next bytes as a value; zeros where they run out.
    template <class Value> Value take() {
        Value value{};
        const std::size_t used = std::min(left_, sizeof value);
        std::memcpy(&value, data_, used);
        data_ += used;
        left_ -= used;
        return value;
    }

    // A float that is often one of the values that break things.
    float number() {
        constexpr float kInfinity = std::numeric_limits<float>::infinity();
        const float hostile[] = {
            0.0F,   -0.0F,  1.0F,      -9.0F,      1e30F,
            -1e30F, 1e-30F, kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN()};
        const auto choice = take<std::uint8_t>();
        return choice < 10 ? hostile[choice] : take<float>();
    }

private:
    const std::uint8_t *data_;
    std::size_t left_;
};

// A zeroed record whose end is guarded to the byte.
inline OVRecord *freshRecord() {
    static test::GuardedMemory memory(OV_RECORD_BYTES, test::GuardedEdge::back);
    memory.clear();
    return memory.as<OVRecord>();
}

// A host structure whose end is guarded to the byte.
template <class Structure> Structure *guardedStructure(const Structure &content) {
    static test::GuardedMemory memory(sizeof(Structure), test::GuardedEdge::back);
    auto *const structure = memory.as<Structure>();
    std::memcpy(static_cast<void *>(structure), &content, sizeof content);
    return structure;
}

} // namespace orvik::fuzz
