/**
 * @file
 * Memory of the large outputs in outputs.hpp.
 */
#ifndef ORVIKBASE_DETAIL_MEMORY_HPP
#define ORVIKBASE_DETAIL_MEMORY_HPP

#include <cstdlib>
#include <memory>
#include <new>

namespace orvikbase::detail {

/** Gives back what calloc() gave. */
struct Release {
    void operator()(void *memory) const noexcept { std::free(memory); }
};

template <class Output> using OutputMemory = std::unique_ptr<Output, Release>;

/** Zero pages where the system has them: an output of 1.4 MB takes up what the bursts at hand use of it. */
template <class Output> [[nodiscard]] OutputMemory<Output> makeOutput() {
    auto *const output = static_cast<Output *>(std::calloc(1, sizeof(Output)));
    if (output == nullptr) {
        throw std::bad_alloc();
    }
    return OutputMemory<Output>(output);
}

} // namespace orvikbase::detail

#endif // ORVIKBASE_DETAIL_MEMORY_HPP
