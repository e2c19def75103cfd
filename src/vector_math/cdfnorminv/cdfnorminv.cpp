// CdfNormInv: r = Phi^-1(a), the inverse of the standard normal CDF.
// Method: y = 2a (a < 1/2) or 2 - 2a, Phi^-1(a) = (2a - 1) * R(y) with R smooth
//   on (0, 1]; the high word of y picks a table row (B - (hy >> s)), the
//   remaining significand bits give t = m - centre, R = row polynomial in t.
//   Double: EP cubic on 16 pieces per binade (|t| <= 1/32), LA degree 11 and
//   HA degree 14 on 4 pieces per binade (|t| <= 1/8); HA keeps c0, c1 and
//   2a - 1 in double-double. Single: HA and LA evaluated in double (degree 5
//   and 4) down to the smallest subnormal; EP in float (degree 2) down to
//   2^-125, below which the scalar routine takes over.
// Accuracy: d HA 0.503 ulp, LA 2.2 ulp, EP 2^-27 rel; s HA 0.54 ulp, LA 1.4 ulp,
//   EP 2^-15 rel (tests/vector_math/accuracy.txt; s over every float).
// Special: 0 and -0 -> -inf, 1 -> +inf, status 2; a < 0, a > 1, +-inf -> NaN,
//   status 1; NaN -> NaN quietly; 1/2 -> +0 exactly. Double a < 2^-54 takes the
//   far-tail routine (cdfnorminv_tail.cpp). The control word is left alone.
// Tables: cdfnorminv_tables.inc, made by tools/fit/cdfnorminv.py.
#include <bit>
#include <cstdint>
#include <limits>

#include "vector_math/cdfnorminv/cdfnorminv.hpp"
#include "vector_math/cdfnorminv/cdfnorminv_rows.hpp"  // the tables, defined once
#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/frame/poly.hpp"

namespace oxa::vml {
namespace {


// Offsets in the constants block that follows the rows of each bulk table.
enum Constant { kRowBase, kMaskBits, kCentre, kHalf, kOne, kTwo, kPosInf, kNegInf, kNumPos, kNumNeg, kZero };

// Row layout of one table: element type R of the table and of the
// arithmetic, row length, polynomial degree, index shift and base, whether c0
// and c1 are split (row = c0_lo, c1_lo, c2..cD, c0_hi, c1_hi), whether 2x - 1
// is kept exact. Double tables are indexed by the high word of y, the float
// table by the bits of y.
template <class R>
struct Layout {
  const R* table;
  int rows, row_length, degree, shift;
  int32_t base;
  bool split, exact_factor;
  const R* constants() const { return table + rows * row_length; }
};

constexpr Layout<double> kDoubleEP{dCdfNormInv_EP_Table, 851, 4, 3, 16, 0x3FEF, false, false};
constexpr Layout<double> kDoubleLA{dCdfNormInv_LA_Table, 213, 12, 11, 18, 0xFFB, false, true};
constexpr Layout<double> kDoubleHA{dCdfNormInv_HA_Table, 212, 17, 14, 18, 0xFFB, true, true};
constexpr Layout<double> kSingleHA{sCdfNormInv_HA_Table, 592, 6, 5, 18, 0xFFB, false, false};
constexpr Layout<double> kSingleLA{sCdfNormInv_LA_Table, 592, 5, 4, 18, 0xFFB, false, false};
constexpr Layout<float> kSingleEP{sCdfNormInv_EP_Table, 504, 4, 2, 21, 0x1FB, false, false};

template <class T, Acc A>
constexpr const auto& layout() {
  if constexpr (std::is_same_v<T, double>) {
    if constexpr (A == Acc::HA) return kDoubleHA;
    else if constexpr (A == Acc::LA) return kDoubleLA;
    else return kDoubleEP;
  } else {
    if constexpr (A == Acc::HA) return kSingleHA;
    else if constexpr (A == Acc::LA) return kSingleLA;
    else return kSingleEP;
  }
}

// One vector reduced: 2x, t and the coefficients of each lane's row.
template <class R, const Layout<R>& L, class Isa>
struct Reduced {
  simd::Vec<R, Isa> x2, t;
  simd::Vec<R, Isa> c[(L.row_length + 3) / 4 * 4];
};

// First half of R(y) * (2x - 1) for the lanes x of one vector: the reduction
// and the table loads. Kernels reduce all their vectors before evaluating
// any, so that the loads of later vectors do not wait behind the polynomials
// of earlier ones.
template <class R, const Layout<R>& L, class Isa>
[[gnu::always_inline]] inline Reduced<R, L, Isa> reduce(simd::Vec<R, Isa> x) {
  using V = simd::Vec<R, Isa>;
  constexpr bool kDouble = std::is_same_v<R, double>;
  Reduced<R, L, Isa> z;
  const V one(R(1)), two(R(2));
  z.x2 = x + x;
  const V y = simd::select(x < V(R(0.5)), two - z.x2, z.x2);

  // Row: B - (hy >> s), clamped to the table: x = 1/2 gives y = 1 and row -1,
  // taken as row 0 where the factor 2x - 1 = 0 makes the result +0; lanes
  // outside the fast range (settled later) land on the first or last row.
  // t = (significand bits below the index, under the exponent of 1.0) - centre.
  V m;
  if constexpr (kDouble) {
    // In the 64-bit lanes directly: no cross-lane shuffle on the way to the loads.
    using VL = simd::Vec<int64_t, Isa>;
    VL k = VL(int64_t{L.base}) - simd::shr<32 + L.shift>(simd::bits(y));
    k = simd::zero_where(VL(0) > k, k);
    const VL last(int64_t{L.rows - 1});
    k = simd::select(k > last, k, last);
    const auto rows = simd::row_pointers(L.table, k, L.row_length);
#pragma GCC unroll 8
    for (int j = 0; j < L.row_length; j += 4) simd::gather_columns(rows, j, z.c + j);
    const VL keep((int64_t{1} << (32 + L.shift)) - 1);
    m = simd::from_bits((simd::bits(y) & keep) | simd::bits(one));
  } else {
    using VI = simd::Vec<int32_t, Isa>;
    VI k = VI(L.base) - simd::shr<L.shift>(simd::bits(y));
    k = simd::min(simd::max(k, VI(0)), VI(L.rows - 1));
    simd::gather_rows(L.table, simd::shl<2>(k), z.c);  // rows of 4 floats
    const VI keep((1 << L.shift) - 1);
    m = simd::from_bits((simd::bits(y) & keep) | simd::bits(one));
  }
  z.t = m - V(L.constants()[kCentre]);
  return z;
}

// Second half: the row polynomial R at t, times 2x - 1.
template <class R, const Layout<R>& L, class Isa>
[[gnu::always_inline]] inline simd::Vec<R, Isa> evaluate(const Reduced<R, L, Isa>& z) {
  using V = simd::Vec<R, Isa>;
  const V t = z.t;
  const V* c = z.c;
  if constexpr (!L.split) {
    // Estrin on c2.. (a long Horner chain bounds the speed), Horner for the
    // last two steps, which keeps the rounding of R near 0.5 ulp.
    const V r = simd::fma(simd::fma(poly::estrin<L.degree - 1>(c + 2, t), t, c[1]), t, c[0]);
    if constexpr (L.exact_factor) {  // 2x - 1 as a double-double: no rounding before the product
      const dd::DD<V> d = dd::fast_two_sum(V(R(-1)), z.x2);
      return simd::fma(r, d.hi, r * d.lo);
    } else {
      return r * (z.x2 - V(R(1)));  // 2x - 1 rounds for x < 1/4: 0.5 ulp more
    }
  } else {
    // R = (c0_hi + c1_hi t) + (c0_lo + c1_lo t + t^2 q), the head exact;
    // q = c2 + c3 t + ... is below 2^-3 of R, so its rounding is negligible.
    // Everything but q is ready early, so only three operations follow q.
    const V q = poly::estrin<L.degree - 1>(c + 2, t);
    const V c0_hi = c[L.degree + 1], c1_hi = c[L.degree + 2];
    const dd::DD<V> lin = dd::two_prod(c1_hi, t);
    const dd::DD<V> head = dd::fast_two_sum(c0_hi, lin.hi);
    const V low = simd::fma(c[1], t, c[0]) + (head.lo + lin.lo);
    const V tail = simd::fma(t * t, q, low);
    // 2x - 1 exactly as a double-double; one rounding for the product.
    const dd::DD<V> d = dd::fast_two_sum(V(R(-1)), z.x2);
    return simd::fma(head.hi, d.hi, simd::fma(tail, d.hi, head.hi * d.lo));
  }
}

// Values the optimiser must not fold, so that 1/0 and inf*0 happen at run time
// and raise the processor's flags.
inline double opaque(double v) {
  asm("" : "+x"(v));
  return v;
}

// Classification on h: the high word (double, with bit 0 set when the low
// word is nonzero) or the bits (float). Returns the status.
template <class T, class K>
int32_t settle_special(uint32_t h, T x, T* r, const K* k) {
  constexpr bool kDouble = std::is_same_v<T, double>;
  constexpr uint32_t kHalfH = kDouble ? 0x3FE00000u : 0x3F000000u;
  constexpr uint32_t kOneH = kDouble ? 0x3FF00000u : 0x3F800000u;
  constexpr uint32_t kInfH = kDouble ? 0x7FF00000u : 0x7F800000u;
  const uint32_t abs_h = h & 0x7FFFFFFFu;
  if (abs_h > kInfH) {  // NaN: quiet it, no status
    *r = x * x;
    return VML_ERR_NONE;
  }
  if (abs_h == 0 || h == kOneH) {  // +-0 -> -inf, 1 -> +inf
    const unsigned index = (h >> 31) | (h < kHalfH ? 1u : 0u);
    *r = static_cast<T>(opaque(k[index ? kNumNeg : kNumPos]) / opaque(k[kZero]));
    return VML_ERR_SINGULARITY;
  }
  *r = static_cast<T>(opaque(k[kPosInf]) * opaque(k[kZero]));  // outside [0, 1]
  return VML_ERR_DOMAIN;
}

}  // namespace

template <class T, Acc A>
struct Policy<fam::CdfNormInv, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr bool kSetsControlWord = false;
  static constexpr T kSafeInput = T(0.75);
  static constexpr bool kFormulaTakesAnyInput = true;  // row indices are clamped

  // Double: fast when 2^-54 <= x < 1, i.e. 0x3C900000 <= hx < 0x3FF00000; the
  // offset maps that interval onto the lowest signed values, so one signed
  // compare finds all others. Float: fast when 0 < x < 1 (bits 1..0x3F7FFFFF).
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> x) {
    if constexpr (kDouble) {
      using VH = simd::Vec<int32_t, simd::Half<Isa>>;
      const VH biased = simd::high_words(x) + VH(0x43700000);
      return simd::widen(biased > VH(static_cast<int32_t>(0x835FFFFFu)));
    } else {
      // Fast from bits L (1, or 2^-125 for EP, whose float arithmetic needs a
      // normal y) to 0x3F7FFFFF; the same biased signed compare.
      using VI = simd::Vec<int32_t, Isa>;
      constexpr uint32_t kLow = A == Acc::EP ? 0x01000000u : 1u;
      const VI biased = simd::bits(x) + VI(static_cast<int32_t>(0x80000000u - kLow));
      return simd::mask_cast<float>(biased > VI(static_cast<int32_t>(0x80000000u + (0x3F7FFFFFu - kLow))));
    }
  }

  static constexpr const auto& L = layout<T, A>();
  using R = std::remove_cvref_t<decltype(*L.table)>;

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> x) {
    if constexpr (std::is_same_v<R, T>) {
      return evaluate(reduce<R, L>(x));
    } else {  // float lanes evaluated in double
      const auto lo = reduce<R, L>(simd::widen_low(x)), hi = reduce<R, L>(simd::widen_high(x));
      return simd::narrow(evaluate(lo), evaluate(hi));
    }
  }

  // Two vectors at once, both reduced before either is evaluated.
  template <class Isa>
  [[gnu::always_inline]] static void vector2(simd::Vec<T, Isa> x0, simd::Vec<T, Isa> x1, simd::Vec<T, Isa>& r0,
                                             simd::Vec<T, Isa>& r1) {
    if constexpr (std::is_same_v<R, T>) {
      const auto z0 = reduce<R, L>(x0), z1 = reduce<R, L>(x1);
      r0 = evaluate(z0), r1 = evaluate(z1);
    } else {
      r0 = vector(x0), r1 = vector(x1);
    }
  }

  // One element outside the fast range: the far tail (double below 2^-54,
  // float EP below 2^-125, through the double HA kernel) or a special value.
  static int32_t scalar(const T* x, T* r) {
    const auto* k = L.constants();
    if constexpr (kDouble) {
      const uint64_t b = std::bit_cast<uint64_t>(*x);
      const uint32_t hx = static_cast<uint32_t>(b >> 32);
      const uint32_t h = hx | (static_cast<uint32_t>(b) != 0 ? 1u : 0u);
      if (h >= 1 && h <= 0x3FEFFFFFu) {
        *r = h == 0x3FE00000u ? k[kZero] : dCdfNormInv_Tail(*x);
        return VML_ERR_NONE;
      }
      return settle_special(h, *x, r, k);
    } else {
      const uint32_t h = std::bit_cast<uint32_t>(*x);
      if (h >= 1 && h <= 0x3F7FFFFFu) {  // reached for EP below 2^-125 only
        const double xd = *x;
        double rd;
        kernel_in1_out1<fam::CdfNormInv, double, Acc::HA>(1, &xd, &rd);
        *r = static_cast<float>(rd);
        return VML_ERR_NONE;
      }
      return settle_special(h, *x, r, k);
    }
  }
};

}  // namespace oxa::vml

#include "vector_math/cdfnorminv/cdfnorminv_kernels.inc"
