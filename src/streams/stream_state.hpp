// Internal view of a stream block: the header (StreamState, public) followed by
// the generator's state. Generators reach their state with generator_state<T>.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "oxa/streams.h"

namespace oxa::streams {

static_assert(sizeof(StreamState) == 16, "stream header is three fields in 16 bytes");
static_assert(sizeof(StreamChunk) == 40, "chunk record is five fields in 40 bytes");

// Alignment of every stream block, chunk record and copied chunk data.
inline constexpr std::size_t kBlockAlignment = 128;

// The generator's state starts right after the header (offset 16, so it is
// 16-byte aligned inside a 128-byte aligned block).
template <class State>
inline State* generator_state(StreamState* stream) {
  static_assert(sizeof(StreamState) + sizeof(State) <= 4096);
  return reinterpret_cast<State*>(reinterpret_cast<unsigned char*>(stream) + sizeof(StreamState));
}
template <class State>
inline const State* generator_state(const StreamState* stream) {
  return reinterpret_cast<const State*>(reinterpret_cast<const unsigned char*>(stream) +
                                        sizeof(StreamState));
}

// Bytes of generator state a block of StateBytes can hold.
inline std::size_t state_area_bytes(int32_t state_bytes) {
  return state_bytes > static_cast<int32_t>(sizeof(StreamState))
             ? static_cast<std::size_t>(state_bytes) - sizeof(StreamState)
             : 0;
}

// The skip count of InitStream method 2: one 64-bit word at params.
inline uint64_t read_skip_count(const uint32_t params[]) {
  uint64_t v;
  std::memcpy(&v, params, sizeof v);
  return v;
}

}  // namespace oxa::streams
