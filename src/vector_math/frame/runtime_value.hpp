// A value the optimiser must treat as unknown, so that special results made
// by arithmetic (1/0, inf*0, huge*huge, tiny*tiny) are computed at run time
// and raise the processor's exception flags.
#pragma once

namespace oxa::vml {

inline double runtime_value(double v) {
  asm("" : "+x"(v));
  return v;
}

}  // namespace oxa::vml
