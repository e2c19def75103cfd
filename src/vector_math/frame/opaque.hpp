// A value the optimiser must not fold, so that special results such as 1/0
// and inf*0 are computed at run time and raise the processor's flags.
#pragma once

namespace oxa::vml {

template <class T>
inline T opaque(T v) {
  asm("" : "+x"(v));
  return v;
}

}  // namespace oxa::vml
