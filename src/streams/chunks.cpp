// Per-stream chunk list: side buffers that generators hang on a stream.
#include <cstring>

#include "oxa/service.h"
#include "streams/shared_table.hpp"
#include "streams/stream_state.hpp"

using namespace oxa::streams;

namespace {

StreamChunk* new_chunk_record(uint32_t id, const uint64_t key[2], void* data, uint32_t size) {
  auto* c = static_cast<StreamChunk*>(oxa_serv_allocate(sizeof(StreamChunk), kBlockAlignment));
  if (c == nullptr) return nullptr;
  c->id = id;
  c->size = size;
  c->data = data;
  c->next = nullptr;
  c->key[0] = key ? key[0] : 0;
  c->key[1] = key ? key[1] : 0;
  return c;
}

}  // namespace

extern "C" {

int32_t _vslAddChunk(StreamState* stream, uint32_t id, const uint64_t key[2], void* data,
                     uint32_t size) {
  StreamChunk* c = new_chunk_record(id, key, data, size);
  if (c == nullptr) return VSL_ERROR_NO_MEMORY;
  link_new_chunk(stream, c);
  return 0;
}

void* _vslSearchChunk(const StreamState* stream, uint32_t id) {
  for (const StreamChunk* c = stream->chunks; c; c = c->next) {
    if (c->id == id) return c->data;
  }
  return nullptr;
}

int32_t _vslGetNumChunks(const StreamState* stream) {
  int32_t n = 0;
  for (const StreamChunk* c = stream->chunks; c; c = c->next) ++n;
  return n;
}

// Removes the chunks with this id. The head becomes the last chunk kept, and
// chunks kept before it drop out of the list: callers delete their own id and
// then add a fresh chunk, and rely on exactly this behaviour.
int32_t _vslDeleteChunksById(StreamState* stream, uint32_t id) {
  StreamChunk* kept = nullptr;
  StreamChunk* c = stream->chunks;
  while (c) {
    StreamChunk* next = c->next;
    if (c->id == id) {
      release_chunk_data(c);
      oxa_serv_deallocate(c);
      if (kept) kept->next = next;
    } else {
      kept = c;
    }
    c = next;
  }
  stream->chunks = kept;
  return 0;
}

int32_t _vslDeleteChunks(StreamState* stream) {
  StreamChunk* c = stream->chunks;
  while (c) {
    StreamChunk* next = c->next;
    release_chunk_data(c);
    oxa_serv_deallocate(c);
    c = next;
  }
  stream->chunks = nullptr;
  return 0;
}

// Copies reach the destination in reverse order (each is pushed at the head).
// Shared data is referenced again, private data copied.
int32_t _vslCopyChunks(StreamState* destination, const StreamState* source) {
  for (const StreamChunk* s = source->chunks; s; s = s->next) {
    void* data = nullptr;
    const bool shared = acquire_shared(s->key, &data);
    if (!shared && s->data != nullptr && s->size > 0) {
      data = oxa_serv_allocate(s->size, kBlockAlignment);
      if (data == nullptr) {
        _vslDeleteChunks(destination);
        return VSL_ERROR_NO_MEMORY;
      }
      std::memcpy(data, s->data, s->size);
    }
    StreamChunk* c = new_chunk_record(s->id, shared ? nullptr : s->key, data, s->size);
    if (c == nullptr) {
      if (shared) {
        _vslUnregisterGlobRODataReference(s->key);
      } else {
        oxa_serv_deallocate(data);
      }
      _vslDeleteChunks(destination);
      return VSL_ERROR_NO_MEMORY;
    }
    if (shared) {
      // Already referenced: link without a second lookup.
      c->key[0] = s->key[0];
      c->key[1] = s->key[1];
      c->next = destination->chunks;
      destination->chunks = c;
    } else if (link_new_chunk(destination, c)) {
      oxa_serv_deallocate(data);  // another stream shared the key meanwhile
    }
  }
  return 0;
}

}  // extern "C"
