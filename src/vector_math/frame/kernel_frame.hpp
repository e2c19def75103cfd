// The kernel frame: everything a vector-math kernel does besides its formula.
//
//   * control word: unless the family opts out, set flush-to-zero and
//     denormals-are-zero from the mode's denormal field and select rounding to
//     nearest, writing MXCSR only if it differs, and restore it on exit only if
//     it was changed;
//   * blocked loop: passes of two vectors, then one vector, then groups of half,
//     quarter, ... a vector down to 1 element, as n's low bits require; partial
//     groups go through a stack buffer padded with the family's safe input;
//   * special lanes: the family's integer test on the inputs gives a lane mask;
//     those lanes are replaced by the safe input before the vector formula runs
//     (so table lookups never see them), then settled one by one, lowest first,
//     by the family's scalar routine (called out of line: it is large and
//     rare, and inlined it would weigh on every call's fixed cost); a
//     nonzero status goes to the error routine, which may replace the
//     element. A family whose formula is safe
//     on any input (it clamps its own table indices) sets
//     kFormulaTakesAnyInput and saves the replacement, which lies on the
//     critical path of every block.
//
// A family provides Policy<fam::Name, T, A> with only its mathematics:
//   static Mask<T, Isa> special(Vec<T, Isa> a [, Vec<T, Isa> b]);  // lanes to settle
//   static Vec<T, Isa> vector(Vec<T, Isa> a [, Vec<T, Isa> b]);     // the fast formula
//   static int32_t scalar(const T* a, [const T* b,] T* r);          // one element, its status
// (templates over Isa, or over the vector type; the one-in-two-out shape has
// vector(a, r1&, r2&) and scalar(a, r1, r2)), optionally, for the
// one-in-one-out shape, a formula for a whole pass,
//   static void vector2(Vec a0, Vec a1, Vec& r0, Vec& r1);
// (latency-bound formulas gain by starting both vectors' table loads before
// either polynomial), and instantiates the kernels it exports, e.g.
//   template void kernel_in1_out1<fam::Name, double, Acc::HA>(int64_t, const double*, double*);
// Defaults a policy may override:
//   kSetsControlWord = true      // false for families that leave MXCSR alone
//   kSafeInput = 1, kSafeInput2 = 1  // inputs inside the fast range (a, b)
//   kFormulaTakesAnyInput = false    // see above
// A family without special lanes (the exact arithmetic, the rounding family)
// omits special() and scalar(); its kernels then run the formula alone.
// The error name is kErrorName<fam::Name, T, A> (kernel.hpp): "v<t><kName of
// the family tag>" unless specialised.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "oxa/vector_math.h"
#include "primitives/control_word.hpp"
#include "vector_math/frame/errors.hpp"
#include "vector_math/frame/kernel.hpp"
#include "vector_math/frame/simd.hpp"
#include "vector_math/frame/thread_state.hpp"

namespace oxa::vml {

// MXCSR bits: flush-to-zero 0x8000, rounding control 0x6000, denormals-are-zero 0x40.
class ControlWordScope {
 public:
  [[gnu::always_inline]] explicit ControlWordScope(bool active) {
    if (!active) return;
    const uint32_t wanted =
        (current_mode() & OXA_VML_DENORMAL_MASK) == OXA_VML_DENORMAL_FLUSH ? 0x8040u : 0u;
    saved_ = prim::read_control_word();
    if ((saved_ & 0xE040u) != wanted) {
      prim::write_control_word((saved_ & 0xFFFF1FBFu) | wanted);
      changed_ = true;
    }
  }
  [[gnu::always_inline]] ~ControlWordScope() {
    if (changed_) prim::write_control_word(saved_);
  }
  ControlWordScope(const ControlWordScope&) = delete;
  ControlWordScope& operator=(const ControlWordScope&) = delete;

 private:
  uint32_t saved_ = 0;
  bool changed_ = false;
};

namespace frame {

using simd::Mask;
using simd::Vec;

// The defaults of the policy block above.
template <class P>
constexpr bool sets_control_word() {
  if constexpr (requires { P::kSetsControlWord; }) return P::kSetsControlWord;
  return true;
}
template <class P, class T>
constexpr T safe_input() {
  if constexpr (requires { P::kSafeInput; }) return P::kSafeInput;
  return T(1);
}
template <class P, class T>
constexpr T safe_input2() {
  if constexpr (requires { P::kSafeInput2; }) return P::kSafeInput2;
  return T(1);
}
template <class P>
constexpr bool has_special_lanes() {
  return requires { &P::scalar; };
}
template <class P>
constexpr bool formula_takes_any_input() {
  if constexpr (requires { P::kFormulaTakesAnyInput; }) return P::kFormulaTakesAnyInput;
  return !has_special_lanes<P>();
}

// The family's special-lane test, or no lanes for a family without one.
template <class P, class T, class Isa, class... V>
[[gnu::always_inline]] inline Mask<T, Isa> special_lanes(V... x) {
  if constexpr (has_special_lanes<P>())
    return P::special(x...);
  else
    return simd::no_lanes<T, Isa>();
}

// The inputs the vector formula sees: special lanes replaced by `safe`,
// unless the family's formula takes any input.
template <class P, class T, class Isa>
[[gnu::always_inline]] inline Vec<T, Isa> screen(Vec<T, Isa> x, Mask<T, Isa> mask, T safe) {
  if constexpr (formula_takes_any_input<P>()) return x;
  return simd::select(mask, x, Vec<T, Isa>(safe));
}

// Loads g elements (a whole vector, or fewer padded with `pad`).
template <class Isa, class T>
inline Vec<T, Isa> load_group(const T* p, int g, T pad) {
  constexpr int W = Vec<T, Isa>::kLanes;
  if (g == W) return simd::load<Isa>(p);
  T buf[W];
  for (int k = 0; k < W; ++k) buf[k] = k < g ? p[k] : pad;
  return simd::load<Isa>(buf);
}

// Stores the first g lanes.
template <class T, class Isa>
inline void store_group(T* p, Vec<T, Isa> x, int g) {
  constexpr int W = Vec<T, Isa>::kLanes;
  if (g == W) return simd::store(p, x);
  T buf[W];
  simd::store(buf, x);
  std::memcpy(p, buf, sizeof(T) * static_cast<size_t>(g));
}

// In-place calls (an output array is an input array): the vector pass has
// already stored over the special lanes' inputs, so put the inputs back from
// the registers before the scalar routine reads them.
template <class T, class Isa>
inline void restore_lanes(T* out, const T* in, int32_t i, Vec<T, Isa> x, unsigned bits) {
  if (out != in || bits == 0) return;
  alignas(sizeof(Vec<T, Isa>)) T lanes[Vec<T, Isa>::kLanes];
  simd::store(lanes, x);
  for (; bits != 0; bits &= bits - 1) out[i + __builtin_ctz(bits)] = lanes[__builtin_ctz(bits)];
}

// Shapes: how one group of lanes is loaded, computed, stored and settled.
// P is the policy, Isa the instruction set, `name` the error name.
template <class P, class T, class Isa>
struct In1Out1 {
  using V = Vec<T, Isa>;
  const T* a;
  T* r;
  const char* name;
  struct Lanes { V a; };
  static constexpr T kSafe = safe_input<P, T>();
  Lanes load(int32_t i, int g) const { return {load_group<Isa>(a + i, g, kSafe)}; }
  static Mask<T, Isa> special(const Lanes& x) { return special_lanes<P, T, Isa>(x.a); }
  [[gnu::always_inline]] void compute_store(int32_t i, int g, Lanes x, Mask<T, Isa> mask) const {
    const V y = P::vector(screen<P>(x.a, mask, kSafe));
    store_group(r + i, y, g);
  }
  // A whole pass of two vectors; families may evaluate both together.
  void compute_store2(int32_t i, Lanes x0, Lanes x1, Mask<T, Isa> m0, Mask<T, Isa> m1) const {
    if constexpr (requires(V v) { P::vector2(v, v, v, v); }) {
      V y0, y1;
      P::vector2(screen<P>(x0.a, m0, kSafe), screen<P>(x1.a, m1, kSafe), y0, y1);
      simd::store(r + i, y0), simd::store(r + i + V::kLanes, y1);
    } else {
      compute_store(i, V::kLanes, x0, m0), compute_store(i + V::kLanes, V::kLanes, x1, m1);
    }
  }
  void restore(int32_t i, const Lanes& x, unsigned bits) const { restore_lanes(r, a, i, x.a, bits); }
  [[gnu::noinline, gnu::cold]] void settle(int32_t i) const {
    if constexpr (has_special_lanes<P>())
      if (const int32_t s = P::scalar(a + i, r + i); s != 0) report_error<T>(s, i, a, a, r, r, name);
  }
};

template <class P, class T, class Isa>
struct In2Out1 {
  using V = Vec<T, Isa>;
  const T* a;
  const T* b;
  T* r;
  const char* name;
  struct Lanes { V a, b; };
  static constexpr T kSafe = safe_input<P, T>(), kSafe2 = safe_input2<P, T>();
  Lanes load(int32_t i, int g) const {
    return {load_group<Isa>(a + i, g, kSafe), load_group<Isa>(b + i, g, kSafe2)};
  }
  static Mask<T, Isa> special(const Lanes& x) { return special_lanes<P, T, Isa>(x.a, x.b); }
  [[gnu::always_inline]] void compute_store(int32_t i, int g, Lanes x, Mask<T, Isa> mask) const {
    const V y = P::vector(screen<P>(x.a, mask, kSafe), screen<P>(x.b, mask, kSafe2));
    store_group(r + i, y, g);
  }
  void restore(int32_t i, const Lanes& x, unsigned bits) const {
    restore_lanes(r, a, i, x.a, bits);
    restore_lanes(r, b, i, x.b, bits);
  }
  [[gnu::noinline, gnu::cold]] void settle(int32_t i) const {
    if constexpr (has_special_lanes<P>())
      if (const int32_t s = P::scalar(a + i, b + i, r + i); s != 0) report_error<T>(s, i, a, b, r, r, name);
  }
};

// Vector and scalar (the scalar is reported as the second argument). Special
// lanes are those the family's test marks for (a, b); b is never replaced.
template <class P, class T, class Isa>
struct In1ScalarOut1 {
  using V = Vec<T, Isa>;
  const T* a;
  T b;
  T* r;
  const char* name;
  struct Lanes { V a; };
  static constexpr T kSafe = safe_input<P, T>();
  Lanes load(int32_t i, int g) const { return {load_group<Isa>(a + i, g, kSafe)}; }
  Mask<T, Isa> special(const Lanes& x) const { return P::special(x.a, V(b)); }
  [[gnu::always_inline]] void compute_store(int32_t i, int g, Lanes x, Mask<T, Isa> mask) const {
    const V y = P::vector(screen<P>(x.a, mask, kSafe), V(b));
    store_group(r + i, y, g);
  }
  void restore(int32_t i, const Lanes& x, unsigned bits) const { restore_lanes(r, a, i, x.a, bits); }
  [[gnu::noinline, gnu::cold]] void settle(int32_t i) const {
    if (const int32_t s = P::scalar(a + i, &b, r + i); s != 0)
      report_error_site<T>({s, i, a, a[i], b, r, r, name});
  }
};

template <class P, class T, class Isa>
struct In1Out2 {
  using V = Vec<T, Isa>;
  const T* a;
  T* r1;
  T* r2;
  const char* name;
  struct Lanes { V a; };
  static constexpr T kSafe = safe_input<P, T>();
  Lanes load(int32_t i, int g) const { return {load_group<Isa>(a + i, g, kSafe)}; }
  static Mask<T, Isa> special(const Lanes& x) { return special_lanes<P, T, Isa>(x.a); }
  [[gnu::always_inline]] void compute_store(int32_t i, int g, Lanes x, Mask<T, Isa> mask) const {
    V y1, y2;
    P::vector(screen<P>(x.a, mask, kSafe), y1, y2);
    store_group(r1 + i, y1, g);
    store_group(r2 + i, y2, g);
  }
  void restore(int32_t i, const Lanes& x, unsigned bits) const {
    restore_lanes(r1, a, i, x.a, bits);
    restore_lanes(r2, a, i, x.a, bits);
  }
  [[gnu::noinline, gnu::cold]] void settle(int32_t i) const {
    if constexpr (has_special_lanes<P>())
      if (const int32_t s = P::scalar(a + i, r1 + i, r2 + i); s != 0)
        report_error<T>(s, i, a, a, r1, r2, name);
  }
};

// Two arrays and four scalars: r = (scalea*a + shifta) / (scaleb*b + shiftb).
// The scalars reach the formula as broadcast vectors; no special lanes.
template <class P, class T, class Isa>
struct LinearFrac {
  using V = Vec<T, Isa>;
  const T* a;
  const T* b;
  V scalea, shifta, scaleb, shiftb;
  T* r;
  struct Lanes { V a, b; };
  Lanes load(int32_t i, int g) const { return {load_group<Isa>(a + i, g, T(1)), load_group<Isa>(b + i, g, T(1))}; }
  static Mask<T, Isa> special(const Lanes&) { return simd::no_lanes<T, Isa>(); }
  [[gnu::always_inline]] void compute_store(int32_t i, int g, Lanes x, Mask<T, Isa>) const {
    store_group(r + i, P::vector(x.a, x.b, scalea, shifta, scaleb, shiftb), g);
  }
  void restore(int32_t, const Lanes&, unsigned) const {}
  void settle(int32_t) const {}
};

// One group of g lanes at element i.
template <class Shape, class T, class Isa>
inline void group(const Shape& io, int32_t i, int g) {
  const auto x = io.load(i, g);
  const Mask<T, Isa> mask = io.special(x);
  unsigned bits = simd::lane_bits(mask) & ((1u << g) - 1u);
  io.compute_store(i, g, x, mask);
  io.restore(i, x, bits);
  while (bits != 0) {
    const int k = __builtin_ctz(bits);
    bits &= bits - 1;
    io.settle(i + k);
  }
}

// The blocked loop shared by every shape.
template <class P, class T, class Isa, class Shape>
void run(int64_t count, const Shape& shape) {
  // A local copy keeps the array pointers in registers across the stores.
  const Shape io = shape;
  constexpr int W = Vec<T, Isa>::kLanes;
  const int32_t n = static_cast<int32_t>(count);  // the arithmetic kernels use 32 bits of n
  if (n <= 0) return;
  ControlWordScope control(sets_control_word<P>());
  int32_t i = 0;
  for (; n - i >= 2 * W; i += 2 * W) {
    const auto x0 = io.load(i, W);
    const auto x1 = io.load(i + W, W);
    const Mask<T, Isa> m0 = io.special(x0), m1 = io.special(x1);
    if constexpr (requires { io.compute_store2(i, x0, x1, m0, m1); }) {
      io.compute_store2(i, x0, x1, m0, m1);
    } else {
      io.compute_store(i, W, x0, m0);
      io.compute_store(i + W, W, x1, m1);
    }
    unsigned bits = simd::lane_bits(m0) | (simd::lane_bits(m1) << W);
    if (bits != 0) {
      io.restore(i, x0, bits & ((1u << W) - 1u));
      io.restore(i + W, x1, bits >> W);
    }
    while (bits != 0) {
      const int k = __builtin_ctz(bits);
      bits &= bits - 1;
      io.settle(i + k);
    }
  }
  for (int g = W; g >= 1; g /= 2) {
    if (n - i >= g) {
      group<Shape, T, Isa>(io, i, g);
      i += g;
    }
  }
}

}  // namespace frame

template <class F, class T, Acc A, class Isa>
void kernel_linear_frac(int64_t n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* r) {
  using P = Policy<F, T, A>;
  using V = simd::Vec<T, Isa>;
  frame::run<P, T, Isa>(n, frame::LinearFrac<P, T, Isa>{a, b, V(scalea), V(shifta), V(scaleb), V(shiftb), r});
}

template <class F, class T, Acc A, class Isa>
void kernel_in1_out1(int64_t n, const T* a, T* r) {
  using P = Policy<F, T, A>;
  frame::run<P, T, Isa>(n, frame::In1Out1<P, T, Isa>{a, r, kErrorName<F, T, A>});
}

template <class F, class T, Acc A, class Isa>
void kernel_in2_out1(int64_t n, const T* a, const T* b, T* r) {
  using P = Policy<F, T, A>;
  frame::run<P, T, Isa>(n, frame::In2Out1<P, T, Isa>{a, b, r, kErrorName<F, T, A>});
}

template <class F, class T, Acc A, class Isa>
void kernel_in1_scalar_out1(int64_t n, const T* a, T b, T* r) {
  using P = Policy<F, T, A>;
  frame::run<P, T, Isa>(n, frame::In1ScalarOut1<P, T, Isa>{a, b, r, kErrorName<F, T, A>});
}

template <class F, class T, Acc A, class Isa>
void kernel_in1_out2(int64_t n, const T* a, T* r1, T* r2) {
  using P = Policy<F, T, A>;
  frame::run<P, T, Isa>(n, frame::In1Out2<P, T, Isa>{a, r1, r2, kErrorName<F, T, A>});
}

}  // namespace oxa::vml
