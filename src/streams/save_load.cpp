// Saving a stream to a file or to memory and rebuilding it.
//
// Image (little-endian): version 1, the bytes 'R' 'N' 'G', header size 16
// (2 bytes), state size StateBytes - 16 (2; only its low 16 bits when the
// area is larger, as NIEDERR's is: the loader reads the registry's size),
// chunk count (2), two reserved bytes written as zero, the generator id (4);
// then the state area; then per chunk from the list head: id (4), key low and
// high (8 + 8, absent in version 0 images), data size (4), data. Its size is
// _vslGetStreamSize.
//
// One save body and one load body serve files and memory through a channel
// whose kind picks the access routine from a dispatch table. Loading accepts
// the magic with the version byte first or last; bytes of a header larger
// than 16 are skipped. A failed load deletes what it built and leaves NULL in
// the handle.
//
// Trust: a file loader knows the file's size and never allocates a chunk
// buffer larger than the bytes left in the file (such a chunk is a short
// read). The memory loader has no size and trusts the buffer to hold the
// whole image.
//
// Shared keys: a chunk never has a size with no data behind it. A chunk
// whose key joins an entry of the shared read-only table takes the entry's
// buffer, whose size the table does not record, so the loader refuses (bad
// image) a keyed chunk without data and a keyed chunk whose size differs
// from an earlier chunk of the same image under that key. A key that another
// live stream already shares is trusted to name the same bytes. Saving
// refuses a chunk with a size and no data instead of reading through null.
#include <cstdio>
#include <cstring>

#include "oxa/service.h"
#include "streams/cpu_features.hpp"
#include "streams/registry.hpp"
#include "streams/shared_table.hpp"
#include "streams/stream_state.hpp"

using namespace oxa::streams;

namespace {

constexpr uint32_t kMagicVersionFirst = 0x474E5200u;  // version byte, 'R', 'N', 'G'
constexpr uint32_t kMagicVersionLast = 0x00474E52u;   // 'R', 'N', 'G', version byte
constexpr uint8_t kVersion = 1;
constexpr uint16_t kHeaderBytes = 16;

enum ChannelKind : int32_t { kFile = 0, kMemory = 1 };

// A file, or a memory cursor (base pointer and 32-bit position).
struct Channel {
  int32_t kind;
  FILE* file;
  unsigned char* base;
  uint32_t pos;
  uint64_t left;  // bytes a file still holds (files only)
};

struct ImageHeader {
  uint8_t bytes[kHeaderBytes];
  uint32_t word(int at) const {
    return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
           uint32_t(bytes[at + 3]) << 24;
  }
  uint16_t half(int at) const { return uint16_t(bytes[at] | bytes[at + 1] << 8); }
  void put(int at, uint32_t v, int n) {
    for (int i = 0; i < n; ++i) bytes[at + i] = uint8_t(v >> (8 * i));
  }
  uint8_t version() const { return bytes[0]; }
  uint16_t header_size() const { return half(4); }
  uint16_t state_size() const { return half(6); }
  uint16_t chunk_count() const { return half(8); }
  int32_t brng() const { return int32_t(word(12)); }
};

// Access routines: 0 when all n bytes moved, nonzero otherwise.
int _vslSaveToFile(Channel* c, const void* p, std::size_t n) {
  return n == 0 || std::fwrite(p, n, 1, c->file) == 1 ? 0 : -1;
}
int _vslSaveToMemory(Channel* c, const void* p, std::size_t n) {
  if (n) std::memcpy(c->base + c->pos, p, n);
  c->pos += uint32_t(n);
  return 0;
}
int _vslLoadFromFile(Channel* c, void* p, std::size_t n) {
  if (n == 0) return 0;
  if (n > c->left || std::fread(p, n, 1, c->file) != 1) {
    c->left = 0;
    return -1;
  }
  c->left -= n;
  return 0;
}
int _vslLoadFromMemory(Channel* c, void* p, std::size_t n) {
  if (n) std::memcpy(p, c->base + c->pos, n);
  c->pos += uint32_t(n);
  return 0;
}
int _vslSkipLoadingFromFile(Channel* c, std::size_t n) {
  if (n > c->left || std::fseek(c->file, long(n), SEEK_CUR) != 0) return -1;
  c->left -= n;
  return 0;
}
int _vslSkipLoadingFromMemory(Channel* c, std::size_t n) {
  c->pos += uint32_t(n);
  return 0;
}

using SaveFn = int (*)(Channel*, const void*, std::size_t);
using LoadFn = int (*)(Channel*, void*, std::size_t);
using SkipFn = int (*)(Channel*, std::size_t);
const SaveFn SaveDispatch[2] = {_vslSaveToFile, _vslSaveToMemory};
const LoadFn LoadDispatch[2] = {_vslLoadFromFile, _vslLoadFromMemory};
const SkipFn SkipDispatch[2] = {_vslSkipLoadingFromFile, _vslSkipLoadingFromMemory};

int load(Channel* c, void* p, std::size_t n) { return LoadDispatch[c->kind != kFile](c, p, n); }
int save(Channel* c, const void* p, std::size_t n) {
  return SaveDispatch[c->kind != kFile](c, p, n);
}
// Bytes a chunk buffer may claim: the rest of a file, anything from memory.
uint64_t loadable(const Channel* c) { return c->kind == kFile ? c->left : UINT64_MAX; }

// A file name as a terminated string: a copy of `length` bytes plus a zero
// when length >= 0 (free it with oxa_serv_deallocate), else the name itself.
struct FileName {
  const char* str = nullptr;
  char* copy = nullptr;
  ~FileName() { oxa_serv_deallocate(copy); }
  int32_t prepare(const char* name, int32_t length) {
    if (length < 0) {
      str = name;
      return 0;
    }
    copy = static_cast<char*>(oxa_serv_allocate(std::size_t(length) + 1, kBlockAlignment));
    if (copy == nullptr) return VSL_ERROR_NO_MEMORY;
    if (length > 0) std::memcpy(copy, name, std::size_t(length));
    copy[length] = '\0';
    str = copy;
    return 0;
  }
};

uint64_t file_size(FILE* f) {
  if (std::fseek(f, 0, SEEK_END) != 0) return 0;
  const long end = std::ftell(f);
  std::rewind(f);
  return end > 0 ? uint64_t(end) : 0;
}

// The image of `stream` through channel c: header, state, chunks.
int32_t save_image(Channel* c, const StreamState* stream) {
  const BrngProperties& row = decode_brng(stream->brng).props();
  const std::size_t state_bytes = state_area_bytes(row.StateBytes);
  ImageHeader h{};
  h.put(0, kVersion | kMagicVersionFirst, 4);
  h.put(4, kHeaderBytes, 2);
  h.put(6, uint32_t(state_bytes), 2);
  h.put(8, uint32_t(_vslGetNumChunks(stream)), 2);
  h.put(10, 0, 2);
  h.put(12, uint32_t(stream->brng), 4);
  if (save(c, h.bytes, sizeof h.bytes) != 0) return VSL_RNG_ERROR_FILE_WRITE;
  if (save(c, generator_state<unsigned char>(stream), state_bytes) != 0) {
    return VSL_RNG_ERROR_FILE_WRITE;
  }
  // Only the data writes are checked, and the last one decides the status.
  int32_t status = 0;
  for (const StreamChunk* k = stream->chunks; k; k = k->next) {
    save(c, &k->id, 4);
    save(c, &k->key[0], 8);
    save(c, &k->key[1], 8);
    save(c, &k->size, 4);
    if (k->size && k->data == nullptr) return VSL_RNG_ERROR_FILE_WRITE;
    status = save(c, k->data, k->size) == 0 ? 0 : VSL_RNG_ERROR_FILE_WRITE;
  }
  return status;
}

// The first chunk, from `c` on, whose key equals `key`; null if none.
const StreamChunk* chunk_with_key(const StreamChunk* c, const uint64_t key[2]) {
  while (c && (c->key[0] != key[0] || c->key[1] != key[1])) c = c->next;
  return c;
}

// Reads the header's chunk records onto the stream; the status goes to *status.
void _vslReadChunks(int32_t* status, Channel* c, const ImageHeader* header, StreamState* stream,
                    int32_t kind) {
  c->kind = kind;
  for (uint32_t n = header->chunk_count(); n > 0; --n) {
    uint32_t id = 0, size = 0;
    uint64_t key[2] = {0, 0};
    if (load(c, &id, 4) != 0) *status = VSL_RNG_ERROR_FILE_READ;
    if (header->version() == 1) {
      if (load(c, key, 16) != 0) *status = VSL_RNG_ERROR_FILE_READ;
    } else if (header->version() != 0) {
      *status = VSL_RNG_ERROR_FILE_READ;
      return;
    }
    if (load(c, &size, 4) != 0) *status = VSL_RNG_ERROR_FILE_READ;
    if (*status < 0) continue;  // a short read: the rest only drains the source
    if (size > loadable(c)) {  // a short read, found without allocating
      c->left = 0;
      *status = VSL_RNG_ERROR_FILE_READ;
      continue;
    }
    if (size == 0 && !key_is_zero(key)) {  // nothing to share
      *status = VSL_RNG_ERROR_BAD_IMAGE;
      return;
    }
    void* data = size ? oxa_serv_allocate(size, kBlockAlignment) : nullptr;
    if (size && data == nullptr) {
      *status = VSL_ERROR_NO_MEMORY;
      return;
    }
    if (load(c, data, size) != 0) {
      oxa_serv_deallocate(data);
      *status = VSL_RNG_ERROR_FILE_READ;
      continue;
    }
    const int32_t added = _vslAddChunk(stream, id, key, data, size);
    if (added < 0) {
      oxa_serv_deallocate(data);
      *status = added;
      return;
    }
    // A key already in the shared table makes the chunk use the table's data,
    // which must be as long as the chunk claims.
    if (stream->chunks->data != data) {
      oxa_serv_deallocate(data);
      const StreamChunk* earlier = chunk_with_key(stream->chunks->next, key);
      if (earlier && earlier->size != size) {
        *status = VSL_RNG_ERROR_BAD_IMAGE;
        return;
      }
    }
  }
}

// Rebuilds a stream from channel c into *handle (NULL until a block exists).
int32_t load_image(Channel* c, StreamState** handle) {
  *handle = nullptr;
  ImageHeader h;
  if (load(c, h.bytes, sizeof h.bytes) != 0) return VSL_RNG_ERROR_FILE_READ;
  const uint32_t w = h.word(0);
  if ((w & 0xFFFFFF00u) != kMagicVersionFirst && (w & 0x00FFFFFFu) != kMagicVersionLast) {
    return VSL_RNG_ERROR_BAD_IMAGE;
  }
  if ((w & 0xFFu) > 1 && (w >> 24) > 1) return VSL_RNG_ERROR_BAD_IMAGE_VERSION;
  const int32_t id = h.brng();
  const BrngRef ref = decode_brng(id);
  const std::size_t state_bytes = is_usable(ref) ? state_area_bytes(ref.props().StateBytes) : 0;
  if (!is_usable(ref) || is_abstract(ref) || h.state_size() != uint16_t(state_bytes) ||
      ref.props().StateBytes < int32_t(sizeof(StreamState)) || h.header_size() < kHeaderBytes) {
    return VSL_RNG_ERROR_BAD_IMAGE;
  }
  if (SkipDispatch[c->kind != kFile](c, h.header_size() - kHeaderBytes) != 0) {
    return VSL_RNG_ERROR_FILE_READ;
  }
  int32_t status = _vslAllocateStream(handle, ref.table, id, ref.row, ref.sub);
  if (status < 0) return status;
  if (load(c, generator_state<unsigned char>(*handle), state_bytes) != 0) {
    status = VSL_RNG_ERROR_FILE_READ;
  } else if (id == OXA_BRNG_NONDETERM && !cpu_has_rdrand()) {
    status = VSL_RNG_ERROR_NO_RDRAND;
  } else if (id == OXA_BRNG_ARS5 && !cpu_has_aes()) {
    status = VSL_RNG_ERROR_NO_AES;
  }
  if (status >= 0 && h.chunk_count() > 0) _vslReadChunks(&status, c, &h, *handle, c->kind);
  return status;
}

}  // namespace

extern "C" {

int32_t _vslSaveStreamF(const StreamState* stream, const char* name, int32_t length) {
  if (is_abstract(decode_brng(stream->brng))) return VSL_RNG_ERROR_ABSTRACT_NO_SAVE;
  FileName file;
  if (int32_t s = file.prepare(name, length); s < 0) return s;
  Channel c{kFile, std::fopen(file.str, "wb"), nullptr, 0, 0};
  if (c.file == nullptr) return VSL_RNG_ERROR_FILE_OPEN;
  int32_t status = save_image(&c, stream);
  if (std::fclose(c.file) != 0) status = VSL_RNG_ERROR_FILE_CLOSE;
  return status;
}

int32_t _vslSaveStreamM(const StreamState* stream, char* memory) {
  if (is_abstract(decode_brng(stream->brng))) return VSL_RNG_ERROR_ABSTRACT_NO_SAVE;
  Channel c{kMemory, nullptr, reinterpret_cast<unsigned char*>(memory), 0, 0};
  return save_image(&c, stream);
}

int32_t _vslLoadStreamF(StreamState** handle, const char* name, int32_t length) {
  *handle = nullptr;
  FileName file;
  if (int32_t s = file.prepare(name, length); s < 0) return s;
  Channel c{kFile, std::fopen(file.str, "rb"), nullptr, 0, 0};
  if (c.file == nullptr) return VSL_RNG_ERROR_FILE_OPEN;
  c.left = file_size(c.file);
  int32_t status = load_image(&c, handle);
  if (std::fclose(c.file) != 0) status = VSL_RNG_ERROR_FILE_CLOSE;
  if (status < 0) _vslDeleteStream(handle);
  return status;
}

int32_t _vslLoadStreamM(StreamState** handle, const char* memory) {
  Channel c{kMemory, nullptr,
            reinterpret_cast<unsigned char*>(const_cast<char*>(memory)), 0, 0};
  int32_t status = load_image(&c, handle);
  if (status < 0) _vslDeleteStream(handle);
  return status;
}

}  // extern "C"
