// Expands the kernel catalogue (catalogue.def) into the exported kernels, the
// dispatch and cost tables and the accuracy stubs. This is the only file with
// macros: each row has to become several C-linkage definitions whose names are
// spelt from the row's tokens.
#include <cstdint>

#include "oxa/vector_math.h"
#include "vector_math/frame/kernel.hpp"

namespace oxa::vml {

namespace elem {
using s = float;
using d = double;
using c = OxaComplex8;
using z = OxaComplex16;
}  // namespace elem

template <class T> using ptr_in1_out1 = void (*)(int64_t, const T*, T*);
template <class T> using ptr_in2_out1 = void (*)(int64_t, const T*, const T*, T*);
template <class T> using ptr_in1_scalar_out1 = void (*)(int64_t, const T*, T, T*);
template <class T> using ptr_in1_out2 = void (*)(int64_t, const T*, T*, T*);
template <class T> using ptr_linear_frac = void (*)(int64_t, const T*, const T*, T, T, T, T, T*);

// Slot fill-in for levels a function lacks.
template <class P>
constexpr P first_of(P a, P b) { return a != nullptr ? a : b; }
template <class P>
constexpr P first_of(P a, P b, P c) { return first_of(a, first_of(b, c)); }

}  // namespace oxa::vml

// Parameter and argument lists of each shape.
#define OXA_VML_PARAMS_in1_out1(T) (int64_t n, const T* a, T* r)
#define OXA_VML_ARGS_in1_out1 (n, a, r)
#define OXA_VML_PARAMS_in2_out1(T) (int64_t n, const T* a, const T* b, T* r)
#define OXA_VML_ARGS_in2_out1 (n, a, b, r)
#define OXA_VML_PARAMS_in1_scalar_out1(T) (int64_t n, const T* a, T b, T* r)
#define OXA_VML_ARGS_in1_scalar_out1 (n, a, b, r)
#define OXA_VML_PARAMS_in1_out2(T) (int64_t n, const T* a, T* r1, T* r2)
#define OXA_VML_ARGS_in1_out2 (n, a, r1, r2)
#define OXA_VML_PARAMS_linear_frac(T) \
  (int64_t n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* r)
#define OXA_VML_ARGS_linear_frac (n, a, b, scalea, shifta, scaleb, shiftb, r)

// Numbers of the LA and EP stubs per element type.
#define OXA_VML_LOW_s 21
#define OXA_VML_LOW_c 21
#define OXA_VML_LOW_d 50
#define OXA_VML_LOW_z 50
#define OXA_VML_FAST_s 11
#define OXA_VML_FAST_c 11
#define OXA_VML_FAST_d 26
#define OXA_VML_FAST_z 26
#define OXA_VML_NAME(stem, number) OXA_VML_NAME_I(stem, number)
#define OXA_VML_NAME_I(stem, number) stem##_##number

// ---- Pass 1: family tags and exported kernels -------------------------------
#define OXA_VML_KERNEL(t, Func, shape, cpu, acc, tag)                                 \
  extern "C" void oxa_vml_kernel_##t##Func##_##cpu##acc##tag OXA_VML_PARAMS_##shape( \
      oxa::vml::elem::t) {                                                            \
    oxa::vml::kernel_##shape<oxa::vml::fam::Func, oxa::vml::elem::t,                  \
                             oxa::vml::Acc::acc> OXA_VML_ARGS_##shape;                \
  }
#define OXA_VML_LEVEL_no(t, Func, shape, acc, tag)
#define OXA_VML_LEVEL_E9(t, Func, shape, acc, tag) OXA_VML_KERNEL(t, Func, shape, E9, acc, tag)
#define OXA_VML_LEVEL_EX(t, Func, shape, acc, tag) OXA_VML_KERNEL(t, Func, shape, EX, acc, tag)
#define OXA_VML_LEVEL_E7(t, Func, shape, acc, tag) OXA_VML_KERNEL(t, Func, shape, E7, acc, tag)
#define OXA_VML_LEVEL_H8(t, Func, shape, acc, tag) OXA_VML_KERNEL(t, Func, shape, H8, acc, tag)
#define OXA_VML_LEVEL_U8(t, Func, shape, acc, tag) OXA_VML_KERNEL(t, Func, shape, U8, acc, tag)

#define OXA_VML_FAMILY(t, Func, shape, la, ha, ep, cost_la, cost_ha, cost_ep, name) \
  namespace oxa::vml::fam {                                                   \
  struct Func;                                                                \
  }                                                                           \
  OXA_VML_LEVEL_##la(t, Func, shape, LA, ynn)                                 \
  OXA_VML_LEVEL_##ha(t, Func, shape, HA, ynn)                                 \
  OXA_VML_LEVEL_##ep(t, Func, shape, EP, nnn)
#include "vector_math/catalogue.def"
#undef OXA_VML_FAMILY

// ---- Pass 2: dispatch tables, cost tables and stubs -------------------------
#define OXA_VML_PTR_no(t, Func, acc, tag) nullptr
#define OXA_VML_PTR_E9(t, Func, acc, tag) &oxa_vml_kernel_##t##Func##_E9##acc##tag
#define OXA_VML_PTR_EX(t, Func, acc, tag) &oxa_vml_kernel_##t##Func##_EX##acc##tag
#define OXA_VML_PTR_E7(t, Func, acc, tag) &oxa_vml_kernel_##t##Func##_E7##acc##tag
#define OXA_VML_PTR_H8(t, Func, acc, tag) &oxa_vml_kernel_##t##Func##_H8##acc##tag
#define OXA_VML_PTR_U8(t, Func, acc, tag) &oxa_vml_kernel_##t##Func##_U8##acc##tag

#define OXA_VML_STUB(name, t, Func, shape, slot)                                   \
  extern "C" void name OXA_VML_PARAMS_##shape(oxa::vml::elem::t) {                 \
    oxa_vml_kernel_##t##Func##_ttab[slot] OXA_VML_ARGS_##shape;                    \
  }

#define OXA_VML_FAMILY(t, Func, shape, la, ha, ep, cost_la, cost_ha, cost_ep, name)        \
  extern "C" const oxa::vml::ptr_##shape<oxa::vml::elem::t> oxa_vml_kernel_##t##Func##_ttab[3] = { \
      oxa::vml::first_of<oxa::vml::ptr_##shape<oxa::vml::elem::t>>(                         \
          OXA_VML_PTR_##la(t, Func, LA, ynn), OXA_VML_PTR_##ha(t, Func, HA, ynn)),          \
      OXA_VML_PTR_##ha(t, Func, HA, ynn),                                                   \
      oxa::vml::first_of<oxa::vml::ptr_##shape<oxa::vml::elem::t>>(                         \
          OXA_VML_PTR_##ep(t, Func, EP, nnn), OXA_VML_PTR_##la(t, Func, LA, ynn),           \
          OXA_VML_PTR_##ha(t, Func, HA, ynn))};                                             \
  extern "C" const float oxa_vml_kernel_##t##Func##_ctab[3] = {cost_la, cost_ha, cost_ep};  \
  OXA_VML_STUB(_vml##t##Func, t, Func, shape, 1)                                            \
  OXA_VML_STUB(_vml##t##Func##_HA, t, Func, shape, 1)                                       \
  OXA_VML_STUB(OXA_VML_NAME(_vml##t##Func, OXA_VML_LOW_##t), t, Func, shape, 0)             \
  OXA_VML_STUB(OXA_VML_NAME(_vml##t##Func, OXA_VML_FAST_##t), t, Func, shape, 2)
#include "vector_math/catalogue.def"
#undef OXA_VML_FAMILY
