// Shared read-only data table and its spin lock.
#include "streams/shared_table.hpp"

#include <x86intrin.h>

#include "oxa/service.h"

namespace oxa::streams {

GlobRODataTableEntry GlobRODataTable[kGlobRODataTableSize] = {};
// Written only under the lock; the atomic_ref reads let _vslAddChunk look at it
// without the lock and stay free of data races.
int32_t GlobRODataTableCount = 0;
std::atomic<int32_t> VSL_GLOB_RO_DATA_TABLE_LOCKER_1{0};

void lock_table() {
  int32_t expected = 0;
  while (!VSL_GLOB_RO_DATA_TABLE_LOCKER_1.compare_exchange_weak(expected, 1,
                                                               std::memory_order_acquire)) {
    expected = 0;
  }
}

void unlock_table() { VSL_GLOB_RO_DATA_TABLE_LOCKER_1.store(0, std::memory_order_release); }

int32_t table_count_unlocked() {
  return std::atomic_ref<int32_t>(GlobRODataTableCount).load(std::memory_order_relaxed);
}

static void set_count(int32_t v) {
  std::atomic_ref<int32_t>(GlobRODataTableCount).store(v, std::memory_order_relaxed);
}

// Index of the entry with this key, or -1. Caller holds the lock.
static int32_t find_locked(const uint64_t key[2]) {
  for (int32_t i = 0; i < GlobRODataTableCount; ++i) {
    if (GlobRODataTable[i].key[0] == key[0] && GlobRODataTable[i].key[1] == key[1]) return i;
  }
  return -1;
}

bool table_contains(const uint64_t key[2]) {
  lock_table();
  const bool found = find_locked(key) >= 0;
  unlock_table();
  return found;
}

// Drops one reference to the entry at index i; the last one frees the
// entry's data and moves the last entry into its place. Caller holds the lock.
static void drop_reference_locked(int32_t i) {
  GlobRODataTableEntry& e = GlobRODataTable[i];
  if (e.refs-- != 1) return;
  oxa_serv_deallocate(e.data);
  const int32_t last = GlobRODataTableCount - 1;
  set_count(last);
  if (i != last) e = GlobRODataTable[last];
}

// Looking a key up and acting on the result happen in one critical section,
// so that streams sharing a key may be created and deleted on different
// threads at once.
void release_chunk_data(StreamChunk* chunk) {
  if (!key_is_zero(chunk->key)) {
    lock_table();
    const int32_t i = find_locked(chunk->key);
    if (i >= 0) drop_reference_locked(i);
    unlock_table();
    if (i >= 0) return;  // the data was the table's
  }
  oxa_serv_deallocate(chunk->data);
}

bool acquire_shared(const uint64_t key[2], void** data) {
  if (key_is_zero(key)) return false;
  lock_table();
  const int32_t i = find_locked(key);
  if (i >= 0) {
    GlobRODataTable[i].refs += 1;
    *data = GlobRODataTable[i].data;
  }
  unlock_table();
  return i >= 0;
}

bool link_new_chunk(StreamState* stream, StreamChunk* chunk) {
  bool swapped = false;
  if (!key_is_zero(chunk->key)) {
    // Deliberately 127 for the count read without the lock, 128 under it.
    const bool room = table_count_unlocked() < kGlobRODataTableSize - 1;
    bool shared = false;
    lock_table();
    const int32_t i = find_locked(chunk->key);
    if (i >= 0) {
      GlobRODataTable[i].refs += 1;
      chunk->data = GlobRODataTable[i].data;
      shared = swapped = true;
    } else if (room && GlobRODataTableCount < kGlobRODataTableSize) {
      GlobRODataTableEntry& e = GlobRODataTable[GlobRODataTableCount];
      e.key[0] = chunk->key[0];
      e.key[1] = chunk->key[1];
      e.refs = 1;
      e.data = chunk->data;
      set_count(GlobRODataTableCount + 1);
      shared = true;
    }
    unlock_table();
    if (!shared) chunk->key[0] = chunk->key[1] = 0;  // table full: the data stays private
  }
  chunk->next = stream->chunks;
  stream->chunks = chunk;
  return swapped;
}

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslFindGlobRODataTableEntry(GlobRODataTableEntry** entry, const uint64_t key[2]) {
  if (key == nullptr || key_is_zero(key)) return VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND;
  lock_table();
  const int32_t i = find_locked(key);
  unlock_table();
  if (i < 0) return VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND;
  *entry = &GlobRODataTable[i];
  return 0;
}

int32_t _vslCreateGlobRODataTableEntry(GlobRODataTableEntry** entry, const uint64_t key[2],
                                       void* data) {
  lock_table();
  if (GlobRODataTableCount >= kGlobRODataTableSize) {
    unlock_table();
    return VSL_RNG_ERROR_RO_TABLE_FULL;
  }
  GlobRODataTableEntry& e = GlobRODataTable[GlobRODataTableCount];
  e.key[0] = key[0];
  e.key[1] = key[1];
  e.refs = 1;
  e.data = data;
  set_count(GlobRODataTableCount + 1);
  *entry = &e;
  unlock_table();
  return 0;
}

int32_t _vslRegisterGlobRODataReference(StreamChunk* holder, const uint64_t key[2]) {
  lock_table();
  const int32_t i = find_locked(key);
  if (i >= 0) {
    GlobRODataTable[i].refs += 1;
    holder->data = GlobRODataTable[i].data;
  }
  unlock_table();
  return 0;
}

int32_t _vslUnregisterGlobRODataReference(const uint64_t key[2]) {
  lock_table();
  const int32_t i = find_locked(key);
  if (i >= 0) drop_reference_locked(i);
  unlock_table();
  return 0;
}

int32_t _vslGenerateNewGlobalRODataTableEntryId(uint64_t key[2], uint64_t high) {
  key[0] = __rdtsc();
  key[1] = high;
  if (key_is_zero(key)) return 0;
  while (table_contains(key)) {
    key[0] = __rdtsc();
    if (key_is_zero(key)) break;
  }
  return 0;
}

}  // extern "C"
