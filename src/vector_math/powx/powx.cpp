// Powx: r = a^b for a vector a and one scalar b.
// Method: |a|^b = e^(b ln|a|). d HA and LA: ln|a| in double-double
//   (ln_core.hpp, about 2^-66 relative), b ln|a| as a double-double, e^(hi +
//   lo) (exp_core.hpp; HA adds the table tail). d EP, and all single levels
//   (evaluated in double): ln|a| rounded to double, then e^x. A negative a with an
//   integer b takes the sign of a when b is odd.
// Accuracy: d HA 0.74 ulp, LA 0.74 ulp (both on subnormal results), EP
//   2^-31 rel; s HA 0.50 ulp, LA 0.532 ulp, EP 2^-19 rel (measured by
//   tests/vector_math/accuracy.txt).
// Special: the C99 pow cases: b = +-0 or a = 1 -> 1 (even for NaN); NaN
//   otherwise -> NaN quietly; a = +-0 with b < 0 -> +-inf (the sign of a only
//   for odd integer b), status 2; a = +-0 with b > 0 -> +-0; infinite a or b
//   -> 0, 1 or inf as C99 says, no status; a < 0 with finite non-integer b ->
//   NaN, status 1; overflow -> +-inf, status 3; a result below the smallest
//   normal -> that result, status 4 (also when it is exact, e.g. 2^-1074).
//   The fast path takes normal a (negative only for integer b) with
//   |b| (|exponent of a| + 1) < 1015 (s: < 125), so its result is normal;
//   everything else goes to the scalar routine.
// Tables: those of Exp and Ln.
#include <cmath>
#include <cstdint>
#include <limits>

#include "vector_math/exp/exp_core.hpp"
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/frame/runtime_value.hpp"
#include "vector_math/ln/ln_core.hpp"

namespace oxa::vml {

namespace fam {
struct Powx {
  static constexpr const char* kName = "Powx";
};
}  // namespace fam

namespace {

// |a|^b for positive normal doubles a (after any scaling, k_adjust added to
// the exponent of a), with |b ln a| <= 746; returns the argument of e^ too.
template <class T, Acc A>
struct PowCore {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr bool kDD = kDouble && A != Acc::EP;  // |b ln a| up to 709 needs ln a beyond double
  // ln's relative truncation error is multiplied by |b ln a| <= 709 (float:
  // 104) in the argument of e^: 2^-70 for degree 9, 2^-54.5 for 8, 2^-38.5
  // for 5 (double); 2^-41 for 5, 2^-26 for 4, 2^-18 for 3 (float).
  static constexpr int kLnDeg = kDouble ? (A == Acc::HA ? 9 : A == Acc::LA ? 8 : 5)
                                        : (A == Acc::HA ? 5 : A == Acc::LA ? 4 : 3);
  static constexpr int kExpDeg = kDouble ? (A == Acc::EP ? 3 : 5) : (A == Acc::EP ? 2 : 3);
  using E = expc::Exp<kExpDeg, kDouble && A != Acc::EP, kDD>;

  // The argument x + x_lo of e^.
  template <class VD>
  [[gnu::always_inline]] static dd::DD<VD> argument(VD a, VD b, VD k_adjust) {
    if constexpr (kDD) {
      const dd::DD<VD> l = lnc::ln_hilo<kLnDeg, true>(a, k_adjust);
      const VD hi = b * l.hi;
      return {hi, simd::fma(b, l.lo, simd::fms(b, l.hi, hi))};
    } else {
      return {b * lnc::ln_plain<kLnDeg>(a, k_adjust), VD(0.0)};
    }
  }

  template <class VD>
  [[gnu::always_inline]] static VD eval(VD a, VD b) {
    const dd::DD<VD> x = argument(a, b, VD(0.0));
    return E::eval(x.hi, x.lo);
  }
};

struct ExponentKind {
  bool integer;  // finite and whole, or infinite (even)
  bool odd;      // an odd integer
};

inline ExponentKind classify(double y) {
  if (!std::isfinite(y)) return {true, false};
  const bool integer = std::trunc(y) == y;
  return {integer, integer && std::fabs(y) < 0x1p53 && std::fmod(y, 2.0) != 0.0};
}

// a^b in double for one element of any kind; *status as C99 pow reports it.
template <class T, Acc A>
double pow_scalar(double x, double y, int32_t* status) {
  *status = VML_ERR_NONE;
  if (y == 0 || x == 1) return 1.0;
  if (std::isnan(x) || std::isnan(y)) return x + y;
  const ExponentKind kind = classify(y);
  if (x == 0) {  // also a subnormal when denormals are taken as zero
    const double zero = kind.odd ? std::copysign(0.0, x) : 0.0;
    if (y > 0) return zero;
    *status = VML_ERR_SINGULARITY;
    return runtime_value(1.0) / runtime_value(zero);
  }
  if (std::isinf(y)) {
    const double ax = std::fabs(x);
    if (ax == 1) return 1.0;
    return (ax < 1) == (y < 0) ? HUGE_VAL : 0.0;
  }
  if (std::isinf(x)) {
    const double mag = y < 0 ? 0.0 : HUGE_VAL;
    return x < 0 && kind.odd ? -mag : mag;
  }
  if (x < 0 && !kind.integer) {
    *status = VML_ERR_DOMAIN;
    return runtime_value(HUGE_VAL) * runtime_value(0.0);
  }
  // Finite nonzero x, finite nonzero y: e^(y ln|x|) over the whole range.
  double ax = std::fabs(x);
  double k_adjust = 0.0;
  if (ax < 0x1p-1022) {
    ax *= 0x1p64;
    k_adjust = -64.0;
  }
  using C = PowCore<T, A>;
  double hi[4], lo[4];
  const auto arg = C::argument(simd::broadcast(ax), simd::broadcast(y), simd::broadcast(k_adjust));
  simd::store(hi, arg.hi);
  simd::store(lo, arg.lo);
  const double mag = expc::exp_wide<typename C::E>(hi[0], lo[0], status);
  return x < 0 && kind.odd ? -mag : mag;
}

}  // namespace

template <class T, Acc A>
struct Policy<fam::Powx, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  using Core = PowCore<T, A>;

  // Lanes for the scalar routine: a zero, subnormal, infinite or NaN; a
  // negative with b not an integer; b infinite or NaN; or a result that may
  // leave the normal range, judged by |b| (|e| + 1) against the limit, where
  // 2^e <= |a| < 2^(e+1).
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> a, simd::Vec<T, Isa> b) {
    if constexpr (kDouble) {
      using VH = simd::Vec<int32_t, simd::Half<Isa>>;
      const VH abs_hi = simd::high_words(a) & VH(0x7FFFFFFF);
      const auto bad_a = (VH(0x00100000) > abs_hi) | (abs_hi > VH(0x7FEFFFFF));
      const simd::Vec<T, Isa> e = simd::to_double(simd::shr<20>(abs_hi) - VH(1023));
      return simd::widen(bad_a) | common(a, b, e, 1015.0);
    } else {
      using VI = simd::Vec<int32_t, Isa>;
      const VI abs_bits = simd::bits(a) & VI(0x7FFFFFFF);
      const auto bad_a = (VI(0x00800000) > abs_bits) | (abs_bits > VI(0x7F7FFFFF));
      const simd::Vec<T, Isa> e = simd::to_float(simd::shr<23>(abs_bits) - VI(127));
      return simd::mask_cast<float>(bad_a) | common(a, b, e, 125.0f);
    }
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> a, simd::Vec<T, Isa> b) {
    if constexpr (kDouble) {
      return with_sign(a, b, Core::eval(simd::abs(a), b));
    } else {
      const simd::Vec<T, Isa> m = simd::abs(a);
      const simd::Vec<T, Isa> r = simd::narrow(Core::eval(simd::widen_low(m), simd::widen_low(b)),
                                               Core::eval(simd::widen_high(m), simd::widen_high(b)));
      return with_sign(a, b, r);
    }
  }

  // One element outside the fast range.
  static int32_t scalar(const T* a, const T* b, T* r) {
    int32_t status;
    const double v = pow_scalar<T, A>(static_cast<double>(*a), static_cast<double>(*b), &status);
    if constexpr (kDouble) {
      *r = v;
      return status;
    } else {
      const float f = static_cast<float>(v);
      *r = f;
      if (status != VML_ERR_NONE) return status;  // the double already over- or underflowed
      if (std::isinf(f) && std::isfinite(v)) return VML_ERR_OVERFLOW;
      if (std::isfinite(v) && v != 0 && std::fabs(f) < std::numeric_limits<float>::min()) return VML_ERR_UNDERFLOW;
      return VML_ERR_NONE;
    }
  }

 private:
  // Lanes of a negative a with b not an integer, b not finite, or
  // |b| (|e| + 1) >= limit (also when b is NaN: the compare is unordered).
  template <class V>
  static auto common(V a, V b, V e, T limit) {
    const auto whole = simd::round_even(b) == b;  // +-inf counts as whole
    const auto negative = a < V(T(0));
    const auto big = simd::nlt(simd::abs(b) * (simd::abs(e) + V(T(1))), V(limit));
    return simd::and_not(negative, whole) | big;
  }

  // Odd integer b: the result takes the sign of a.
  template <class V>
  static V with_sign(V a, V b, V r) {
    const V half = b * V(T(0.5));
    const auto odd = simd::and_not(simd::round_even(b) == b, simd::round_even(half) == half);
    return r | simd::keep_where(odd, simd::sign_bit(a));
  }
};

}  // namespace oxa::vml

#include "vector_math/powx/powx_kernels.inc"
