// The record that entry points without `_ptr` work on.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Null until the library is loaded, and after a failed allocation. Not guarded: hosts with several threads use the
// `_ptr` forms.
extern WaveVariables *currentRecord;

// Kept for the host, never called.
extern void *processingHook;

inline constexpr std::int32_t kNullArgument = -1;

} // namespace ov
