// NIEDERR: the base-2 Niederreiter sequence (the construction of Bratley, Fox
// and Niederreiter) in Gray-code order, 32-bit resolution, dimensions
// 1 .. 10494 (the current point and four counters fill the 10498 seed words
// that a state copy carries).
//
// Dimension j uses the j-th irreducible polynomial over GF(2) in order of
// degree, then of value (x, x + 1, x^2 + x + 1, x^3 + x + 1, ...); the caller
// may replace the trailing ones. The generator matrix of a polynomial p of
// degree e: with b = p^(u+1) for the block of e output digits that starts at
// digit u e, the sequence v of the linear recurrence with characteristic
// polynomial b, started 0..0 1 1..1 (the 1 at the degree of p^u), gives
// column r, digit i the value v[r + (i mod e)]. The t of the first s
// dimensions is the sum of (e - 1).
//
// Chunk 10 holds the stream's tables (private): the 32 rows of d direction
// words, then the block table (see digital_sequence.hpp).
#include <vector>

#include "oxa/service.h"
#include "oxa/types.h"
#include "streams/digital_sequence.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {
namespace {

constexpr uint32_t kChunkTables = 10;
constexpr uint32_t kNiederMaxDim = max_dimension(10498);
static_assert(16 + offsetof(DigitalState, x) + 4 * kNiederMaxDim <= 84288, "StateBytes");
constexpr int kSieveDegree = 17;  // 16510 irreducible polynomials of degree 1..17

inline int degree(uint64_t p) { return 63 - __builtin_clzll(p); }

// Carry-less product of polynomials over GF(2) (degrees summing below 64).
inline uint64_t clmul(uint64_t a, uint64_t b) {
  uint64_t p = 0;
  for (; b != 0; b >>= 1, a <<= 1) {
    if (b & 1) p ^= a;
  }
  return p;
}

inline uint64_t poly_mod(uint64_t a, uint64_t f) {
  const int e = degree(f);
  for (int i = a ? degree(a) : -1; i >= e; --i) {
    if ((a >> i) & 1) a ^= f << (i - e);
  }
  return a;
}

uint64_t poly_gcd(uint64_t a, uint64_t b) {
  while (b != 0) {
    const uint64_t r = poly_mod(a, b);
    a = b;
    b = r;
  }
  return a;
}

// Irreducibility over GF(2) (Ben-Or): f of degree e is irreducible when
// gcd(x^(2^i) - x mod f, f) = 1 for every i <= e / 2.
bool irreducible(uint32_t f) {
  if (f < 2) return false;
  const int e = degree(f);
  if (e == 1) return true;
  if ((f & 1) == 0) return false;
  uint64_t h = 2;  // x
  for (int i = 1; i <= e / 2; ++i) {
    h = poly_mod(clmul(h, h), f);
    if (poly_gcd(f, h ^ 2) != 1) return false;
  }
  return true;
}

// The first kNiederMaxDim irreducible polynomials in order of value (which is
// order of degree), by sieving out every product of two of degree >= 1.
const uint32_t* default_polynomials() {
  static const std::vector<uint32_t> table = [] {
    constexpr uint32_t limit = 1u << (kSieveDegree + 1);
    std::vector<uint8_t> composite(limit, 0);
    for (uint32_t a = 2; degree(a) <= kSieveDegree / 2; ++a) {
      for (uint32_t b = a; degree(a) + degree(b) <= kSieveDegree; ++b) {
        composite[clmul(a, b)] = 1;
      }
    }
    std::vector<uint32_t> p;
    p.reserve(kNiederMaxDim);
    for (uint32_t c = 2; c < limit && p.size() < kNiederMaxDim; ++c) {
      if (!composite[c]) p.push_back(c);
    }
    return p;
  }();
  return table.data();
}

// The next values of the recurrence after b <- b * p (see the header).
void next_run(uint64_t p, uint64_t& b, uint8_t* v, int last) {
  const int start = degree(b);
  b = clmul(b, p);
  const int m = degree(b);
  for (int r = 0; r < m; ++r) v[r] = r < start ? 0 : 1;
  for (int r = 0; r + m <= last; ++r) {
    uint8_t t = 0;
    for (int k = 0; k < m; ++k) t ^= static_cast<uint8_t>((b >> k) & v[r + k]);
    v[r + m] = t;
  }
}

// Direction words of one dimension (polynomial p) into column j of v.
void fill_column(uint32_t* v, uint32_t d, uint32_t j, uint32_t p) {
  const int e = degree(p);
  uint8_t seq[2 * kDigitBits + 2] = {};
  uint32_t col[kDigitBits] = {};
  uint64_t b = 1;
  for (int i = 0, u = 0; i < kDigitBits; ++i) {
    if (u == 0) next_run(p, b, seq, kDigitBits + e);
    for (int r = 0; r < kDigitBits; ++r) col[r] |= uint32_t{seq[r + u]} << (31 - i);
    if (++u == e) u = 0;
  }
  for (int r = 0; r < kDigitBits; ++r) v[std::size_t(r) * d + j] = col[r];
}

// Seed words: params[0] = d; params[1] = q, the number of trailing dimensions
// whose polynomial the caller gives; then those q polynomials.
int32_t seed_stream(StreamState* stream, int32_t n, const uint32_t params[]) {
  const uint32_t d = n >= 1 ? params[0] : 1;
  if (d < 1 || d > kNiederMaxDim) return VSL_ERROR_BAD_ARGUMENT;
  const uint32_t own = n >= 2 ? params[1] : 0;
  if (own > d || (n >= 2 && static_cast<uint64_t>(n) != 2 + uint64_t{own}))
    return VSL_ERROR_BAD_ARGUMENT;
  for (uint32_t j = 0; j < own; ++j) {
    if (!irreducible(params[2 + j])) return VSL_ERROR_BAD_ARGUMENT;
  }
  const uint32_t bytes = (kDigitBits + kBlockPoints) * d * 4;
  auto* data = static_cast<uint32_t*>(oxa_serv_allocate(bytes, 128));
  if (!data) return VSL_ERROR_NO_MEMORY;
  const uint32_t* polys = default_polynomials();
  for (uint32_t j = 0; j < d; ++j) {
    fill_column(data, d, j, j < d - own ? polys[j] : params[2 + j - (d - own)]);
  }
  const int32_t added = _vslAddChunk(stream, kChunkTables, nullptr, data, bytes);
  if (added < 0) {
    oxa_serv_deallocate(data);
    return added;
  }
  digital_start(*digital_state(stream), d, DigitalTables{data, data + kDigitBits * d});
  return 0;
}

bool tables(StreamState* stream, DigitalTables& t) {
  const std::size_t d = digital_state(stream)->dim;
  auto* data = static_cast<uint32_t*>(find_chunk(stream, kChunkTables, (kDigitBits + kBlockPoints) * d * 4));
  if (!data) return false;
  t = DigitalTables{data, data + kDigitBits * d};
  return true;
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngNIEDERRInitStream(int32_t method, StreamState* stream, int32_t n,
                                  const uint32_t params[]) {
  if (method == OXA_INIT_SEED) return seed_stream(stream, n, params);
  if (method != OXA_INIT_LEAPFROG && method != OXA_INIT_SKIPAHEAD) return VSL_ERROR_BAD_INIT_METHOD;
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  DigitalState& s = *digital_state(stream);
  return method == OXA_INIT_LEAPFROG ? digital_leapfrog(s, t, n, params[0])
                                     : digital_skip(s, t, read_skip_count(params));
}

int32_t _vslsBRngNIEDERR(StreamState* stream, int32_t n, float r[], float a, float b) {
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  digital_reals(*digital_state(stream), t, n, r, a, b);
  return 0;
}

int32_t _vsldBRngNIEDERR(StreamState* stream, int32_t n, double r[], double a, double b) {
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  digital_reals(*digital_state(stream), t, n, r, a, b);
  return 0;
}

int32_t _vsliBRngNIEDERR(StreamState* stream, int32_t n, uint32_t r[]) {
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  digital_words(*digital_state(stream), t, n, r);
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryNIEDERR = {_vslBRngNIEDERRInitStream, _vslsBRngNIEDERR,
                                                     _vsldBRngNIEDERR, _vsliBRngNIEDERR};
}
