// Piecewise polynomials of R(y) = Phi^-1(y/2) / (y - 1), a smooth positive
// function of y in (0, 1]. It is the common factor of two families:
//   Phi^-1(x) = (2x - 1) R(y), y = 2x below 1/2, else 2 - 2x  (CdfNormInv),
//   erfinv(x) = x R(1 - |x|) / sqrt(2)                       (ErfInv).
// Each binade of y is cut into pieces by its leading significand bits; the
// high word of y picks a row (B - (hy >> s)), the remaining significand bits
// under the exponent of 1.0, minus the centre, give t. Tables:
// cdfnorminv_tables.inc (tools/fit/cdfnorminv.py), defined once in
// cdfnorminv_tables.cpp.
#pragma once

#include <cstdint>
#include <type_traits>

#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/kernel.hpp"
#include "vector_math/frame/poly.hpp"
#include "vector_math/frame/simd.hpp"

namespace oxa::vml {

extern const double dCdfNormInv_EP_Table[3415];
extern const double dCdfNormInv_LA_Table[2567];
extern const double dCdfNormInv_HA_Table[3615];
extern const double sCdfNormInv_HA_Table[3563];
extern const double sCdfNormInv_LA_Table[2971];
extern const float sCdfNormInv_EP_Table[2027];
extern const double dCdfNormInv_Tail_Table[352];
extern const double dCdfNormInv_Log_Table[512];
// The far tail's logarithm: polynomial coefficients and ln 2 = hi + lo.
extern const double kLogC3, kLogC4, kLogC5, kLogC6, kTailLn2Hi, kTailLn2Lo;

namespace norm_rows {

// Offsets in the constants block that follows the rows of each bulk table.
enum Constant { kRowBase, kMaskBits, kCentre, kHalf, kOne, kTwo, kPosInf, kNegInf, kNumPos, kNumNeg, kZero };

// Row layout of one table: row length, polynomial degree, index shift and base,
// whether c0 and c1 are split (row = c0_lo, c1_lo, c2..cD, c0_hi, c1_hi).
struct Layout {
  const double* table;
  int rows, row_length, degree, shift;
  int32_t base;
  bool split;
  constexpr const double* constants() const { return table + rows * row_length; }
};

// Double: rows down to y = 2^-53. Single: evaluated in double, rows down to
// the smallest subnormal float.
inline constexpr Layout kDoubleEP{dCdfNormInv_EP_Table, 851, 4, 3, 16, 0x3FEF, false};
inline constexpr Layout kDoubleLA{dCdfNormInv_LA_Table, 213, 12, 11, 18, 0xFFB, false};
inline constexpr Layout kDoubleHA{dCdfNormInv_HA_Table, 212, 17, 14, 18, 0xFFB, true};
inline constexpr Layout kSingleHA{sCdfNormInv_HA_Table, 592, 6, 5, 18, 0xFFB, false};
inline constexpr Layout kSingleLA{sCdfNormInv_LA_Table, 592, 5, 4, 18, 0xFFB, false};

template <class T, Acc A>
constexpr const Layout& layout() {
  if constexpr (std::is_same_v<T, double>)
    return A == Acc::HA ? kDoubleHA : A == Acc::LA ? kDoubleLA : kDoubleEP;
  else
    return A == Acc::HA ? kSingleHA : kSingleLA;  // single EP: the LA rows (in double)
}

// R(y) as hi + lo for four y in (0, 1) within the layout's rows; lo is the
// extra precision of the split (HA) rows, and R = hi alone otherwise. y = 1
// lies just past the top of row 0 and reads row 0 at its lower end: callers
// either have a factor that vanishes there or move y below 1.
template <const Layout& L, class VD>
[[gnu::always_inline]] inline dd::DD<VD> evaluate(VD y) {
  using Isa = typename VD::IsaTag;
  using VH = simd::Vec<int32_t, simd::Half<Isa>>;
  using VL = simd::Vec<int64_t, Isa>;
  const VD one(1.0);
  VH k = VH(L.base) - simd::shr<L.shift>(simd::high_words(y));
  k = simd::max(k, VH(0));
  const auto rows = simd::row_pointers(L.table, simd::mullo(k, VH(L.row_length)));

  // t = (significand bits below the index, under the exponent of 1.0) - centre.
  const VL keep((int64_t{1} << (32 + L.shift)) - 1);
  const VD m = simd::from_bits((simd::bits(y) & keep) | simd::bits(one));
  const VD t = m - VD(L.constants()[kCentre]);

  constexpr int kPadded = (L.row_length + 3) / 4 * 4;
  VD c[kPadded];
#pragma GCC unroll 8
  for (int j = 0; j < L.row_length; j += 4) simd::gather_columns(rows, j, c + j);

  if constexpr (!L.split) {
    // Estrin: the dependency chain of a long Horner scheme bounds the speed.
    return {poly::estrin<L.degree + 1>(c, t), VD(0.0)};
  } else {
    // R = (c0_hi + c1_hi t) + (c0_lo + c1_lo t + t^2 q), the head exact;
    // q = c2 + c3 t + ... is below 2^-3 of R, so its rounding is negligible.
    const VD q = poly::estrin<L.degree - 1>(c + 2, t);
    const VD c0_hi = c[L.degree + 1], c1_hi = c[L.degree + 2];
    const dd::DD<VD> lin = dd::two_prod(c1_hi, t);
    const dd::DD<VD> head = dd::fast_two_sum(c0_hi, lin.hi);
    return {head.hi, simd::fma(t, simd::fma(t, q, c[1]), c[0]) + (head.lo + lin.lo)};
  }
}

}  // namespace norm_rows
}  // namespace oxa::vml
