// PHILOX4X32X10 and ARS5 raw words against Random123's philox4x32 (10 rounds)
// and ars4x32 (5 rounds) as the oracle; buffering, skip-ahead and the
// processor checks; TRNG statuses.
#include <gtest/gtest.h>

#include <Random123/ars.h>
#include <Random123/philox.h>

#include <cstdint>
#include <vector>

#include "oxa/streams.h"
#include "streams/cpu_features.hpp"

namespace {

using Words = std::vector<uint32_t>;

struct Kind {
  const char* name;
  int32_t id;
  int key_words;
  // The oracle: the four words of the block of counter c under key k.
  void (*oracle)(const uint32_t c[4], const uint32_t k[4], uint32_t out[4]);
};

void philox_oracle(const uint32_t c[4], const uint32_t k[4], uint32_t out[4]) {
  const r123::Philox4x32_R<10>::ctr_type ctr = {{c[0], c[1], c[2], c[3]}};
  const r123::Philox4x32_R<10>::key_type key = {{k[0], k[1]}};
  const auto r = r123::Philox4x32_R<10>()(ctr, key);
  for (int i = 0; i < 4; ++i) out[i] = r[i];
}

void ars_oracle(const uint32_t c[4], const uint32_t k[4], uint32_t out[4]) {
  const ars4x32_ctr_t ctr = {{c[0], c[1], c[2], c[3]}};
  const ars4x32_key_t key = {{k[0], k[1], k[2], k[3]}};
  const ars4x32_ctr_t r = ars4x32_R(5, ctr, key);
  for (int i = 0; i < 4; ++i) out[i] = r.v[i];
}

const Kind kKinds[] = {{"PHILOX4X32X10", OXA_BRNG_PHILOX4X32X10, 2, philox_oracle},
                       {"ARS5", OXA_BRNG_ARS5, 4, ars_oracle}};

// The oracle's sequence from counter c: nwords words.
Words expected_words(const Kind& kind, const uint32_t key[4], const uint32_t ctr[4],
                     size_t nwords) {
  Words w;
  uint32_t c[4] = {ctr[0], ctr[1], ctr[2], ctr[3]};
  while (w.size() < nwords) {
    uint32_t out[4];
    kind.oracle(c, key, out);
    w.insert(w.end(), out, out + 4);
    for (int i = 0; i < 4 && ++c[i] == 0; ++i) {
    }
  }
  w.resize(nwords);
  return w;
}

struct Stream {
  StreamState* s = nullptr;
  Stream(int32_t id, const Words& seeds) {
    EXPECT_EQ(_vslNewStreamEx(&s, id, int32_t(seeds.size()), seeds.data()), 0);
  }
  ~Stream() { _vslDeleteStream(&s); }
  Words words(const Kind& k, size_t n) {
    Words w(n);
    const int32_t status = k.id == OXA_BRNG_ARS5 ? _vsliBRngARS5(s, int32_t(n), w.data())
                                                 : _vsliBRngPHILOX4X32X10(s, int32_t(n), w.data());
    EXPECT_EQ(status, 0);
    return w;
  }
};

bool runnable(const Kind& k) { return k.id != OXA_BRNG_ARS5 || _vslCPUisAES(); }

struct Seeding {
  uint32_t key[4];
  uint32_t ctr[4];
};
// Counters near the carry from word to word and around the 128-bit wrap.
const Seeding kSeedings[] = {
    {{0, 0, 0, 0}, {0, 0, 0, 0}},
    {{0xA4093822, 0x299F31D0, 0x082EFA98, 0xEC4E6C89}, {0x243F6A88, 0x85A308D3, 0x13198A2E, 0x03707344}},
    {{1, 2, 3, 4}, {0xFFFFFFFD, 0, 0, 0}},
    {{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}, {0xFFFFFFF9, 0xFFFFFFFF, 0, 0}},
    {{7, 7, 7, 7}, {0xFFFFFFFA, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}},
};

Words seeds_for(const Kind& k, const Seeding& s) {
  Words w(s.key, s.key + k.key_words);
  w.insert(w.end(), s.ctr, s.ctr + 4);
  return w;
}

TEST(CounterGenerators, RawWordsMatchOracleInAnySplit) {
  for (const Kind& k : kKinds) {
    if (!runnable(k)) continue;
    for (const Seeding& sd : kSeedings) {
      const Words expected = expected_words(k, sd.key, sd.ctr, 400);
      Stream whole(k.id, seeds_for(k, sd));
      EXPECT_EQ(whole.words(k, 400), expected) << k.name;
      Stream pieces(k.id, seeds_for(k, sd));
      Words got;
      for (size_t n : {1u, 3u, 2u, 33u, 7u, 64u, 5u, 4u, 281u}) {
        const Words part = pieces.words(k, n);
        got.insert(got.end(), part.begin(), part.end());
      }
      EXPECT_EQ(got, expected) << k.name;
    }
  }
}

TEST(CounterGenerators, PublishedPhiloxAnswers) {
  // Known-answer vectors published with the Philox-4x32-10 reference.
  struct Kat { uint32_t ctr[4], key[2], out[4]; };
  const Kat kats[] = {
      {{0, 0, 0, 0}, {0, 0}, {0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}},
      {{0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff}, {0xffffffff, 0xffffffff},
       {0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}},
      {{0x243f6a88, 0x85a308d3, 0x13198a2e, 0x03707344}, {0xa4093822, 0x299f31d0},
       {0xd16cfe09, 0x94fdcceb, 0x5001e420, 0x24126ea1}},
  };
  for (const Kat& kat : kats) {
    Stream s(OXA_BRNG_PHILOX4X32X10, {kat.key[0], kat.key[1], kat.ctr[0], kat.ctr[1], kat.ctr[2],
                                      kat.ctr[3]});
    EXPECT_EQ(s.words(kKinds[0], 4), Words(kat.out, kat.out + 4));
  }
}

TEST(CounterGenerators, ShortSeedListsFillWithZeros) {
  for (const Kind& k : kKinds) {
    if (!runnable(k)) continue;
    Stream none(k.id, {}), zero(k.id, {0}), full(k.id, Words(8, 0));
    const Words w = full.words(k, 50);
    EXPECT_EQ(none.words(k, 50), w);
    EXPECT_EQ(zero.words(k, 50), w);
    const uint32_t key[4] = {9, k.key_words > 2 ? 8u : 0u, 0, 0}, ctr[4] = {0, 0, 0, 0};
    Stream partial(k.id, k.key_words == 2 ? Words{9} : Words{9, 8});
    EXPECT_EQ(partial.words(k, 20), expected_words(k, key, ctr, 20)) << k.name;
  }
}

// Skip-ahead by s equals drawing s words, with 0 to 3 words buffered.
TEST(CounterGenerators, SkipAheadForEveryBufferedCount) {
  for (const Kind& k : kKinds) {
    if (!runnable(k)) continue;
    const Words seeds = seeds_for(k, kSeedings[3]);
    for (size_t consumed : {0u, 1u, 2u, 3u, 4u, 9u}) {
      for (uint64_t skip : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 31u, 32u, 33u, 1001u}) {
        Stream jumped(k.id, seeds), stepped(k.id, seeds);
        jumped.words(k, consumed);
        stepped.words(k, consumed + skip);
        ASSERT_EQ(_vslSkipAheadStream(jumped.s, skip), 0);
        ASSERT_EQ(jumped.words(k, 11), stepped.words(k, 11))
            << k.name << " " << consumed << " + " << skip;
      }
    }
    // A huge skip is pure counter arithmetic: word 2^64 - 1 is word 3 of
    // block 2^62 - 1 (counter words 0xFFFFFFFF, 0x3FFFFFFF).
    Stream huge(k.id, seeds_for(k, kSeedings[0]));
    ASSERT_EQ(_vslSkipAheadStream(huge.s, ~uint64_t(0)), 0);
    const uint32_t key[4] = {0, 0, 0, 0}, last[4] = {0xFFFFFFFFu, 0x3FFFFFFFu, 0, 0};
    const Words from_block = expected_words(k, key, last, 8);
    EXPECT_EQ(huge.words(k, 5), Words(from_block.begin() + 3, from_block.end())) << k.name;
  }
}

TEST(CounterGenerators, LeapfrogAndUnknownMethodsRefused) {
  for (const Kind& k : kKinds) {
    if (!runnable(k)) continue;
    Stream s(k.id, {1, 2});
    EXPECT_EQ(_vslLeapfrogStream(s.s, 1, 3), VSL_RNG_ERROR_NO_LEAPFROG);
    EXPECT_EQ(_vslBRngPHILOX4X32X10InitStream(5, s.s, 0, nullptr), VSL_ERROR_BAD_INIT_METHOD);
  }
}

// Reals are the centred words, whatever is buffered and across counter carries.
TEST(CounterGenerators, RealsAreCentredWords) {
  for (const Kind& k : kKinds) {
    if (!runnable(k)) continue;
    for (size_t consumed : {0u, 1u, 3u}) {
      const Words seeds = seeds_for(k, kSeedings[4]);
      Stream ints(k.id, seeds), reals(k.id, seeds), singles(k.id, seeds);
      ints.words(k, consumed), reals.words(k, consumed), singles.words(k, consumed);
      const size_t n = 3001;
      const Words w = ints.words(k, n);
      std::vector<double> d(n);
      std::vector<float> f(n);
      const auto gen_d = k.id == OXA_BRNG_ARS5 ? _vsldBRngARS5 : _vsldBRngPHILOX4X32X10;
      const auto gen_s = k.id == OXA_BRNG_ARS5 ? _vslsBRngARS5 : _vslsBRngPHILOX4X32X10;
      ASSERT_EQ(gen_d(reals.s, int32_t(n), d.data(), -1.0, 4.0), 0);
      ASSERT_EQ(gen_s(singles.s, int32_t(n), f.data(), -1.0f, 4.0f), 0);
      for (size_t i = 0; i < n; ++i) {
        ASSERT_EQ(d[i], 1.5 + 5.0 * 0x1p-32 * double(int32_t(w[i]))) << k.name << " " << i;
        ASSERT_EQ(f[i], 1.5f + 5.0f * 0x1p-32f * float(int32_t(w[i]))) << k.name << " " << i;
      }
      EXPECT_EQ(reals.words(k, 5), ints.words(k, 5));
    }
  }
}

TEST(CounterGenerators, Ars5WithoutAesChangesNothing) {
  if (!_vslCPUisAES()) GTEST_SKIP() << "no AES on this processor";
  Stream s(OXA_BRNG_ARS5, {1, 2, 3});
  s.words(kKinds[1], 6);
  Stream reference(OXA_BRNG_ARS5, {1, 2, 3});
  reference.words(kKinds[1], 6);
  oxa::streams::cpu_features_hide(true, false);
  EXPECT_EQ(_vslCPUisAES(), 0);
  EXPECT_EQ(_vslSkipAheadStream(s.s, 10), VSL_RNG_ERROR_NO_AES);
  uint32_t w[4];
  double d[4];
  EXPECT_EQ(_vsliBRngARS5(s.s, 4, w), VSL_RNG_ERROR_NO_AES);
  EXPECT_EQ(_vsldBRngARS5(s.s, 4, d, 0.0, 1.0), VSL_RNG_ERROR_NO_AES);
  oxa::streams::cpu_features_hide(false, false);
  EXPECT_EQ(s.words(kKinds[1], 20), reference.words(kKinds[1], 20));
}

TEST(Trng, WordsRealsAndRefusals) {
  if (!_vslCPUisRDRAND()) GTEST_SKIP() << "no RDRAND on this processor";
  StreamState* s = nullptr;
  const uint32_t seeds[] = {0, 3};
  ASSERT_EQ(_vslNewStreamEx(&s, OXA_BRNG_NONDETERM, 2, seeds), 0);
  Words w(101, 0);
  ASSERT_EQ(_vsliBRngTRNG(s, 101, w.data()), 0);
  size_t zeros = 0;
  for (uint32_t x : w) zeros += x == 0;
  EXPECT_LT(zeros, 3u);
  std::vector<double> d(100);
  std::vector<float> f(100);
  ASSERT_EQ(_vsldBRngTRNG(s, 100, d.data(), 2.0, 3.0), 0);
  ASSERT_EQ(_vslsBRngTRNG(s, 100, f.data(), 2.0f, 3.0f), 0);
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(d[size_t(i)] >= 2.0 && d[size_t(i)] <= 3.0);
    EXPECT_TRUE(f[size_t(i)] >= 2.0f && f[size_t(i)] <= 3.0f);
  }
  EXPECT_EQ(_vslSkipAheadStream(s, 1), VSL_RNG_ERROR_NO_SKIPAHEAD);
  EXPECT_EQ(_vslLeapfrogStream(s, 0, 2), VSL_RNG_ERROR_NO_LEAPFROG);
  oxa::streams::cpu_features_hide(false, true);
  EXPECT_EQ(_vsliBRngTRNG(s, 4, w.data()), VSL_RNG_ERROR_NO_RDRAND);
  oxa::streams::cpu_features_hide(false, false);
  _vslDeleteStream(&s);
}

}  // namespace
