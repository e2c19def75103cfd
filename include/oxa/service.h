/* oxa service layer (liboxa_service): memory, environment, messages, process
 * exit and the threading layer. Every oxa subsystem allocates and threads
 * through these functions. C11 and C++20. */
#ifndef OXA_SERVICE_H
#define OXA_SERVICE_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

/* Aligned allocation. Returns NULL (never aborts) when size is 0, when
 * alignment is not a power of two, or when the block cannot be provided
 * (sizes beyond the 47-bit user address space are refused up front).
 * Alignments below the pointer size are raised to it. */
void* oxa_serv_allocate(size_t size, size_t alignment);

/* Releases a block from oxa_serv_allocate. NULL is a no-op. */
void oxa_serv_deallocate(void* pointer);

/* Copies count bytes from src to dest (overlap allowed). Returns 0 on success;
 * 22 (EINVAL) when dest or src is NULL, 34 (ERANGE) when count > dest_size.
 * On a refusal nothing is copied. */
int32_t oxa_serv_memcpy_s(void* dest, size_t dest_size, const void* src, size_t count);

/* Copies the value of environment variable `name` into buffer (at most
 * length - 1 characters, always terminated when length >= 1) and returns the
 * value's full length. Returns 0 when the variable is absent or empty, or when
 * name is NULL (an empty value is still copied). With buffer NULL or length < 1 nothing is written. */
int32_t oxa_serv_getenv(const char* name, char* buffer, int32_t length);

/* Prints catalogue message `message` on `channel` (0 standard output,
 * 1 standard error) with `nargs` arguments. The arguments of each message:
 *   735           (const char* name, int64_t index)   invalid argument
 *   736           (const char* name)                  no access
 *   737 .. 741    (const char* name)                  domain, singularity,
 *                                                     overflow, underflow, other
 *   742 .. 753    (int64_t index, double value)       one line of an element
 *                 report: 742/743 arg1, res1; 744/745/746 arg1, res1, res2;
 *                 747/748/749 arg1, arg2, res1; 750..753 arg1, arg2, res1, res2.
 * Returns the number of characters written, or -1 for an unknown message, a
 * wrong argument count or an unknown channel (nothing is printed then). */
int32_t oxa_serv_print(int32_t channel, int32_t message, int32_t nargs, ...);

/* Ends the process with `code` (used when a per-thread block cannot be made). */
void oxa_serv_exit(int32_t code);

/* A generic function pointer; cast it to the documented type before calling. */
typedef void (*oxa_serv_fun)(void);

/* Looks up a threading-layer function by name; NULL for any other name.
 *   "oxa_vsl_serv_threader_for"                    -> oxa_parallel_for_fn
 *      void f(int64_t n, int32_t nthreads, void* context, oxa_parallel_body body)
 *   "oxa_vsl_serv_threader_get_num_threads_limit"  -> oxa_num_threads_limit_fn
 *      int32_t f(void): largest number of threads to use (OpenMP's limit,
 *      which honours OMP_NUM_THREADS), at least 1. */
oxa_serv_fun oxa_serv_load_thread_fun(const char* name);

typedef int32_t (*oxa_num_threads_limit_fn)(void);

/* A ready-made DfThreading on the same OpenMP threading layer: slot 0 is the
 * service parallel-for, slot 4 returns the thread limit and ignores its hint. */
extern const DfThreading oxa_serv_df_threading;

OXA_EXTERN_C_END

#endif /* OXA_SERVICE_H */
