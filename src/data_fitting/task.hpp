// The data-fitting task record and the helpers its editors, the search and the
// construction kernels share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "oxa/data_fitting.h"
#include "oxa/service.h"

// Field order is part of the record's contract (the front layer reads it).
struct DfTask {
  uint32_t int64_output;  // 0: iQueryVal writes 32 bits, else 64
  int32_t kind;           // always 4
  int32_t precision;      // 1 double task, 0 single task
  int32_t dimension;      // always 1; editors succeed silently otherwise
  int64_t nx;
  const void* x;  // user breakpoints (two ends for a uniform partition)
  int64_t xhint;
  int64_t ny;
  const void** y;  // owned array of pointers into the user's values
  int64_t yhint;
  int64_t s_order;
  int64_t s_type;
  int64_t ic_type;
  const void* ic;
  int64_t bc_type;
  const void* bc;
  void** scoeff;  // owned array of pointers into the user's coefficients
  int64_t scoeffhint;
  int32_t aux_flag;
  int64_t nbins;      // 0 for a task created with a uniform partition
  DfSearchBin* bins;  // owned, kBinEntries entries
  union {
    double d;
    float s;
  } inv_bin_width;  // in the task's precision
};

namespace oxa::df {

inline constexpr int64_t kBinEntries = 1026;  // largest nbins + 2
inline constexpr size_t kAlign = 128;

template <class T>
concept Real = std::is_same_v<T, double> || std::is_same_v<T, float>;

template <Real T>
T& inv_bin_width(DfTask& t) {
  if constexpr (std::is_same_v<T, double>)
    return t.inv_bin_width.d;
  else
    return t.inv_bin_width.s;
}

template <Real T>
T inv_bin_width(const DfTask& t) {
  if constexpr (std::is_same_v<T, double>)
    return t.inv_bin_width.d;
  else
    return t.inv_bin_width.s;
}

inline bool is_storage_hint(int64_t h) {
  return h == DF_STORE_DEFAULT || h == DF_STORE_ROWS || h == DF_STORE_COLS ||
         h == DF_STORE_SEPARATE;
}

template <class P>
P* allocate_array(int64_t n) {
  if (n <= 0) return nullptr;
  return static_cast<P*>(oxa_serv_allocate(static_cast<size_t>(n) * sizeof(P), kAlign));
}

// The y and scoeff pointer arrays keep their length while ny may be edited,
// and the per-function query accepts index ny. So each array records its
// capacity in a 128-byte header in front of it and ends with one extra null
// slot: index ny reads null, and an index beyond the capacity is refused
// instead of reaching outside the block.
template <class P>
P* allocate_pointer_array(int64_t n) {
  if (n <= 0) return nullptr;
  void* block = oxa_serv_allocate(kAlign + static_cast<size_t>(n + 1) * sizeof(P), kAlign);
  if (block == nullptr) return nullptr;
  *static_cast<int64_t*>(block) = n;
  P* array = reinterpret_cast<P*>(static_cast<char*>(block) + kAlign);
  for (int64_t i = 0; i <= n; ++i) array[i] = nullptr;
  return array;
}

template <class P>
int64_t pointer_capacity(P* array) {
  return array == nullptr
             ? 0
             : *reinterpret_cast<const int64_t*>(reinterpret_cast<const char*>(array) - kAlign);
}

template <class P>
void release_pointer_array(P* array) {
  if (array != nullptr)
    oxa_serv_deallocate(const_cast<char*>(reinterpret_cast<const char*>(array)) - kAlign);
}

// Fills the accelerator table of a non-uniform partition in T arithmetic.
template <Real T>
void build_accelerator(DfTask& task);

}  // namespace oxa::df
