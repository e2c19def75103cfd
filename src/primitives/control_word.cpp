// C entry points over the control word: read, write, and masked update.
#include "primitives/control_word.hpp"

#include "oxa/primitives.h"

namespace {
constexpr uint32_t kReserved = 0xFFFF0000u;
}  // namespace

extern "C" {

oxa_status oxa_prim_fp_get(uint32_t* word) {
  if (word == nullptr) return OXA_PRIM_ERROR_NULL_POINTER;
  *word = oxa::prim::read_control_word();
  return OXA_PRIM_STATUS_OK;
}

oxa_status oxa_prim_fp_set(uint32_t word) {
  if ((word & kReserved) != 0) return OXA_PRIM_ERROR_BAD_ARGUMENT;
  oxa::prim::write_control_word(word);
  return OXA_PRIM_STATUS_OK;
}

oxa_status oxa_prim_fp_update(uint32_t mask, uint32_t bits, uint32_t* previous) {
  if ((mask & kReserved) != 0) return OXA_PRIM_ERROR_BAD_ARGUMENT;
  const uint32_t old = oxa::prim::read_control_word();
  const uint32_t word = (old & ~mask) | (bits & mask);
  if (word != old) oxa::prim::write_control_word(word);
  if (previous != nullptr) *previous = old;
  return OXA_PRIM_STATUS_OK;
}

}  // extern "C"
