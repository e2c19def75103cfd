// Chunks on a stream and the shared read-only data table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

#include "oxa/service.h"
#include "streams/stream_fixture.hpp"

using oxa_test::Stream;

namespace {

void* buffer(uint32_t size, unsigned char fill) {
  void* p = oxa_serv_allocate(size, 128);
  std::memset(p, fill, size);
  return p;
}

TEST(Chunks, ListOperations) {
  Stream s(OXA_BRNG_MCG31M1, {1});
  ASSERT_EQ(_vslAddChunk(s.get(), 5, nullptr, buffer(544, 1), 544), 0);
  ASSERT_EQ(_vslAddChunk(s.get(), 2, nullptr, buffer(16, 2), 16), 0);
  EXPECT_EQ(_vslGetStreamSize(s.get()), 24 + 568 + 40);
  void* second = buffer(16, 3);
  ASSERT_EQ(_vslAddChunk(s.get(), 2, nullptr, second, 16), 0);
  EXPECT_EQ(_vslSearchChunk(s.get(), 2), second) << "newest chunk of an id wins";
  EXPECT_EQ(_vslSearchChunk(s.get(), 9), nullptr);
  EXPECT_EQ(_vslGetNumChunks(s.get()), 3);

  // Copies carry private copies of the data, in reverse order.
  Stream c(s);
  ASSERT_EQ(c.status(), 0);
  EXPECT_EQ(_vslGetNumChunks(c.get()), 3);
  EXPECT_EQ(c.get()->chunks->id, 5u);
  EXPECT_NE(_vslSearchChunk(c.get(), 5), _vslSearchChunk(s.get(), 5));
  EXPECT_EQ(static_cast<unsigned char*>(_vslSearchChunk(c.get(), 5))[543], 1);

  // Copying the state replaces the destination's chunks by copies.
  Stream d(OXA_BRNG_MCG31M1, {2});
  ASSERT_EQ(_vslAddChunk(d.get(), 4, nullptr, buffer(8, 4), 8), 0);
  ASSERT_EQ(_vslCopyStreamState(d.get(), s.get()), 0);
  EXPECT_EQ(_vslGetNumChunks(d.get()), 3);
  EXPECT_EQ(_vslSearchChunk(d.get(), 4), nullptr);

  ASSERT_EQ(_vslDeleteChunks(c.get()), 0);
  EXPECT_EQ(c.get()->chunks, nullptr);
  EXPECT_EQ(_vslGetStreamSize(c.get()), 24);
}

TEST(Chunks, DeleteByIdKeepsOnlyFromTheLastKeptChunk) {
  struct Case {
    std::vector<uint32_t> ids;  // added in this order (so the list is reversed)
    uint32_t remove;
    std::vector<uint32_t> left;  // list from the head afterwards
  };
  const Case cases[] = {
      {{6, 6}, 6, {}},
      {{1, 6}, 6, {1}},
      {{6, 1}, 6, {1}},
      {{1, 2, 6}, 6, {1}},     // list 6,2,1: 2 then 1 kept; head = 1, so 2 drops out
      {{1, 6, 2}, 6, {1}},     // list 2,6,1
      {{1, 2, 3}, 9, {1}},     // nothing removed, still only the last kept remains
  };
  for (const Case& c : cases) {
    Stream s(OXA_BRNG_MCG31M1, {1});
    for (uint32_t id : c.ids) ASSERT_EQ(_vslAddChunk(s.get(), id, nullptr, buffer(8, 0), 8), 0);
    std::vector<StreamChunk*> kept;
    for (StreamChunk* k = s.get()->chunks; k; k = k->next)
      if (k->id != c.remove) kept.push_back(k);
    ASSERT_EQ(_vslDeleteChunksById(s.get(), c.remove), 0);
    std::vector<uint32_t> left;
    std::vector<StreamChunk*> linked;
    for (StreamChunk* k = s.get()->chunks; k; k = k->next) {
      left.push_back(k->id);
      linked.push_back(k);
    }
    EXPECT_EQ(left, c.left);
    // Chunks that dropped out of the list are the caller's loss; free them here.
    for (StreamChunk* k : kept) {
      if (std::find(linked.begin(), linked.end(), k) == linked.end()) {
        oxa_serv_deallocate(k->data);
        oxa_serv_deallocate(k);
      }
    }
  }
}

TEST(SharedTable, ReferenceCountingAcrossStreams) {
  const uint64_t key[2] = {0x1234, 0xABCD};
  GlobRODataTableEntry* e = nullptr;
  ASSERT_EQ(_vslFindGlobRODataTableEntry(&e, key), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);
  const uint64_t zero[2] = {0, 0};
  EXPECT_EQ(_vslFindGlobRODataTableEntry(&e, zero), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);
  EXPECT_EQ(_vslFindGlobRODataTableEntry(&e, nullptr), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);

  void* shared = buffer(64, 7);
  {
    Stream a(OXA_BRNG_MCG31M1, {1});
    ASSERT_EQ(_vslAddChunk(a.get(), 9, key, shared, 64), 0);
    ASSERT_EQ(_vslFindGlobRODataTableEntry(&e, key), 0);
    EXPECT_EQ(e->refs, 1u);
    EXPECT_EQ(e->data, shared);
    {
      Stream b(a);  // the copy refers to the same data
      EXPECT_EQ(_vslSearchChunk(b.get(), 9), shared);
      ASSERT_EQ(_vslFindGlobRODataTableEntry(&e, key), 0);
      EXPECT_EQ(e->refs, 2u);
      // Adding under a known key swaps in the table's data.
      void* mine = buffer(64, 8);
      ASSERT_EQ(_vslAddChunk(b.get(), 9, key, mine, 64), 0);
      EXPECT_EQ(_vslSearchChunk(b.get(), 9), shared);
      oxa_serv_deallocate(mine);
      EXPECT_EQ(e->refs, 3u);
    }
    ASSERT_EQ(_vslFindGlobRODataTableEntry(&e, key), 0);
    EXPECT_EQ(e->refs, 1u);
    // Copy-state onto itself leaves the chunks alone.
    EXPECT_EQ(_vslCopyStreamState(a.get(), a.get()), 0);
    EXPECT_EQ(e->refs, 1u);
  }
  EXPECT_EQ(_vslFindGlobRODataTableEntry(&e, key), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);
}

TEST(SharedTable, FullTableKeepsChunksPrivate) {
  std::vector<GlobRODataTableEntry*> made;
  uint64_t key[2] = {0, 0x5151};
  for (uint64_t i = 1;; ++i) {
    key[0] = i;
    GlobRODataTableEntry* e;
    const int32_t st = _vslCreateGlobRODataTableEntry(&e, key, nullptr);
    if (st != 0) {
      EXPECT_EQ(st, VSL_RNG_ERROR_RO_TABLE_FULL);
      break;
    }
    made.push_back(e);
  }
  EXPECT_EQ(made.size(), 128u);
  // Free one slot: 127 in use is still "full" for a new chunk key.
  key[0] = 1;
  ASSERT_EQ(_vslUnregisterGlobRODataReference(key), 0);
  Stream s(OXA_BRNG_MCG31M1, {1});
  const uint64_t fresh[2] = {77, 77};
  ASSERT_EQ(_vslAddChunk(s.get(), 9, fresh, buffer(32, 1), 32), 0);
  EXPECT_EQ(s.get()->chunks->key[0], 0u);
  EXPECT_EQ(s.get()->chunks->key[1], 0u);
  GlobRODataTableEntry* e;
  EXPECT_EQ(_vslFindGlobRODataTableEntry(&e, fresh), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);
  // Releasing the last reference moved the last entry into the freed slot.
  key[0] = 128;
  ASSERT_EQ(_vslFindGlobRODataTableEntry(&e, key), 0);
  EXPECT_EQ(e, made[0]);
  for (uint64_t i = 2; i <= 128; ++i) {
    key[0] = i;
    ASSERT_EQ(_vslUnregisterGlobRODataReference(key), 0);
  }
  EXPECT_EQ(_vslFindGlobRODataTableEntry(&e, key), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);
}

// Several threads create, copy and delete streams whose chunks share one key
// (and keys of their own) all at once. Every chunk must keep readable data
// while it lives (AddressSanitizer checks), and the table ends empty.
TEST(SharedTable, HammeredFromThreads) {
  const uint64_t common[2] = {0xC0FFEE, 1};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &common] {
      for (int i = 0; i < 300; ++i) {
        Stream s(OXA_BRNG_MCG31M1, {static_cast<uint32_t>(i)});
        const uint64_t own[2] = {static_cast<uint64_t>(i + 1), static_cast<uint64_t>(t + 100)};
        const struct {
          uint32_t id;
          const uint64_t* key;
        } adds[] = {{9, common}, {13, own}};
        for (const auto& add : adds) {
          // A chunk added under a key already shared uses the table's data;
          // the buffer offered is then the caller's to free.
          void* offered = buffer(32, static_cast<unsigned char>(add.id));
          ASSERT_EQ(_vslAddChunk(s.get(), add.id, add.key, offered, 32), 0);
          if (_vslSearchChunk(s.get(), add.id) != offered) oxa_serv_deallocate(offered);
        }
        Stream c(s);
        ASSERT_EQ(c.status(), 0);
        for (uint32_t id : {9u, 13u}) {
          ASSERT_EQ(static_cast<const unsigned char*>(_vslSearchChunk(c.get(), id))[31], id);
        }
        uint64_t key[2];
        _vslGenerateNewGlobalRODataTableEntryId(key, static_cast<uint64_t>(t));
      }
    });
  }
  for (auto& th : threads) th.join();
  GlobRODataTableEntry* e;
  EXPECT_EQ(_vslFindGlobRODataTableEntry(&e, common), VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND);
}

}  // namespace
