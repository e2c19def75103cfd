/* oxa primitives: copying, filling and radix sorting of typed arrays,
 * processor-feature queries and the SSE floating-point control word.
 * C11 and C++20.
 *
 * Every entry point returns an oxa_status (0 or one of the OXA_PRIM_ERROR_*
 * codes below), works on caller-owned arrays, takes 64-bit lengths, and
 * allocates only through oxa_serv_allocate. On an error nothing is written. */
#ifndef OXA_PRIMITIVES_H
#define OXA_PRIMITIVES_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

/* Statuses. */
enum {
  OXA_PRIM_STATUS_OK = 0,
  OXA_PRIM_ERROR_NULL_POINTER = -1, /* an array or output pointer is NULL (arrays may be NULL when n == 0) */
  OXA_PRIM_ERROR_BAD_LENGTH = -2,   /* n < 0, or n larger than the index type can number */
  OXA_PRIM_ERROR_BAD_ARGUMENT = -3, /* unknown type or order, type not allowed here, zero
                                       destination stride, reserved control-word bits */
  OXA_PRIM_ERROR_NO_MEMORY = -4     /* sort scratch could not be allocated */
};

/* Element types. Copy and fill take all of them; sorting takes the integer
 * and real types; index arrays are OXA_PRIM_INT32/UINT32 or OXA_PRIM_INT64/UINT64. */
enum {
  OXA_PRIM_UINT8 = 1,
  OXA_PRIM_INT8 = 2,
  OXA_PRIM_UINT16 = 3,
  OXA_PRIM_INT16 = 4,
  OXA_PRIM_UINT32 = 5,
  OXA_PRIM_INT32 = 6,
  OXA_PRIM_UINT64 = 7,
  OXA_PRIM_INT64 = 8,
  OXA_PRIM_FLOAT = 9,
  OXA_PRIM_DOUBLE = 10,
  OXA_PRIM_COMPLEX_FLOAT = 11,  /* two floats, real part first */
  OXA_PRIM_COMPLEX_DOUBLE = 12  /* two doubles, real part first */
};

/* ---- Copy and fill --------------------------------------------------------
 * Strides count elements and may be negative: element i lives at
 * base + i * stride. When the destination is contiguous (stride 1) and spans
 * at least OXA_PRIM_NONTEMPORAL_BYTES, the stores bypass the caches
 * (non-temporal stores followed by a store fence): an array that large would
 * only evict the caller's working set on its way to memory. */
#define OXA_PRIM_NONTEMPORAL_BYTES ((int64_t)8 << 20)

/* dst[i * dst_stride] = src[i * src_stride] for i in [0, n). A source stride of
 * 0 repeats src[0]. When both strides are 1 the arrays may overlap (the copy
 * behaves as memmove); otherwise overlapping arrays give unspecified contents.
 * Errors: -1 src or dst NULL with n > 0; -2 n < 0; -3 unknown type or
 * dst_stride == 0. */
oxa_status oxa_prim_copy(int32_t type, int64_t n, const void* src, int64_t src_stride, void* dst,
                         int64_t dst_stride);

/* dst[i * dst_stride] = *value for i in [0, n); value is one element of `type`.
 * Errors: -1 value or dst NULL with n > 0; -2 n < 0; -3 unknown type or
 * dst_stride == 0. */
oxa_status oxa_prim_fill(int32_t type, int64_t n, const void* value, void* dst, int64_t dst_stride);

/* ---- Radix sort -----------------------------------------------------------
 * Stable least-significant-digit radix sort with 11-bit digits; passes whose
 * digit is the same for every key are skipped. Integers sort by value. Floats
 * and doubles sort in IEEE total order:
 *   -NaN < -inf < negative numbers < -0 < +0 < positive numbers < +inf < +NaN,
 * NaNs of one sign ordered by payload (a larger payload is further from zero).
 * Descending order is the exact reverse of that order, and stays stable:
 * equal keys keep their input order in both directions.
 * Arrays of OXA_PRIM_SORT_PARALLEL_MIN elements or more are sorted on the
 * service layer's parallel-for (up to its thread limit, each thread taking at
 * least 2^16 elements). Scratch of n keys (and n indices) comes from
 * oxa_serv_allocate and is released before return. */
enum { OXA_PRIM_ASCENDING = 0, OXA_PRIM_DESCENDING = 1 };
#define OXA_PRIM_SORT_PARALLEL_MIN ((int64_t)1 << 17)

/* Sorts keys[0..n) of `type` in place in `order`.
 * Errors: -1 keys NULL with n > 0; -2 n < 0; -3 type not an integer or real
 * type, or unknown order; -4 no scratch. */
oxa_status oxa_prim_sort(int32_t type, int64_t n, void* keys, int32_t order);

/* Sorts keys in place and applies the same permutation to index[0..n) (any
 * contents: they travel with their keys). index_type is a 32- or 64-bit
 * integer type. Errors: as oxa_prim_sort, and -1 index NULL with n > 0; -3 bad
 * index_type. */
oxa_status oxa_prim_sort_index(int32_t type, int64_t n, void* keys, int32_t index_type,
                               void* index, int32_t order);

/* Stable argsort: writes to index[0..n) the positions 0..n-1 of keys in sorted
 * order (equal keys by increasing position); keys are not changed. With a
 * 32-bit index_type n must not exceed 2^31 (-2 otherwise). Errors: as
 * oxa_prim_sort_index. */
oxa_status oxa_prim_argsort(int32_t type, int64_t n, const void* keys, int32_t index_type,
                            void* index, int32_t order);

/* ---- Processor features ---------------------------------------------------
 * Read once per process with CPUID; the vector-state features count as present
 * only when the operating system saves that state (XGETBV): AVX, AVX2, FMA and
 * VPCLMULQDQ need the AVX state, the AVX-512 features also the opmask and
 * upper-register state. */
#define OXA_CPU_SSE42 ((uint64_t)1 << 0)
#define OXA_CPU_AVX ((uint64_t)1 << 1)
#define OXA_CPU_AVX2 ((uint64_t)1 << 2)
#define OXA_CPU_FMA ((uint64_t)1 << 3)
#define OXA_CPU_AVX512F ((uint64_t)1 << 4)
#define OXA_CPU_AVX512DQ ((uint64_t)1 << 5)
#define OXA_CPU_AVX512BW ((uint64_t)1 << 6)
#define OXA_CPU_AVX512VL ((uint64_t)1 << 7)
#define OXA_CPU_AES ((uint64_t)1 << 8)
#define OXA_CPU_PCLMUL ((uint64_t)1 << 9)  /* 128-bit carry-less multiply */
#define OXA_CPU_RDRAND ((uint64_t)1 << 10)
#define OXA_CPU_BMI2 ((uint64_t)1 << 11)
#define OXA_CPU_VPCLMULQDQ ((uint64_t)1 << 12) /* carry-less multiply on 256-bit vectors */

typedef struct OxaCpuInfo {
  uint64_t features;  /* OXA_CPU_* bits */
  uint32_t family;    /* base family, plus the extended family when the base is 15 */
  uint32_t model;     /* base model, plus extended model * 16 when family is 6 or >= 15 */
  uint32_t stepping;
  uint32_t line_bytes; /* cache line size; 0 when not reported */
  uint64_t l1d_bytes;  /* size of one instance of each cache level; 0 when not reported */
  uint64_t l2_bytes;
  uint64_t l3_bytes;
} OxaCpuInfo;

/* Fills *info. Errors: -1 info NULL. */
oxa_status oxa_prim_cpu_query(OxaCpuInfo* info);

/* ---- Floating-point control word (SSE MXCSR) -------------------------------
 * The control/status word of the calling thread's SSE unit, as used by every
 * float and double operation of the library. Fields: */
#define OXA_FP_FLAG_INVALID 0x0001u
#define OXA_FP_FLAG_DENORMAL 0x0002u
#define OXA_FP_FLAG_DIVZERO 0x0004u
#define OXA_FP_FLAG_OVERFLOW 0x0008u
#define OXA_FP_FLAG_UNDERFLOW 0x0010u
#define OXA_FP_FLAG_INEXACT 0x0020u
#define OXA_FP_FLAGS 0x003Fu            /* sticky exception flags */
#define OXA_FP_DAZ 0x0040u              /* denormal inputs read as zero */
#define OXA_FP_EXCEPTION_MASKS 0x1F80u  /* set: exception masked (the default) */
#define OXA_FP_ROUND_MASK 0x6000u
#define OXA_FP_ROUND_NEAREST 0x0000u
#define OXA_FP_ROUND_DOWN 0x2000u
#define OXA_FP_ROUND_UP 0x4000u
#define OXA_FP_ROUND_ZERO 0x6000u
#define OXA_FP_FTZ 0x8000u              /* tiny results flushed to zero */
#define OXA_FP_DEFAULT 0x1F80u          /* nearest, all masked, no FTZ/DAZ, no flags */

/* *word = the current control word. Errors: -1 word NULL. */
oxa_status oxa_prim_fp_get(uint32_t* word);

/* Sets the control word. Errors: -3 word has bits above 0xFFFF (the processor
 * would fault on them). */
oxa_status oxa_prim_fp_set(uint32_t word);

/* Replaces the bits selected by `mask` with those of `bits`:
 * word = (word & ~mask) | (bits & mask), e.g. (OXA_FP_ROUND_MASK,
 * OXA_FP_ROUND_ZERO) selects truncation, (OXA_FP_FTZ | OXA_FP_DAZ, 0) turns
 * both denormal controls off, (OXA_FP_FLAGS, 0) clears the flags. The word
 * before the change goes to *previous unless previous is NULL.
 * Errors: -3 mask has bits above 0xFFFF. */
oxa_status oxa_prim_fp_update(uint32_t mask, uint32_t bits, uint32_t* previous);

OXA_EXTERN_C_END

#endif /* OXA_PRIMITIVES_H */
