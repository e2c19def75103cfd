// Abstract streams: the refill protocol of the call-back, the value mappings
// of the three buffer kinds, and what they refuse.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "oxa/streams.h"

namespace {

// Call-backs write a running counter and log (length, index); refills are at
// most `chunk` values; a scripted return replaces the count when set.
struct Feed {
  StreamState* stream = nullptr;
  uint32_t next = 100;
  int32_t chunk = 3;
  int32_t forced = 1;  // returned instead of the count when <= 0 or > space
  bool force = false;
  std::vector<std::pair<int32_t, int32_t>> calls;

  template <class V>
  int32_t refill(StreamState* s, V buf[], int32_t length, int32_t index, V (*value)(uint32_t)) {
    EXPECT_EQ(s, stream);
    calls.emplace_back(length, index);
    if (force) return forced;
    const int32_t k = std::min(chunk, length - index);
    for (int32_t i = 0; i < k; ++i) buf[index + i] = value(next++);
    return k;
  }
};
Feed feed;

uint32_t as_word(uint32_t c) { return c * 0x01000193u; }
double as_double(uint32_t c) { return std::ldexp(double(as_word(c)), -32); }
float as_float(uint32_t c) { return std::ldexp(float(as_word(c) >> 8), -24); }

int32_t icb(StreamState* s, uint32_t b[], int32_t n, int32_t i) { return feed.refill(s, b, n, i, as_word); }
int32_t dcb(StreamState* s, double b[], int32_t n, int32_t i) { return feed.refill(s, b, n, i, as_double); }
int32_t scb(StreamState* s, float b[], int32_t n, int32_t i) { return feed.refill(s, b, n, i, as_float); }

// One buffer kind: creates a stream over a 5-value buffer holding counters 0..4.
struct Kind {
  const char* name;
  int32_t id;
  double (*value)(uint32_t c);  // buffer value of counter c as a real in [0, 1)
  int32_t (*create)(StreamState**, int32_t n, bool null_buffer, bool null_callback);
};

uint32_t ibuf[5];
double dbuf[5];
float sbuf[5];

const Kind kKinds[] = {
    {"iAbstract", OXA_BRNG_IABSTRACT, [](uint32_t c) { return std::ldexp(double(as_word(c)), -32); },
     [](StreamState** h, int32_t n, bool nb, bool nc) {
       for (uint32_t c = 0; c < 5; ++c) ibuf[c] = as_word(c);
       return _vsliNewAbstractStream(h, n, nb ? nullptr : ibuf, nc ? nullptr : icb);
     }},
    {"dAbstract", OXA_BRNG_DABSTRACT, as_double,
     [](StreamState** h, int32_t n, bool nb, bool nc) {
       for (uint32_t c = 0; c < 5; ++c) dbuf[c] = as_double(c);
       return _vsldNewAbstractStream(h, n, nb ? nullptr : dbuf, nc ? nullptr : dcb);
     }},
    {"sAbstract", OXA_BRNG_SABSTRACT, [](uint32_t c) { return double(as_float(c)); },
     [](StreamState** h, int32_t n, bool nb, bool nc) {
       for (uint32_t c = 0; c < 5; ++c) sbuf[c] = as_float(c);
       return _vslsNewAbstractStream(h, n, nb ? nullptr : sbuf, nc ? nullptr : scb);
     }},
};

// The counters handed out: buffer 0..4, then refills of 3 values from 100 on.
std::vector<uint32_t> expected_counters(int32_t n) {
  std::vector<uint32_t> c;
  for (uint32_t i = 0; i < 5 && c.size() < size_t(n); ++i) c.push_back(i);
  for (uint32_t i = 100; c.size() < size_t(n); ++i) c.push_back(i);
  return c;
}

TEST(AbstractStreams, RefillProtocolAndValues) {
  for (const Kind& k : kKinds) {
    SCOPED_TRACE(k.name);
    BrngProperties p;
    ASSERT_EQ(_vslGetBrngProperties(k.id, &p), 0);
    feed = Feed{};
    StreamState* s = nullptr;
    ASSERT_EQ(k.create(&s, 5, false, false), 0);
    feed.stream = s;
    // 4 + 9 + 1 values: the full buffer, then refills of 3, 2, 3 (the last
    // partly used).
    std::vector<double> got(14);
    ASSERT_EQ(p.GenDouble(s, 4, got.data(), -1.0, 3.0), 0);
    ASSERT_EQ(p.GenDouble(s, 9, got.data() + 4, -1.0, 3.0), 0);
    ASSERT_EQ(p.GenDouble(s, 1, got.data() + 13, -1.0, 3.0), 0);
    const std::vector<uint32_t> c = expected_counters(14);
    for (size_t i = 0; i < c.size(); ++i) {
      const double want = k.id == OXA_BRNG_IABSTRACT
                              ? -1.0 + 4.0 * 0x1p-32 * double(as_word(c[i]))
                              : -1.0 + 4.0 * k.value(c[i]);
      ASSERT_EQ(got[i], want) << i;
    }
    const std::vector<std::pair<int32_t, int32_t>> calls = {{5, 0}, {5, 3}, {5, 0}, {5, 3}};
    EXPECT_EQ(feed.calls, calls);
    // Words and singles continue the same sequence.
    uint32_t w;
    float f;
    ASSERT_EQ(p.GenBits(s, 1, &w), 0);
    ASSERT_EQ(p.GenSingle(s, 1, &f, 0.0f, 1.0f), 0);
    EXPECT_EQ(w, k.id == OXA_BRNG_IABSTRACT ? as_word(c[13] + 1)
                                            : uint32_t(std::ldexp(k.value(c[13] + 1), 32)));
    EXPECT_EQ(f, float(k.value(c[13] + 2)));
    _vslDeleteStream(&s);
  }
}

TEST(AbstractStreams, CallbackFailureStopsAndIsAskedAgain) {
  for (const Kind& k : kKinds) {
    for (int32_t bad : {0, -7, 6}) {
      SCOPED_TRACE(k.name);
      BrngProperties p;
      ASSERT_EQ(_vslGetBrngProperties(k.id, &p), 0);
      feed = Feed{};
      StreamState* s = nullptr;
      ASSERT_EQ(k.create(&s, 5, false, false), 0);
      feed.stream = s;
      feed.force = true;
      feed.forced = bad;
      std::vector<uint32_t> r(8, 0xEEEEEEEEu);
      EXPECT_EQ(p.GenBits(s, 8, r.data()), VSL_RNG_ERROR_ABSTRACT_CALLBACK);
      EXPECT_EQ(r[4], k.id == OXA_BRNG_IABSTRACT ? as_word(4) : uint32_t(std::ldexp(k.value(4), 32)));
      EXPECT_EQ(r[5], 0xEEEEEEEEu) << "written past the stop";
      feed.force = false;
      ASSERT_EQ(p.GenBits(s, 1, r.data()), 0);
      EXPECT_EQ(feed.calls.size(), 2u);
      EXPECT_EQ(r[0], k.id == OXA_BRNG_IABSTRACT ? as_word(100)
                                                 : uint32_t(std::ldexp(k.value(100), 32)));
      _vslDeleteStream(&s);
    }
  }
}

TEST(AbstractStreams, Refusals) {
  for (const Kind& k : kKinds) {
    SCOPED_TRACE(k.name);
    StreamState* s = reinterpret_cast<StreamState*>(0x1);
    EXPECT_EQ(k.create(&s, 0, false, false), VSL_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(k.create(&s, -2, false, false), VSL_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(k.create(&s, 5, true, false), VSL_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(k.create(&s, 5, false, true), VSL_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(s, reinterpret_cast<StreamState*>(0x1)) << "handle touched";
    EXPECT_EQ(_vslNewStreamEx(&s, k.id, 0, nullptr), VSL_RNG_ERROR_BAD_BRNG);

    ASSERT_EQ(k.create(&s, 5, false, false), 0);
    EXPECT_EQ(_vslLeapfrogStream(s, 0, 2), VSL_RNG_ERROR_NO_LEAPFROG);
    EXPECT_EQ(_vslSkipAheadStream(s, 1), VSL_RNG_ERROR_NO_SKIPAHEAD);
    std::vector<char> image(size_t(_vslGetStreamSize(s)), 0);
    EXPECT_EQ(_vslSaveStreamM(s, image.data()), VSL_RNG_ERROR_ABSTRACT_NO_SAVE);
    EXPECT_EQ(_vslSaveStreamF(s, "abstract_never_written.bin", -1), VSL_RNG_ERROR_ABSTRACT_NO_SAVE);
    // A forged image of the id is not loaded: its pointers would be stale.
    const uint32_t header[4] = {0x474E5201u, uint32_t(image.size() - 16) << 16 | 16, 0, uint32_t(k.id)};
    std::memcpy(image.data(), header, sizeof header);
    StreamState* loaded = nullptr;
    EXPECT_EQ(_vslLoadStreamM(&loaded, image.data()), VSL_RNG_ERROR_BAD_IMAGE);
    EXPECT_EQ(loaded, nullptr);
    // A copy reads the same caller buffer from the same place.
    StreamState* copy = nullptr;
    ASSERT_EQ(_vslCopyStream(&copy, s), 0);
    uint32_t a[3], b[3];
    BrngProperties p;
    _vslGetBrngProperties(k.id, &p);
    ASSERT_EQ(p.GenBits(s, 3, a), 0);
    ASSERT_EQ(p.GenBits(copy, 3, b), 0);
    EXPECT_EQ(std::vector<uint32_t>(a, a + 3), std::vector<uint32_t>(b, b + 3));
    _vslDeleteStream(&copy);
    _vslDeleteStream(&s);
  }
}

}  // namespace
