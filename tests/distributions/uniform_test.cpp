// Uniform generation: the accurate clamp, integer blocks, uniform bits.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "oxa/distributions.h"
#include "streams/stream_fixture.hpp"

using oxa_test::Stream;

namespace {

// A registered generator that writes chosen values, to see what the uniform
// layer itself does with them, and records the counts it was asked for.
std::vector<int32_t> g_calls;
double g_below = 1.0, g_above = 1.0;  // the fake writes a - below, b + above, a, b, ...

int32_t fake_init(int32_t, StreamState*, int32_t, const uint32_t*) { return 0; }
template <class T>
int32_t fake_real(StreamState*, int32_t n, T* r, T a, T b) {
  g_calls.push_back(n);
  const T pattern[4] = {static_cast<T>(a - g_below), static_cast<T>(b + g_above), a, b};
  for (int32_t i = 0; i < n; ++i) r[i] = pattern[i % 4];
  return 0;
}
int32_t fake_bits(StreamState*, int32_t n, uint32_t* r) {
  for (int32_t i = 0; i < n; ++i) r[i] = 0xABCD0000u + static_cast<uint32_t>(i);
  return 0;
}

int32_t fake_id() {
  static const int32_t id = [] {
    const BrngProperties p{24, 1, 1, 4, 32, fake_init, fake_real<float>, fake_real<double>, fake_bits};
    return _vslRegisterBrng(&p);
  }();
  return id;
}

TEST(Uniform, AccurateMethodClampsStandardDoesNot) {
  Stream s(fake_id(), {});
  ASSERT_EQ(s.status(), 0);
  for (int32_t n : {1, 15, 16, 17, 40, 67}) {
    for (int offset = 0; offset < 4; ++offset) {
      std::vector<double> d(n + 4);
      std::vector<float> f(n + 4);
      ASSERT_EQ(_vsldRngUniform(OXA_RNG_METHOD_ACCURATE, s.get(), n, d.data() + offset, -1.0, 3.0), 0);
      ASSERT_EQ(_vslsRngUniform(OXA_RNG_METHOD_ACCURATE, s.get(), n, f.data() + offset, -1.0f, 3.0f), 0);
      for (int32_t i = 0; i < n; ++i) {
        const double want = (i % 4 == 1 || i % 4 == 3) ? 3.0 : -1.0;
        ASSERT_EQ(d[offset + i], want) << "n=" << n << " i=" << i;
        ASSERT_EQ(f[offset + i], static_cast<float>(want)) << "n=" << n << " i=" << i;
      }
    }
  }
  std::vector<double> d(8);
  ASSERT_EQ(_vsldRngUniform(OXA_RNG_METHOD_STANDARD, s.get(), 8, d.data(), -1.0, 3.0), 0);
  EXPECT_EQ(d[0], -2.0);
  EXPECT_EQ(d[1], 4.0);
}

TEST(Uniform, AccurateMethodOnRealGenerators) {
  for (const auto& g : oxa_test::kGenerators) {
    Stream acc(g.id, oxa_test::seeds_for(g, {17, 4})), std_(acc);
    std::vector<double> a(333), b(333);
    ASSERT_EQ(_vsldRngUniform(OXA_RNG_METHOD_ACCURATE, acc.get(), 333, a.data(), 2.0, 2.0), 0);
    for (double v : a) ASSERT_EQ(v, 2.0) << g.name << ": a = b gives a";
    Stream again(std_);
    ASSERT_EQ(_vsldRngUniform(OXA_RNG_METHOD_ACCURATE, again.get(), 333, a.data(), -1.0, 1.0), 0);
    ASSERT_EQ(_vsldRngUniform(OXA_RNG_METHOD_STANDARD, std_.get(), 333, b.data(), -1.0, 1.0), 0);
    EXPECT_EQ(a, b) << g.name << ": in-range values are untouched";
  }
}

TEST(Uniform, IntegerBlocksAndStreamAdvance) {
  g_calls.clear();
  Stream fake(fake_id(), {});
  std::vector<int32_t> r(2500);
  ASSERT_EQ(_vsliRngUniform(OXA_RNG_METHOD_ACCURATE, fake.get(), 2500, r.data(), 10, 20), 0);
  EXPECT_EQ(g_calls, (std::vector<int32_t>{1024, 1024, 452}));
  EXPECT_EQ(r[0], 9) << "integers are never clamped into [a, b)";
  EXPECT_EQ(r[1], 19) << "a double that reached b or beyond is taken as b - 1";
  EXPECT_EQ(r[2], 10);
  g_calls.clear();
  EXPECT_EQ(_vsliRngUniform(0, fake.get(), 0, r.data(), 10, 20), 0);
  EXPECT_EQ(_vsliRngUniform(0, fake.get(), -3, r.data(), 10, 20), 0);
  EXPECT_TRUE(g_calls.empty()) << "n < 1 never reaches the generator";

  // On a real stream: floor of the doubles the stream would give, for every
  // tail length of the 8-wide conversion, and the stream advances by n.
  for (int32_t n : {1, 7, 8, 9, 1023, 1024, 1025, 2500}) {
    Stream ints(OXA_BRNG_MCG31M1, {555}), reals(ints);
    std::vector<int32_t> k(n);
    std::vector<double> u(n + 1);
    ASSERT_EQ(_vsliRngUniform(0, ints.get(), n, k.data(), -1000, 1000), 0);
    ASSERT_EQ(_vsldRngUniform(0, reals.get(), n, u.data(), -1000.0, 1000.0), 0);
    for (int32_t i = 0; i < n; ++i) ASSERT_EQ(k[i], static_cast<int32_t>(std::floor(u[i]))) << n;
    double next_int_stream, next_real_stream;
    _vsldRngUniform(0, ints.get(), 1, &next_int_stream, 0.0, 1.0);
    _vsldRngUniform(0, reals.get(), 1, &next_real_stream, 0.0, 1.0);
    EXPECT_EQ(next_int_stream, next_real_stream) << n;
  }
  // n = 0 leaves a real stream untouched.
  Stream a(OXA_BRNG_MCG31M1, {7}), b(a);
  EXPECT_EQ(_vsliRngUniform(0, a.get(), 0, r.data(), 0, 5), 0);
  EXPECT_EQ(oxa_test::bits(a, 3, 1), oxa_test::bits(b, 3, 1));
}

TEST(Uniform, UniformBitsTables) {
  struct Case {
    int32_t id;
    int32_t bits32, bits64;
  };
  const Case cases[] = {
      {OXA_BRNG_MCG31M1, -1014, -1014}, {OXA_BRNG_R250, -1014, -1014},
      {OXA_BRNG_MRG32K3A, -1014, -1014}, {OXA_BRNG_WH, -1014, -1014},
      {OXA_BRNG_WH + 100, -1014, -1014}, {4, -1014, -1014},
      {0, -1014, -1014}, {3, 0, 0}, {OXA_BRNG_MCG59, 0, 0},
      {fake_id(), -1014, -1014},
      {OXA_BRNG_SOBOL, -1014, -1014}, {OXA_BRNG_NIEDERR, -1014, -1014}, {277, -1014, -1014},
      {278, -1014, -1014},
  };
  for (const Case& c : cases) {
    Stream s(c.id, {1});
    ASSERT_EQ(s.status(), 0);
    uint32_t r32[4] = {7, 7, 7, 7};
    uint64_t r64[4] = {7, 7, 7, 7};
    EXPECT_EQ(_vsliRngUniformBits32(0, s.get(), 4, r32), c.bits32) << std::hex << c.id;
    EXPECT_EQ(_vsliRngUniformBits64(0, s.get(), 4, r64), c.bits64) << std::hex << c.id;
    if (c.bits32 < 0) {
      EXPECT_EQ(r32[0], 7u) << "nothing written";
      EXPECT_EQ(r64[3], 7u) << "nothing written";
    }
  }
}

TEST(Uniform, LegacyQuasiRandomRowsHaveNoUniformBits) {
  for (int32_t legacy_id : {277, 278}) {
    alignas(128) StreamState header{legacy_id, 1, nullptr};
    uint32_t r32 = 7;
    uint64_t r64 = 7;
    EXPECT_EQ(_vsliRngUniformBits32(0, &header, 1, &r32), VSL_RNG_ERROR_NO_UNIFORMBITS);
    EXPECT_EQ(_vsliRngUniformBits64(0, &header, 1, &r64), VSL_RNG_ERROR_NO_UNIFORMBITS);
    EXPECT_EQ(r32 + r64, 14u);
  }
}

TEST(Uniform, MCG59BitsAreTopBitsAcrossBlocks) {
  for (int32_t n : {1, 3, 2047, 2048, 2049, 5000}) {
    Stream bits(OXA_BRNG_MCG59, {99}), raw(bits), bits64(bits);
    std::vector<uint32_t> r32(n), words(4 * static_cast<size_t>(n) + 2);
    std::vector<uint64_t> r64(n);
    ASSERT_EQ(_vsliRngUniformBits32(0, bits.get(), n, r32.data()), 0);
    ASSERT_EQ(_vsliRngUniformBits64(0, bits64.get(), n, r64.data()), 0);
    ASSERT_EQ(_vsliRngUniformBits(0, raw.get(), 2 * n + 1, words.data()), 0);
    auto raw_word = [&](int64_t i) {
      uint64_t x;
      std::memcpy(&x, &words[2 * i], 8);
      return x;
    };
    for (int32_t i = 0; i < n; ++i) ASSERT_EQ(r32[i], raw_word(i) >> 27) << n << " " << i;
    for (int32_t i = 0; i < n; ++i) {
      ASSERT_EQ(r64[i], (raw_word(2 * i) >> 27) | (raw_word(2 * i + 1) >> 27) << 32) << n;
    }
    // Both streams advanced by exactly the raw words they used.
    uint32_t next[2], next64[2];
    _vsliRngUniformBits(0, bits.get(), 1, next);
    _vsliRngUniformBits(0, bits64.get(), 1, next64);
    EXPECT_EQ(next[0], static_cast<uint32_t>(raw_word(n)));
    EXPECT_EQ(next64[0], static_cast<uint32_t>(raw_word(2 * n)));
  }
}

}  // namespace
