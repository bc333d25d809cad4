// Where results go besides the result file.
#pragma once

#include "results/result_reader.hpp"

namespace orvik {

// Writes under a temporary name; only commit() puts the finished file there. One that is destroyed without commit()
// leaves nothing behind.
class ResultSink {
public:
    virtual ~ResultSink() = default;
    virtual void append(const StoredBurst &burst) = 0;
    virtual void commit() = 0;
};

} // namespace orvik
