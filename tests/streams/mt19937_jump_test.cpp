// Jump polynomials x^e mod p of the MT19937 skip-ahead against a plain
// reference: square-and-multiply on bit vectors, reducing one bit at a time by
// every term of p. Slow (milliseconds per squaring) but obviously right.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "oxa/streams.h"
#include "streams/mt19937.hpp"
#include "streams/mt19937_jump_poly.hpp"

namespace {

#include "streams/mt19937_poly.inc"

using oxa::streams::kMtDegree;
using oxa::streams::kMtPolyWords;
using Bits = std::vector<uint64_t>;

bool bit_of(const Bits& a, int i) {
  return (a[size_t(i) >> 6] >> (i & 63)) & 1;
}
void flip(Bits& a, int i) {
  a[size_t(i) >> 6] ^= uint64_t(1) << (i & 63);
}

void reduce(Bits& a) {
  for (int i = 2 * kMtDegree; i >= kMtDegree; --i) {
    if (!bit_of(a, i)) continue;
    flip(a, i);
    for (uint16_t k : _vsl_mt19937_poly_terms) flip(a, i - kMtDegree + k);
  }
}

Bits reference_x_pow_mod(unsigned __int128 e) {
  Bits g(2 * kMtPolyWords + 1, 0);
  flip(g, 0);
  int top = 127;
  while (top > 0 && !((e >> top) & 1)) --top;
  for (int b = top; b >= 0; --b) {
    Bits sq(g.size(), 0);
    for (int i = 0; i < kMtDegree; ++i) {
      if (bit_of(g, i)) flip(sq, 2 * i + int((e >> b) & 1));
    }
    reduce(sq);
    g = sq;
  }
  g.resize(kMtPolyWords);
  return g;
}

TEST(Mt19937Jump, PowersOfXMatchReference) {
  const unsigned __int128 two64 = static_cast<unsigned __int128>(1) << 64;
  const unsigned __int128 exponents[] = {
      0,                                  // monomials: no reduction
      19936,                              //
      19937,                              // the low terms of p
      2 * 19937 - 2,                      // the top bit of a square
      (two64 - 1 + 624) / 624 * 624 - 1,  // skip of 2^64 - 1 from a used-up block
      (two64 >> 7) * 0x1F3 + 0x5A5A5,     // mixed bits
      (two64 << 20) | 0xFFFFF,            // beyond 64 bits, every low bit set
  };
  for (const unsigned __int128 e : exponents) {
    alignas(32) uint64_t g[kMtPolyWords];
    oxa::streams::mt19937_x_pow_mod(e, g);
    const Bits expected = reference_x_pow_mod(e);
    for (int i = 0; i < kMtPolyWords; ++i) {
      ASSERT_EQ(g[i], expected[size_t(i)])
          << "exponent bits " << uint64_t(e >> 64) << ":" << uint64_t(e) << " word " << i;
    }
  }
}

// Both forms of the carry-less correlation give the state of plain stepping,
// and agree with each other on the largest count.
TEST(Mt19937Jump, NarrowAndWideProductsAgree) {
  const uint32_t seed[] = {7, 11, 13};
  auto draw = [&](bool narrow, uint64_t consumed, uint64_t skip) {
    oxa::streams::mt19937_skip_narrow_products(narrow);
    StreamState* s = nullptr;
    EXPECT_EQ(_vslNewStreamEx(&s, OXA_BRNG_MT19937, 3, seed), 0);
    std::vector<uint32_t> w(consumed + 700);
    _vsliBRngMT19937(s, int32_t(consumed), w.data());
    if (skip != 0) {
      EXPECT_EQ(_vslSkipAheadStream(s, skip), 0);
    }
    _vsliBRngMT19937(s, 700, w.data());
    _vslDeleteStream(&s);
    oxa::streams::mt19937_skip_narrow_products(false);
    w.resize(700);
    return w;
  };
  for (const bool narrow : {true, false}) {
    for (const uint64_t skip : {624ull * 600 + 5, 1000003ull}) {
      EXPECT_EQ(draw(narrow, 100, skip), draw(narrow, 100 + skip, 0)) << narrow << " " << skip;
    }
  }
  EXPECT_EQ(draw(true, 3, ~uint64_t(0)), draw(false, 3, ~uint64_t(0)));
}

}  // namespace
