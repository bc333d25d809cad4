// A record for a test: zeroed pages straight from the system, so that only what a burst touches costs memory.
#pragma once

#include <cstdlib>
#include <memory>
#include <new>

#include "frame/record.hpp"

namespace orvik::test {

struct RecordRelease {
    void operator()(OVRecord *record) const { std::free(record); }
};

using RecordPtr = std::unique_ptr<OVRecord, RecordRelease>;

inline RecordPtr makeRecord() {
    auto *const record = static_cast<OVRecord *>(std::calloc(1, sizeof(OVRecord)));
    if (record == nullptr) {
        throw std::bad_alloc();
    }
    return RecordPtr(record);
}

} // namespace orvik::test
