// MT19937 skip-ahead by any 64-bit count.
// Method: the recurrence state S_t = (x_t upper bit, x_{t+1} .. x_{t+623}) is
//   a vector over GF(2) of dimension 19937 and one step is a linear map F with
//   characteristic polynomial p. So F^J S = g(F) S with g = x^J mod p
//   (mt19937_jump_poly.cpp). Since F^i S is the window of the word sequence
//   starting at x_{t+i}, word k of g(F) S is the XOR of x_{t+i+k} over the
//   coefficients g_i = 1: for each of the 32 bit positions that is a
//   correlation of g with one bit plane of the sequence, i.e. 624 coefficients
//   of a product of binary polynomials, formed with carry-less multiplication.
//   Counts that stay within 512 blocks regenerate blocks instead.
// Cost: for a count of 2^64 - 1 about 51 squarings modulo p, 34 block
//   regenerations, a bit transpose of 20608 words and 32 x 322 x 12 carry-less
//   products: about 0.25 ms for the squarings and 0.1 ms for the rest (CPU
//   time on the shared development machine). Stack scratch about 90 KiB.
// Needs PCLMULQDQ, which every processor with AVX2 has; uses its 256-bit form
// (two products per instruction) where the processor has it.
#include <immintrin.h>

#include <atomic>
#include <cstring>

#include "streams/cpu_features.hpp"
#include "streams/mt19937.hpp"
#include "streams/mt19937_jump_poly.hpp"

namespace oxa::streams {

namespace {

// A block regenerates in about 0.1 us and the shortest polynomial jump
// costs about 100 us, so counts up to this many blocks step instead.
constexpr uint64_t kBlocksByStepping = 512;
constexpr int kPlaneWords = 322;  // 20608 sequence bits >= 19937 + 623
constexpr int kPlaneBits = 64 * kPlaneWords;
constexpr int kReversedBits = 64 * kMtPolyWords;  // 19968: g is reversed over this width
constexpr int kOutWords = 12;  // product words 310..321 hold coefficients 19967..20590
constexpr int kFirstOutWord = (kReversedBits - 1) / 64 - 1;  // 310
constexpr int kPad = kOutWords;                              // zero words around reversed g

uint64_t reverse_bits(uint64_t x) {
  x = ((x >> 1) & 0x5555555555555555u) | ((x & 0x5555555555555555u) << 1);
  x = ((x >> 2) & 0x3333333333333333u) | ((x & 0x3333333333333333u) << 2);
  x = ((x >> 4) & 0x0F0F0F0F0F0F0F0Fu) | ((x & 0x0F0F0F0F0F0F0F0Fu) << 4);
  return __builtin_bswap64(x);
}

// planes[b] bits at..at+15 = bit b of words w[0..15].
void transpose16(const uint32_t* w, uint64_t (*planes)[kPlaneWords], int at) {
  // Per 128-bit lane, gather byte k of the lane's four words into dword k.
  const __m256i gather = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(w));
  __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(w + 8));
  a = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(a, gather), order);
  b = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(b, gather), order);
  const __m256i lo = _mm256_unpacklo_epi64(a, b), hi = _mm256_unpackhi_epi64(a, b);
  // bytes01: byte 0 of words 0..15, then byte 1; bytes23 likewise.
  __m256i bytes01 = _mm256_permute2x128_si256(lo, hi, 0x20);
  __m256i bytes23 = _mm256_permute2x128_si256(lo, hi, 0x31);
  auto put = [&](int plane, uint32_t bits) {
    std::memcpy(reinterpret_cast<unsigned char*>(planes[plane]) + at / 8, &bits, 2);
  };
  for (int i = 7; i >= 0; --i) {
    const uint32_t m01 = uint32_t(_mm256_movemask_epi8(bytes01));
    const uint32_t m23 = uint32_t(_mm256_movemask_epi8(bytes23));
    put(i, m01 & 0xFFFF);
    put(8 + i, m01 >> 16);
    put(16 + i, m23 & 0xFFFF);
    put(24 + i, m23 >> 16);
    bytes01 = _mm256_add_epi8(bytes01, bytes01);
    bytes23 = _mm256_add_epi8(bytes23, bytes23);
  }
}

// Bit planes of the 20608 words from x_t on, where start holds x_t..x_{t+623}.
void sequence_planes(const uint32_t* start, uint64_t (*planes)[kPlaneWords]) {
  alignas(32) uint32_t block[kMtWords];
  std::memcpy(block, start, sizeof block);
  for (int at = 0;; at += kMtWords) {
    const int words = kPlaneBits - at < kMtWords ? kPlaneBits - at : kMtWords;
    for (int i = 0; i < words; i += 16) transpose16(block + i, planes, at + i);
    if (at + kMtWords >= kPlaneBits) break;
    mt19937_regenerate(block);
  }
}

// Product words 310..321 of reversed g times a plane, given acc[w] = sum of
// the 128-bit products whose low word is product word 310 + w, into
// r[k] = coefficient 19967 + k for k < 640.
void finish_correlation(const __m128i acc[kOutWords], uint64_t r[10]) {
  // Product word 310 + w = low half of acc[w] ^ high half of acc[w - 1].
  uint64_t product[kOutWords];
  uint64_t carry = 0;
  for (int w = 0; w < kOutWords; ++w) {
    product[w] = uint64_t(_mm_cvtsi128_si64(acc[w])) ^ carry;
    carry = uint64_t(_mm_extract_epi64(acc[w], 1));
  }
  // Coefficient 19967 is bit 63 of product word 311.
  for (int i = 0; i < 10; ++i) r[i] = (product[i + 1] >> 63) | (product[i + 2] << 1);
}

// r[k] = XOR over i with g_i = 1 of plane bit i + k, for k < 624: product
// coefficients 19967 + k of reversed g times the plane.
void correlate(const uint64_t* padded_rev_g, const uint64_t* plane, uint64_t r[10]) {
  __m128i acc[kOutWords];
  for (__m128i& a : acc) a = _mm_setzero_si128();
  for (int c = 0; c < kPlaneWords; ++c) {
    const __m128i s = _mm_cvtsi64_si128(int64_t(plane[c]));
    const uint64_t* gw = padded_rev_g + kPad + kFirstOutWord - c;  // reversed g word W - c
    // Unrolled so that the twelve accumulators stay in registers.
#pragma GCC unroll 6
    for (int w = 0; w < kOutWords; w += 2) {
      const __m128i pair = _mm_loadu_si128(reinterpret_cast<const __m128i*>(gw + w));
      acc[w] = _mm_xor_si128(acc[w], _mm_clmulepi64_si128(pair, s, 0x00));
      acc[w + 1] = _mm_xor_si128(acc[w + 1], _mm_clmulepi64_si128(pair, s, 0x01));
    }
  }
  finish_correlation(acc, r);
}

// The same with two products per instruction: lane 0 of even[j] and odd[j]
// accumulates words 4j and 4j + 1, lane 1 words 4j + 2 and 4j + 3.
[[gnu::target("vpclmulqdq")]] void correlate_wide(const uint64_t* padded_rev_g,
                                                  const uint64_t* plane, uint64_t r[10]) {
  __m256i even[kOutWords / 4], odd[kOutWords / 4];
  for (int j = 0; j < kOutWords / 4; ++j) even[j] = odd[j] = _mm256_setzero_si256();
  for (int c = 0; c < kPlaneWords; ++c) {
    const __m256i s = _mm256_set1_epi64x(int64_t(plane[c]));
    const uint64_t* gw = padded_rev_g + kPad + kFirstOutWord - c;
#pragma GCC unroll 3
    for (int j = 0; j < kOutWords / 4; ++j) {
      const __m256i quad = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(gw + 4 * j));
      even[j] = _mm256_xor_si256(even[j], _mm256_clmulepi64_epi128(quad, s, 0x00));
      odd[j] = _mm256_xor_si256(odd[j], _mm256_clmulepi64_epi128(quad, s, 0x01));
    }
  }
  __m128i acc[kOutWords];
  for (int j = 0; j < kOutWords / 4; ++j) {
    acc[4 * j] = _mm256_castsi256_si128(even[j]);
    acc[4 * j + 1] = _mm256_castsi256_si128(odd[j]);
    acc[4 * j + 2] = _mm256_extracti128_si256(even[j], 1);
    acc[4 * j + 3] = _mm256_extracti128_si256(odd[j], 1);
  }
  finish_correlation(acc, r);
}

std::atomic<bool> narrow_only{false};

// out = g(F) S for the state S whose words are start[0..623] (out[0]'s low 31
// bits are a by-product without meaning, as in any window).
void apply_poly(const uint64_t* g, const uint32_t* start, uint32_t* out) {
  alignas(32) uint64_t planes[32][kPlaneWords];
  sequence_planes(start, planes);
  uint64_t rev[kPad + kMtPolyWords + kPad] = {};
  for (int i = 0; i < kMtPolyWords; ++i) rev[kPad + i] = reverse_bits(g[kMtPolyWords - 1 - i]);
  alignas(32) uint64_t r[32][10];
  const bool wide = cpu_has_wide_clmul() && !narrow_only.load(std::memory_order_relaxed);
  for (int b = 0; b < 32; ++b) {
    if (wide) {
      correlate_wide(rev, planes[b], r[b]);
    } else {
      correlate(rev, planes[b], r[b]);
    }
  }
  // Back from bit planes to words, eight words at a time.
  const __m256i select = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
  for (int k = 0; k < kMtWords; k += 8) {
    __m256i w = _mm256_setzero_si256();
    for (int b = 0; b < 32; ++b) {
      const int byte = int((r[b][k >> 6] >> (k & 63)) & 0xFF);
      const __m256i set =
          _mm256_cmpeq_epi32(_mm256_and_si256(_mm256_set1_epi32(byte), select), select);
      w = _mm256_or_si256(w, _mm256_and_si256(set, _mm256_set1_epi32(int32_t(1u << b))));
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + k), w);
  }
}

}  // namespace

void mt19937_skip_narrow_products(bool narrow) {
  narrow_only.store(narrow, std::memory_order_relaxed);
}

void mt19937_skip(Mt19937State& s, uint64_t n) {
  if (n == 0) return;
  const unsigned used = static_cast<uint32_t>(s.pos) <= kMtWords ? unsigned(s.pos) : kMtWords;
  const unsigned __int128 total = static_cast<unsigned __int128>(n) + used;
  const unsigned __int128 blocks = total / kMtWords;
  const int32_t pos = static_cast<int32_t>(total % kMtWords);
  if (blocks <= kBlocksByStepping) {
    for (unsigned b = 0; b < unsigned(blocks); ++b) mt19937_regenerate(s.mt);
    s.pos = pos;
    return;
  }
  // The stream's block holds x_B .. x_{B+623}. Jump S_B to S_{B'-1} with
  // B' = B + 624*blocks; one more step yields x_{B'+623}, and the window then
  // starts at x_{B'}: the new block.
  alignas(32) uint64_t g[kMtPolyWords];
  mt19937_x_pow_mod(blocks * kMtWords - 1, g);
  alignas(32) uint32_t w[kMtWords];
  apply_poly(g, s.mt, w);
  std::memcpy(s.mt, w + 1, (kMtWords - 1) * sizeof(uint32_t));
  s.mt[kMtWords - 1] = mt19937_next_word(w[0], w[1], w[kMtShift]);
  s.pos = pos;
}

}  // namespace oxa::streams
