// Registry, id decoding and the stream life cycle.
#include <gtest/gtest.h>

#include <cstring>

#include "streams/stream_fixture.hpp"

using oxa_test::Stream;

namespace {

TEST(Registry, IdValidity) {
  struct Case {
    int32_t id;
    int32_t expected;  // status of _vslGetBrngProperties
    int32_t state_bytes;
  };
  const Case cases[] = {
      {0, 0, 24},           {3, 0, 32},           {4, 0, 48},
      {276, 0, 48},         {277, 0, 11712},      {278, 0, 84288},
      {279, -1000, 0},      {280, -1000, 0},      {281, -1000, 0},
      {-1, -1000, 0},       {0x500110, 0, 48},    {0x500111, -1000, 0},
      {0x900000 + 6023, 0, 312}, {0x900000 + 6024, -1000, 0},
      {0xA00001, -1000, 0}, {0x800000, 0, 2520},  {0x1000000, 0, 64},
      {0x1100000, -1000, 0}, {0x7FF00000, -1000, 0}, {0x100001, -1000, 0},
  };
  for (const Case& c : cases) {
    BrngProperties p{};
    EXPECT_EQ(_vslGetBrngProperties(c.id, &p), c.expected) << std::hex << c.id;
    if (c.expected == 0) {
      EXPECT_EQ(p.StateBytes, c.state_bytes) << std::hex << c.id;
    }
  }
}

TEST(Registry, DecodingForms) {
  int32_t row = -9, sub = -9;
  BrngProperties* legacy = _vslGetBrngBaseOffset(5, &row, &sub);
  EXPECT_EQ(row, 4);
  EXPECT_EQ(sub, 1);
  EXPECT_EQ(_vslGetBrngBaseOffset(277, &row, &sub), legacy);
  EXPECT_EQ(row, 277);
  EXPECT_EQ(sub, 0);
  BrngProperties* reg = _vslGetBrngBaseOffset(0x500007, &row, &sub);
  EXPECT_NE(reg, legacy);
  EXPECT_EQ(row, 4);
  EXPECT_EQ(sub, 7);
  // Legacy validity does not look at the sub-index.
  EXPECT_EQ(_vslIsBrngValid(legacy, 0, 99), 0);
  EXPECT_EQ(_vslIsBrngValid(reg, 0, 1), VSL_RNG_ERROR_BAD_BRNG);
}

TEST(Registry, NewStreamRefusals) {
  struct Case {
    int32_t id;
    int32_t expected;
  };
  const Case cases[] = {
      {0xA00000, -1000}, {0xB00000, -1000}, {0xC00000, -1000}, {0xA00001, -1000},
      {0x500111, -1000}, {279, -1000},      {-5, -1000},
      // Rows whose generator is not part of this build are refused, not called.
      {0x900000, -1000},
  };
  for (const Case& c : cases) {
    StreamState* s = reinterpret_cast<StreamState*>(0x1);
    EXPECT_EQ(_vslNewStreamEx(&s, c.id, 0, nullptr), c.expected) << std::hex << c.id;
    EXPECT_EQ(s, reinterpret_cast<StreamState*>(0x1)) << "handle touched";
  }
}

TEST(Registry, StreamHeaderAndCopies) {
  Stream s(4 + 10, {7, 8});
  ASSERT_EQ(s.status(), 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(s.get()) % 128, 0u);
  EXPECT_EQ(_vslGetStreamStateBrng(s.get()), 14);
  EXPECT_EQ(s.get()->flag, 1u);
  EXPECT_EQ(s.get()->chunks, nullptr);
  EXPECT_EQ(_vslGetStreamSize(s.get()), 48);
  Stream c(s);
  ASSERT_EQ(c.status(), 0);
  EXPECT_NE(c.get(), s.get());
  EXPECT_EQ(std::memcmp(c.get(), s.get(), 48), 0);
  Stream d(0x100000, {1});
  EXPECT_EQ(_vslDeleteStream(d.handle()), 0);
  EXPECT_EQ(d.get(), nullptr);
}

TEST(Registry, CopyStateCopiesSeedWordsOnly) {
  // MCG31M1 keeps its leapfrog multiplier after x: copy-state moves x only.
  Stream src(OXA_BRNG_MCG31M1, {1000}), dst(OXA_BRNG_MCG31M1, {5});
  ASSERT_EQ(_vslLeapfrogStream(dst.get(), 0, 3), 0);
  const auto* ds = reinterpret_cast<const uint32_t*>(reinterpret_cast<const char*>(dst.get()) + 16);
  const uint32_t leap_a = ds[1];
  ASSERT_EQ(_vslCopyStreamState(dst.get(), src.get()), 0);
  EXPECT_EQ(ds[0], 1000u);
  EXPECT_EQ(ds[1], leap_a);
  // WH declares 64 seed bytes but has 32 of state: the copy stops there
  // (AddressSanitizer would report an overrun).
  Stream wa(OXA_BRNG_WH, {1, 2, 3, 4}), wb(OXA_BRNG_WH, {5, 6, 7, 8});
  ASSERT_EQ(_vslCopyStreamState(wb.get(), wa.get()), 0);
  EXPECT_EQ(oxa_test::bits(wa, 5, 4), oxa_test::bits(wb, 5, 4));
  EXPECT_EQ(_vslCopyStreamState(wa.get(), wa.get()), 0);
}

TEST(Registry, LeapfrogAndSkipAheadDispatch) {
  Stream m(OXA_BRNG_MRG32K3A, {1, 2, 3});
  Stream ref(m);
  EXPECT_EQ(_vslLeapfrogStream(m.get(), 0, -1), VSL_RNG_ERROR_BAD_NSTREAMS);
  EXPECT_EQ(_vslLeapfrogStream(m.get(), 1, 5), VSL_RNG_ERROR_NO_LEAPFROG);
  EXPECT_EQ(oxa_test::bits(m, 10, 1), oxa_test::bits(ref, 10, 1));
}

int32_t fake_init(int32_t, StreamState*, int32_t, const uint32_t*) { return 0; }
int32_t fake_single(StreamState*, int32_t, float*, float, float) { return 0; }
int32_t fake_double(StreamState*, int32_t, double*, double, double) { return 0; }
int32_t fake_bits(StreamState*, int32_t, uint32_t*) { return 0; }

TEST(Registry, Registration) {
  const BrngProperties good{40, 2, 1, 4, 32, fake_init, fake_single, fake_double, fake_bits};
  struct Case {
    const char* what;
    BrngProperties p;
    int32_t expected;
  };
  auto with = [&](auto edit) {
    BrngProperties p = good;
    edit(p);
    return p;
  };
  const Case refused[] = {
      {"state bytes first", with([](auto& p) { p.StateBytes = -1, p.WordBytes = 12; }), -1008},
      {"word bytes", with([](auto& p) { p.WordBytes = 12, p.SeedCount = 0; }), -1009},
      {"seed count", with([](auto& p) { p.SeedCount = 0, p.BitCount = 0; }), -1010},
      {"bit count", with([](auto& p) { p.BitCount = 0, p.GenBits = nullptr; }), -1011},
      {"null entry", with([](auto& p) { p.InitStream = nullptr; }), -5},
  };
  ASSERT_EQ(_vslGetNumRegBrngs(), 16);
  for (const Case& c : refused) EXPECT_EQ(_vslRegisterBrng(&c.p), c.expected) << c.what;
  EXPECT_EQ(_vslGetNumRegBrngs(), 16);
  EXPECT_EQ(_vslRegisterBrng(&good), 0x1100000);
  EXPECT_EQ(_vslRegisterBrng(&good), 0x1200000);
  EXPECT_EQ(_vslGetNumRegBrngs(), 18);
  BrngProperties back{};
  ASSERT_EQ(_vslGetBrngProperties(0x1200000, &back), 0);
  EXPECT_EQ(back.StateBytes, 40);
  EXPECT_EQ(back.GenBits, fake_bits);
  Stream s(0x1100000, {});
  EXPECT_EQ(s.status(), 0);
  EXPECT_EQ(_vslGetBrngProperties(0x1100001, &back), VSL_RNG_ERROR_BAD_BRNG);
  // The registry never grows past its 512 rows.
  int32_t last = 0;
  for (int i = 0; i < 600; ++i) last = _vslRegisterBrng(&good);
  EXPECT_EQ(last, VSL_RNG_ERROR_BAD_BRNG);
  EXPECT_EQ(_vslGetNumRegBrngs(), 512);
}

}  // namespace
