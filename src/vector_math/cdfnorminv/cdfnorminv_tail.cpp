// Far tail of the inverse normal CDF, 0 < x < 2^-54 (result below -8.1):
// with w = -ln x and s = 1/sqrt(w), Phi^-1(x) = -Q(s) * sqrt(w) where Q is
// smooth and close to sqrt(2). ln x, s and sqrt(w) are carried in
// double-double so that only the last product rounds noticeably. Rows of the
// Q table hold c0..c14 and, in their 16th slot, the low part of c0.
#include <bit>
#include <cmath>
#include <cstdint>

#include "vector_math/cdfnorminv/cdfnorminv.hpp"
#include "vector_math/cdfnorminv/cdfnorminv_rows.hpp"  // the tables, defined once
#include "vector_math/frame/dd.hpp"

namespace oxa::vml {
namespace {


using D2 = dd::DD<double>;

// ln x for a positive finite x, as a double-double (relative error ~2^-70
// for the |ln x| > 37 used here).
D2 log_dd(double x) {
  uint64_t b = std::bit_cast<uint64_t>(x);
  int e = static_cast<int>(b >> 52) - 1023;
  if ((b >> 52) == 0) {  // subnormal: 1.f - 1 = x * 2^1022, now normal
    const double m = std::bit_cast<double>(b | 0x3FF0000000000000ull) - 1.0;
    b = std::bit_cast<uint64_t>(m);
    e = static_cast<int>(b >> 52) - 1023 - 1022;
  }
  const double m = std::bit_cast<double>((b & 0x000FFFFFFFFFFFFFull) | 0x3FF0000000000000ull);
  const int k = static_cast<int>((b >> 44) & 0xFF);
  const double r = dCdfNormInv_Log_Table[2 * k];
  const double minus_ln_r = dCdfNormInv_Log_Table[2 * k + 1];
  const double u = std::fma(m, r, -1.0);  // |u| < 2^-8; rounding 2^-61 absolute
  const double u2 = u * u;
  // ln(1 + u) - u, error below 2^-60 absolute.
  const double p = u2 * (-0.5 + kLogC3 * u) + u2 * u2 * (kLogC4 + kLogC5 * u + kLogC6 * u2);
  const double ed = e;
  const D2 a = dd::two_sum(ed * kTailLn2Hi, minus_ln_r);
  const D2 b2 = dd::two_sum(a.hi, u);
  return dd::fast_two_sum(b2.hi, b2.lo + a.lo + (ed * kTailLn2Lo + p));
}

}  // namespace

double dCdfNormInv_Tail(double x) {
  const D2 L = log_dd(x);
  const D2 w{-L.hi, -L.lo};

  // s = 1/sqrt(w): one Newton step from the double estimate, residual in dd.
  const double s0 = 1.0 / std::sqrt(w.hi);
  const D2 s0sq = dd::two_prod(s0, s0);
  const double e = std::fma(-w.hi, s0sq.hi, 1.0) - w.hi * s0sq.lo - w.lo * s0sq.hi;
  const D2 s = dd::fast_two_sum(s0, 0.5 * s0 * e);

  const int j = static_cast<int>(std::nearbyint(128.0 * s.hi));
  const double v = (s.hi - j * 0x1p-7) + s.lo;  // the difference is exact
  const double* c = dCdfNormInv_Tail_Table + 16 * j;
  double q = c[14];
  for (int i = 13; i >= 1; --i) q = std::fma(q, v, c[i]);
  // Q = c0 + v * q with c0 carried as c[0] + c[15].
  const D2 Q = dd::fast_two_sum(c[0], std::fma(v, q, c[15]));

  // sqrt(w) = s * w in double-double, then -Q * sqrt(w) with one rounding.
  const D2 sw0 = dd::two_prod(s.hi, w.hi);
  const D2 sw = dd::fast_two_sum(sw0.hi, sw0.lo + s.hi * w.lo + s.lo * w.hi);
  return -std::fma(Q.hi, sw.hi, Q.hi * sw.lo + Q.lo * sw.hi);
}

}  // namespace oxa::vml
