// Basic generators: known answers, seed mappings, vector kernels against
// one-at-a-time generation, leapfrog and skip-ahead.
#include <gtest/gtest.h>

#include <cstring>
#include <span>
#include <vector>

#include "streams/known_answers.inc"
#include "streams/stream_fixture.hpp"

using oxa_test::bits;
using oxa_test::Generator;
using oxa_test::kGenerators;
using oxa_test::reals;
using oxa_test::Stream;

namespace {

template <class T>
std::vector<T> as_vector(std::span<const T> s) {
  return {s.begin(), s.end()};
}

std::vector<uint64_t> words64(const std::vector<uint32_t>& w) {
  std::vector<uint64_t> r(w.size() / 2);
  std::memcpy(r.data(), w.data(), r.size() * 8);
  return r;
}

TEST(Generators, KnownIntegerSequences) {
  struct Case {
    const char* what;
    int32_t id;
    std::vector<uint32_t> seeds;
    std::vector<uint32_t> expected;
    int32_t words_per_output;
  };
  std::vector<uint32_t> r250_full(250);
  for (uint32_t i = 0; i < 250; ++i) r250_full[i] = i * 2654435761u + 1;
  const Case cases[] = {
      {"MCG31M1 seed 12345", OXA_BRNG_MCG31M1, {12345}, as_vector<uint32_t>(kat::kMcg31Seed12345), 1},
      {"MRG32K3A six seeds", OXA_BRNG_MRG32K3A, {12345, 12345, 12345, 12345, 12345, 12345},
       as_vector<uint32_t>(kat::kMrgSeed12345), 1},
      {"MRG32K3A no seed: all ones", OXA_BRNG_MRG32K3A, {}, as_vector<uint32_t>(kat::kMrgNoSeed), 1},
      {"MRG32K3A m1 reduces to 0, missing words are 1", OXA_BRNG_MRG32K3A, {4294967087u, 7},
       as_vector<uint32_t>(kat::kMrgTwoSeeds), 1},
      {"R250 full seed", OXA_BRNG_R250, r250_full, as_vector<uint32_t>(kat::kR250FullSeed), 1},
      {"WH set 0", OXA_BRNG_WH, {1, 2, 3, 4}, as_vector<uint32_t>(kat::kWhSet0Seed1234), 4},
      {"WH set 0 by legacy id 4", 4, {1, 2, 3, 4}, as_vector<uint32_t>(kat::kWhSet0Seed1234), 4},
      {"WH set 272, reduced and zero seeds", OXA_BRNG_WH + 272, {16766363u + 5, 0},
       as_vector<uint32_t>(kat::kWhSet272TwoSeeds), 4},
      {"WH set 272 by legacy id 276", 276, {16766363u + 5, 0},
       as_vector<uint32_t>(kat::kWhSet272TwoSeeds), 4},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Stream s(c.id, c.seeds);
    ASSERT_EQ(s.status(), 0);
    const int32_t n = static_cast<int32_t>(c.expected.size()) / c.words_per_output;
    EXPECT_EQ(bits(s, n, c.words_per_output), c.expected);
  }
}

TEST(Generators, R250SequenceAcrossBatchSizes) {
  // Word 0..7, 245..252 and 1190..1199 of the seed-12345 sequence, reached by
  // batches below, at and above the 250-word in-buffer threshold.
  const auto& k = kat::kR250Seed12345;
  for (int32_t first : {1, 249, 250, 251, 1000}) {
    SCOPED_TRACE(first);
    Stream s(OXA_BRNG_R250, {12345});
    std::vector<uint32_t> all = bits(s, first, 1);
    const std::vector<uint32_t> rest = bits(s, 1200 - first, 1);
    all.insert(all.end(), rest.begin(), rest.end());
    for (int i = 0; i < 8; ++i) EXPECT_EQ(all[i], k[i]);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(all[245 + i], k[8 + i]);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(all[1190 + i], k[16 + i]);
  }
}

TEST(Generators, SeedMappings) {
  struct Case {
    const char* what;
    int32_t id;
    std::vector<uint32_t> a, b;  // two seed lists that must give the same stream
  };
  const Case cases[] = {
      {"MCG31M1: 0 becomes 1", OXA_BRNG_MCG31M1, {0}, {1}},
      {"MCG31M1: m becomes 1", OXA_BRNG_MCG31M1, {2147483647u}, {1}},
      {"MCG31M1: no seed is 1", OXA_BRNG_MCG31M1, {}, {1}},
      {"MCG31M1: later seeds ignored", OXA_BRNG_MCG31M1, {5, 6, 7}, {5}},
      {"MCG59: (1, 0) is 1", OXA_BRNG_MCG59, {1, 0}, {1}},
      {"MCG59: masked to 0 becomes 1", OXA_BRNG_MCG59, {0, 0x08000000}, {1}},
      {"MCG59: no seed is 1", OXA_BRNG_MCG59, {}, {1}},
      {"MRG32K3A: all zero x1 gets x1[0] = 1", OXA_BRNG_MRG32K3A, {0, 0, 0, 5, 6, 7},
       {1, 0, 0, 5, 6, 7}},
      {"MRG32K3A: m2 in x2 reduces", OXA_BRNG_MRG32K3A, {1, 2, 3, 4294944443u + 9, 0, 0},
       {1, 2, 3, 9, 0, 0}},
      {"MRG32K3A: all zero x2 gets x2[0] = 1", OXA_BRNG_MRG32K3A, {1, 2, 3, 4294944443u, 0, 0},
       {1, 2, 3, 1, 0, 0}},
      {"R250: 249 seeds use the first only", OXA_BRNG_R250, std::vector<uint32_t>(249, 77), {77}},
      {"R250: seed 0 is 1", OXA_BRNG_R250, {0}, {1}},
      {"R250: no seed is 1", OXA_BRNG_R250, {}, {1}},
      {"WH: no seed is all ones", OXA_BRNG_WH + 3, {}, {1, 1, 1, 1}},
      {"WH: fifth seed ignored", OXA_BRNG_WH + 3, {9, 8, 7, 6, 5}, {9, 8, 7, 6}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Stream x(c.id, c.a), y(c.id, c.b);
    ASSERT_EQ(x.status(), 0);
    ASSERT_EQ(y.status(), 0);
    const int32_t w = c.id >= OXA_BRNG_WH && c.id < OXA_BRNG_SOBOL ? 4 : 2;
    EXPECT_EQ(bits(x, 300, w), bits(y, 300, w));
  }
  // R250's fix: word 7k + 3 keeps bit 31 - k as its highest set bit, so the
  // first 32 of those words are linearly independent.
  Stream r(OXA_BRNG_R250, {12345});
  const auto* x = reinterpret_cast<const uint32_t*>(reinterpret_cast<const char*>(r.get()) + 16);
  for (int k = 0; k < 32; ++k) EXPECT_EQ(31 - __builtin_clz(x[7 * k + 3]), 31 - k) << k;
}

TEST(Generators, MCG59LittleEndianPairAndFirstOutputIsSeed) {
  Stream s(OXA_BRNG_MCG59, {0x89ABCDEFu, 0xFFFFFFFFu});
  EXPECT_EQ(words64(bits(s, 8, 2)), as_vector<uint64_t>(kat::kMcg59SeedPair));
  Stream t(OXA_BRNG_MCG59, {12345});
  EXPECT_EQ(words64(bits(t, 40, 2)), as_vector<uint64_t>(kat::kMcg59Seed12345));
}

TEST(Generators, KnownRealSequences) {
  struct Case {
    int32_t id;
    std::vector<uint32_t> seeds;
    std::span<const double> expected;
  };
  const Case cases[] = {
      {OXA_BRNG_MCG31M1, {12345}, kat::kMcg31Seed12345Real},
      {OXA_BRNG_MCG59, {12345}, kat::kMcg59Seed12345Real},
      {OXA_BRNG_MRG32K3A, {12345, 12345, 12345, 12345, 12345, 12345}, kat::kMrgSeed12345Real},
      {OXA_BRNG_R250, {12345}, kat::kR250Real},
      {OXA_BRNG_WH, {1, 2, 3, 4}, kat::kWhSet0Seed1234Real},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.id);
    Stream s(c.id, c.seeds);
    EXPECT_EQ(reals(s, static_cast<int32_t>(c.expected.size())), as_vector(c.expected));
  }
}

// Every n from 0 to 70, n around the 1024-value blocks, and four buffer
// offsets: a call of n values equals n calls of one value, in double and
// single precision, and leaves the stream where one-at-a-time generation
// leaves it.
TEST(Generators, VectorKernelsMatchOneAtATime) {
  std::vector<int32_t> sizes;
  for (int32_t n = 0; n <= 70; ++n) sizes.push_back(n);
  for (int32_t n : {1023, 1024, 1025, 2048 + 37, 5000}) sizes.push_back(n);
  for (const Generator& g : kGenerators) {
    SCOPED_TRACE(g.name);
    BrngProperties p;
    ASSERT_EQ(_vslGetBrngProperties(g.id, &p), 0);
    for (int32_t n : sizes) {
      for (int offset = 0; offset < 4; ++offset) {
        Stream vec(g.id, oxa_test::seeds_for(g, {2024, 7, 11, 13}));
        Stream one(vec);
        Stream vec_s(vec), one_s(vec);
        std::vector<double> d(static_cast<size_t>(n) + 4), e(static_cast<size_t>(n) + 1);
        std::vector<float> f(static_cast<size_t>(n) + 4), h(static_cast<size_t>(n) + 1);
        ASSERT_EQ(p.GenDouble(vec.get(), n, d.data() + offset, -2.5, 7.0), 0);
        ASSERT_EQ(p.GenSingle(vec_s.get(), n, f.data() + offset, -2.5f, 7.0f), 0);
        for (int32_t i = 0; i <= n; ++i) {
          ASSERT_EQ(p.GenDouble(one.get(), 1, &e[i], -2.5, 7.0), 0);
          ASSERT_EQ(p.GenSingle(one_s.get(), 1, &h[i], -2.5f, 7.0f), 0);
        }
        for (int32_t i = 0; i < n; ++i) {
          ASSERT_EQ(d[offset + i], e[i]) << "n=" << n << " i=" << i;
          ASSERT_EQ(f[offset + i], h[i]) << "n=" << n << " i=" << i;
          ASSERT_GE(d[offset + i], -2.5);
          ASSERT_LE(d[offset + i], 7.0);
        }
        double next;
        float next_s;
        p.GenDouble(vec.get(), 1, &next, -2.5, 7.0);
        p.GenSingle(vec_s.get(), 1, &next_s, -2.5f, 7.0f);
        ASSERT_EQ(next, e[n]) << "state after n=" << n;
        ASSERT_EQ(next_s, h[n]) << "state after n=" << n;
      }
    }
  }
}

TEST(Generators, SkipAheadEqualsStepping) {
  for (const Generator& g : kGenerators) {
    if (!g.skipahead) continue;
    SCOPED_TRACE(g.name);
    for (uint64_t s : {0ull, 1ull, 15ull, 16ull, 17ull, 249ull, 250ull, 1023ull, 1024ull, 1025ull,
                       4099ull}) {
      Stream walked(g.id, {99, 98, 97, 96, 95, 94});
      Stream skipped(walked);
      bits(walked, static_cast<int32_t>(s), g.words_per_output);
      ASSERT_EQ(_vslSkipAheadStream(skipped.get(), s), 0);
      EXPECT_EQ(bits(skipped, 20, g.words_per_output), bits(walked, 20, g.words_per_output)) << s;
    }
    // Large skips compose: s1 then s2 equals s1 + s2.
    Stream one(g.id, {5, 6, 7, 8, 9, 10}), two(one);
    ASSERT_EQ(_vslSkipAheadStream(one.get(), (1ull << 62) + 3), 0);
    ASSERT_EQ(_vslSkipAheadStream(one.get(), (1ull << 61) + 1000), 0);
    ASSERT_EQ(_vslSkipAheadStream(two.get(), (1ull << 62) + (1ull << 61) + 1003), 0);
    EXPECT_EQ(bits(one, 8, g.words_per_output), bits(two, 8, g.words_per_output));
  }
}

TEST(Generators, SkipAheadByPeriodAndKnownJumps) {
  struct Case {
    int32_t id;
    std::vector<uint32_t> seeds;
    uint64_t nskip;
    std::vector<uint32_t> expected;
    int32_t words;
  };
  const Case cases[] = {
      // Full periods (2^31 - 2 and 2^57) return to the start.
      {OXA_BRNG_MCG31M1, {12345}, 2147483646ull, {12345, 467545230u}, 1},
      {OXA_BRNG_MCG59, {12345}, 1ull << 57, {12345, 0}, 2},
      {OXA_BRNG_MRG32K3A, {12345, 12345, 12345, 12345, 12345, 12345}, (1ull << 50) + 12345,
       as_vector<uint32_t>(kat::kMrgSkip2p50), 1},
      {OXA_BRNG_WH, {1, 2, 3, 4}, 1000000000000000ull, as_vector<uint32_t>(kat::kWhSet0Skip1e15), 4},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.id);
    Stream s(c.id, c.seeds);
    ASSERT_EQ(_vslSkipAheadStream(s.get(), c.nskip), 0);
    std::vector<uint32_t> got = bits(s, static_cast<int32_t>(c.expected.size()) / c.words, c.words);
    EXPECT_EQ(got, c.expected);
  }
}

// Substream k of N gives outputs k, k + N, k + 2N, ... of the original; 40
// values per call reach the vector kernels with the leapfrog multiplier.
TEST(Generators, LeapfrogSubstreamsInterleave) {
  for (const Generator& g : kGenerators) {
    SCOPED_TRACE(g.name);
    Stream base(g.id, oxa_test::seeds_for(g, {31337, 4, 5, 6, 7, 8}));
    const std::vector<double> all = reals(Stream(base), 7 * 40);
    for (int32_t nstreams : {1, 3, 7}) {
      for (int32_t k = 0; k < nstreams; ++k) {
        Stream sub(base);
        const int32_t status = _vslLeapfrogStream(sub.get(), k, nstreams);
        if (!g.leapfrog) {
          EXPECT_EQ(status, VSL_RNG_ERROR_NO_LEAPFROG);
          EXPECT_EQ(reals(sub, 10), reals(Stream(base), 10)) << "refused leapfrog changed the state";
          continue;
        }
        ASSERT_EQ(status, 0);
        const std::vector<double> got = reals(sub, 40);
        for (int32_t i = 0; i < 40; ++i)
          ASSERT_EQ(got[i], all[k + i * nstreams]) << "k=" << k << " of " << nstreams << " i=" << i;
      }
    }
  }
}

TEST(Generators, RefusalsLeaveStateAndBadMethodIsRejected) {
  Stream r(OXA_BRNG_R250, {3});
  Stream ref(r);
  EXPECT_EQ(_vslSkipAheadStream(r.get(), 10), VSL_RNG_ERROR_NO_SKIPAHEAD);
  EXPECT_EQ(bits(r, 300, 1), bits(ref, 300, 1));
  for (const Generator& g : kGenerators) {
    BrngProperties p;
    _vslGetBrngProperties(g.id, &p);
    Stream s(g.id, {1});
    EXPECT_EQ(p.InitStream(3, s.get(), 1, nullptr), VSL_ERROR_BAD_INIT_METHOD) << g.name;
  }
}

TEST(Generators, ModularPowers) {
  EXPECT_EQ(_vsliPowMod2P31M1(1132489760u, 0), 1u);
  EXPECT_EQ(_vsliPowMod2P31M1(1132489760u, 2147483646ull), 1u);  // Fermat
  EXPECT_EQ(_vsliPowMod2P31M1(7, 1ull << 63), _vsliPowMod(7, 1ull << 63, 2147483647u));
  EXPECT_EQ(_vsliPowMod(3, 200, 4294967291u), 494459854u);  // pow(3, 200, 4294967291)
  EXPECT_EQ(_vsliPowMod2P59(302875106592253ull, 1ull << 57), 1u);
  EXPECT_EQ(_vsliPowMod2P59(13, 13), 302875106592253ull);
  uint32_t x[3] = {1, 2, 3};
  const uint32_t identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  _vsliVect3PowMod(x, identity, 12345, 101);
  EXPECT_EQ(x[0], 1u);
  EXPECT_EQ(x[2], 3u);
}

}  // namespace
