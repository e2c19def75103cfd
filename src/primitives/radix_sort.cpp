// Radix sort engine (contract in radix_sort.hpp).
//
// Buffers: the caller's keys A, scratch key arrays B (and C for argsort), the
// caller's index P and a scratch index Q. Pass j of the m passes that run
// reads from one buffer and scatters into another; the first pass maps raw
// keys to ordered words on the fly, and a pass that lands in the caller's
// keys maps them back. An in-place sort that ends in B (m odd) maps the keys
// back while copying them home. An argsort never writes A: its first pass
// writes positions 0..n-1 as the index, into P or Q so that the last pass
// lands in P.
#include "primitives/radix_sort.hpp"

#include <immintrin.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "oxa/primitives.h"
#include "oxa/service.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace oxa::prim {

namespace {

constexpr int kBuckets = 1 << kDigitBits;
constexpr uint64_t kDigitMask = kBuckets - 1;

template <size_t S> struct Word;
template <> struct Word<1> { using type = uint8_t; };
template <> struct Word<2> { using type = uint16_t; };
template <> struct Word<4> { using type = uint32_t; };
template <> struct Word<8> { using type = uint64_t; };

// Raw key bits <-> unsigned words ordered as the keys should be. Floats:
// negatives have every bit flipped, non-negatives only the sign, which gives
// the total order; signed integers flip the sign; descending flips all.
template <class T>
struct Codec {
  using K = typename Word<sizeof(T)>::type;
  static constexpr int kBits = 8 * sizeof(K);
  static constexpr K kTop = K(K(1) << (kBits - 1));
  K flip;

  K encode(K r) const {
    K e = r;
    if constexpr (std::is_floating_point_v<T>) {
      e = r ^ K(K(0 - K(r >> (kBits - 1))) | kTop);
    } else if constexpr (std::is_signed_v<T>) {
      e = r ^ kTop;
    }
    return K(e ^ flip);
  }
  K decode(K e) const {
    e = K(e ^ flip);
    if constexpr (std::is_floating_point_v<T>) return K(e ^ K(K(K(e >> (kBits - 1)) - 1) | kTop));
    if constexpr (std::is_signed_v<T>) return K(e ^ kTop);
    return e;
  }
};

template <class K>
constexpr int kPasses = (8 * int(sizeof(K)) + kDigitBits - 1) / kDigitBits;

struct NoIndex {};
enum class In { kRaw, kOrdered };       // keys read: caller's raw bits, or ordered words
enum class Out { kOrdered, kRaw };      // keys written: ordered words, or raw bits
enum class Idx { kNone, kCarry, kIota };  // index: absent, moved along, or positions

template <class T, class I, In kIn, Out kOut, Idx kIdx>
void scatter(const Codec<T>& c, const typename Codec<T>::K* ks, typename Codec<T>::K* kd,
             const I* is, I* id, int64_t b, int64_t e, int shift, int64_t* off) {
  for (int64_t i = b; i < e; ++i) {
    const auto w = kIn == In::kRaw ? c.encode(ks[i]) : ks[i];
    const int64_t pos = off[(w >> shift) & kDigitMask]++;
    kd[pos] = kOut == Out::kRaw ? c.decode(w) : w;
    if constexpr (kIdx == Idx::kCarry) id[pos] = is[i];
    if constexpr (kIdx == Idx::kIota) id[pos] = I(i);
  }
}

// Staging for large scatters: each bucket collects 128 bytes of keys
// (and the matching indices) and writes them whole once full, so a pass touches
// the destination once per two lines instead of once per key, and
// lines that start on a 64-byte boundary of a large array go out as
// non-temporal stores (no read of the old line). Lines shared with a
// neighbouring bucket or chunk are written element by element.
template <class K, class I>
struct Staging {
  static constexpr int kLine = 128 / int(sizeof(K));
  alignas(64) K keys[kBuckets][kLine];
  alignas(64) std::conditional_t<std::is_same_v<I, NoIndex>, char, I> index[kBuckets][kLine];
  int64_t start[kBuckets];
};
constexpr int64_t kStagedMin = 4096;  // chunk size from which scatters are staged

template <size_t kBytes>
void write_line(void* dst, const void* src, bool stream) {
  if constexpr (kBytes % 64 == 0) {
    if (stream) {
      for (size_t k = 0; k < kBytes; k += 32)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(static_cast<char*>(dst) + k),
                            _mm256_load_si256(reinterpret_cast<const __m256i*>(static_cast<const char*>(src) + k)));
      return;
    }
  }
  std::memcpy(dst, src, kBytes);
}

template <class T, class I, In kIn, Out kOut, Idx kIdx>
void scatter_staged(const Codec<T>& c, const typename Codec<T>::K* ks, typename Codec<T>::K* kd,
                    const I* is, I* id, int64_t b, int64_t e, int shift, int64_t* off,
                    Staging<typename Codec<T>::K, I>& st, bool stream) {
  using K = typename Codec<T>::K;
  constexpr int L = Staging<K, I>::kLine;
  std::memcpy(st.start, off, sizeof st.start);
  // Elements [lo, hi) of bucket d's current line go from staging to kd/id.
  auto partial = [&](int d, int64_t lo, int64_t hi) {
    for (int64_t p = lo; p < hi; ++p) {
      kd[p] = st.keys[d][p & (L - 1)];
      if constexpr (kIdx != Idx::kNone) id[p] = st.index[d][p & (L - 1)];
    }
  };
  for (int64_t i = b; i < e; ++i) {
    const K w = kIn == In::kRaw ? c.encode(ks[i]) : ks[i];
    const int d = int((w >> shift) & kDigitMask);
    const int64_t pos = off[d]++;
    const int slot = int(pos & (L - 1));
    st.keys[d][slot] = kOut == Out::kRaw ? c.decode(w) : w;
    if constexpr (kIdx == Idx::kCarry) st.index[d][slot] = is[i];
    if constexpr (kIdx == Idx::kIota) st.index[d][slot] = I(i);
    if (slot == L - 1) {
      const int64_t line = pos - (L - 1);
      if (line >= st.start[d]) {
        write_line<sizeof(K) * L>(kd + line, st.keys[d], stream);
        if constexpr (kIdx != Idx::kNone) write_line<sizeof(I) * L>(id + line, st.index[d], stream);
      } else {
        partial(d, st.start[d], pos + 1);
      }
    }
  }
  for (int d = 0; d < kBuckets; ++d) {
    const int64_t end = off[d], line = end & ~int64_t(L - 1);
    partial(d, std::max(line, st.start[d]), end);
  }
  if (stream) _mm_sfence();
}

template <class T, class I, In kIn, Out kOut, Idx kIdx>
void scatter_chunk(const Codec<T>& c, const typename Codec<T>::K* ks, typename Codec<T>::K* kd,
                   const I* is, I* id, int64_t b, int64_t e, int shift, int64_t* off,
                   Staging<typename Codec<T>::K, I>* st, bool stream) {
  if (st != nullptr) {
    scatter_staged<T, I, kIn, kOut, kIdx>(c, ks, kd, is, id, b, e, shift, off, *st, stream);
  } else {
    scatter<T, I, kIn, kOut, kIdx>(c, ks, kd, is, id, b, e, shift, off);
  }
}

// Runs f(chunk) for every chunk, on the service parallel-for when there are
// several.
template <class F>
void for_chunks(int32_t chunks, F& f) {
  const auto parallel_for = chunks > 1 ? reinterpret_cast<oxa_parallel_for_fn>(
                                             oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for"))
                                       : nullptr;
  if (parallel_for == nullptr) {
    for (int32_t c = 0; c < chunks; ++c) f(c);
    return;
  }
  parallel_for(chunks, chunks, &f, [](void* ctx, int64_t i, int32_t, int32_t) {
    (*static_cast<F*>(ctx))(int32_t(i));
  });
}

int32_t chunk_count(int64_t n, int32_t max_threads) {
  if (n < OXA_PRIM_SORT_PARALLEL_MIN) return 1;
  int64_t limit = max_threads;
  if (limit <= 0) {
    const auto limit_fn = reinterpret_cast<oxa_num_threads_limit_fn>(
        oxa_serv_load_thread_fun("oxa_vsl_serv_threader_get_num_threads_limit"));
    limit = limit_fn != nullptr ? limit_fn() : 1;
  }
  return int32_t(std::max<int64_t>(1, std::min(limit, n / kChunkMin)));
}

// Stable insertion sort of ordered words (small n), writing raw keys to
// `out` and the index as kIdx says.
template <class T, class I, Idx kIdx>
void insertion_sort(const Codec<T>& c, const typename Codec<T>::K* in,
                    typename Codec<T>::K* out, I* index, int64_t n) {
  using K = typename Codec<T>::K;
  K w[kInsertionMax];
  I ix[kInsertionMax];
  for (int64_t i = 0; i < n; ++i) {
    const K k = c.encode(in[i]);
    I x{};
    if constexpr (kIdx == Idx::kCarry) x = index[i];
    if constexpr (kIdx == Idx::kIota) x = I(i);
    int64_t j = i;
    for (; j > 0 && w[j - 1] > k; --j) {
      w[j] = w[j - 1];
      ix[j] = ix[j - 1];
    }
    w[j] = k;
    ix[j] = x;
  }
  for (int64_t i = 0; i < n; ++i) {
    if (out != nullptr) out[i] = c.decode(w[i]);
    if constexpr (kIdx != Idx::kNone) index[i] = ix[i];
  }
}

// Scratch arrays are scattered into at 2048 places at once: on Linux, ask
// for 2 MiB pages over their whole 2 MiB blocks, which also saves most of the
// page faults of first use.
void advise_huge_pages(void* p, size_t bytes) {
#ifdef __linux__
  constexpr uintptr_t kHuge = uintptr_t(1) << 21;
  const uintptr_t lo = (reinterpret_cast<uintptr_t>(p) + kHuge - 1) & ~(kHuge - 1);
  const uintptr_t hi = (reinterpret_cast<uintptr_t>(p) + bytes) & ~(kHuge - 1);
  if (hi > lo) madvise(reinterpret_cast<void*>(lo), hi - lo, MADV_HUGEPAGE);
#else
  (void)p, (void)bytes;
#endif
}

size_t round_up(size_t bytes) { return (bytes + 127) & ~size_t(127); }

// The engine. `a` is the caller's keys; `out` is `a` for an in-place sort and
// null for an argsort; `p` the caller's index (NoIndex* null when kIdx is kNone).
template <class T, class I, Idx kIdx>
int32_t run(const typename Codec<T>::K* a, typename Codec<T>::K* out, I* p, int64_t n,
            bool descending, int32_t max_threads) {
  using K = typename Codec<T>::K;
  constexpr int kP = kPasses<K>;
  const Codec<T> codec{descending ? K(~K(0)) : K(0)};
  if (n <= kInsertionMax) {
    insertion_sort<T, I, kIdx>(codec, a, out, p, n);
    return OXA_PRIM_STATUS_OK;
  }
  const int32_t chunks = chunk_count(n, max_threads);
  const bool argsort = out == nullptr;
  const size_t key_bytes = round_up(sizeof(K) * size_t(n));
  const size_t index_bytes = kIdx == Idx::kNone ? 0 : round_up(sizeof(I) * size_t(n));
  const size_t hist_bytes = sizeof(int64_t) * kBuckets * kP * size_t(chunks);
  using Stage = Staging<K, I>;
  const bool staged = sizeof(K) >= 4 && n / chunks >= kStagedMin;
  const size_t stage_bytes = staged ? round_up(sizeof(Stage)) * size_t(chunks) : 0;
  auto* block = static_cast<unsigned char*>(oxa_serv_allocate(
      key_bytes * (argsort ? 2 : 1) + index_bytes + hist_bytes + stage_bytes, 128));
  if (block == nullptr) return OXA_PRIM_ERROR_NO_MEMORY;
  advise_huge_pages(block, key_bytes * (argsort ? 2 : 1) + index_bytes);
  unsigned char* stages = block + key_bytes * (argsort ? 2 : 1) + index_bytes + hist_bytes;
  // Non-temporal lines only for arrays beyond the caches.
  const bool large = sizeof(K) * size_t(n) >= size_t(OXA_PRIM_NONTEMPORAL_BYTES);
  auto line_aligned = [](const void* ptr) { return (reinterpret_cast<uintptr_t>(ptr) & 63) == 0; };
  K* b = reinterpret_cast<K*>(block);
  K* c = argsort ? reinterpret_cast<K*>(block + key_bytes) : nullptr;
  I* q = reinterpret_cast<I*>(block + key_bytes * (argsort ? 2 : 1));
  auto* hist = reinterpret_cast<int64_t*>(block + key_bytes * (argsort ? 2 : 1) + index_bytes);
  auto histogram = [&](int32_t chunk, int pass) { return hist + (size_t(chunk) * kP + pass) * kBuckets; };
  auto begin = [&](int32_t chunk) { return n * chunk / chunks; };

  // Every digit of every chunk in one read, counted in 32-bit words (half
  // the cache footprint) over blocks of at most 2^31 keys.
  auto count_all = [&](int32_t ch) {
    int64_t* h = histogram(ch, 0);
    std::memset(h, 0, sizeof(int64_t) * kBuckets * kP);
    uint32_t local[kP * kBuckets];
    for (int64_t i = begin(ch), e = begin(ch + 1); i < e;) {
      std::memset(local, 0, sizeof local);
      for (const int64_t stop = std::min(e, i + (int64_t(1) << 31)); i < stop; ++i) {
        const K w = codec.encode(a[i]);
        for (int pass = 0; pass < kP; ++pass) ++local[pass * kBuckets + ((w >> (pass * kDigitBits)) & kDigitMask)];
      }
      for (int k = 0; k < kP * kBuckets; ++k) h[k] += local[k];
    }
  };
  for_chunks(chunks, count_all);
  int passes[kP];
  int m = 0;
  for (int pass = 0; pass < kP; ++pass) {
    bool constant = false;
    for (int d = 0; d < kBuckets && !constant; ++d) {
      int64_t total = 0;
      for (int32_t ch = 0; ch < chunks; ++ch) total += histogram(ch, pass)[d];
      constant = total == n;
    }
    if (!constant) passes[m++] = pass;
  }

  // Index buffers: the last pass must write P (argsort) or, in place, the
  // index follows the keys (A with P, B with Q).
  const K* src = a;
  I* isrc = p;
  I* idst = q;
  if (argsort && m % 2 == 1) idst = p;
  for (int j = 0; j < m; ++j) {
    const int pass = passes[j], shift = pass * kDigitBits;
    K* dst = argsort ? (j % 2 == 0 ? b : c) : (j % 2 == 0 ? b : out);
    if (j > 0 && chunks > 1) {
      auto count = [&](int32_t ch) {
        int64_t* h = histogram(ch, pass);
        std::memset(h, 0, sizeof(int64_t) * kBuckets);
        for (int64_t i = begin(ch), e = begin(ch + 1); i < e; ++i) ++h[(src[i] >> shift) & kDigitMask];
      };
      for_chunks(chunks, count);
    }
    // Exclusive prefix over (digit, chunk), in place.
    int64_t running = 0;
    for (int d = 0; d < kBuckets; ++d) {
      for (int32_t ch = 0; ch < chunks; ++ch) {
        int64_t& slot = histogram(ch, pass)[d];
        const int64_t count = slot;
        slot = running;
        running += count;
      }
    }
    const bool first = j == 0, to_caller = dst == out && j == m - 1;
    auto body = [&](int32_t ch) {
      int64_t* off = histogram(ch, pass);
      const int64_t lo = begin(ch), hi = begin(ch + 1);
      constexpr Idx kFirstIdx = kIdx == Idx::kIota ? Idx::kIota : kIdx;
      constexpr Idx kLaterIdx = kIdx == Idx::kIota ? Idx::kCarry : kIdx;
      Stage* st = staged ? reinterpret_cast<Stage*>(stages + round_up(sizeof(Stage)) * size_t(ch)) : nullptr;
      const bool stream = large && line_aligned(dst) && (kIdx == Idx::kNone || line_aligned(idst));
      if (first) {  // always into scratch
        scatter_chunk<T, I, In::kRaw, Out::kOrdered, kFirstIdx>(codec, src, dst, isrc, idst, lo, hi, shift, off, st, stream);
      } else if (to_caller) {
        scatter_chunk<T, I, In::kOrdered, Out::kRaw, kLaterIdx>(codec, src, dst, isrc, idst, lo, hi, shift, off, st, stream);
      } else {
        scatter_chunk<T, I, In::kOrdered, Out::kOrdered, kLaterIdx>(codec, src, dst, isrc, idst, lo, hi, shift, off, st, stream);
      }
    };
    for_chunks(chunks, body);
    src = dst;
    isrc = idst;
    idst = isrc == p ? q : p;
  }

  if constexpr (kIdx == Idx::kIota) {
    if (m == 0) for (int64_t i = 0; i < n; ++i) p[i] = I(i);
  }
  if (!argsort && m % 2 == 1) {  // the keys ended in B: map them home
    auto home = [&](int32_t ch) {
      for (int64_t i = begin(ch), e = begin(ch + 1); i < e; ++i) {
        out[i] = codec.decode(b[i]);
        if constexpr (kIdx != Idx::kNone) p[i] = q[i];
      }
    };
    for_chunks(chunks, home);
  }
  oxa_serv_deallocate(block);
  return OXA_PRIM_STATUS_OK;
}

}  // namespace

template <class T, class I>
int32_t radix_sort(T* keys, I* index, int64_t n, bool descending, int32_t max_threads) {
  using K = typename Codec<T>::K;
  if (n < 2) return OXA_PRIM_STATUS_OK;
  K* words = reinterpret_cast<K*>(keys);
  if (index == nullptr) {
    return run<T, NoIndex, Idx::kNone>(words, words, nullptr, n, descending, max_threads);
  }
  return run<T, I, Idx::kCarry>(words, words, index, n, descending, max_threads);
}

template <class T, class I>
int32_t radix_argsort(const T* keys, I* index, int64_t n, bool descending, int32_t max_threads) {
  using K = typename Codec<T>::K;
  if (n < 1) return OXA_PRIM_STATUS_OK;
  if (n == 1) {
    index[0] = 0;
    return OXA_PRIM_STATUS_OK;
  }
  return run<T, I, Idx::kIota>(reinterpret_cast<const K*>(keys), nullptr, index, n, descending,
                               max_threads);
}

#define OXA_PRIM_INSTANTIATE(T)                                                     \
  template int32_t radix_sort<T, uint32_t>(T*, uint32_t*, int64_t, bool, int32_t); \
  template int32_t radix_sort<T, uint64_t>(T*, uint64_t*, int64_t, bool, int32_t); \
  template int32_t radix_argsort<T, uint32_t>(const T*, uint32_t*, int64_t, bool, int32_t); \
  template int32_t radix_argsort<T, uint64_t>(const T*, uint64_t*, int64_t, bool, int32_t);
OXA_PRIM_INSTANTIATE(uint8_t)
OXA_PRIM_INSTANTIATE(int8_t)
OXA_PRIM_INSTANTIATE(uint16_t)
OXA_PRIM_INSTANTIATE(int16_t)
OXA_PRIM_INSTANTIATE(uint32_t)
OXA_PRIM_INSTANTIATE(int32_t)
OXA_PRIM_INSTANTIATE(uint64_t)
OXA_PRIM_INSTANTIATE(int64_t)
OXA_PRIM_INSTANTIATE(float)
OXA_PRIM_INSTANTIATE(double)
#undef OXA_PRIM_INSTANTIATE

}  // namespace oxa::prim
