// Per-thread state of the vector-math component: mode word, error status,
// error callback and the start of the caller's whole first input vector.
// Each value lives in its own thread-specific block, created on first use.
#pragma once

#include <cstdint>

#include "oxa/vector_math.h"

namespace oxa::vml {

// Addresses of the calling thread's values (created zeroed on first use; the
// process ends with status 3 if a block cannot be allocated).
uint32_t* mode_slot();
int32_t* status_slot();
VmlErrorCallBack* callback_slot();
const void** input_vector_slot();

// The thread's mode word, read from the environment (or the default) while it
// is 0. A stored 0 stays "uninitialised", so the environment is read again.
uint32_t current_mode();

// Puts back a mode word saved from SetMode's return value, exactly. SetMode
// itself cannot: it leaves a field alone when the argument's field is zero, so
// it cannot restore a word whose error or denormal field was empty. Callers
// that change the mode around a kernel call (distributions, summary
// statistics) restore through this.
inline void restore_mode(uint32_t mode) { *mode_slot() = mode; }

}  // namespace oxa::vml
