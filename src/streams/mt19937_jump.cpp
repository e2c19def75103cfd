// MT19937 skip-ahead by any 64-bit count.
// Method: the recurrence state S_t = (x_t upper bit, x_{t+1} .. x_{t+623}) is
//   a vector over GF(2) of dimension 19937 and one step is a linear map F with
//   characteristic polynomial p (table made by tools/mt19937_poly.py). So
//   F^J S = g(F) S with g = x^J mod p. g comes from left-to-right binary
//   exponentiation (squaring is a bit spread; reduction uses the 134 low terms
//   of p, 512 bits at a time) and is applied to S by Horner's rule four
//   coefficients at a time over a table of the 16 states h(F) S, deg h < 4.
//   Counts that stay within about 32 blocks regenerate blocks instead.
// Cost: ~50 squarings and one 19937-step Horner pass for a count of 2^64 - 1;
//   about 1.2-1.5 ms on the (shared, loaded) development machine.
#include <immintrin.h>

#include <cstring>

#include "streams/mt19937.hpp"

namespace oxa::streams {

#include "streams/mt19937_poly.inc"

namespace {

constexpr int kDegree = 19937;
constexpr int kPolyWords = 312;        // words of a reduced polynomial
constexpr int kProductWords = 624;     // words of a square before reduction
constexpr int kSlack = 16;             // zero words that vector tails may touch
constexpr int kTerms = sizeof(_vsl_mt19937_poly_terms) / sizeof(_vsl_mt19937_poly_terms[0]);
constexpr uint64_t kBlocksByStepping = 32;  // about one Horner pass of work

using Poly = uint64_t[kProductWords + kSlack];

// Folding one 512-bit chunk H at word c >= 312: for the low term k, H lands at
// bit 64(c - 312) + 31 + k. Relative to word c - 312 the placement depends on k
// alone, so one table (made at compile time) lists, for each four-word output
// block j, the terms that reach it: where to read H and by how much to shift.
// The block's sum is formed in a register and stored once, so no load waits
// on an overlapping store.
constexpr int kChunkWords = 8;
constexpr int kLead = 64 - (kDegree & 63);  // 31: bit offset of x^19937 in a chunk
constexpr int kFoldBlocks = (kLead + 19314 + 64 * kChunkWords) / 256 + 1;

struct FoldTerm {
  int8_t word;    // H word feeding the block's first word (may be -4..7)
  uint8_t shift;  // right shift of the H words at that offset
};
struct FoldPlan {
  FoldTerm term[kFoldBlocks * 8];
  uint16_t begin[kFoldBlocks + 1];
};
constexpr FoldPlan make_fold_plan() {
  FoldPlan plan{};
  int n = 0;
  for (int j = 0; j < kFoldBlocks; ++j) {
    plan.begin[j] = uint16_t(n);
    for (int t = 0; t < kTerms; ++t) {
      const int at = kLead + _vsl_mt19937_poly_terms[t];  // bit where H starts
      if (at < 256 * (j + 1) && at + 64 * kChunkWords > 256 * j) {
        const int rel = 256 * j - at;                       // in (-256, 512)
        const int q = rel >= 0 ? rel / 64 : -((-rel + 63) / 64);  // floor
        plan.term[n++] = FoldTerm{int8_t(q), uint8_t(rel - 64 * q)};
      }
    }
  }
  plan.begin[kFoldBlocks] = uint16_t(n);
  return plan;
}
constexpr FoldPlan kFold = make_fold_plan();

// a[c - 312 ...] ^= H * x^(64c - 19937) * (p - x^19937); hp[4..11] = H, the
// rest of hp zero.
inline void fold_chunk(uint64_t* a, const uint64_t* hp, int c) {
  uint64_t* out = a + (c - kPolyWords);
  for (int j = 0; j < kFoldBlocks; ++j) {
    __m256i v = _mm256_setzero_si256();
    for (int i = kFold.begin[j]; i < kFold.begin[j + 1]; ++i) {
      const FoldTerm f = kFold.term[i];
      const __m256i w0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hp + 4 + f.word));
      const __m256i w1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hp + 5 + f.word));
      v = _mm256_xor_si256(v, _mm256_or_si256(_mm256_srl_epi64(w0, _mm_cvtsi32_si128(f.shift)),
                                              _mm256_sll_epi64(w1, _mm_cvtsi32_si128(64 - f.shift))));
    }
    __m256i* d = reinterpret_cast<__m256i*>(out + 4 * j);
    _mm256_storeu_si256(d, _mm256_xor_si256(_mm256_loadu_si256(d), v));
  }
}

// a mod p for a of degree < 2*19937, in place. x^19937 = sum of the low terms,
// so a chunk H at bit P >= 19937 becomes sum_k H x^(P - 19937 + k); the
// highest low term is 623 below the degree, so a 512-bit chunk never feeds
// itself, and chunks are folded from the top down.
void reduce(uint64_t* a) {
  alignas(32) uint64_t hp[20] = {};
  for (int c = kProductWords - kChunkWords; c >= kPolyWords; c -= kChunkWords) {
    std::memcpy(hp + 4, a + c, kChunkWords * sizeof(uint64_t));
    std::memset(a + c, 0, kChunkWords * sizeof(uint64_t));
    fold_chunk(a, hp, c);
  }
  // Bits 19937..19967 of word 311, one term at a time.
  const uint64_t top = a[kPolyWords - 1] >> (kDegree & 63);
  a[kPolyWords - 1] &= (uint64_t(1) << (kDegree & 63)) - 1;
  for (int t = 0; top != 0 && t < kTerms; ++t) {
    const unsigned k = _vsl_mt19937_poly_terms[t];
    a[k >> 6] ^= top << (k & 63);
    if (k & 63) a[(k >> 6) + 1] ^= top >> (64 - (k & 63));
  }
}

void square(const uint64_t* g, uint64_t* out) {
  constexpr uint64_t kSpread = 0x5555555555555555u;
  for (int i = 0; i < kPolyWords; ++i) {
    out[2 * i] = _pdep_u64(g[i] & 0xFFFFFFFFu, kSpread);
    out[2 * i + 1] = _pdep_u64(g[i] >> 32, kSpread);
  }
  std::memset(out + kProductWords, 0, kSlack * sizeof(uint64_t));
  reduce(out);
}

void times_x(uint64_t* g) {
  for (int i = kPolyWords - 1; i > 0; --i) g[i] = (g[i] << 1) | (g[i - 1] >> 63);
  g[0] <<= 1;
  if ((g[kPolyWords - 1] >> (kDegree & 63)) & 1) {
    for (int i = 0; i < kPolyWords; ++i) g[i] ^= _vsl_mt19937_poly[i];  // clears x^19937
  }
}

// g = x^e mod p. Exponents below 19937 stay monomials until they would not.
void x_pow_mod(unsigned __int128 e, uint64_t* g) {
  int bit = 127;
  while (bit >= 0 && !((e >> bit) & 1)) --bit;
  uint64_t m = 0;
  for (; bit >= 0; --bit) {
    const uint64_t next = 2 * m + uint64_t((e >> bit) & 1);
    if (next >= kDegree) break;
    m = next;
  }
  std::memset(g, 0, sizeof(Poly));
  g[m >> 6] = uint64_t(1) << (m & 63);
  Poly sq;
  for (; bit >= 0; --bit) {
    square(g, sq);
    std::memcpy(g, sq, kPolyWords * sizeof(uint64_t));
    if ((e >> bit) & 1) times_x(g);
  }
}

// The recurrence state as a circular window: word (idx + k) % 624 is x_{t+k}.
struct Window {
  uint32_t w[kMtWords];
  int idx;

  void step() {
    const int i = idx;
    const int i1 = i + 1 == kMtWords ? 0 : i + 1;
    const int im = i + kMtShift >= kMtWords ? i + kMtShift - kMtWords : i + kMtShift;
    w[i] = mt19937_next_word(w[i], w[i1], w[im]);
    idx = i1;
  }
  // this ^= other, for an other whose window starts at index 0.
  void add(const uint32_t* other) {
    xor_words(w + idx, other, kMtWords - idx);
    xor_words(w, other + (kMtWords - idx), idx);
  }
  static void xor_words(uint32_t* d, const uint32_t* s, int n) {
    int i = 0;
    for (; i + 8 <= n; i += 8) {
      __m256i* q = reinterpret_cast<__m256i*>(d + i);
      _mm256_storeu_si256(q, _mm256_xor_si256(_mm256_loadu_si256(q),
                                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i))));
    }
    for (; i < n; ++i) d[i] ^= s[i];
  }
  void copy_from_start(uint32_t* out) const {  // out[k] = x_{t+k}
    std::memcpy(out, w + idx, (kMtWords - idx) * sizeof(uint32_t));
    std::memcpy(out + (kMtWords - idx), w, idx * sizeof(uint32_t));
  }
};

constexpr int kWindowBits = 4;

// acc = g(F) S for the state S whose words are start[0..623].
void apply_poly(const uint64_t* g, const uint32_t* start, Window& acc) {
  // table[h] = h(F) S for every h of degree < kWindowBits.
  uint32_t table[1 << kWindowBits][kMtWords];
  Window power;
  std::memcpy(power.w, start, sizeof power.w);
  power.idx = 0;
  std::memset(table[0], 0, sizeof table[0]);
  for (int j = 0; j < kWindowBits; ++j) {
    uint32_t* basis = table[1 << j];
    power.copy_from_start(basis);
    for (int h = 1; h < (1 << j); ++h) {
      uint32_t* t = table[(1 << j) | h];
      for (int k = 0; k < kMtWords; ++k) t[k] = basis[k] ^ table[h][k];
    }
    power.step();
  }
  std::memset(acc.w, 0, sizeof acc.w);
  acc.idx = 0;
  bool started = false;
  for (int c = (kDegree + kWindowBits - 1) / kWindowBits - 1; c >= 0; --c) {
    const int bit = c * kWindowBits;
    uint64_t bits = g[bit >> 6] >> (bit & 63);
    if ((bit & 63) > 64 - kWindowBits) bits |= g[(bit >> 6) + 1] << (64 - (bit & 63));
    const unsigned h = unsigned(bits) & ((1u << kWindowBits) - 1);
    if (started) {
      for (int j = 0; j < kWindowBits; ++j) acc.step();
    }
    if (h != 0) {
      acc.add(table[h]);
      started = true;
    }
  }
}

}  // namespace

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
  Poly g;
  x_pow_mod(blocks * kMtWords - 1, g);
  Window acc;
  apply_poly(g, s.mt, acc);
  acc.step();
  acc.copy_from_start(s.mt);
  s.pos = pos;
}

}  // namespace oxa::streams
