// Uniform bits: a generator's raw words, and 32/64-bit words uniform over all
// their bits. Generators whose words already are uniform 32-bit words pass
// them through (a 64-bit result is two consecutive words, the earlier in the
// low half); MCG59 gives the top 32 of its 59 bits (x >> 27) per raw word;
// the others have no uniform bits (VSL_RNG_ERROR_NO_UNIFORMBITS).
#include <algorithm>
#include <cstdint>

#include "oxa/distributions.h"
#include "streams/registry.hpp"

namespace oxa::distributions {
namespace {

using streams::BrngRef;
using streams::decode_brng;

using Bits32Fn = int32_t (*)(uint32_t, StreamState*, int32_t, uint32_t*);
using Bits64Fn = int32_t (*)(uint32_t, StreamState*, int32_t, uint64_t*);

int32_t no_bits32(uint32_t, StreamState*, int32_t, uint32_t*) {
  return VSL_RNG_ERROR_NO_UNIFORMBITS;
}
int32_t no_bits64(uint32_t, StreamState*, int32_t, uint64_t*) {
  return VSL_RNG_ERROR_NO_UNIFORMBITS;
}

int32_t _viRngUniformBits32Words(uint32_t method, StreamState* stream, int32_t n, uint32_t* r) {
  return _vsliRngUniformBits(method, stream, n, r);
}

// 2n raw words, in pieces that keep each count within 32 bits.
int32_t _viRngUniformBits64Words(uint32_t method, StreamState* stream, int32_t n, uint64_t* r) {
  auto* w = reinterpret_cast<uint32_t*>(r);
  int64_t left = 2 * int64_t{n};
  int32_t status = 0;
  do {
    const int32_t m = static_cast<int32_t>(std::min<int64_t>(left, int64_t{1} << 30));
    status = _vsliRngUniformBits(method, stream, m, w);
    if (status < 0) return status;
    w += m;
    left -= m;
  } while (left > 0);
  return status;
}

// m 32-bit results from m raw MCG59 words, in blocks of 2048 on the stack.
int32_t mcg59_bits(StreamState* stream, int64_t m, uint32_t* r) {
  constexpr int32_t kBlock = 2048;
  alignas(32) uint64_t raw[kBlock];
  const BrngRef ref = decode_brng(stream->brng);
  const oxa_brng_bits_fn gen = ref.props().GenBits;
  auto block = [&](int32_t count, uint32_t* out) {
    const int32_t status = gen(stream, count, reinterpret_cast<uint32_t*>(raw));
    if (status < 0) return status;
    for (int32_t i = 0; i < count; ++i) out[i] = static_cast<uint32_t>(raw[i] >> 27);
    return status;
  };
  int32_t status = 0;
  for (int64_t b = 0; b < m / kBlock; ++b) {
    status = block(kBlock, r + b * kBlock);
    if (status < 0) return status;
  }
  // The last, partial block is drawn even when it is empty.
  return block(static_cast<int32_t>(m % kBlock), r + (m / kBlock) * kBlock);
}

int32_t _viRngUniformBits32MCG59(uint32_t, StreamState* stream, int32_t n, uint32_t* r) {
  return mcg59_bits(stream, n, r);
}
int32_t _viRngUniformBits64MCG59(uint32_t, StreamState* stream, int32_t n, uint64_t* r) {
  return mcg59_bits(stream, 2 * int64_t{n}, reinterpret_cast<uint32_t*>(r));
}

// Indexed by registry row: MCG31, R250, MRG32K3A, MCG59, WH, SOBOL,
// NIEDERREITER, MT19937, MT2203, IABSTRACT, DABSTRACT, SABSTRACT, SFMT19937,
// NONDETERM, ARS5, PHILOX4X32X10.
constexpr int kRows = streams::kBuiltinRows;
constexpr Bits32Fn kBits32[kRows] = {
    no_bits32, no_bits32, no_bits32, _viRngUniformBits32MCG59,
    no_bits32, no_bits32, no_bits32, _viRngUniformBits32Words,
    _viRngUniformBits32Words, no_bits32, no_bits32, no_bits32,
    _viRngUniformBits32Words, _viRngUniformBits32Words, _viRngUniformBits32Words,
    _viRngUniformBits32Words};
constexpr Bits64Fn kBits64[kRows] = {
    no_bits64, no_bits64, no_bits64, _viRngUniformBits64MCG59,
    no_bits64, no_bits64, no_bits64, _viRngUniformBits64Words,
    _viRngUniformBits64Words, no_bits64, no_bits64, no_bits64,
    _viRngUniformBits64Words, _viRngUniformBits64Words, _viRngUniformBits64Words,
    _viRngUniformBits64Words};

// The table row of a stream, or -1 when it has none: registered generators,
// the legacy quasi-random rows (277, 278), and generators not in this build.
int row_of(const StreamState* stream) {
  const BrngRef ref = decode_brng(stream->brng);
  if (!streams::is_usable(ref) || ref.row >= kRows) return -1;
  return ref.row;
}

}  // namespace
}  // namespace oxa::distributions

using namespace oxa::distributions;

extern "C" {

int32_t _vsliRngUniformBits(uint32_t, StreamState* stream, int32_t n, uint32_t r[]) {
  const BrngRef ref = decode_brng(stream->brng);
  if (!oxa::streams::is_usable(ref)) return VSL_RNG_ERROR_BAD_BRNG;
  return ref.props().GenBits(stream, n, r);
}

int32_t _vsliRngUniformBits32(uint32_t method, StreamState* stream, int32_t n, uint32_t r[]) {
  const int row = row_of(stream);
  return row < 0 ? VSL_RNG_ERROR_NO_UNIFORMBITS : kBits32[row](method, stream, n, r);
}

int32_t _vsliRngUniformBits64(uint32_t method, StreamState* stream, int32_t n, uint64_t r[]) {
  const int row = row_of(stream);
  return row < 0 ? VSL_RNG_ERROR_NO_UNIFORMBITS : kBits64[row](method, stream, n, r);
}

}  // extern "C"
