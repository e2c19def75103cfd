// Test helpers: an owning stream handle and the generators under test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "oxa/streams.h"

namespace oxa_test {

// Owns a stream; deletes it at scope exit.
class Stream {
 public:
  Stream() = default;
  Stream(int32_t id, std::vector<uint32_t> seeds) {
    status_ = _vslNewStreamEx(&s_, id, static_cast<int32_t>(seeds.size()), seeds.data());
  }
  Stream(const Stream& other) { status_ = _vslCopyStream(&s_, other.s_); }
  Stream& operator=(const Stream&) = delete;
  ~Stream() { _vslDeleteStream(&s_); }
  StreamState* get() const { return s_; }
  StreamState** handle() { return &s_; }
  int32_t status() const { return status_; }

 private:
  StreamState* s_ = nullptr;
  int32_t status_ = 0;
};

struct Generator {
  const char* name;
  int32_t id;
  int32_t words_per_output;  // 32-bit words in one GenBits output
  bool leapfrog;
  bool skipahead;
  uint32_t dimension = 0;  // quasi-random rows: seeded with this dimension alone
};

inline const Generator kGenerators[] = {
    {"MCG31M1", OXA_BRNG_MCG31M1, 1, true, true},
    {"R250", OXA_BRNG_R250, 1, false, false},
    {"MRG32K3A", OXA_BRNG_MRG32K3A, 1, false, true},
    {"MCG59", OXA_BRNG_MCG59, 2, true, true},
    {"WH", OXA_BRNG_WH, 4, true, true},
    {"WH set 137", OXA_BRNG_WH + 137, 4, true, true},
    {"MT19937", OXA_BRNG_MT19937, 1, false, true},
    // Skips only by stepping (bounded counts): tested on its own.
    {"SFMT19937", OXA_BRNG_SFMT19937, 1, false, false},
    // Leapfrog only to one component and no zero-length skip: tested on their own.
    {"SOBOL", OXA_BRNG_SOBOL, 1, false, false, 3},
    {"NIEDERR", OXA_BRNG_NIEDERR, 1, false, false, 5},
};

// The seed words of g in a generic test: the given ones, or g's dimension.
inline std::vector<uint32_t> seeds_for(const Generator& g, std::vector<uint32_t> seeds) {
  return g.dimension ? std::vector<uint32_t>{g.dimension} : seeds;
}

inline std::vector<uint32_t> bits(const Stream& s, int32_t n, int32_t words_per_output) {
  std::vector<uint32_t> r(static_cast<size_t>(n) * words_per_output + 1);
  BrngProperties p;
  EXPECT_EQ(_vslGetBrngProperties(s.get()->brng, &p), 0);
  EXPECT_EQ(p.GenBits(s.get(), n, r.data()), 0);
  r.pop_back();
  return r;
}

inline std::vector<double> reals(const Stream& s, int32_t n, double a = 0.0, double b = 1.0) {
  std::vector<double> r(static_cast<size_t>(n));
  BrngProperties p;
  EXPECT_EQ(_vslGetBrngProperties(s.get()->brng, &p), 0);
  EXPECT_EQ(p.GenDouble(s.get(), n, r.data(), a, b), 0);
  return r;
}

}  // namespace oxa_test
