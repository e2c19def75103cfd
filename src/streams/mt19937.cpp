// MT19937: seeding, block regeneration, tempering and the four registry entry
// points.
// Seeding:   the array initialisation of the published generator over the
//            caller's words (n <= 0 as the single word 1), then mt[0] =
//            0x80000000 so the state is never zero; pos = 624.
// Generation: blocks of 624 words regenerated and tempered eight words at a
//            time in AVX2 registers.
// Doubles:   a + (b - a)*2^-32*u on [a, b); more than 624 values are generated
//            as raw words into the upper half of the caller's array and
//            converted in place. Singles likewise in single precision, where
//            rounding u to float can give b itself.
// Skip-ahead: mt19937_jump.cpp. Leapfrog: -1002.
#include "streams/mt19937.hpp"

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "streams/registry.hpp"
#include "streams/stream_state.hpp"
#include "streams/word_scaling.hpp"

namespace oxa::streams {

namespace {

constexpr uint32_t kMatrixA = 0x9908B0DFu;
constexpr uint32_t kUpper = 0x80000000u;
constexpr uint32_t kLower = 0x7FFFFFFFu;

inline uint32_t temper(uint32_t x) {
  x ^= x >> 11;
  x ^= (x << 7) & 0x9D2C5680u;
  x ^= (x << 15) & 0xEFC60000u;
  return x ^ (x >> 18);
}

inline __m256i load8(const uint32_t* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

// mt[i..i+7] = mt19937_next_word(mt[i..i+7], mt[i+1..i+8], mt[far..far+7]).
inline void twist8(uint32_t* mt, int i, int far) {
  const __m256i cur = load8(mt + i), nxt = load8(mt + i + 1);
  const __m256i y = _mm256_or_si256(_mm256_and_si256(cur, _mm256_set1_epi32(int32_t(kUpper))),
                                    _mm256_and_si256(nxt, _mm256_set1_epi32(int32_t(kLower))));
  const __m256i odd = _mm256_sub_epi32(_mm256_setzero_si256(),
                                       _mm256_and_si256(y, _mm256_set1_epi32(1)));
  const __m256i mag = _mm256_and_si256(odd, _mm256_set1_epi32(int32_t(kMatrixA)));
  const __m256i v = _mm256_xor_si256(load8(mt + far), _mm256_xor_si256(_mm256_srli_epi32(y, 1), mag));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(mt + i), v);
}

}  // namespace

void mt19937_seed(Mt19937State& s, int32_t n, const uint32_t seed[]) {
  static const uint32_t kOne = 1;
  if (n <= 0) {
    n = 1;
    seed = &kOne;
  }
  uint32_t* mt = s.mt;
  mt[0] = 19650218u;
  for (uint32_t i = 1; i < kMtWords; ++i) {
    mt[i] = 1812433253u * (mt[i - 1] ^ (mt[i - 1] >> 30)) + i;
  }
  uint32_t i = 1, j = 0;
  for (int32_t k = std::max<int32_t>(kMtWords, n); k > 0; --k) {
    mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1664525u)) + seed[j] + j;
    if (++i >= kMtWords) {
      mt[0] = mt[kMtWords - 1];
      i = 1;
    }
    if (++j >= static_cast<uint32_t>(n)) j = 0;
  }
  for (int k = kMtWords - 1; k > 0; --k) {
    mt[i] = (mt[i] ^ ((mt[i - 1] ^ (mt[i - 1] >> 30)) * 1566083941u)) - i;
    if (++i >= kMtWords) {
      mt[0] = mt[kMtWords - 1];
      i = 1;
    }
  }
  mt[0] = kUpper;
  s.pos = kMtWords;
  s.spare = 0;
}

void mt19937_regenerate(uint32_t mt[kMtWords]) {
  constexpr int kSplit = kMtWords - kMtShift;  // 227: from here mt[i+397] wraps
  // Words 0..226 read old words 397..623; words 227..623 read new words
  // 0..396, which are at least 227 positions back, so eight-word steps never
  // read a word of their own step. Word 623 also needs the new mt[0].
  int i = 0;
  for (; i + 8 <= kSplit; i += 8) twist8(mt, i, i + kMtShift);
  for (; i < kSplit; ++i) mt[i] = mt19937_next_word(mt[i], mt[i + 1], mt[i + kMtShift]);
  for (; i + 8 <= kMtWords - 1; i += 8) twist8(mt, i, i - kSplit);
  for (; i < kMtWords - 1; ++i) mt[i] = mt19937_next_word(mt[i], mt[i + 1], mt[i - kSplit]);
  mt[kMtWords - 1] = mt19937_next_word(mt[kMtWords - 1], mt[0], mt[kMtShift - 1]);
}

void mt19937_temper(const uint32_t* in, uint32_t* out, std::size_t n) {
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    __m256i x = load8(in + i);
    x = _mm256_xor_si256(x, _mm256_srli_epi32(x, 11));
    x = _mm256_xor_si256(x, _mm256_and_si256(_mm256_slli_epi32(x, 7),
                                             _mm256_set1_epi32(int32_t(0x9D2C5680u))));
    x = _mm256_xor_si256(x, _mm256_and_si256(_mm256_slli_epi32(x, 15),
                                             _mm256_set1_epi32(int32_t(0xEFC60000u))));
    x = _mm256_xor_si256(x, _mm256_srli_epi32(x, 18));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), x);
  }
  for (; i < n; ++i) {
    uint32_t w;
    std::memcpy(&w, in + i, sizeof w);
    w = temper(w);
    std::memcpy(out + i, &w, sizeof w);
  }
}

void mt19937_words(Mt19937State& s, std::size_t n, uint32_t* out) {
  while (n > 0) {
    // Any pos outside 0..623 (a loaded image may hold one) means "used up".
    if (static_cast<uint32_t>(s.pos) >= kMtWords) {
      mt19937_regenerate(s.mt);
      s.pos = 0;
    }
    const std::size_t m = std::min<std::size_t>(n, std::size_t(kMtWords - s.pos));
    mt19937_temper(s.mt + s.pos, out, m);
    s.pos += static_cast<int32_t>(m);
    out += m;
    n -= m;
  }
}

namespace {

// n values of T on [a, b). Above one block the raw words go into the caller's
// array (upper half for doubles) and are converted in place; no scratch.
template <class T>
void mt19937_reals(StreamState* stream, int32_t n, T r[], T a, T b) {
  if (n <= 0) return;
  Mt19937State& s = *generator_state<Mt19937State>(stream);
  const std::size_t count = static_cast<std::size_t>(n);
  if (count <= kMtWords) {
    uint32_t words[kMtWords];
    mt19937_words(s, count, words);
    scale_words<WordMapping::kUnsigned>(words, r, count, a, b);
    return;
  }
  auto* words = reinterpret_cast<uint32_t*>(reinterpret_cast<unsigned char*>(r) +
                                            count * (sizeof(T) - sizeof(uint32_t)));
  mt19937_words(s, count, words);
  scale_words<WordMapping::kUnsigned>(words, r, count, a, b);
}

}  // namespace

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngMT19937InitStream(int32_t method, StreamState* stream, int32_t n,
                                  const uint32_t params[]) {
  Mt19937State& s = *generator_state<Mt19937State>(stream);
  switch (method) {
    case OXA_INIT_SEED:
      mt19937_seed(s, n, params);
      return VSL_STATUS_OK;
    case OXA_INIT_LEAPFROG:
      return VSL_RNG_ERROR_NO_LEAPFROG;
    case OXA_INIT_SKIPAHEAD:
      mt19937_skip(s, read_skip_count(params));
      return VSL_STATUS_OK;
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vsldBRngMT19937(StreamState* stream, int32_t n, double r[], double a, double b) {
  mt19937_reals(stream, n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vslsBRngMT19937(StreamState* stream, int32_t n, float r[], float a, float b) {
  mt19937_reals(stream, n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vsliBRngMT19937(StreamState* stream, int32_t n, uint32_t r[]) {
  if (n > 0) mt19937_words(*generator_state<Mt19937State>(stream), std::size_t(n), r);
  return VSL_STATUS_OK;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryMT19937 = {
    _vslBRngMT19937InitStream, _vslsBRngMT19937, _vsldBRngMT19937, _vsliBRngMT19937};
}  // namespace oxa::streams
