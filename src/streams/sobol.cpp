// SOBOL: the base-2 Sobol sequence in Gray-code order, 32-bit resolution,
// dimensions 1 .. 2600 (the current point and four counters fill the 2604
// seed words that a state copy carries).
//
// Built-in direction numbers: the Joe-Kuo new-joe-kuo-6.21201 set (dimension
// 1 is van der Corput). For a dimension with primitive polynomial
// x^s + a_1 x^(s-1) + .. + a_(s-1) x + 1 and initial numbers m_1..m_s,
//   m_k = 2 a_1 m_(k-1) ^ 4 a_2 m_(k-2) ^ .. ^ 2^s m_(k-s) ^ m_(k-s),
// and the direction word of bit k - 1 is m_k << (32 - k).
//
// Chunks: 9 holds the direction words (32 rows of d), shared between streams
// through the shared read-only table (one key per dimension for the built-in
// numbers, a fresh key per stream for caller-supplied ones); 13 holds the
// stream's private block table (see digital_sequence.hpp).
#include <mutex>

#include "oxa/service.h"
#include "oxa/types.h"
#include "streams/digital_sequence.hpp"
#include "streams/registry.hpp"
#include "streams/sobol_table.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {
namespace {

constexpr uint32_t kChunkDirections = 9;
constexpr uint32_t kChunkBlocks = 13;
constexpr uint32_t kSobolMaxDim = max_dimension(2604);
static_assert(kSobolMaxDim == kSobolBuiltinDims, "every dimension has built-in numbers");
static_assert(16 + offsetof(DigitalState, x) + 4 * kSobolMaxDim <= 11712, "StateBytes");

inline int degree(uint32_t poly) { return 31 - __builtin_clz(poly); }

// Direction words of one dimension into column j of v (row stride d).
void fill_column(uint32_t* v, uint32_t d, uint32_t j, uint32_t poly, const uint32_t* init) {
  const int s = degree(poly);
  uint32_t m[kDigitBits];
  for (int k = 0; k < kDigitBits; ++k) {
    if (s == 0) {
      m[k] = 1;
    } else if (k < s) {
      m[k] = init[k];
    } else {
      uint32_t t = m[k - s] ^ (m[k - s] << s);
      for (int i = 1; i < s; ++i) {
        if ((poly >> (s - i)) & 1) t ^= m[k - i] << i;
      }
      m[k] = t;
    }
    v[std::size_t(k) * d + j] = m[k] << (31 - k);
  }
}

// Seed words: params[0] = d; params[1] = q, the number of trailing dimensions
// the caller defines; then q polynomials; then their initial numbers.
struct SobolSeed {
  uint32_t dim = 1, own = 0;
  const uint32_t* polys = nullptr;
  const uint32_t* inits = nullptr;
};

int32_t parse_seed(int32_t n, const uint32_t params[], SobolSeed& seed) {
  if (n >= 1) seed.dim = params[0];
  if (seed.dim < 1 || seed.dim > kSobolMaxDim) return VSL_ERROR_BAD_ARGUMENT;
  if (n <= 1) return 0;
  seed.own = params[1];
  if (seed.own > seed.dim || uint64_t{seed.own} + 2 > static_cast<uint64_t>(n))
    return VSL_ERROR_BAD_ARGUMENT;
  seed.polys = params + 2;
  seed.inits = params + 2 + seed.own;
  uint64_t total = 2 + uint64_t{seed.own};
  for (uint32_t j = 0; j < seed.own; ++j) {
    if ((seed.polys[j] & 1) == 0) return VSL_ERROR_BAD_ARGUMENT;
    total += static_cast<uint64_t>(degree(seed.polys[j]));
  }
  if (total != static_cast<uint64_t>(n)) return VSL_ERROR_BAD_ARGUMENT;
  const uint32_t* m = seed.inits;
  for (uint32_t j = 0; j < seed.own; ++j) {
    for (int k = 1, s = degree(seed.polys[j]); k <= s; ++k, ++m) {
      if ((*m & 1) == 0 || (k < 32 && *m >> k) != 0) return VSL_ERROR_BAD_ARGUMENT;
    }
  }
  return 0;
}

void fill_directions(uint32_t* v, const SobolSeed& seed) {
  const uint32_t d = seed.dim, builtin = d - seed.own;
  uint32_t init[kDigitBits];
  for (uint32_t j = 0, at = 0; j < builtin; ++j) {
    const uint32_t poly = kSobolPoly[j];
    for (int k = 0; k < degree(poly); ++k) init[k] = kSobolInit[at++];
    fill_column(v, d, j, poly, init);
  }
  const uint32_t* m = seed.inits;
  for (uint32_t j = builtin; j < d; ++j) {
    const uint32_t poly = seed.polys[j - builtin];
    fill_column(v, d, j, poly, m);
    m += degree(poly);
  }
}

// Keys of the shared built-in tables, one per dimension; a key stays valid
// after its entry is released (the next stream re-enters it).
std::mutex g_key_lock;
uint64_t g_builtin_keys[kSobolMaxDim + 1][2];

// Hangs v on the stream as chunk 9 with a shared key; when the table already
// holds the key the stream shares that data and v is freed.
int32_t add_directions(StreamState* stream, uint32_t* v, uint32_t bytes, const SobolSeed& seed) {
  std::lock_guard<std::mutex> guard(g_key_lock);
  uint64_t key[2];
  uint64_t* cached = seed.own == 0 ? g_builtin_keys[seed.dim] : nullptr;
  if (cached && (cached[0] | cached[1]) != 0) {
    key[0] = cached[0];
    key[1] = cached[1];
  } else {
    _vslGenerateNewGlobalRODataTableEntryId(key, (uint64_t{seed.own ? 2u : 1u} << 32) | seed.dim);
    if (cached) {
      cached[0] = key[0];
      cached[1] = key[1];
    }
  }
  const int32_t status = _vslAddChunk(stream, kChunkDirections, key, v, bytes);
  if (status < 0 || stream->chunks->data != v) oxa_serv_deallocate(v);
  return status;
}

bool tables(StreamState* stream, DigitalTables& t) {
  const std::size_t d = digital_state(stream)->dim;
  t.v = static_cast<const uint32_t*>(find_chunk(stream, kChunkDirections, kDigitBits * d * 4));
  t.blocks = static_cast<uint32_t*>(find_chunk(stream, kChunkBlocks, kBlockPoints * d * 4));
  return t.v && t.blocks;
}

int32_t seed_stream(StreamState* stream, int32_t n, const uint32_t params[]) {
  SobolSeed seed;
  const int32_t status = parse_seed(n, params, seed);
  if (status != 0) return status;
  const uint32_t d = seed.dim;
  const uint32_t vbytes = kDigitBits * d * 4, bbytes = kBlockPoints * d * 4;
  auto* v = static_cast<uint32_t*>(oxa_serv_allocate(vbytes, 128));
  auto* blocks = static_cast<uint32_t*>(oxa_serv_allocate(bbytes, 128));
  if (!v || !blocks) {
    oxa_serv_deallocate(v);
    oxa_serv_deallocate(blocks);
    return VSL_ERROR_NO_MEMORY;
  }
  fill_directions(v, seed);
  int32_t added = add_directions(stream, v, vbytes, seed);
  if (added < 0) {
    oxa_serv_deallocate(blocks);
    return added;
  }
  added = _vslAddChunk(stream, kChunkBlocks, nullptr, blocks, bbytes);
  if (added < 0) {
    oxa_serv_deallocate(blocks);
    return added;
  }
  digital_state(stream)->dim = d;
  DigitalTables t;
  tables(stream, t);
  digital_start(*digital_state(stream), d, t);
  return 0;
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngSOBOLInitStream(int32_t method, StreamState* stream, int32_t n,
                                const uint32_t params[]) {
  if (method == OXA_INIT_SEED) return seed_stream(stream, n, params);
  if (method != OXA_INIT_LEAPFROG && method != OXA_INIT_SKIPAHEAD) return VSL_ERROR_BAD_INIT_METHOD;
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  DigitalState& s = *digital_state(stream);
  return method == OXA_INIT_LEAPFROG ? digital_leapfrog(s, t, n, params[0])
                                     : digital_skip(s, t, read_skip_count(params));
}

int32_t _vslsBRngSOBOL(StreamState* stream, int32_t n, float r[], float a, float b) {
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  digital_reals(*digital_state(stream), t, n, r, a, b);
  return 0;
}

int32_t _vsldBRngSOBOL(StreamState* stream, int32_t n, double r[], double a, double b) {
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  digital_reals(*digital_state(stream), t, n, r, a, b);
  return 0;
}

int32_t _vsliBRngSOBOL(StreamState* stream, int32_t n, uint32_t r[]) {
  DigitalTables t;
  if (!tables(stream, t)) return VSL_ERROR_BAD_ARGUMENT;
  digital_words(*digital_state(stream), t, n, r);
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntrySOBOL = {_vslBRngSOBOLInitStream, _vslsBRngSOBOL,
                                                   _vsldBRngSOBOL, _vsliBRngSOBOL};
}
