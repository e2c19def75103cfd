// The process-wide table of read-only data that streams share by reference
// count (128 entries kept packed at the front), guarded by one spin lock.
#pragma once

#include <atomic>
#include <cstdint>

#include "oxa/streams.h"

namespace oxa::streams {

inline constexpr int32_t kGlobRODataTableSize = 128;

extern GlobRODataTableEntry GlobRODataTable[kGlobRODataTableSize];
extern int32_t GlobRODataTableCount;  // read without the lock by _vslAddChunk only
extern std::atomic<int32_t> VSL_GLOB_RO_DATA_TABLE_LOCKER_1;

// Spin lock: compare-and-exchange 0 -> 1 until it succeeds; release stores 0.
void lock_table();
void unlock_table();

// Count of entries in use, read without the lock (a relaxed snapshot).
int32_t table_count_unlocked();

inline bool key_is_zero(const uint64_t key[2]) { return key[0] == 0 && key[1] == 0; }

// True when the key (non-zero) is in the table (lock, scan, unlock).
bool table_contains(const uint64_t key[2]);

// Releases what a chunk holds: its private data, or one reference to shared
// data. Does not free the chunk record itself.
void release_chunk_data(StreamChunk* chunk);

// If the key is in the table: takes a reference, stores the entry's data in
// *data and returns true.
bool acquire_shared(const uint64_t key[2], void** data);

// The second half of adding a chunk: if its key is in the table the chunk
// takes a reference and the table's data (returns true: the chunk's own
// buffer is no longer referenced); otherwise the key and data become a new
// entry while fewer than 127 are in use, or else the key is zeroed and the
// data stays private. Then the chunk is pushed at the head of the list.
bool link_new_chunk(StreamState* stream, StreamChunk* chunk);

}  // namespace oxa::streams
