// Stable LSD radix sort of typed arrays, the engine behind oxa_prim_sort,
// oxa_prim_sort_index and oxa_prim_argsort, callable by other subsystems.
//   * keys: uint8..uint64, int8..int64, float, double; floats in IEEE total
//     order (see oxa/primitives.h); `descending` reverses the order, stably;
//   * method: keys mapped to unsigned words whose order is the wanted one,
//     11-bit digits, one counting pass for every digit, then one scatter pass
//     per digit that is not the same for every key; n <= 64 by insertion;
//   * threads: min(thread limit, n / 2^16) chunks, so a parallel sort needs
//     n >= OXA_PRIM_SORT_PARALLEL_MIN; each pass counts per chunk and
//     scatters per chunk on the service parallel-for;
//   * large scatters (chunks of 4096 keys or more, 32- and 64-bit keys) stage
//     128 bytes per bucket and write them whole, non-temporally for arrays
//     of OXA_PRIM_NONTEMPORAL_BYTES or more;
//   * memory: n keys (2n for argsort), n indices, the histograms and the
//     staging from oxa_serv_allocate; on Linux the scratch arrays are
//     advised onto 2 MiB pages.
// Return 0, or OXA_PRIM_ERROR_NO_MEMORY with the arrays unchanged.
#pragma once

#include <cstdint>

namespace oxa::prim {

inline constexpr int kDigitBits = 11;
inline constexpr int64_t kInsertionMax = 64;
inline constexpr int64_t kChunkMin = int64_t(1) << 16;

// Sorts keys[0..n); index (may be null) travels with the keys. max_threads 0
// means the service layer's thread limit.
template <class T, class I>
int32_t radix_sort(T* keys, I* index, int64_t n, bool descending, int32_t max_threads = 0);

template <class T>
int32_t radix_sort(T* keys, int64_t n, bool descending, int32_t max_threads = 0) {
  return radix_sort<T, uint32_t>(keys, nullptr, n, descending, max_threads);
}

// index[0..n) = positions of keys in stable sorted order; keys untouched.
template <class T, class I>
int32_t radix_argsort(const T* keys, I* index, int64_t n, bool descending, int32_t max_threads = 0);

}  // namespace oxa::prim
