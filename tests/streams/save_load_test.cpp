// Saving and loading streams: round trips for every generator, the exact
// image layout, and damaged images (every truncation, byte changes, huge
// sizes), which must give a status and never a stream, a crash or a leak.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "oxa/service.h"
#include "oxa/streams.h"
#include "streams/cpu_features.hpp"
#include "streams/registry.hpp"

namespace {

using Bytes = std::vector<unsigned char>;

// Memory-backed files when the system has them: the damage tests write many.
std::string temp_path(const char* tag) {
  FILE* probe = std::fopen("/dev/shm/oxa_probe", "wb");
  const std::string dir = probe ? "/dev/shm/" : ::testing::TempDir();
  if (probe) std::fclose(probe), std::remove("/dev/shm/oxa_probe");
  return dir + "oxa_save_load_" + std::to_string(::getpid()) + "_" + tag + ".img";
}

void write_file(const std::string& path, const Bytes& b) {
  FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(f, nullptr);
  if (!b.empty()) {
    ASSERT_EQ(std::fwrite(b.data(), b.size(), 1, f), 1u);
  }
  std::fclose(f);
}

Bytes read_file(const std::string& path) {
  Bytes b;
  FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) return b;
  int ch;
  while ((ch = std::fgetc(f)) != EOF) b.push_back(static_cast<unsigned char>(ch));
  std::fclose(f);
  return b;
}

Bytes image_of(const StreamState* s) {
  Bytes b(static_cast<size_t>(_vslGetStreamSize(s)));
  EXPECT_EQ(_vslSaveStreamM(s, reinterpret_cast<char*>(b.data())), 0);
  return b;
}

// Adds a chunk of `size` bytes filled from `fill`, private unless a key is
// given (then shared through the read-only data table).
void add_chunk(StreamState* s, uint32_t id, uint32_t size, unsigned fill,
               const uint64_t* key = nullptr) {
  void* data = size ? oxa_serv_allocate(size, 128) : nullptr;
  ASSERT_EQ(data == nullptr, size == 0);
  for (uint32_t i = 0; i < size; ++i) static_cast<unsigned char*>(data)[i] = uint8_t(fill + i);
  ASSERT_EQ(_vslAddChunk(s, id, key, data, size), 0);
}

struct ChunkView {
  uint32_t id, size;
  uint64_t key0, key1;
  Bytes data;
  bool operator==(const ChunkView&) const = default;
};
std::vector<ChunkView> chunks_of(const StreamState* s) {
  std::vector<ChunkView> v;
  for (const StreamChunk* c = s->chunks; c; c = c->next) {
    const auto* p = static_cast<const unsigned char*>(c->data);
    v.push_back({c->id, c->size, c->key[0], c->key[1], Bytes(p, p + c->size)});
  }
  return v;
}

int32_t load_file(StreamState** s, const std::string& path) {
  static StreamState junk;
  *s = &junk;  // the loader must overwrite it with NULL or a new stream
  return _vslLoadStreamF(s, path.c_str(), -1);
}

// Every registered generator whose entry points exist, seeded (the abstract
// rows are never saved: tested with their own streams).
std::vector<int32_t> generators() {
  std::vector<int32_t> ids;
  for (int32_t r = 0; r < _vslGetNumRegBrngs(); ++r) {
    const int32_t id = (r + 1) << 20;
    const oxa::streams::BrngRef ref = oxa::streams::decode_brng(id);
    if (oxa::streams::is_usable(ref) && !oxa::streams::is_abstract(ref)) ids.push_back(id);
  }
  return ids;
}

TEST(SaveLoad, RoundTripEveryGeneratorWithChunks) {
  const uint32_t seeds[] = {11, 22, 33, 44, 55, 66, 77, 88};
  for (int32_t id : generators()) {
    SCOPED_TRACE(id);
    StreamState* s = nullptr;
    const bool quasi = id == OXA_BRNG_SOBOL || id == OXA_BRNG_NIEDERR;  // seeds: dimension 11
    ASSERT_EQ(_vslNewStreamEx(&s, id, quasi ? 1 : 8, seeds), 0);
    const BrngProperties& row = oxa::streams::decode_brng(id).props();
    const size_t words_per_value = size_t(row.WordBytes) / 4;  // GenBits writes WordBytes each
    std::vector<uint32_t> skip(9 * words_per_value);
    row.GenBits(s, 9, skip.data());  // leaves a part-used block or buffer
    const uint64_t key[2] = {0x5EED0000u + uint64_t(id), 0xC0FFEE};
    add_chunk(s, 5, 544, 3);
    add_chunk(s, 7, 64, 1, key);  // shared: the loaded copies reuse the table's data
    add_chunk(s, 2, 16, 9);
    add_chunk(s, 2, 0, 0);
    const Bytes img = image_of(s);

    const std::string path = temp_path("roundtrip");
    ASSERT_EQ(_vslSaveStreamF(s, path.c_str(), int32_t(path.size())), 0);
    EXPECT_EQ(read_file(path), img);

    StreamState *fromFile = nullptr, *fromMemory = nullptr;
    ASSERT_EQ(load_file(&fromFile, path), 0);
    ASSERT_EQ(_vslLoadStreamM(&fromMemory, reinterpret_cast<const char*>(img.data())), 0);
    auto expected = chunks_of(s);
    std::reverse(expected.begin(), expected.end());  // loading pushes each at the head
    for (StreamState* t : {fromFile, fromMemory}) {
      EXPECT_EQ(t->brng, id);
      EXPECT_EQ(chunks_of(t), expected);
      EXPECT_EQ(_vslSearchChunk(t, 7), _vslSearchChunk(s, 7));  // one shared buffer
      // Same state bytes: saving the copy gives the same image up to chunk order.
      const Bytes again = image_of(t);
      ASSERT_EQ(again.size(), img.size());
      const size_t state_end = size_t(row.StateBytes);
      EXPECT_TRUE(std::equal(img.begin(), img.begin() + state_end, again.begin()));
    }
    if (id != OXA_BRNG_NONDETERM) {
      std::vector<uint32_t> a(1000 * words_per_value), b(a.size()), c(a.size());
      const auto gen = row.GenBits;
      gen(s, 1000, a.data());
      gen(fromFile, 1000, b.data());
      gen(fromMemory, 1000, c.data());
      EXPECT_EQ(a, b);
      EXPECT_EQ(a, c);
    }
    _vslDeleteStream(&s);
    _vslDeleteStream(&fromFile);
    _vslDeleteStream(&fromMemory);
    std::remove(path.c_str());
  }
}

TEST(SaveLoad, Mcg31m1ImageIsTwentyFourBytes) {
  const uint32_t seed = 1234567;
  StreamState* s = nullptr;
  ASSERT_EQ(_vslNewStreamEx(&s, OXA_BRNG_MCG31M1, 1, &seed), 0);
  const std::string path = temp_path("mcg");
  // A six-character name passed with length 3 names the first three characters.
  const std::string named = path + "abc";
  ASSERT_EQ(_vslSaveStreamF(s, (named + "def").c_str(), int32_t(named.size())), 0);
  const Bytes img = read_file(named);
  ASSERT_EQ(img.size(), 24u);
  const Bytes header = {0x01, 0x52, 0x4E, 0x47, 16, 0, 8, 0, 0, 0, 0, 0, 0x00, 0x00, 0x10, 0x00};
  EXPECT_TRUE(std::equal(header.begin(), header.end(), img.begin()));
  StreamState* t = nullptr;
  ASSERT_EQ(_vslLoadStreamF(&t, named.c_str(), int32_t(named.size())), 0);
  uint32_t a[5], b[5];
  _vsliBRngMCG31M1(s, 5, a);
  _vsliBRngMCG31M1(t, 5, b);
  EXPECT_TRUE(std::equal(a, a + 5, b));
  _vslDeleteStream(&s);
  _vslDeleteStream(&t);
  std::remove(named.c_str());
}

// An MCG31M1 image with two chunks, as the base of the damage tests.
Bytes sample_image() {
  const uint32_t seed = 77;
  StreamState* s = nullptr;
  _vslNewStreamEx(&s, OXA_BRNG_MCG31M1, 1, &seed);
  add_chunk(s, 3, 40, 1);
  add_chunk(s, 2, 16, 7);
  Bytes img = image_of(s);
  _vslDeleteStream(&s);
  return img;
}

TEST(SaveLoad, EveryTruncationIsAShortRead) {
  const Bytes img = sample_image();
  const std::string path = temp_path("truncated");
  for (size_t n = 0; n < img.size(); ++n) {
    write_file(path, Bytes(img.begin(), img.begin() + long(n)));
    StreamState* s = nullptr;
    ASSERT_EQ(load_file(&s, path), VSL_RNG_ERROR_FILE_READ) << n;
    ASSERT_EQ(s, nullptr);
  }
  std::remove(path.c_str());
}

struct Damage {
  const char* what;
  void (*apply)(Bytes&);
  int32_t status;
  bool claims_more_bytes = false;  // the memory loader trusts sizes: file only
};

void put16(Bytes& b, size_t at, uint32_t v) { b[at] = uint8_t(v), b[at + 1] = uint8_t(v >> 8); }
void put32(Bytes& b, size_t at, uint32_t v) {
  for (int i = 0; i < 4; ++i) b[at + size_t(i)] = uint8_t(v >> (8 * i));
}
constexpr size_t kFirstChunk = 24;  // after the 16-byte header and 8 bytes of state
constexpr size_t kSecondChunk = kFirstChunk + 24 + 16;
// Gives the chunk record at `at` a shared key (the same for every record).
void share(Bytes& b, size_t at) { put32(b, at + 4, 0x5EED), put32(b, at + 16, 0xC0DE); }

const Damage kDamages[] = {
    {"wrong magic", [](Bytes& b) { b[2] = 'X'; }, VSL_RNG_ERROR_BAD_IMAGE},
    {"version 2", [](Bytes& b) { b[0] = 2; }, VSL_RNG_ERROR_BAD_IMAGE_VERSION},
    {"state size + 1", [](Bytes& b) { put16(b, 6, 9); }, VSL_RNG_ERROR_BAD_IMAGE},
    {"state size - 1", [](Bytes& b) { put16(b, 6, 7); }, VSL_RNG_ERROR_BAD_IMAGE},
    {"header size 15", [](Bytes& b) { put16(b, 4, 15); }, VSL_RNG_ERROR_BAD_IMAGE},
    {"header size 20", [](Bytes& b) { put16(b, 4, 20); b.insert(b.begin() + 16, 4, 0xEE); }, 0},
    {"unregistered id", [](Bytes& b) { put32(b, 12, 0x1F00000); }, VSL_RNG_ERROR_BAD_IMAGE},
    {"negative legacy id", [](Bytes& b) { put32(b, 12, 0xFFFFFFFF); }, VSL_RNG_ERROR_BAD_IMAGE},
    {"reserved bytes ignored", [](Bytes& b) { b[10] = 0xAB, b[11] = 0xCD; }, 0},
    {"huge chunk size", [](Bytes& b) { put32(b, kFirstChunk + 20, 0xFFFFFFF0u); },
     VSL_RNG_ERROR_FILE_READ, true},
    // Chunks sharing a key take one buffer, so they must agree on its size.
    {"shared key, no data then data", [](Bytes& b) {
       share(b, kFirstChunk), share(b, kSecondChunk), put32(b, kFirstChunk + 20, 0);
       b.erase(b.begin() + long(kFirstChunk + 24), b.begin() + long(kSecondChunk));
     }, VSL_RNG_ERROR_BAD_IMAGE},
    {"shared key, sizes 16 then 40",
     [](Bytes& b) { share(b, kFirstChunk), share(b, kSecondChunk); }, VSL_RNG_ERROR_BAD_IMAGE},
    {"shared key, sizes 16 and 16", [](Bytes& b) {
       share(b, kFirstChunk), share(b, kSecondChunk), put32(b, kSecondChunk + 20, 16);
       b.resize(kSecondChunk + 24 + 16);
     }, 0},
    {"huge chunk count", [](Bytes& b) { put16(b, 8, 0xFFFF); }, VSL_RNG_ERROR_FILE_READ, true},
    {"no chunks read", [](Bytes& b) { put16(b, 8, 0); b.resize(kFirstChunk); }, 0},
    // Magic first, version byte last: accepted, but chunk records then have
    // no known version.
    {"magic first, no chunks",
     [](Bytes& b) { put32(b, 0, 0x01474E52); put16(b, 8, 0); b.resize(kFirstChunk); }, 0},
    {"magic first, chunks", [](Bytes& b) { put32(b, 0, 0x01474E52); }, VSL_RNG_ERROR_FILE_READ},
    {"magic first, version 3", [](Bytes& b) { put32(b, 0, 0x03474E52); },
     VSL_RNG_ERROR_BAD_IMAGE_VERSION},
    // Version 0 chunk records carry no key.
    {"version 0", [](Bytes& b) {
       b[0] = 0;
       for (size_t at = kFirstChunk; at < b.size();) {
         uint32_t size = 0;
         std::memcpy(&size, &b[at + 20], 4);
         b.erase(b.begin() + long(at + 4), b.begin() + long(at + 20));
         at += 8 + size;
       }
     }, 0},
};

TEST(SaveLoad, DamagedHeadersAndRecords) {
  const std::string path = temp_path("damaged");
  for (const Damage& d : kDamages) {
    Bytes img = sample_image();
    d.apply(img);
    write_file(path, img);
    StreamState* s = nullptr;
    EXPECT_EQ(load_file(&s, path), d.status) << d.what;
    EXPECT_EQ(s == nullptr, d.status != 0) << d.what;
    if (s) image_of(s);  // an accepted image saves again
    StreamState* m = nullptr;
    if (!d.claims_more_bytes) {
      EXPECT_EQ(_vslLoadStreamM(&m, reinterpret_cast<const char*>(img.data())), d.status)
          << d.what;
      EXPECT_EQ(m == nullptr, d.status != 0) << d.what;
      if (s && m) {
        EXPECT_EQ(chunks_of(s), chunks_of(m)) << d.what;
      }
    }
    _vslDeleteStream(&s);
    _vslDeleteStream(&m);
  }
  std::remove(path.c_str());
}

TEST(SaveLoad, RandomByteChangesGiveAStatus) {
  const Bytes base = sample_image();
  const std::string path = temp_path("fuzzed");
  const std::set<int32_t> allowed = {0,
                                     VSL_ERROR_NO_MEMORY,
                                     VSL_RNG_ERROR_FILE_READ,
                                     VSL_RNG_ERROR_BAD_IMAGE,
                                     VSL_RNG_ERROR_BAD_IMAGE_VERSION};
  std::mt19937 rng(12345);
  for (int trial = 0; trial < 1500; ++trial) {
    Bytes img = base;
    for (int k = 1 + int(rng() % 4); k > 0; --k) img[rng() % img.size()] = uint8_t(rng());
    write_file(path, img);
    StreamState* s = nullptr;
    const int32_t status = load_file(&s, path);
    ASSERT_TRUE(allowed.count(status)) << status;
    ASSERT_EQ(s == nullptr, status < 0);
    _vslDeleteStream(&s);
  }
  std::remove(path.c_str());
}

TEST(SaveLoad, FileErrors) {
  const uint32_t seed = 1;
  StreamState* s = nullptr;
  ASSERT_EQ(_vslNewStreamEx(&s, OXA_BRNG_MCG31M1, 1, &seed), 0);
  EXPECT_EQ(_vslSaveStreamF(s, "/nonexistent-dir/x.img", -1), VSL_RNG_ERROR_FILE_OPEN);
  // Writes to a full device fail when the buffered data is flushed at close.
  if (FILE* full = std::fopen("/dev/full", "wb")) {
    std::fclose(full);
    EXPECT_EQ(_vslSaveStreamF(s, "/dev/full", -1), VSL_RNG_ERROR_FILE_CLOSE);
  }
  StreamState* t = nullptr;
  EXPECT_EQ(load_file(&t, "/nonexistent-dir/x.img"), VSL_RNG_ERROR_FILE_OPEN);
  EXPECT_EQ(t, nullptr);
  EXPECT_EQ(load_file(&t, ::testing::TempDir()), VSL_RNG_ERROR_FILE_READ);  // a directory
  EXPECT_EQ(t, nullptr);
  _vslDeleteStream(&s);
}

}  // namespace

namespace {

// Images of the AES and RDRAND generators are refused where the processor
// lacks the instruction, and nothing is left behind.
TEST(SaveLoad, ProcessorFeaturesRequiredByImages) {
  struct Case { int32_t id; bool hide_aes, hide_rdrand; int32_t status; };
  for (const Case& c : {Case{OXA_BRNG_ARS5, true, false, VSL_RNG_ERROR_NO_AES},
                        Case{OXA_BRNG_NONDETERM, false, true, VSL_RNG_ERROR_NO_RDRAND}}) {
    StreamState* s = nullptr;
    const uint32_t seed = 3;
    if (_vslNewStreamEx(&s, c.id, 1, &seed) != 0) {  // processor lacks it for real
      _vslDeleteStream(&s);
      continue;
    }
    const Bytes img = image_of(s);
    _vslDeleteStream(&s);
    oxa::streams::cpu_features_hide(c.hide_aes, c.hide_rdrand);
    StreamState* t = nullptr;
    EXPECT_EQ(_vslLoadStreamM(&t, reinterpret_cast<const char*>(img.data())), c.status);
    EXPECT_EQ(t, nullptr);
    oxa::streams::cpu_features_hide(false, false);
    EXPECT_EQ(_vslLoadStreamM(&t, reinterpret_cast<const char*>(img.data())), 0);
    _vslDeleteStream(&t);
  }
}

}  // namespace
