// The frame shared by the counter-based generators (PHILOX4X32X10, ARS5).
//
// State after the key: ctr[4] (a 128-bit counter, least significant word
// first), out[4] (the last block computed) and left (0..3: how many of its last
// words are still to be handed out). A block maps the counter to four words;
// the counter then increases by one. The stream hands out out[4 - left] ..
// out[3] first, then whole blocks, then buffers the block of a partial tail.
//
// A generator supplies a policy G with
//   using State = ...;                 // key, then ctr, out, left
//   static constexpr int kKeyWords;    // seed words that fill the key
//   static int32_t usable();           // 0, or the status refusing a skip
//   static void blocks(const State&, const uint32_t ctr[4], size_t nblocks,
//                      uint32_t* words);  // blocks ctr, ctr+1, ... in order
// Seeding: key words from the first seeds, then the four counter words;
// words beyond n are zero, as are out and left.
// Reals use the centred mapping of word_scaling.hpp through a 1024-word
// buffer on the stack, so only the caller's array reaches memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "oxa/streams.h"
#include "streams/word_scaling.hpp"

namespace oxa::streams {

// ctr += n as a 128-bit number.
inline void counter_add(uint32_t ctr[4], uint64_t n) {
  uint64_t lo = (uint64_t(ctr[1]) << 32 | ctr[0]);
  uint64_t hi = (uint64_t(ctr[3]) << 32 | ctr[2]);
  const uint64_t sum = lo + n;
  hi += sum < lo;
  lo = sum;
  ctr[0] = uint32_t(lo), ctr[1] = uint32_t(lo >> 32);
  ctr[2] = uint32_t(hi), ctr[3] = uint32_t(hi >> 32);
}

template <class G>
struct CounterGenerator {
  using State = typename G::State;
  static constexpr std::size_t kBufferWords = 1024;

  // A loaded image may hold any left; more than 3 counts as none.
  static uint32_t buffered(const State& s) { return s.left <= 3 ? s.left : 0; }

  static void words(State& s, std::size_t n, uint32_t* r) {
    const std::size_t first = std::min<std::size_t>(n, buffered(s));
    for (std::size_t i = 0; i < first; ++i) r[i] = s.out[4 - buffered(s) + i];
    s.left = buffered(s) - uint32_t(first);
    r += first;
    n -= first;
    const std::size_t whole = n / 4;
    if (whole) {
      G::blocks(s, s.ctr, whole, r);
      counter_add(s.ctr, whole);
    }
    const std::size_t tail = n % 4;
    if (tail) {
      G::blocks(s, s.ctr, 1, s.out);
      counter_add(s.ctr, 1);
      std::memcpy(r + 4 * whole, s.out, tail * sizeof(uint32_t));
      s.left = uint32_t(4 - tail);
    }
  }

  // A policy may also convert whole blocks straight from registers:
  //   template <class Map> static void blocks_reals(const State&, const uint32_t ctr[4],
  //                                                  size_t nblocks, T* out, const Map&);
  template <class T>
  static void reals(State& s, int32_t n, T* r, T a, T b) {
    using Map = WordScale<WordMapping::kCentred, T>;
    std::size_t done = 0, total = n > 0 ? std::size_t(n) : 0;
    if constexpr (requires(const Map& m) { G::blocks_reals(s, s.ctr, 0, r, m); }) {
      const Map map(a, b);
      for (; done < total && buffered(s) > 0; ++done, --s.left) r[done] = map(s.out[4 - s.left]);
      if (const std::size_t whole = (total - done) / 4; whole > 0) {
        G::blocks_reals(s, s.ctr, whole, r + done, map);
        counter_add(s.ctr, whole);
        done += 4 * whole;
      }
    }
    uint32_t buffer[kBufferWords];
    while (done < total) {
      const std::size_t m = std::min(kBufferWords, total - done);
      words(s, m, buffer);
      scale_words<WordMapping::kCentred>(buffer, r + done, m, a, b);
      done += m;
    }
  }

  // InitStream: seed (0), leapfrog (refused), skip-ahead (2).
  static int32_t init(State& s, int32_t method, int32_t n, const uint32_t params[]) {
    switch (method) {
      case OXA_INIT_SEED:
        s = State{};
        for (int i = 0; i < G::kKeyWords; ++i) s.key[i] = n > i ? params[i] : 0;
        for (int i = 0; i < 4; ++i) s.ctr[i] = n > G::kKeyWords + i ? params[G::kKeyWords + i] : 0;
        return VSL_STATUS_OK;
      case OXA_INIT_LEAPFROG:
        return VSL_RNG_ERROR_NO_LEAPFROG;
      case OXA_INIT_SKIPAHEAD: {
        if (const int32_t refused = G::usable(); refused != 0) return refused;
        uint64_t nskip;
        std::memcpy(&nskip, params, sizeof nskip);
        skip(s, nskip);
        return VSL_STATUS_OK;
      }
      default:
        return VSL_ERROR_BAD_INIT_METHOD;
    }
  }

  // Leaves the stream as it would be after nskip more words.
  static void skip(State& s, uint64_t nskip) {
    const uint32_t left = buffered(s);
    if (nskip <= left) {
      s.left = left - uint32_t(nskip);
      return;
    }
    counter_add(s.ctr, (nskip - left - 1) >> 2);
    s.left = uint32_t(left - nskip) & 3;
    G::blocks(s, s.ctr, 1, s.out);
    counter_add(s.ctr, 1);
  }
};

}  // namespace oxa::streams
