// Quasi-random generators: reference points, van der Corput, the net
// property, skip-ahead, leapfrog, seed layouts and refusals, copies and
// shared direction tables.
#include <gtest/gtest.h>

#include <vector>

#include "streams/quasi_random_answers.inc"
#include "streams/stream_fixture.hpp"

using oxa_test::Stream;

namespace {

std::vector<uint32_t> words(const Stream& s, int32_t n) {
  BrngProperties p;
  EXPECT_EQ(_vslGetBrngProperties(s.get()->brng, &p), 0);
  std::vector<uint32_t> r(static_cast<size_t>(n));
  EXPECT_EQ(p.GenBits(s.get(), n, r.data()), 0);
  return r;
}

uint64_t fnv1a(const std::vector<uint32_t>& w, int shift) {
  uint64_t h = 0xCBF29CE484222325ull;
  for (uint32_t x : w) h = (h ^ (x >> shift)) * 0x100000001B3ull;
  return h;
}

constexpr int32_t kQuasi[] = {OXA_BRNG_SOBOL, OXA_BRNG_NIEDERR};

TEST(QuasiRandom, SobolEqualsReferencePoints) {
  for (const auto& c : qr_kat::kSobolHashes) {
    Stream s(OXA_BRNG_SOBOL, {c.dim});
    ASSERT_EQ(s.status(), 0);
    // Odd-sized calls cross the eight-point blocks at every phase.
    std::vector<uint32_t> all;
    for (int32_t left = int32_t(c.points * c.dim), n = 1; left > 0; n = n * 3 % 1000 + 1) {
      const auto part = words(s, std::min(n, left));
      all.insert(all.end(), part.begin(), part.end());
      left -= int32_t(part.size());
    }
    EXPECT_EQ(fnv1a(all, 0), c.fnv1a) << "dimension " << c.dim;
  }
  Stream s3(OXA_BRNG_SOBOL, {3});
  EXPECT_EQ(words(s3, 24), std::vector<uint32_t>(std::begin(qr_kat::kSobolDim3), std::end(qr_kat::kSobolDim3)));
}

TEST(QuasiRandom, NiederreiterEqualsReferencePoints) {
  const struct {
    uint32_t dim;
    std::vector<uint32_t> expected;
  } cases[] = {{1, {std::begin(qr_kat::kNiederDim1), std::end(qr_kat::kNiederDim1)}},
               {2, {std::begin(qr_kat::kNiederDim2), std::end(qr_kat::kNiederDim2)}}};
  for (const auto& c : cases) {
    Stream s(OXA_BRNG_NIEDERR, {c.dim});
    std::vector<uint32_t> w = words(s, int32_t(c.expected.size()));
    for (uint32_t& x : w) x >>= 1;
    EXPECT_EQ(w, c.expected) << c.dim;
  }
  Stream s(OXA_BRNG_NIEDERR, {qr_kat::kNiederHash.dim});
  EXPECT_EQ(fnv1a(words(s, int32_t(qr_kat::kNiederHash.points * qr_kat::kNiederHash.dim)), 1),
            qr_kat::kNiederHash.fnv1a);
}

// Dimension 1 of both is van der Corput in Gray-code order: point i is the
// bit reversal of i ^ (i >> 1).
TEST(QuasiRandom, DimensionOneIsVanDerCorput) {
  for (int32_t id : kQuasi) {
    Stream s(id, {1});
    const std::vector<uint32_t> w = words(s, 5000);
    for (uint32_t i = 1; i <= 5000; ++i) {
      uint32_t g = i ^ (i >> 1), rev = 0;
      for (int b = 0; b < 32; ++b) rev |= ((g >> b) & 1u) << (31 - b);
      ASSERT_EQ(w[i - 1], rev) << id << " point " << i;
    }
  }
}

// (t, m, s)-nets: points 0 .. 2^m - 1 (the origin and the first 2^m - 1) put
// exactly 2^t points in every elementary box of volume 2^(t - m).
TEST(QuasiRandom, FirstPointsFormNets) {
  const struct {
    int32_t id;
    uint32_t s, t;
  } cases[] = {{OXA_BRNG_NIEDERR, 1, 0}, {OXA_BRNG_NIEDERR, 2, 0}, {OXA_BRNG_NIEDERR, 3, 1},
               {OXA_BRNG_NIEDERR, 4, 3}, {OXA_BRNG_SOBOL, 2, 0}, {OXA_BRNG_SOBOL, 3, 1}};
  for (const auto& c : cases) {
    for (uint32_t m = c.t; m <= 11; ++m) {
      Stream st(c.id, {c.s});
      std::vector<uint32_t> pts = words(st, int32_t(((1u << m) - 1) * c.s));
      pts.insert(pts.begin(), c.s, 0u);
      // Every split of m - t digits over the s coordinates.
      std::vector<uint32_t> digits(c.s, 0);
      for (;;) {
        uint32_t used = 0;
        for (uint32_t j = 0; j < c.s; ++j) used += digits[j];
        if (used == m - c.t) {
          std::vector<uint32_t> count(size_t{1} << (m - c.t), 0);
          for (size_t p = 0; p < pts.size(); p += c.s) {
            uint32_t box = 0;
            for (uint32_t j = 0; j < c.s; ++j)
              box = (box << digits[j]) | (digits[j] ? pts[p + j] >> (32 - digits[j]) : 0);
            ++count[box];
          }
          for (uint32_t k : count) ASSERT_EQ(k, 1u << c.t) << c.id << " s=" << c.s << " m=" << m;
        }
        uint32_t j = 0;
        while (j < c.s && ++digits[j] > m - c.t) digits[j++] = 0;
        if (j == c.s) break;
      }
    }
  }
}

// Skip-ahead by k values equals generating and dropping k; leapfrog to
// component k equals every d-th value from k, also after a skip.
TEST(QuasiRandom, SkipAheadAndLeapfrogMatchStepping) {
  for (int32_t id : kQuasi) {
    for (uint32_t d : {1u, 3u, 10u, 40u}) {
      Stream base(id, {d});
      const std::vector<uint32_t> all = words(Stream(base), int32_t(d * 3000));
      for (uint64_t k : {1ull, 2ull, 7ull, 8ull * d, 8ull * d + 5, 1000ull}) {
        Stream s(base);
        ASSERT_EQ(_vslSkipAheadStream(s.get(), k), 0);
        const auto got = words(s, 100);
        for (int i = 0; i < 100; ++i) ASSERT_EQ(got[i], all[k + i]) << id << " d=" << d << " k=" << k;
      }
      for (uint32_t k : {0u, d - 1, d / 2}) {
        Stream s(base);
        ASSERT_EQ(_vslSkipAheadStream(s.get(), uint64_t{d} * 5), 0);
        ASSERT_EQ(_vslLeapfrogStream(s.get(), int32_t(k), 2147483647), 0);
        const auto got = words(s, 1000);
        for (uint32_t i = 0; i < 1000; ++i) ASSERT_EQ(got[i], all[(i + 5) * d + k]) << d << " " << k;
        ASSERT_EQ(_vslSkipAheadStream(s.get(), 17), 0);  // skips count points now
        EXPECT_EQ(words(s, 1)[0], all[(1000 + 5 + 17) * d + k]);
      }
    }
  }
}

TEST(QuasiRandom, RefusalsAndTheEndOfTheSequence) {
  for (int32_t id : kQuasi) {
    Stream s(id, {4}), ref(s);
    const uint32_t k = 4;
    EXPECT_EQ(_vslLeapfrogStream(s.get(), 0, 4), VSL_RNG_ERROR_NO_LEAPFROG);
    EXPECT_EQ(_vslLeapfrogStream(s.get(), 4, 2147483647), VSL_RNG_ERROR_NO_LEAPFROG);
    EXPECT_EQ(_vslSkipAheadStream(s.get(), 0), VSL_RNG_ERROR_NO_SKIPAHEAD);
    EXPECT_EQ(_vslSkipAheadStream(s.get(), ~0ull), VSL_RNG_ERROR_NO_SKIPAHEAD);
    // Points 1 .. 2^32 - 1 exist: the last one can be reached, not the one after.
    EXPECT_EQ(_vslSkipAheadStream(s.get(), 0xFFFFFFFFull * k), VSL_RNG_ERROR_NO_SKIPAHEAD);
    EXPECT_EQ(words(s, 40), words(ref, 40)) << "refusals leave the state";
    Stream end(id, {4});
    ASSERT_EQ(_vslSkipAheadStream(end.get(), (0xFFFFFFFFull - 2) * k), 0);
    const auto tail = words(end, 3 * k);
    Stream first(id, {4});
    EXPECT_EQ(std::vector<uint32_t>(tail.begin() + 2 * k, tail.end()), words(first, int32_t(k)))
        << "after point 2^32 - 1 comes point 1";
    // The Gray code of point 2^32 - 1 is 1 << 31: coordinate 1 is 2^-32.
    EXPECT_EQ(tail[k], 1u) << "first coordinate of point 2^32 - 1";
    Stream last(id, {4});
    EXPECT_EQ(_vslSkipAheadStream(last.get(), 0xFFFFFFFFull * k - 1), 0);
  }
}

TEST(QuasiRandom, SeedLayouts) {
  // The caller's own polynomials and numbers for the last dimensions: here
  // the built-in ones of dimensions 2 and 3 (x + 1, m = 1; x^2 + x + 1, m = 1, 3).
  const struct {
    int32_t id;
    std::vector<uint32_t> own, same;
  } same[] = {
      {OXA_BRNG_SOBOL, {3, 2, 3, 7, 1, 1, 3}, {3}},
      {OXA_BRNG_SOBOL, {3, 3, 1, 3, 7, 1, 1, 3}, {3}},
      {OXA_BRNG_SOBOL, {2, 0}, {2}},
      {OXA_BRNG_SOBOL, {}, {1}},
      {OXA_BRNG_NIEDERR, {3, 2, 3, 7}, {3}},
      {OXA_BRNG_NIEDERR, {4, 4, 2, 3, 7, 11}, {4}},
  };
  for (const auto& c : same) {
    Stream a(c.id, c.own), b(c.id, c.same);
    ASSERT_EQ(a.status(), 0);
    EXPECT_EQ(words(a, 3000), words(b, 3000)) << c.id << " " << c.own.size();
  }
  Stream other(OXA_BRNG_NIEDERR, {2, 1, 37});  // x^5 + x^2 + 1 in dimension 2
  Stream plain(OXA_BRNG_NIEDERR, {2});
  EXPECT_NE(words(other, 64), words(plain, 64));
  const struct {
    int32_t id;
    std::vector<uint32_t> seeds;
  } bad[] = {
      {OXA_BRNG_SOBOL, {0}},              {OXA_BRNG_SOBOL, {2601}},
      {OXA_BRNG_SOBOL, {2, 3}},           // more own dimensions than dimensions
      {OXA_BRNG_SOBOL, {2, 1, 7, 1}},     // degree 2 needs two numbers
      {OXA_BRNG_SOBOL, {2, 1, 7, 1, 3, 9}},  // one word too many
      {OXA_BRNG_SOBOL, {2, 1, 6, 1, 3}},  // no constant term
      {OXA_BRNG_SOBOL, {2, 1, 7, 1, 2}},  // even m_2
      {OXA_BRNG_SOBOL, {2, 1, 7, 1, 5}},  // m_2 >= 4
      {OXA_BRNG_NIEDERR, {10495}},        {OXA_BRNG_NIEDERR, {2, 1, 5}},  // x^2 + 1 = (x + 1)^2
      {OXA_BRNG_NIEDERR, {2, 1}},         {OXA_BRNG_NIEDERR, {2, 1, 1}},  // degree 0
  };
  for (const auto& c : bad) {
    Stream s(c.id, c.seeds);
    EXPECT_EQ(s.status(), VSL_ERROR_BAD_ARGUMENT) << c.id << " " << c.seeds.size();
  }
  EXPECT_EQ(Stream(OXA_BRNG_SOBOL, {2600}).status(), 0);
  EXPECT_EQ(Stream(OXA_BRNG_NIEDERR, {10494}).status(), 0);
}

// Small calls and large ones (streamed to memory), at an odd output offset.
TEST(QuasiRandom, RealsScaleTheWords) {
  for (int32_t id : kQuasi) {
    for (int32_t n : {999, (1 << 18) + 5}) {
      Stream s(id, {7}), t(s), u(s);
      const auto w = words(s, n);
      std::vector<double> d(size_t(n) + 1);
      std::vector<float> f(static_cast<size_t>(n));
      BrngProperties p;
      _vslGetBrngProperties(id, &p);
      ASSERT_EQ(p.GenDouble(t.get(), n, d.data() + 1, -1.0, 3.0), 0);
      ASSERT_EQ(p.GenSingle(u.get(), n, f.data(), 0.0f, 1.0f), 0);
      for (int i = 0; i < n; ++i) {
        ASSERT_EQ(d[i + 1], -1.0 + 4.0 * 0x1p-32 * w[i]) << i;
        ASSERT_EQ(f[i], 0x1p-32f * static_cast<float>(w[i])) << i;
      }
      EXPECT_EQ(words(t, 5), words(s, 5));
    }
  }
}

// Built-in Sobol tables of one dimension are shared; a copy, a state copy and
// a saved image continue the stream.
TEST(QuasiRandom, SharedTablesCopiesAndImages) {
  Stream a(OXA_BRNG_SOBOL, {5}), b(OXA_BRNG_SOBOL, {5}), c(OXA_BRNG_SOBOL, {6});
  EXPECT_EQ(_vslSearchChunk(a.get(), 9), _vslSearchChunk(b.get(), 9));
  EXPECT_NE(_vslSearchChunk(a.get(), 9), _vslSearchChunk(c.get(), 9));
  EXPECT_NE(_vslSearchChunk(a.get(), 13), _vslSearchChunk(b.get(), 13));
  for (int32_t id : kQuasi) {
    Stream s(id, {5});
    words(s, 37);
    ASSERT_EQ(_vslLeapfrogStream(s.get(), 3, 2147483647), 0);
    words(s, 11);
    Stream copy(s), state(id, {2});
    ASSERT_EQ(_vslCopyStreamState(state.get(), s.get()), 0);
    std::vector<char> image(size_t(_vslGetStreamSize(s.get())));
    ASSERT_EQ(_vslSaveStreamM(s.get(), image.data()), 0);
    Stream loaded;
    ASSERT_EQ(_vslLoadStreamM(loaded.handle(), image.data()), 0);
    const auto expected = words(s, 500);
    EXPECT_EQ(words(copy, 500), expected);
    EXPECT_EQ(words(state, 500), expected);
    EXPECT_EQ(words(loaded, 500), expected);
  }
}

}  // namespace
