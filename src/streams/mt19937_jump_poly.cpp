// x^e mod p for the MT19937 characteristic polynomial p (table made by
// tools/mt19937_poly.py).
// Method: left-to-right binary exponentiation. The exponent's leading bits up
//   to 19936 give a monomial for free; every further bit costs a squaring
//   (a bit spread: squaring is linear over GF(2)) and a reduction, plus a
//   multiplication by x when the bit is set.
// Reduction: x^19937 = sum of the 134 low terms of p, the highest 623 below
//   the degree, so a 512-bit chunk never feeds itself and chunks are folded
//   from the top down. The fold of one chunk is unrolled at compile time from
//   a constexpr plan, so every shift is an immediate and every output block is
//   summed in a register and stored once.
// Cost: about 51 squarings for an exponent near 2^64, roughly 5 us each.
#include "streams/mt19937_jump_poly.hpp"

#include <immintrin.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace oxa::streams {

#include "streams/mt19937_poly.inc"

namespace {

constexpr int kProductWords = 2 * kMtPolyWords;  // words of a square before reduction
constexpr int kTerms = sizeof(_vsl_mt19937_poly_terms) / sizeof(_vsl_mt19937_poly_terms[0]);

// Folding one 512-bit chunk H at word c >= 312: for the low term k, H lands at
// bit 64(c - 312) + 31 + k. Relative to word c - 312 the placement depends on k
// alone, so one plan lists, for each four-word output block j, the terms that
// reach it: where to read H and by how much to shift.
constexpr int kChunkWords = 8;
constexpr int kLead = 64 - (kMtDegree & 63);  // 31: bit offset of x^19937 in a chunk
constexpr int kFoldBlocks = (kLead + 19314 + 64 * kChunkWords) / 256 + 1;
constexpr int kMaxFoldTerms = kFoldBlocks * 8;

struct FoldTerm {
  int word;   // H word feeding the block's first word (-4..7)
  int shift;  // right shift of the H words at that offset (0..63)
};
struct FoldPlan {
  FoldTerm term[kMaxFoldTerms];
  int begin[kFoldBlocks + 1];
};
constexpr FoldPlan make_fold_plan() {
  FoldPlan plan{};
  int n = 0;
  for (int j = 0; j < kFoldBlocks; ++j) {
    plan.begin[j] = n;
    for (int t = 0; t < kTerms; ++t) {
      const int at = kLead + _vsl_mt19937_poly_terms[t];  // bit where H starts
      if (at < 256 * (j + 1) && at + 64 * kChunkWords > 256 * j) {
        const int rel = 256 * j - at;                             // in (-256, 512)
        const int q = rel >= 0 ? rel / 64 : -((-rel + 63) / 64);  // floor
        plan.term[n++] = FoldTerm{q, rel - 64 * q};
      }
    }
  }
  plan.begin[kFoldBlocks] = n;
  return plan;
}
constexpr FoldPlan kFold = make_fold_plan();
static_assert(kFold.begin[kFoldBlocks] <= kMaxFoldTerms);

// Bits 64*(4 + Word) + Shift onward of hp, four words.
template <int Word, int Shift>
[[gnu::always_inline]] inline __m256i chunk_bits(const uint64_t* hp) {
  const __m256i w0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hp + 4 + Word));
  if constexpr (Shift == 0) {
    return w0;
  } else {
    const __m256i w1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hp + 5 + Word));
    return _mm256_or_si256(_mm256_srli_epi64(w0, Shift), _mm256_slli_epi64(w1, 64 - Shift));
  }
}

template <int J, std::size_t... I>
[[gnu::always_inline]] inline void fold_block(uint64_t* out, [[maybe_unused]] const uint64_t* hp,
                                              std::index_sequence<I...>) {
  __m256i v = _mm256_setzero_si256();
  ((v = _mm256_xor_si256(v, chunk_bits<kFold.term[kFold.begin[J] + int(I)].word,
                                       kFold.term[kFold.begin[J] + int(I)].shift>(hp))),
   ...);
  __m256i* d = reinterpret_cast<__m256i*>(out + 4 * J);
  _mm256_storeu_si256(d, _mm256_xor_si256(_mm256_loadu_si256(d), v));
}

template <std::size_t... J>
inline void fold_blocks(uint64_t* out, const uint64_t* hp, std::index_sequence<J...>) {
  (fold_block<int(J)>(out, hp,
                      std::make_index_sequence<std::size_t(kFold.begin[J + 1] - kFold.begin[J])>()),
   ...);
}

// a[c - 312 ...] ^= H * x^(64c - 19937) * (p - x^19937); hp[4..11] = H, the
// rest of hp zero.
void fold_chunk(uint64_t* a, const uint64_t* hp, int c) {
  fold_blocks(a + (c - kMtPolyWords), hp, std::make_index_sequence<kFoldBlocks>());
}

// a mod p for a of degree < 2*19937, in place; a has 16 words of zero slack
// past its 624 words for the last blocks' loads and stores.
void reduce(uint64_t* a) {
  alignas(32) uint64_t hp[20] = {};
  for (int c = kProductWords - kChunkWords; c >= kMtPolyWords; c -= kChunkWords) {
    std::memcpy(hp + 4, a + c, kChunkWords * sizeof(uint64_t));
    std::memset(a + c, 0, kChunkWords * sizeof(uint64_t));
    fold_chunk(a, hp, c);
  }
  // Bits 19937..19967 of word 311, one term at a time.
  const uint64_t top = a[kMtPolyWords - 1] >> (kMtDegree & 63);
  a[kMtPolyWords - 1] &= (uint64_t(1) << (kMtDegree & 63)) - 1;
  for (int t = 0; top != 0 && t < kTerms; ++t) {
    const unsigned k = _vsl_mt19937_poly_terms[t];
    a[k >> 6] ^= top << (k & 63);
    if (k & 63) a[(k >> 6) + 1] ^= top >> (64 - (k & 63));
  }
}

constexpr int kSlack = 16;  // zero words past a product that the fold may touch

void square(const uint64_t* g, uint64_t* out) {
  constexpr uint64_t kSpread = 0x5555555555555555u;
  for (int i = 0; i < kMtPolyWords; ++i) {
    out[2 * i] = _pdep_u64(g[i] & 0xFFFFFFFFu, kSpread);
    out[2 * i + 1] = _pdep_u64(g[i] >> 32, kSpread);
  }
  std::memset(out + kProductWords, 0, kSlack * sizeof(uint64_t));
  reduce(out);
}

void times_x(uint64_t* g) {
  for (int i = kMtPolyWords - 1; i > 0; --i) g[i] = (g[i] << 1) | (g[i - 1] >> 63);
  g[0] <<= 1;
  if ((g[kMtPolyWords - 1] >> (kMtDegree & 63)) & 1) {
    for (int i = 0; i < kMtPolyWords; ++i) g[i] ^= _vsl_mt19937_poly[i];  // clears x^19937
  }
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
  alignas(32) uint64_t sq[kProductWords + kSlack];
  for (; bit >= 0; --bit) {
    square(g, sq);
    std::memcpy(g, sq, kMtPolyWords * sizeof(uint64_t));
    if ((e >> bit) & 1) times_x(g);
  }
}

}  // namespace oxa::streams
