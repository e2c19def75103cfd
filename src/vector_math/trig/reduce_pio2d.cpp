// Exact reduction of any finite double by pi/2 (Payne-Hanek): x * 2/pi is
// formed in 256-bit fixed point from the 53-bit significand and a 256-bit
// window of the bits of 2/pi, starting where the bits before it only add
// multiples of 4 to the product. The product's two integer bits are the
// quadrant; its 254 fraction bits (error below 2^-201, while the fraction is
// never below about 2^-62 for a double) become a double-double and are scaled
// by pi/2 in double-double: the remainder's relative error is about 2^-100.
#include <bit>
#include <cstdint>

#include "vector_math/frame/dd.hpp"
#include "vector_math/trig/trig.hpp"

namespace oxa::vml {
namespace {

#include "vector_math/trig/trig_tables.inc"

using u128 = unsigned __int128;

// 256-bit value in four limbs, most significant first.
struct U256 {
  uint64_t w[4];
};

U256 shift_left(U256 v, int s) {
  while (s >= 64) {
    v = {{v.w[1], v.w[2], v.w[3], 0}};
    s -= 64;
  }
  if (s > 0) {
    for (int i = 0; i < 3; ++i) v.w[i] = (v.w[i] << s) | (v.w[i + 1] >> (64 - s));
    v.w[3] <<= s;
  }
  return v;
}

int leading_bit(const U256& v) {
  for (int i = 0; i < 4; ++i)
    if (v.w[i] != 0) return 255 - 64 * i - __builtin_clzll(v.w[i]);
  return -1;
}

}  // namespace

extern "C" int32_t oxa_vml_kernel_reduce_pio2d(double x, double* r) {
  const uint64_t b = std::bit_cast<uint64_t>(x);
  const int biased = static_cast<int>((b >> 52) & 0x7FF);
  if (biased < 0x3FE) {  // |x| < 1/2: nothing to take away
    r[0] = x, r[1] = 0.0;
    return 0;
  }
  const uint64_t m = (b & 0x000FFFFFFFFFFFFFull) | 0x0010000000000000ull;
  const int e = biased - 1075;  // |x| = m 2^e, e >= -54

  // Bit i of 2/pi (weight 2^-i) adds m 2^(e-i) b_i, a multiple of 4 when
  // i <= e - 2: the window holds bits e-1 .. e+254 (word 0 of the table is
  // padding, so a window that starts before the binary point reads zeros).
  const int start = e - 2 + 64;
  const int word = start >> 6, sh = start & 63;
  uint64_t win[4];
  for (int j = 0; j < 4; ++j)
    win[j] = sh == 0 ? kTwoOverPiBits[word + j]
                     : (kTwoOverPiBits[word + j] << sh) | (kTwoOverPiBits[word + j + 1] >> (64 - sh));

  // m * window = x * 2/pi * 2^254 modulo 2^256 (bits beyond the window add
  // less than 2^53 to this product).
  uint64_t l[4];
  u128 t = 0;
  for (int j = 3; j >= 0; --j) {
    t = static_cast<u128>(m) * win[j] + (t >> 64);
    l[j] = static_cast<uint64_t>(t);
  }

  int32_t q = static_cast<int32_t>(l[0] >> 62);
  U256 f{{l[0] & 0x3FFFFFFFFFFFFFFFull, l[1], l[2], l[3]}};  // fraction, 254 bits
  bool negative = false;
  if (f.w[0] >> 61) {  // fraction >= 1/2: take the next quadrant, 1 - fraction
    q += 1;
    negative = true;
    for (uint64_t& w : f.w) w = ~w;  // 2^256 - 1 - f, then + 1, then mod 2^254
    for (int i = 3; i >= 0 && ++f.w[i] == 0; --i) {
    }
    f.w[0] &= 0x3FFFFFFFFFFFFFFFull;
  }

  double hi = 0.0, lo = 0.0;
  if (const int top = leading_bit(f); top >= 0) {
    // Put the leading bit at 255: f 2^-254 = g 2^(-254-s). The top 53 bits
    // convert exactly; the next 75 round once (relative 2^-106 of the whole).
    const int s = 255 - top;
    const U256 g = shift_left(f, s);
    const uint64_t head = g.w[0] & ~uint64_t{0x7FF};
    const u128 rest = (static_cast<u128>(g.w[0] & 0x7FF) << 64) | g.w[1];
    const dd::DD<double> frac =
        dd::fast_two_sum(__builtin_ldexp(static_cast<double>(head), -126 - s + 64),
                         __builtin_ldexp(static_cast<double>(rest), -126 - s));
    const dd::DD<double> red = dd::mul(frac, dd::DD<double>{kPio2Hi, kPio2Lo});
    hi = red.hi, lo = red.lo;
  }
  if (negative) hi = -hi, lo = -lo;
  if (b >> 63) hi = -hi, lo = -lo, q = -q;
  r[0] = hi, r[1] = lo;
  return q & 3;
}

}  // namespace oxa::vml
