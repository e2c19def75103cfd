// The generator registry: the legacy table (281 rows, indexed by legacy id)
// and the registry table (512 rows, 16 in use at load), with id decoding.
//
// How a generator registers its entry points: its source file defines the four
// extern "C" entry points and, at the bottom, one record
//     constinit const BrngEntryPoints kBrngEntry<NAME> = {init, single, double, bits};
// declared below. registry.cpp builds every row from a record (or from
// kNoEntryPoints for a generator not built yet, whose streams are then refused
// with -1000). Adding a generator = define its record and name it in its row
// of kBuiltinRows in registry.cpp.
#pragma once

#include <cstdint>

#include "oxa/streams.h"

namespace oxa::streams {

struct BrngEntryPoints {
  oxa_brng_init_fn init;
  oxa_brng_single_fn gen_single;
  oxa_brng_double_fn gen_double;
  oxa_brng_bits_fn gen_bits;
};

extern const BrngEntryPoints kNoEntryPoints;
extern const BrngEntryPoints kBrngEntryMCG31M1;
extern const BrngEntryPoints kBrngEntryR250;
extern const BrngEntryPoints kBrngEntryMRG32K3A;
extern const BrngEntryPoints kBrngEntryMCG59;
extern const BrngEntryPoints kBrngEntryWH;
extern const BrngEntryPoints kBrngEntrySOBOL;
extern const BrngEntryPoints kBrngEntryNIEDERR;
extern const BrngEntryPoints kBrngEntryMT19937;
extern const BrngEntryPoints kBrngEntrySFMT19937;
extern const BrngEntryPoints kBrngEntryIABSTRACT;
extern const BrngEntryPoints kBrngEntryDABSTRACT;
extern const BrngEntryPoints kBrngEntrySABSTRACT;
extern const BrngEntryPoints kBrngEntryTRNG;
extern const BrngEntryPoints kBrngEntryARS5;
extern const BrngEntryPoints kBrngEntryPHILOX4X32X10;

inline constexpr int32_t kLegacyRows = 281;
inline constexpr int32_t kLegacyRowsInUse = 279;  // rows 279 and 280 are empty
inline constexpr int32_t kRegistryCapacity = 512;
inline constexpr int32_t kBuiltinRows = 16;
inline constexpr int32_t kWhSets = 273;
inline constexpr int32_t kMt2203Sets = 6024;

// Registry rows (row r is id (r + 1) << 20).
enum BrngRow : int32_t {
  kRowMCG31M1 = 0,
  kRowR250 = 1,
  kRowMRG32K3A = 2,
  kRowMCG59 = 3,
  kRowWH = 4,
  kRowSOBOL = 5,
  kRowNIEDERR = 6,
  kRowMT19937 = 7,
  kRowMT2203 = 8,
  kRowIABSTRACT = 9,
  kRowDABSTRACT = 10,
  kRowSABSTRACT = 11,
  kRowSFMT19937 = 12,
  kRowNONDETERM = 13,
  kRowARS5 = 14,
  kRowPHILOX4X32X10 = 15,
};

extern BrngProperties RegBrngs[kLegacyRows];  // read-only after load
extern BrngProperties RegBrngsNew[kRegistryCapacity];
extern int32_t NumOffsets[kRegistryCapacity];
extern int32_t NRegBrngsNew;

// A decoded id: the table, the row in it and the sub-index (parameter set).
struct BrngRef {
  const BrngProperties* table;
  int32_t row;
  int32_t sub;
  const BrngProperties& props() const { return table[row]; }
};

inline BrngRef decode_brng(int32_t id) {
  BrngRef ref{};
  ref.table = _vslGetBrngBaseOffset(id, &ref.row, &ref.sub);
  return ref;
}

// The three abstract rows: their state points at caller memory, so their
// streams come only from their own constructors and are never saved.
inline bool is_abstract(const BrngRef& ref) {
  return ref.table == RegBrngsNew && ref.row >= kRowIABSTRACT && ref.row <= kRowSABSTRACT;
}

// Valid id whose four entry points all exist: the test every operation that
// may call a generator makes before it does.
inline bool is_usable(const BrngRef& ref) {
  if (_vslIsBrngValid(ref.table, ref.row, ref.sub) != 0) return false;
  const BrngProperties& p = ref.props();
  return p.InitStream && p.GenSingle && p.GenDouble && p.GenBits;
}

// The sub-index (parameter set) of a stream's generator, e.g. the WH set.
inline int32_t stream_sub_index(const StreamState* stream) {
  return decode_brng(stream->brng).sub;
}

}  // namespace oxa::streams
