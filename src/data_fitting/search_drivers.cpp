// Threaded search drivers. Each asks the caller's threading record how many
// threads it has (slot 4, no hint), goes parallel only above its method's
// size, cuts the sites into as many contiguous chunks as threads, runs the
// chunks through the parallel-for (slot 0) and searches the sites left over
// after threads·chunk on the calling thread. Chunks write disjoint cells.
#include "data_fitting/search_job.hpp"

namespace oxa::df {
namespace {

int32_t threads_available(const DfThreading* th) {
  if (th == nullptr || th->parallel_for == nullptr || th->get_num_threads == nullptr) return 1;
  const int32_t n = th->get_num_threads(nullptr);
  return n < 1 ? 1 : n;
}

template <Real T>
struct ChunkContext {
  const SearchJob<T>* job;
  int64_t chunk;       // sites per chunk
  int64_t last_chunk;  // index of the last chunk
  int64_t last_pos;    // sorted: where the last chunk's scan stopped
};

// Body of one chunk. Sorted chunks start from cell 0 (always a valid start
// for ascending sites); only the last chunk reports where it stopped.
template <Real T, class W>
void chunk_body(void* context, int64_t index, int32_t, int32_t) {
  auto* ctx = static_cast<ChunkContext<T>*>(context);
  int64_t pos = 0;
  search_range<T, W>(*ctx->job, index * ctx->chunk, ctx->chunk, &pos);
  if (index == ctx->last_chunk) ctx->last_pos = pos;
}

template <Real T>
oxa_parallel_body chunk_body_for(Width w) {
  switch (w) {
    case Width::k32:
      return &chunk_body<T, Cells32>;
    case Width::k64:
      return &chunk_body<T, Cells64>;
    case Width::k64Pack:
      break;
  }
  return &chunk_body<T, Cells64Pack>;
}

// Runs the job in `threads` chunks of `chunk` sites plus a tail; threads < 2
// or an empty chunk runs it sequentially.
template <Real T>
oxa_status run_chunks(const SearchJob<T>& job, const DfThreading* th, int32_t threads,
                      int64_t chunk) {
  int64_t start = job.state != nullptr ? *job.state : 0;
  if (threads < 2 || chunk < 1) {
    const oxa_status s = search_range(job, 0, job.nsite, &start);
    if (job.state != nullptr) *job.state = start;
    return s;
  }
  ChunkContext<T> ctx{&job, chunk, threads - 1, 0};
  th->parallel_for(threads, threads, &ctx, chunk_body_for<T>(job.width));
  const int64_t done = threads * chunk;
  int64_t pos = ctx.last_pos;  // the tail's sites follow the last chunk's
  search_range(job, done, job.nsite - done, &pos);
  if (job.state != nullptr) *job.state = pos;
  return DF_OK;
}

template <Real T>
oxa_status _v1DSearchUniform(const SearchJob<T>& j, const DfThreading* th) {
  const int32_t t = threads_available(th);
  const int32_t threads = j.nsite > 5000 && t > 1 ? t : 1;
  return run_chunks(j, th, threads, j.nsite / threads);
}

// Quasi-uniform: on a small partition (nx < 600) the walks are short and
// cached, so a chunk must hold at least 1000 sites to pay for a thread.
template <Real T>
oxa_status _v1DSearchQuasiUniform(const SearchJob<T>& j, const DfThreading* th) {
  const int32_t t = threads_available(th);
  int32_t threads = j.nsite >= 301 && t >= 2 ? t : 1;
  if (j.nx < 600 && threads > 1)
    threads = static_cast<int32_t>(std::min<int64_t>(t, j.nsite / 1000));
  if (threads < 1) threads = 1;
  return run_chunks(j, th, threads, j.nsite / threads);
}

template <Real T>
oxa_status _v1DSearchSorted(const SearchJob<T>& j, const DfThreading* th) {
  const int32_t t = threads_available(th);
  const int32_t threads = j.nsite > 3000 && t >= 2 ? t : 1;
  return run_chunks(j, th, threads, j.nsite / threads);
}

// Peak: the second size is nx. The pair (nsite >= 1201, nx >= 301) is implied
// by nsite >= 1201 and kept only for the record.
template <Real T>
oxa_status _v1DSearchPeak(const SearchJob<T>& j, const DfThreading* th) {
  const int32_t t = threads_available(th);
  const bool big = j.nsite >= 1201 || j.nx >= 1201 || (j.nsite >= 1201 && j.nx >= 301);
  const int32_t threads = big && t > 1 ? t : 1;
  return run_chunks(j, th, threads, j.nsite / threads);
}

// Hybrid: the thresholds fall with the number of threads. With more than 16
// blocks of 128 sites the chunks are whole blocks (⌊blocks/T⌋ each, on
// min(blocks, T) threads); below that a plain ⌊nsite/T⌋ split.
template <Real T>
oxa_status _v1DSearchHybrid(const SearchJob<T>& j, const DfThreading* th) {
  const int32_t t = threads_available(th);
  const int64_t n = j.nsite;
  const bool parallel =
      t > 1 && (n > 2000 || (n > 600 && n <= 2000 && t <= 4) || (n > 300 && n <= 600 && t <= 2));
  if (!parallel) return run_chunks(j, th, 1, n);
  const int64_t blocks = n / 128;
  if (blocks > 16) {
    const auto threads = static_cast<int32_t>(std::min<int64_t>(blocks, t));
    return run_chunks(j, th, threads, blocks / threads * 128);
  }
  return run_chunks(j, th, t, n / t);
}

// User-defined searches run on the calling thread: the call-back sees the
// whole site array at once. The same driver serves both partition kinds.
template <Real T>
oxa_status _v1DSearchUserDef(const SearchJob<T>& j, const DfThreading* th) {
  return run_chunks(j, th, 1, j.nsite);
}

}  // namespace

// The table of drivers in method order: uniform, quasi-uniform, sorted,
// peak, hybrid, user-defined, user-defined on a uniform partition.
template <Real T>
SearchDriver<T> search_driver(Method m) {
  static constexpr SearchDriver<T> table[7] = {
      &_v1DSearchUniform<T>,
      &_v1DSearchQuasiUniform<T>,
      &_v1DSearchSorted<T>,
      &_v1DSearchPeak<T>,
      &_v1DSearchHybrid<T>,
      &_v1DSearchUserDef<T>,
      &_v1DSearchUserDef<T> /* uniform */,
  };
  return table[static_cast<int32_t>(m)];
}

template SearchDriver<double> search_driver<double>(Method);
template SearchDriver<float> search_driver<float>(Method);

}  // namespace oxa::df
