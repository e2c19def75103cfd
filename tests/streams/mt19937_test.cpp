// MT19937 streams against an independent reference written from the published
// description of the generator (array seeding, recurrence, tempering).
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "oxa/streams.h"

namespace {

// The published generator: init_genrand, init_by_array and genrand_int32.
class ReferenceMt {
 public:
  explicit ReferenceMt(const std::vector<uint32_t>& key) {
    init(19650218u);
    const size_t n = key.size();
    size_t i = 1, j = 0;
    for (size_t k = n > 624 ? n : 624; k; --k) {
      mt_[i] = (mt_[i] ^ ((mt_[i - 1] ^ (mt_[i - 1] >> 30)) * 1664525u)) + key[j] + uint32_t(j);
      if (++i >= 624) { mt_[0] = mt_[623]; i = 1; }
      if (++j >= n) j = 0;
    }
    for (size_t k = 623; k; --k) {
      mt_[i] = (mt_[i] ^ ((mt_[i - 1] ^ (mt_[i - 1] >> 30)) * 1566083941u)) - uint32_t(i);
      if (++i >= 624) { mt_[0] = mt_[623]; i = 1; }
    }
    mt_[0] = 0x80000000u;
  }
  uint32_t next() {
    if (mti_ >= 624) {
      for (int k = 0; k < 624; ++k) {
        const uint32_t y = (mt_[k] & 0x80000000u) | (mt_[(k + 1) % 624] & 0x7FFFFFFFu);
        mt_[k] = mt_[(k + 397) % 624] ^ (y >> 1) ^ ((y & 1) ? 0x9908B0DFu : 0u);
      }
      mti_ = 0;
    }
    uint32_t y = mt_[mti_++];
    y ^= y >> 11;
    y ^= (y << 7) & 0x9D2C5680u;
    y ^= (y << 15) & 0xEFC60000u;
    return y ^ (y >> 18);
  }

 private:
  void init(uint32_t s) {
    mt_[0] = s;
    for (uint32_t i = 1; i < 624; ++i) mt_[i] = 1812433253u * (mt_[i - 1] ^ (mt_[i - 1] >> 30)) + i;
  }
  uint32_t mt_[624];
  int mti_ = 624;
};

struct Stream {
  StreamState* s = nullptr;
  Stream(int32_t n, const uint32_t* seeds) {
    EXPECT_EQ(_vslNewStreamEx(&s, OXA_BRNG_MT19937, n, seeds), 0);
  }
  explicit Stream(const std::vector<uint32_t>& seeds)
      : Stream(int32_t(seeds.size()), seeds.data()) {}
  ~Stream() { _vslDeleteStream(&s); }
  std::vector<uint32_t> words(size_t n) {
    std::vector<uint32_t> w(n);
    EXPECT_EQ(_vsliBRngMT19937(s, int32_t(n), w.data()), 0);
    return w;
  }
};

TEST(Mt19937, PublishedOutputsForFourSeedWords) {
  // First outputs of the published generator's array initialisation with the
  // words {0x123, 0x234, 0x345, 0x456}, as listed with its reference code.
  Stream s({0x123, 0x234, 0x345, 0x456});
  const uint32_t expected[] = {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u,
                               3344332714u, 3355579695u, 227628506u, 810200273u, 2591290167u};
  const auto w = s.words(10);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(w[i], expected[i]) << i;
}

TEST(Mt19937, SeedingMatchesReferenceForAnySeedCount) {
  for (size_t n : {1u, 2u, 4u, 623u, 624u, 625u, 1500u}) {
    std::vector<uint32_t> key(n);
    for (size_t i = 0; i < n; ++i) key[i] = uint32_t(0x9E3779B9u * (i + 1) ^ (i << 7));
    ReferenceMt ref(key);
    Stream s(key);
    const auto w = s.words(2000);
    for (size_t i = 0; i < w.size(); ++i) ASSERT_EQ(w[i], ref.next()) << "n " << n << " word " << i;
  }
  // No seed words (or a negative count) seeds as the single word 1.
  const uint32_t one = 1;
  Stream zero(0, nullptr), negative(-5, nullptr), single(1, &one);
  const auto expected = single.words(700);
  EXPECT_EQ(zero.words(700), expected);
  EXPECT_EQ(negative.words(700), expected);
}

// Every entry point consumes one word per value, whatever the split of a
// request, the alignment of the output or the size (in place above 624).
TEST(Mt19937, EntriesShareOneSequence) {
  const uint32_t seed = 2024;
  for (int32_t n : {1, 7, 8, 9, 623, 624, 625, 1000, 2049}) {
    for (int offset : {0, 1, 3}) {
      Stream ints(1, &seed), reals(1, &seed), singles(1, &seed);
      const auto w = ints.words(size_t(n) + 5);
      std::vector<double> d(size_t(n) + offset);
      std::vector<float> f(size_t(n) + offset);
      ASSERT_EQ(_vsldBRngMT19937(reals.s, n, d.data() + offset, -2.0, 3.0), 0);
      ASSERT_EQ(_vslsBRngMT19937(singles.s, n, f.data() + offset, -2.0f, 3.0f), 0);
      const double sd = 5.0 * 0x1p-32;
      const float sf = 5.0f * 0x1p-32f;
      for (int32_t i = 0; i < n; ++i) {
        ASSERT_EQ(d[size_t(i + offset)], -2.0 + sd * double(w[size_t(i)])) << n << " " << i;
        ASSERT_EQ(f[size_t(i + offset)], -2.0f + sf * float(w[size_t(i)])) << n << " " << i;
      }
      // Both real streams continue right after their n words.
      uint32_t next = 0;
      _vsliBRngMT19937(reals.s, 1, &next);
      EXPECT_EQ(next, w[size_t(n)]);
      _vsliBRngMT19937(singles.s, 1, &next);
      EXPECT_EQ(next, w[size_t(n)]);
    }
  }
}

// Skip-ahead by s equals drawing s words, from every kind of position in the
// block, for counts below, around and beyond the polynomial threshold.
TEST(Mt19937, SkipAheadEqualsStepping) {
  const uint32_t seed[] = {5489, 17};
  for (uint64_t consumed : {0u, 1u, 300u, 623u, 624u}) {
    for (uint64_t skip : {0ull, 1ull, 623ull, 624ull, 625ull, 624ull * 20 + 3, 19936ull,
                          19937ull, 19938ull, 100000ull, 624ull * 512 + 611, 624ull * 513,
                          1000003ull, 5000011ull}) {
      Stream jumped(2, seed), stepped(2, seed);
      jumped.words(consumed);
      stepped.words(consumed + skip);
      ASSERT_EQ(_vslSkipAheadStream(jumped.s, skip), 0);
      ASSERT_EQ(jumped.words(1300), stepped.words(1300)) << consumed << " + " << skip;
    }
  }
}

TEST(Mt19937, HugeSkipsCompose) {
  const uint32_t seed = 99;
  const uint64_t max = ~uint64_t(0);
  struct Split { uint64_t first, second; };
  for (Split sp : {Split{uint64_t(1) << 63, (uint64_t(1) << 63) - 1},
                   Split{0x123456789ABCull, max - 0x123456789ABCull},
                   Split{40000, 1ull << 40}}) {
    Stream one(1, &seed), two(1, &seed);
    one.words(5);
    two.words(5);
    ASSERT_EQ(_vslSkipAheadStream(one.s, sp.first + sp.second), 0);
    ASSERT_EQ(_vslSkipAheadStream(two.s, sp.first), 0);
    ASSERT_EQ(_vslSkipAheadStream(two.s, sp.second), 0);
    EXPECT_EQ(one.words(700), two.words(700)) << sp.first;
  }
}

TEST(Mt19937, RefusedMethods) {
  const uint32_t seed = 1;
  Stream s(1, &seed);
  EXPECT_EQ(_vslLeapfrogStream(s.s, 0, 4), VSL_RNG_ERROR_NO_LEAPFROG);
  EXPECT_EQ(_vslBRngMT19937InitStream(3, s.s, 0, nullptr), VSL_ERROR_BAD_INIT_METHOD);
  Stream fresh(1, &seed);
  EXPECT_EQ(s.words(10), fresh.words(10));
}

}  // namespace
