// x^e mod p for the MT19937 characteristic polynomial p (table made by
// tools/mt19937_poly.py).
// Method: left-to-right binary exponentiation. The exponent's leading bits up
//   to 19936 give a monomial for free; every further bit costs a squaring
//   (a bit spread: squaring is linear over GF(2)), times x when the bit is
//   set, and a reduction.
// Reduction: x^19937 = sum of the 134 low terms of p, the highest 623 below
//   the degree. Output blocks of 256 bits are finished from the top down, each
//   gathering one load per term from eight bit-shifted copies of the high part
//   (reduce() below); the term offsets are compile-time constants.
// Cost: about 51 squarings for an exponent near 2^64, 5 us each on the
//   development machine; 22 KiB of stack.
#include "streams/mt19937_jump_poly.hpp"

#include <immintrin.h>

#include <cstddef>
#include <cstring>

namespace oxa::streams {

#include "streams/mt19937_poly.inc"

namespace {

constexpr int kTerms = sizeof(_vsl_mt19937_poly_terms) / sizeof(_vsl_mt19937_poly_terms[0]);
constexpr int kTopTerm = _vsl_mt19937_poly_terms[kTerms - 1];  // 19314

// The square is kept shifted left by 31 bits, so that x^19937 sits at bit
// 19968 = 64 * 312: the high part H (coefficients of x^19937 and above) is
// words 312..623, the reduced result lands in bits 31..19967 of words 0..311.
constexpr int kLead = 64 * kMtPolyWords - kMtDegree;  // 31
constexpr int kHighBits = 64 * kMtPolyWords;          // width of H
constexpr int kPadBytes = 32;                         // zeros around each copy of H
constexpr int kCopyBytes = kPadBytes + kHighBits / 8 + kPadBytes;

// Bit q of H becomes x^(q + k) for every low term k of p, i.e. reaches
// position q - (19937 - k) relative to bit 19968. So a 256-bit block at q
// receives H bits [q + 19937 - k, +256) for every k in (q, q + 19937 + 256).
// Blocks are finished from the top down; each reads only bits at least 623
// higher, which are final. To read H at any bit offset with one load, H is
// also kept as eight byte-addressable copies, copy r shifted right by r bits;
// a term's source for the block at q is then copy (c & 7), byte q/8 + c/8 with
// c = 19937 - k.
struct TermOffsets {
  int32_t byte[kTerms];
};
constexpr TermOffsets make_term_offsets() {
  TermOffsets t{};
  for (int i = 0; i < kTerms; ++i) {
    const int c = kMtDegree - _vsl_mt19937_poly_terms[i];
    t.byte[i] = (c & 7) * kCopyBytes + kPadBytes + (c >> 3);
  }
  return t;
}
constexpr TermOffsets kOffsets = make_term_offsets();

struct Workspace {
  alignas(32) uint64_t spread[4 + 2 * kMtPolyWords];  // four zero words, then the square
  alignas(32) uint64_t a[2 * kMtPolyWords];           // the square, shifted by kLead
  alignas(32) uint8_t copies[8][kCopyBytes];          // H >> r, r = 0..7, zero padded
};

// Finished block of H at bit q (words cur) into every copy; up holds the four
// words above it.
inline void store_high(Workspace& w, int q, __m256i cur, __m256i up) {
  // Words 1..4 of (cur, up): the neighbours that fill the top of a shift.
  const __m256i next = _mm256_permute4x64_epi64(_mm256_blend_epi32(cur, up, 0x03), 0x39);
  uint8_t* at = &w.copies[0][kPadBytes + q / 8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(at), cur);
  for (int r = 1; r < 8; ++r) {
    const __m256i v = _mm256_or_si256(_mm256_srl_epi64(cur, _mm_cvtsi32_si128(r)),
                                      _mm256_sll_epi64(next, _mm_cvtsi32_si128(64 - r)));
    _mm256_store_si256(reinterpret_cast<__m256i*>(at + r * kCopyBytes), v);
  }
}

static_assert(kMtDegree - kTopTerm >= 256, "a block reads only finished blocks above it");

// w.a = A * x^31 for A of degree < 2*19937; afterwards g = A mod p.
void reduce(Workspace& w, uint64_t* g) {
  int lo = kTerms, hi = kTerms;  // terms k with q < k < q + 19937 + 256
  __m256i up = _mm256_setzero_si256();
  for (int q = kHighBits - 256; q >= -kHighBits; q -= 256) {
    while (lo > 0 && _vsl_mt19937_poly_terms[lo - 1] > q) --lo;
    while (hi > 0 && _vsl_mt19937_poly_terms[hi - 1] >= q + kMtDegree + 256) --hi;
    uint64_t* block = w.a + kMtPolyWords + q / 64;
    __m256i v = _mm256_load_si256(reinterpret_cast<const __m256i*>(block));
    const uint8_t* base = &w.copies[0][0] + q / 8;
#pragma GCC unroll 4
    for (int i = lo; i < hi; ++i) {
      v = _mm256_xor_si256(
          v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(base + kOffsets.byte[i])));
    }
    if (q >= 0) {
      store_high(w, q, v, up);
      up = v;
    } else {
      _mm256_store_si256(reinterpret_cast<__m256i*>(block), v);
    }
    if (q == 0) {
      // Copy r also holds H bits 0..r-1 just below its start.
      const uint64_t h0 = uint64_t(_mm256_extract_epi64(v, 0));
      for (int r = 1; r < 8; ++r) {
        const uint64_t below = h0 << (64 - r);
        std::memcpy(&w.copies[r][kPadBytes - 8], &below, 8);
      }
    }
  }
  for (int i = 0; i < kMtPolyWords - 1; ++i)
    g[i] = (w.a[i] >> kLead) | (w.a[i + 1] << (64 - kLead));
  g[kMtPolyWords - 1] = w.a[kMtPolyWords - 1] >> kLead;
}

static_assert(2 * (kMtDegree - 1) + 1 + kLead < 128 * kMtPolyWords, "g^2 x fits the square");

// g = g^2 x^times_x mod p (times_x 0 or 1). Squaring spreads bit i to bit 2i:
// each nibble becomes a byte by table lookup, 32 bytes of g at a time; the
// factor x is one more bit of the shift into place.
void square(Workspace& w, uint64_t* g, int times_x) {
  const __m256i spread_nibble =
      _mm256_setr_epi8(0x00, 0x01, 0x04, 0x05, 0x10, 0x11, 0x14, 0x15, 0x40, 0x41, 0x44, 0x45, 0x50,
                       0x51, 0x54, 0x55, 0x00, 0x01, 0x04, 0x05, 0x10, 0x11, 0x14, 0x15, 0x40, 0x41,
                       0x44, 0x45, 0x50, 0x51, 0x54, 0x55);
  const __m256i low_nibbles = _mm256_set1_epi8(0x0F);
  uint64_t* sq = w.spread + 4;  // w.spread[0..3] stay zero: the words below the square
  for (int i = 0; i < kMtPolyWords; i += 4) {
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(g + i));
    const __m256i lo = _mm256_shuffle_epi8(spread_nibble, _mm256_and_si256(x, low_nibbles));
    const __m256i hi =
        _mm256_shuffle_epi8(spread_nibble, _mm256_and_si256(_mm256_srli_epi16(x, 4), low_nibbles));
    // Bytes 0..7 of each lane spread into 16 bytes by unpacklo, 8..15 by unpackhi.
    const __m256i first = _mm256_unpacklo_epi8(lo, hi), second = _mm256_unpackhi_epi8(lo, hi);
    _mm256_store_si256(reinterpret_cast<__m256i*>(sq + 2 * i),
                       _mm256_permute2x128_si256(first, second, 0x20));
    _mm256_store_si256(reinterpret_cast<__m256i*>(sq + 2 * i + 4),
                       _mm256_permute2x128_si256(first, second, 0x31));
  }
  const __m128i up = _mm_cvtsi32_si128(kLead + times_x);
  const __m128i down = _mm_cvtsi32_si128(64 - kLead - times_x);
  for (int i = 0; i < 2 * kMtPolyWords; i += 4) {
    const __m256i x = _mm256_load_si256(reinterpret_cast<const __m256i*>(sq + i));
    const __m256i below = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(sq + i - 1));
    _mm256_store_si256(reinterpret_cast<__m256i*>(w.a + i),
                       _mm256_or_si256(_mm256_sll_epi64(x, up), _mm256_srl_epi64(below, down)));
  }
  reduce(w, g);
}

}  // namespace

void mt19937_x_pow_mod(unsigned __int128 e, uint64_t g[kMtPolyWords]) {
  int bit = 127;
  while (bit >= 0 && !((e >> bit) & 1)) --bit;
  uint64_t m = 0;
  for (; bit >= 0; --bit) {
    const uint64_t next = 2 * m + uint64_t((e >> bit) & 1);
    if (next >= kMtDegree) break;
    m = next;
  }
  std::memset(g, 0, kMtPolyWords * sizeof(uint64_t));
  g[m >> 6] = uint64_t(1) << (m & 63);
  Workspace w;
  std::memset(w.copies, 0, sizeof w.copies);
  std::memset(w.spread, 0, 4 * sizeof(uint64_t));
  for (; bit >= 0; --bit) {
    square(w, g, int((e >> bit) & 1));
  }
}

}  // namespace oxa::streams
