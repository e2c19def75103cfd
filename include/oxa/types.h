/* oxa: types shared by every subsystem. C11 and C++20. */
#ifndef OXA_TYPES_H
#define OXA_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define OXA_EXTERN_C_BEGIN extern "C" {
#define OXA_EXTERN_C_END }
#else
#define OXA_EXTERN_C_BEGIN
#define OXA_EXTERN_C_END
#endif

OXA_EXTERN_C_BEGIN

/* Status of every vector-statistics and data-fitting entry point: 0 is success,
 * negative values are errors (each subsystem header lists its codes). */
typedef int32_t oxa_status;

/* Statuses shared by the vector-statistics subsystems (streams, distributions,
 * summary statistics). */
enum {
  VSL_STATUS_OK = 0,
  VSL_ERROR_BAD_ARGUMENT = -3,
  VSL_ERROR_NO_MEMORY = -4
};

/* Body of a parallel-for: called once for every iteration index in [0, n).
 * `thread` is the index of the calling worker in [0, nthreads); a body may use
 * it to pick private scratch. */
typedef void (*oxa_parallel_body)(void* context, int64_t index, int32_t thread,
                                  int32_t nthreads);

/* Parallel-for: calls body(context, i, thread, nthreads) once for every i in
 * [0, n), on up to `nthreads` threads, and returns when all calls are done.
 * n <= 0 calls nothing; nthreads < 1 is taken as 1. */
typedef void (*oxa_parallel_for_fn)(int64_t n, int32_t nthreads, void* context,
                                    oxa_parallel_body body);

/* What a construction kernel tells the thread-count query of DfThreading about
 * its problem. Search drivers pass NULL. A query may ignore it. */
typedef struct DfThreadingHint {
  int64_t nx;              /* breakpoints */
  int64_t ny;              /* functions */
  int64_t cell_blocks;     /* blocks of cells the work is cut into */
  int64_t function_blocks; /* blocks of functions */
  const void* x;           /* partition (float or double, per kernel) */
  const void* const* y;    /* function value pointers */
  const void* const* coeff;/* coefficient pointers */
  double inv_h;            /* 1 / cell width for uniform partitions, else 0 */
} DfThreadingHint;

/* The threading layer handed to every threaded data-fitting kernel. Slot 0 is
 * the parallel-for, slot 4 the number of threads available. Slots 1 to 3 are
 * reserved; the library never calls them and they may be NULL. A kernel uses
 * min(iterations, get_num_threads(...)) threads. */
typedef struct DfThreading {
  oxa_parallel_for_fn parallel_for;
  void (*reserved1)(void);
  void (*reserved2)(void);
  void (*reserved3)(void);
  int32_t (*get_num_threads)(const DfThreadingHint* hint);
} DfThreading;

OXA_EXTERN_C_END

#endif /* OXA_TYPES_H */
