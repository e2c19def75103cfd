// Stream life cycle: create, copy, copy state, delete, leapfrog, skip-ahead.
#include <algorithm>
#include <cstring>

#include "oxa/service.h"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

using namespace oxa::streams;

namespace {

StreamState* allocate_block(int32_t state_bytes, int32_t id) {
  const std::size_t bytes = std::max<std::size_t>(static_cast<std::size_t>(state_bytes),
                                                  sizeof(StreamState));
  auto* s = static_cast<StreamState*>(oxa_serv_allocate(bytes, kBlockAlignment));
  if (s == nullptr) return nullptr;
  s->brng = id;
  s->flag = 1;
  s->chunks = nullptr;
  return s;
}

// The generator's InitStream, or null when its id is malformed or the
// generator is not part of this build.
oxa_brng_init_fn init_of(const StreamState* stream) {
  const BrngRef ref = decode_brng(stream->brng);
  return is_usable(ref) ? ref.props().InitStream : nullptr;
}

}  // namespace

extern "C" {

int32_t _vslAllocateStream(StreamState** handle, const BrngProperties* table, int32_t id,
                           int32_t row, int32_t sub) {
  const BrngRef ref{table, row, sub};
  if (!is_usable(ref)) return VSL_RNG_ERROR_BAD_BRNG;
  *handle = allocate_block(ref.props().StateBytes, id);
  return *handle ? 0 : VSL_ERROR_NO_MEMORY;
}

int32_t _vslNewStreamEx(StreamState** handle, int32_t id, int32_t n, const uint32_t params[]) {
  // The three abstract generators have their own constructors; this exact test
  // lets their sub-indexed forms fall through to the validity test.
  if ((id & ~0x100000) == 0xA00000 || id == 0xC00000) return VSL_RNG_ERROR_BAD_BRNG;
  const BrngRef ref = decode_brng(id);
  if (_vslIsBrngValid(ref.table, ref.row, ref.sub) != 0) return VSL_RNG_ERROR_BAD_BRNG;
  if (!is_usable(ref)) return VSL_RNG_ERROR_BAD_BRNG;  // generator not in this build
  *handle = allocate_block(ref.props().StateBytes, id);
  if (*handle == nullptr) return VSL_ERROR_NO_MEMORY;
  return ref.props().InitStream(OXA_INIT_SEED, *handle, n, params);
}

int32_t _vslCopyStream(StreamState** handle, const StreamState* source) {
  const BrngRef ref = decode_brng(source->brng);
  if (_vslIsBrngValid(ref.table, ref.row, ref.sub) != 0) return VSL_RNG_ERROR_BAD_BRNG;
  const std::size_t bytes = static_cast<std::size_t>(ref.props().StateBytes);
  StreamState* copy = allocate_block(ref.props().StateBytes, source->brng);
  *handle = copy;
  if (copy == nullptr) return VSL_ERROR_NO_MEMORY;
  oxa_serv_memcpy_s(copy, bytes, source, bytes);
  copy->chunks = nullptr;
  const int32_t status = _vslCopyChunks(copy, source);
  if (status != 0) _vslDeleteStream(handle);  // no half-built copy: the handle gets null
  return status;
}

// Copies only the seed words (WordBytes x SeedCount bytes, bounded by the
// state area): the rest of the destination's state, e.g. a leapfrog
// multiplier, stays as it was. Chunks are replaced by copies of the source's.
int32_t _vslCopyStreamState(StreamState* destination, const StreamState* source) {
  if (destination == source) return 0;
  const BrngRef ref = decode_brng(source->brng);
  const BrngProperties& p = ref.props();
  const std::size_t seed_bytes =
      static_cast<std::size_t>(std::max(0, p.WordBytes)) * std::max(0, p.SeedCount);
  const std::size_t bytes = std::min(seed_bytes, state_area_bytes(p.StateBytes));
  std::memcpy(generator_state<unsigned char>(destination), generator_state<unsigned char>(source),
              bytes);
  _vslDeleteChunks(destination);
  return _vslCopyChunks(destination, source);
}

int32_t _vslDeleteStream(StreamState** handle) {
  StreamState* s = *handle;
  if (s != nullptr) {
    _vslDeleteChunks(s);
    oxa_serv_deallocate(s);
  }
  *handle = nullptr;
  return 0;
}

int32_t _vslLeapfrogStream(StreamState* stream, int32_t k, int32_t nstreams) {
  if (nstreams < 0) return VSL_RNG_ERROR_BAD_NSTREAMS;
  const oxa_brng_init_fn init = init_of(stream);
  if (init == nullptr) return VSL_RNG_ERROR_BAD_BRNG;
  uint32_t index;
  std::memcpy(&index, &k, sizeof index);
  return init(OXA_INIT_LEAPFROG, stream, nstreams, &index);
}

int32_t _vslSkipAheadStream(StreamState* stream, uint64_t nskip) {
  const oxa_brng_init_fn init = init_of(stream);
  if (init == nullptr) return VSL_RNG_ERROR_BAD_BRNG;
  uint32_t words[2];
  std::memcpy(words, &nskip, sizeof words);
  return init(OXA_INIT_SKIPAHEAD, stream, 2, words);
}

int32_t _vslGetStreamStateBrng(const StreamState* stream) { return stream->brng; }

int32_t _vslGetStreamSize(const StreamState* stream) {
  int32_t size = decode_brng(stream->brng).props().StateBytes;
  for (const StreamChunk* c = stream->chunks; c; c = c->next) {
    size += static_cast<int32_t>(c->size) + 24;
  }
  return size;
}

}  // extern "C"
