// C entry points of the radix sort: argument checks and the dispatch from
// type codes to the engine's instantiations.
#include <cstdint>

#include "oxa/primitives.h"
#include "primitives/radix_sort.hpp"

namespace oxa::prim {

namespace {

enum class IndexWidth { kNone, k32, k64, kBad };

IndexWidth index_width(int32_t type) {
  switch (type) {
    case OXA_PRIM_INT32: case OXA_PRIM_UINT32: return IndexWidth::k32;
    case OXA_PRIM_INT64: case OXA_PRIM_UINT64: return IndexWidth::k64;
    default: return IndexWidth::kBad;
  }
}

// Calls f(T{}) with the key type named by `type`; false for a type that
// cannot be sorted.
template <class F>
bool with_key_type(int32_t type, F&& f) {
  switch (type) {
    case OXA_PRIM_UINT8: f(uint8_t{}); return true;
    case OXA_PRIM_INT8: f(int8_t{}); return true;
    case OXA_PRIM_UINT16: f(uint16_t{}); return true;
    case OXA_PRIM_INT16: f(int16_t{}); return true;
    case OXA_PRIM_UINT32: f(uint32_t{}); return true;
    case OXA_PRIM_INT32: f(int32_t{}); return true;
    case OXA_PRIM_UINT64: f(uint64_t{}); return true;
    case OXA_PRIM_INT64: f(int64_t{}); return true;
    case OXA_PRIM_FLOAT: f(float{}); return true;
    case OXA_PRIM_DOUBLE: f(double{}); return true;
    default: return false;
  }
}

bool sortable(int32_t type) {
  return with_key_type(type, [](auto) {});
}

// Checks shared by the three entry points, in the documented order.
oxa_status check(int32_t type, int64_t n, const void* keys, IndexWidth width, const void* index,
                 int32_t order) {
  if (n < 0) return OXA_PRIM_ERROR_BAD_LENGTH;
  if (!sortable(type) || width == IndexWidth::kBad) return OXA_PRIM_ERROR_BAD_ARGUMENT;
  if (order != OXA_PRIM_ASCENDING && order != OXA_PRIM_DESCENDING) return OXA_PRIM_ERROR_BAD_ARGUMENT;
  if (n > 0 && (keys == nullptr || (width != IndexWidth::kNone && index == nullptr)))
    return OXA_PRIM_ERROR_NULL_POINTER;
  return OXA_PRIM_STATUS_OK;
}

}  // namespace

}  // namespace oxa::prim

using namespace oxa::prim;

extern "C" {

oxa_status oxa_prim_sort(int32_t type, int64_t n, void* keys, int32_t order) {
  if (const oxa_status s = check(type, n, keys, IndexWidth::kNone, nullptr, order); s != 0) return s;
  oxa_status status = OXA_PRIM_STATUS_OK;
  with_key_type(type, [&](auto k) {
    using T = decltype(k);
    status = radix_sort<T>(static_cast<T*>(keys), n, order == OXA_PRIM_DESCENDING);
  });
  return status;
}

oxa_status oxa_prim_sort_index(int32_t type, int64_t n, void* keys, int32_t index_type,
                               void* index, int32_t order) {
  const IndexWidth width = index_width(index_type);
  if (const oxa_status s = check(type, n, keys, width, index, order); s != 0) return s;
  oxa_status status = OXA_PRIM_STATUS_OK;
  const bool descending = order == OXA_PRIM_DESCENDING;
  with_key_type(type, [&](auto k) {
    using T = decltype(k);
    T* t = static_cast<T*>(keys);
    status = width == IndexWidth::k32
                 ? radix_sort<T, uint32_t>(t, static_cast<uint32_t*>(index), n, descending)
                 : radix_sort<T, uint64_t>(t, static_cast<uint64_t*>(index), n, descending);
  });
  return status;
}

oxa_status oxa_prim_argsort(int32_t type, int64_t n, const void* keys, int32_t index_type,
                            void* index, int32_t order) {
  const IndexWidth width = index_width(index_type);
  if (const oxa_status s = check(type, n, keys, width, index, order); s != 0) return s;
  if (width == IndexWidth::k32 && n > (int64_t(1) << 31)) return OXA_PRIM_ERROR_BAD_LENGTH;
  oxa_status status = OXA_PRIM_STATUS_OK;
  const bool descending = order == OXA_PRIM_DESCENDING;
  with_key_type(type, [&](auto k) {
    using T = decltype(k);
    const T* t = static_cast<const T*>(keys);
    status = width == IndexWidth::k32
                 ? radix_argsort<T, uint32_t>(t, static_cast<uint32_t*>(index), n, descending)
                 : radix_argsort<T, uint64_t>(t, static_cast<uint64_t*>(index), n, descending);
  });
  return status;
}

}  // extern "C"
