// The Exp, Ln and Sin kernels instantiated for Avx512 (avx512_kernels.cpp,
// the one file built with AVX-512 enabled), by slot: LA, HA, EP as in the
// dispatch tables; a null entry where the family has no kernel of its own.
#pragma once

#include <cstdint>

namespace oxa::test {

struct Avx512Family {
  const char* name;
  void (*d[3])(int64_t, const double*, double*);
  void (*s[3])(int64_t, const float*, float*);
};

extern const Avx512Family kAvx512Families[3];  // Exp, Ln, Sin

}  // namespace oxa::test
