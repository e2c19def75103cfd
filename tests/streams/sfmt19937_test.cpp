// SFMT19937 streams against the authors' published output (first 1000 words
// after the one-word seeding 1234 and after the array seeding {0x1234, 0x5678,
// 0x9abc, 0xdef0}), and skip-ahead against stepping.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "streams/stream_fixture.hpp"

namespace {

using oxa_test::bits;
using oxa_test::Stream;

// The two 1000-word sections of the reference file, in file order.
std::vector<std::vector<uint32_t>> reference_sections() {
  std::ifstream in(OXA_SFMT_REFERENCE);
  std::vector<std::vector<uint32_t>> sections;
  std::string token;
  while (in >> token) {
    if (token.rfind("init_", 0) == 0) {
      sections.emplace_back();
    } else if (!sections.empty()) {
      sections.back().push_back(static_cast<uint32_t>(std::stoul(token)));
    }
  }
  return sections;
}

TEST(Sfmt19937, MatchesPublishedOutputForBothSeedings) {
  const auto sections = reference_sections();
  ASSERT_EQ(sections.size(), 2u);
  const std::vector<std::vector<uint32_t>> seeds = {{1234}, {0x1234, 0x5678, 0x9abc, 0xdef0}};
  for (size_t k = 0; k < 2; ++k) {
    ASSERT_EQ(sections[k].size(), 1000u);
    Stream whole(OXA_BRNG_SFMT19937, seeds[k]);
    Stream pieces(whole);
    EXPECT_EQ(bits(whole, 1000, 1), sections[k]) << "seeding " << k;
    // Calls of 7 words cross the block boundary at word 624 mid-call.
    std::vector<uint32_t> got;
    while (got.size() < 1000) {
      const std::vector<uint32_t> part = bits(pieces, 7, 1);
      got.insert(got.end(), part.begin(), part.end());
    }
    got.resize(1000);
    EXPECT_EQ(got, sections[k]) << "seeding " << k << " in pieces";
  }
}

// Skips of 624 k + j words equal stepping; two skips add up; counts beyond
// stepping range are refused and leave the stream alone.
TEST(Sfmt19937, SkipAheadEqualsStepping) {
  for (uint64_t k : {0, 1, 2, 7}) {
    for (uint64_t j : {0, 1, 311, 623}) {
      const uint64_t count = 624 * k + j;
      for (int32_t lead : {0, 5, 624}) {
        Stream walked(OXA_BRNG_SFMT19937, {77, 78, 79});
        bits(walked, lead, 1);
        Stream skipped(walked);
        bits(walked, static_cast<int32_t>(count), 1);
        ASSERT_EQ(_vslSkipAheadStream(skipped.get(), count), 0);
        ASSERT_EQ(bits(skipped, 700, 1), bits(walked, 700, 1)) << count << " after " << lead;
      }
    }
  }
  Stream one(OXA_BRNG_SFMT19937, {3}), two(one);
  ASSERT_EQ(_vslSkipAheadStream(one.get(), 1000003), 0);
  ASSERT_EQ(_vslSkipAheadStream(one.get(), 424242), 0);
  ASSERT_EQ(_vslSkipAheadStream(two.get(), 1000003 + 424242), 0);
  EXPECT_EQ(bits(one, 16, 1), bits(two, 16, 1));
  Stream ref(one);
  EXPECT_EQ(_vslSkipAheadStream(one.get(), (1ull << 30) + 1), VSL_RNG_ERROR_NO_SKIPAHEAD);
  EXPECT_EQ(bits(one, 16, 1), bits(ref, 16, 1));
}

}  // namespace
