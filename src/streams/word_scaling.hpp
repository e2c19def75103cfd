// Conversion of raw 32-bit generator words into floats or doubles on [a, b).
//
// Two mappings, one loop frame for both element types:
//   Unsigned: r = a + s*u, u the word as 0 <= u < 2^32, s = (b - a)*2^-32.
//             Single precision rounds u to float first, so r can reach b.
//   Centred:  r = (a + b)/2 + s*x, x the word as a signed 32-bit integer:
//             x = -2^31 gives exactly a, the largest word b - s.
// Both compute s (and the centre) once per call in the output precision and
// round after the product and after the sum (no fused multiply-add).
//
// In place: the words may live in the output array itself, word i at the
// address of element i (single) or in the upper half of a double array (word i
// at byte 4n + 4i). Elements are produced front to back, a vector step reads
// its eight words before it writes, and element i ends at byte 8i + 8 <=
// 4n + 4i + 4, so no word is overwritten before it is read.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace oxa::streams {

enum class WordMapping { kUnsigned, kCentred };

namespace scaling_detail {

inline uint32_t load_word(const uint32_t* words, std::size_t i) {
  uint32_t w;
  std::memcpy(&w, words + i, sizeof w);
  return w;
}

// Scalar conversion of one word to the real value of the mapping.
template <class T, WordMapping M>
inline T word_value(uint32_t w) {
  if constexpr (M == WordMapping::kCentred) {
    return static_cast<T>(static_cast<int32_t>(w));
  } else {
    return static_cast<T>(w);  // round to nearest for float, exact for double
  }
}

// Eight words to eight doubles (two 4-lane halves).
template <WordMapping M>
inline void convert8(double* out, __m256i w, double offset, double scale) {
  const __m256d vs = _mm256_set1_pd(scale), vo = _mm256_set1_pd(offset);
  __m128i halves[2] = {_mm256_castsi256_si128(w), _mm256_extracti128_si256(w, 1)};
  for (int h = 0; h < 2; ++h) {
    __m256d x;
    if constexpr (M == WordMapping::kCentred) {
      x = _mm256_cvtepi32_pd(halves[h]);
    } else {
      // u = (u - 2^31 as signed) + 2^31, exact in double.
      const __m128i flipped = _mm_xor_si128(halves[h], _mm_set1_epi32(INT32_MIN));
      x = _mm256_add_pd(_mm256_cvtepi32_pd(flipped), _mm256_set1_pd(0x1p31));
    }
    _mm256_storeu_pd(out + 4 * h, _mm256_add_pd(vo, _mm256_mul_pd(vs, x)));
  }
}

// Eight words to eight floats.
template <WordMapping M>
inline void convert8(float* out, __m256i w, float offset, float scale) {
  __m256 x;
  if constexpr (M == WordMapping::kCentred) {
    x = _mm256_cvtepi32_ps(w);
  } else {
    // hi*2^16 and lo are exact floats; their sum rounds once, to nearest.
    const __m256 hi = _mm256_cvtepi32_ps(_mm256_srli_epi32(w, 16));
    const __m256 lo = _mm256_cvtepi32_ps(_mm256_and_si256(w, _mm256_set1_epi32(0xFFFF)));
    x = _mm256_add_ps(_mm256_mul_ps(hi, _mm256_set1_ps(0x1p16f)), lo);
  }
  _mm256_storeu_ps(out, _mm256_add_ps(_mm256_set1_ps(offset),
                                      _mm256_mul_ps(_mm256_set1_ps(scale), x)));
}

}  // namespace scaling_detail

// The mapping of one call: r = offset + scale * word value.
template <WordMapping M, class T>
struct WordScale {
  T offset, scale;
  WordScale(T a, T b)
      : offset(M == WordMapping::kCentred ? (a + b) * static_cast<T>(0.5) : a),
        scale((b - a) * static_cast<T>(0x1p-32)) {}
  T operator()(uint32_t w) const { return offset + scale * scaling_detail::word_value<T, M>(w); }
  // Eight words to out[0..7] (unaligned stores).
  void eight(T* out, __m256i w) const { scaling_detail::convert8<M>(out, w, offset, scale); }
};

// Writes out[i] for i < n from words[i]; see the header comment for aliasing.
template <WordMapping M, class T>
void scale_words(const uint32_t* words, T* out, std::size_t n, T a, T b) {
  const WordScale<M, T> map(a, b);
  std::size_t i = 0;
  for (; i < n && (reinterpret_cast<uintptr_t>(out + i) & 31) != 0; ++i) {
    out[i] = map(scaling_detail::load_word(words, i));
  }
  for (; i + 8 <= n; i += 8) {
    map.eight(out + i, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words + i)));
  }
  for (; i < n; ++i) out[i] = map(scaling_detail::load_word(words, i));
}

}  // namespace oxa::streams
