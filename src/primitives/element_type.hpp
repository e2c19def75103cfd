// The element types of oxa/primitives.h: their sizes and which may be sorted.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oxa/primitives.h"

namespace oxa::prim {

// Bytes per element; 0 for an unknown type code.
constexpr size_t element_bytes(int32_t type) {
  switch (type) {
    case OXA_PRIM_UINT8: case OXA_PRIM_INT8: return 1;
    case OXA_PRIM_UINT16: case OXA_PRIM_INT16: return 2;
    case OXA_PRIM_UINT32: case OXA_PRIM_INT32: case OXA_PRIM_FLOAT: return 4;
    case OXA_PRIM_UINT64: case OXA_PRIM_INT64: case OXA_PRIM_DOUBLE:
    case OXA_PRIM_COMPLEX_FLOAT: return 8;
    case OXA_PRIM_COMPLEX_DOUBLE: return 16;
    default: return 0;
  }
}

}  // namespace oxa::prim
