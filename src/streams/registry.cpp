// Registry tables, id decoding and registration of further generators.
#include "streams/registry.hpp"

namespace oxa::streams {

constinit const BrngEntryPoints kNoEntryPoints = {nullptr, nullptr, nullptr, nullptr};

namespace {

struct BuiltinRow {
  int32_t state_bytes, seed_count, has_zero, word_bytes, bit_count, num_offsets;
  const BrngEntryPoints* entry;
};

// Properties of the generators known at load time, in registry-row order. Rows
// whose generator is not part of this build point at kNoEntryPoints.
const BuiltinRow kBuiltin[kBuiltinRows] = {
    {24, 1, 0, 4, 31, 1, &kBrngEntryMCG31M1},          // MCG31M1
    {1024, 252, 1, 4, 32, 1, &kBrngEntryR250},         // R250
    {40, 6, 1, 4, 32, 1, &kBrngEntryMRG32K3A},         // MRG32K3A
    {32, 1, 0, 8, 59, 1, &kBrngEntryMCG59},            // MCG59
    {48, 4, 1, 16, 24, kWhSets, &kBrngEntryWH},        // WH, 273 parameter sets
    {11712, 2604, 0, 4, 32, 1, &kBrngEntrySOBOL},      // SOBOL
    {84288, 10498, 0, 4, 32, 1, &kBrngEntryNIEDERR},   // NIEDERR
    {2520, 625, 1, 4, 32, 1, &kBrngEntryMT19937},      // MT19937
    {312, 70, 1, 4, 32, kMt2203Sets, &kNoEntryPoints}, // MT2203, 6024 parameter sets
    {48, 0, 1, 4, 32, 1, &kBrngEntryIABSTRACT},        // iAbstract
    {64, 0, 1, 4, 32, 1, &kBrngEntryDABSTRACT},        // dAbstract
    {56, 0, 1, 4, 32, 1, &kBrngEntrySABSTRACT},        // sAbstract
    {2536, 625, 1, 4, 32, 1, &kBrngEntrySFMT19937},    // SFMT19937
    {24, 1, 1, 4, 32, 1, &kBrngEntryTRNG},             // NONDETERM (hardware)
    {72, 8, 1, 4, 32, 1, &kBrngEntryARS5},             // ARS5
    {64, 8, 1, 4, 32, 1, &kBrngEntryPHILOX4X32X10},    // PHILOX4X32X10
};

BrngProperties make_row(const BuiltinRow& b) {
  return BrngProperties{b.state_bytes, b.seed_count, b.has_zero, b.word_bytes, b.bit_count,
                        b.entry->init,  b.entry->gen_single, b.entry->gen_double,
                        b.entry->gen_bits};
}

}  // namespace

// Both tables are filled once while the library loads, from the
// constant-initialised entry-point records, so no other static initialiser may
// depend on them (none does). The legacy table is read-only afterwards.
BrngProperties RegBrngs[kLegacyRows] = {};
BrngProperties RegBrngsNew[kRegistryCapacity] = {};
int32_t NumOffsets[kRegistryCapacity] = {};
int32_t NRegBrngsNew = 0;

namespace {
struct RegistryLoader {
  RegistryLoader() {
    for (int32_t r = 0; r < kBuiltinRows; ++r) {
      RegBrngsNew[r] = make_row(kBuiltin[r]);
      NumOffsets[r] = kBuiltin[r].num_offsets;
    }
    NRegBrngsNew = kBuiltinRows;
    // Legacy ids 0..3 are rows 0..3, ids 4..276 all the WH row, 277 SOBOL,
    // 278 NIEDERR; 279 and 280 stay all zero.
    for (int32_t r = 0; r < 4; ++r) RegBrngs[r] = make_row(kBuiltin[r]);
    for (int32_t r = 4; r <= 276; ++r) RegBrngs[r] = make_row(kBuiltin[kRowWH]);
    RegBrngs[277] = make_row(kBuiltin[kRowSOBOL]);
    RegBrngs[278] = make_row(kBuiltin[kRowNIEDERR]);
  }
};
const RegistryLoader kLoader;
}  // namespace

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

BrngProperties* _vslGetBrngBaseOffset(int32_t id, int32_t* row, int32_t* sub) {
  if (id >= 0x100000) {
    *row = (id >> 20) - 1;
    *sub = id & 0xFFFFF;
    return RegBrngsNew;
  }
  if (static_cast<uint32_t>(id) - 4u <= 272u) {
    *row = 4;
    *sub = id - 4;
  } else {
    *row = id;
    *sub = 0;
  }
  return RegBrngs;
}

// Legacy ids are valid for rows 0..278 (the empty rows 279, 280 and negative
// ids are refused rather than handing out null entry points); registry ids for
// rows in use and sub-indices below the row's number of parameter sets.
int32_t _vslIsBrngValid(const BrngProperties* table, int32_t row, int32_t sub) {
  if (table == RegBrngs) {
    return (row >= 0 && row < kLegacyRowsInUse) ? 0 : VSL_RNG_ERROR_BAD_BRNG;
  }
  if (table == RegBrngsNew) {
    return (row >= 0 && row < NRegBrngsNew && row < kRegistryCapacity && sub >= 0 &&
            sub < NumOffsets[row])
               ? 0
               : VSL_RNG_ERROR_BAD_BRNG;
  }
  return VSL_RNG_ERROR_BAD_BRNG;
}

int32_t _vslGetBrngProperties(int32_t id, BrngProperties* properties) {
  const BrngRef ref = decode_brng(id);
  const int32_t status = _vslIsBrngValid(ref.table, ref.row, ref.sub);
  if (status != 0) return status;
  *properties = ref.props();
  return 0;
}

int32_t _vslGetNumRegBrngs(void) { return NRegBrngsNew; }

// Registration trusts the caller not to race with other registrations or with
// stream creation; it refuses a full registry (-1000) instead of writing past it.
int32_t _vslRegisterBrng(const BrngProperties* p) {
  if (p->StateBytes < 0) return VSL_RNG_ERROR_BAD_STATE_BYTES;
  if (p->WordBytes != 4 && p->WordBytes != 8 && p->WordBytes != 16)
    return VSL_RNG_ERROR_BAD_WORD_BYTES;
  if (p->SeedCount <= 0) return VSL_RNG_ERROR_BAD_SEED_COUNT;
  if (p->BitCount <= 0) return VSL_RNG_ERROR_BAD_BIT_COUNT;
  if (!p->GenDouble || !p->GenSingle || !p->GenBits || !p->InitStream)
    return VSL_RNG_ERROR_NULL_ENTRY_POINT;
  const int32_t r = NRegBrngsNew;
  if (r >= kRegistryCapacity) return VSL_RNG_ERROR_BAD_BRNG;
  NumOffsets[r] = 1;
  NRegBrngsNew = r + 1;
  RegBrngsNew[r] = *p;
  return (r << 20) + 0x100000;
}

}  // extern "C"
