// Word-to-real mappings at the ends of the word range (in-place use is
// covered through the generators' entry points).
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "streams/word_scaling.hpp"

namespace {

using oxa::streams::scale_words;
using oxa::streams::WordMapping;

struct Edge {
  uint32_t word;
  double unsigned_d;  // on [0, 1)
  float unsigned_f;
  double centred_d;   // on [-1, 1)
};

const Edge kEdges[] = {
    {0x00000000u, 0.0, 0.0f, 0.0},
    {0x00000001u, 0x1p-32, 0x1p-32f, 0x1p-31},
    {0x7FFFFFFFu, 0x1.fffffffcp-2, 0.5f, 1.0 - 0x1p-31},
    {0x80000000u, 0.5, 0.5f, -1.0},
    {0xFFFFFF7Fu, 0x1.fffffefep-1, 0x1.fffffep-1f, -0x1p-31 * 129},
    {0xFFFFFF80u, 0x1.ffffffp-1, 1.0f, -0x1p-31 * 128},  // rounds up to b in single
    {0xFFFFFFFFu, 0x1.fffffffep-1, 1.0f, -0x1p-31},
};

TEST(WordScaling, EdgeWords) {
  // 21 values so the vector steps and the scalar ends both see every word.
  std::vector<uint32_t> words;
  for (int rep = 0; rep < 3; ++rep)
    for (const Edge& e : kEdges) words.push_back(e.word);
  const size_t n = words.size();
  std::vector<double> ud(n), cd(n);
  std::vector<float> uf(n);
  scale_words<WordMapping::kUnsigned>(words.data(), ud.data(), n, 0.0, 1.0);
  scale_words<WordMapping::kUnsigned>(words.data(), uf.data(), n, 0.0f, 1.0f);
  scale_words<WordMapping::kCentred>(words.data(), cd.data(), n, -1.0, 1.0);
  for (size_t i = 0; i < n; ++i) {
    const Edge& e = kEdges[i % std::size(kEdges)];
    EXPECT_EQ(ud[i], e.unsigned_d) << std::hex << e.word;
    EXPECT_EQ(uf[i], e.unsigned_f) << std::hex << e.word;
    EXPECT_EQ(cd[i], e.centred_d) << std::hex << e.word;
  }
}

}  // namespace
