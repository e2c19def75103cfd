/* oxa vector_math: public C interface. C11 and C++20.
 *
 * Element-wise kernels r[i] = f(a[i]) over caller-owned arrays, each in up to
 * three accuracy levels (HA high accuracy, LA low accuracy, EP enhanced
 * performance). Kernels return nothing: problems are reported through the
 * calling thread's error status, errno, standard error and an optional
 * callback, as selected by the thread's mode word. */
#ifndef OXA_VECTOR_MATH_H
#define OXA_VECTOR_MATH_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

/* Error status codes kept in the per-thread status. */
enum {
  VML_ERR_NONE = 0,
  VML_ERR_DOMAIN = 1,      /* argument outside the domain (errno EDOM) */
  VML_ERR_SINGULARITY = 2, /* result infinite at a pole (errno ERANGE) */
  VML_ERR_OVERFLOW = 3,    /* result overflows (errno ERANGE) */
  VML_ERR_UNDERFLOW = 4,   /* result underflows (errno ERANGE) */
  VML_ERR_INVALID = -1,    /* bad argument found by a front layer (errno EINVAL) */
  VML_ERR_NOACCESS = -2    /* array not accessible (errno EACCES) */
};

/* Fields of the per-thread mode word. */
enum {
  OXA_VML_ACCURACY_MASK = 0x0000000F,
  OXA_VML_LA = 0x1,
  OXA_VML_HA = 0x2,
  OXA_VML_EP = 0x3,
  OXA_VML_CONSISTENCY_MASK = 0x000000F0,
  OXA_VML_FLOAT_CONSISTENT = 0x10,
  OXA_VML_DOUBLE_CONSISTENT = 0x20,
  OXA_VML_RESTORE = 0x30,
  OXA_VML_ERRMODE_MASK = 0x0000FF00,
  OXA_VML_ERRMODE_IGNORE = 0x100,
  OXA_VML_ERRMODE_ERRNO = 0x200,
  OXA_VML_ERRMODE_STDERR = 0x400,
  OXA_VML_ERRMODE_EXCEPT = 0x800,
  OXA_VML_ERRMODE_CALLBACK = 0x1000,
  OXA_VML_ERRMODE_DEFAULT = 0x1A00,
  OXA_VML_DENORMAL_MASK = 0x003C0000,
  OXA_VML_DENORMAL_FLUSH = 0x280000, /* flush denormal results, treat denormal inputs as 0 */
  OXA_VML_DENORMAL_KEEP = 0x140000,
  OXA_VML_DEFAULT_MODE = 0x1A02
};

/* The record an error callback receives (built on the error routine's stack).
 * Single-precision values are widened to double; the *_im fields are filled
 * only for complex functions. */
typedef struct VmlErrorContext {
  int32_t code;     /* status code */
  int32_t index;    /* element index within the caller's whole vector */
  double arg1;      /* first argument (real part) */
  double arg2;      /* second argument (one-argument functions: the first again) */
  double res1;      /* first result (real part); written back after the callback */
  double res2;      /* second result (real part); written back after the callback */
  char func_name[64];
  int32_t func_name_len;
  double arg1_im, arg2_im, res1_im, res2_im;
} VmlErrorContext;

/* Nonzero return: the error is handled, nothing more is done. */
typedef int32_t (*VmlErrorCallBack)(VmlErrorContext* context);

/* Complex elements: pairs of (real, imaginary). */
typedef struct OxaComplex8 { float real, imag; } OxaComplex8;
typedef struct OxaComplex16 { double real, imag; } OxaComplex16;

/* Kernels, dispatch tables, cost tables and stubs of every function, and the
 * kernel pointer types of each argument shape. n is the element count;
 * arithmetic kernels use its low 32 bits and do nothing for n <= 0. */
#include "oxa/vector_math_kernels.h"

/* ---- Mode word, status and callback of the calling thread ---------------- */

/* Mode bits parsed from OXA_VML_MODE, or -1 when it is missing, empty or
 * malformed. */
int64_t oxa_vml_kernel_ReadEnvVarMode(void);
uint32_t oxa_vml_kernel_GetMode(void);
uint32_t oxa_vml_kernel_SetMode(uint32_t mode); /* returns the previous word */
int32_t oxa_vml_kernel_GetTTableIndex(void);
int32_t oxa_vml_kernel_GetTTableIndexM(int32_t ignored, uint32_t mode);
int32_t oxa_vml_kernel_SetErrStatus(int32_t status);
int32_t oxa_vml_kernel_GetErrStatus(void);
int32_t oxa_vml_kernel_ClearErrStatus(void);
VmlErrorCallBack oxa_vml_kernel_SetErrorCallBack(VmlErrorCallBack callback);
VmlErrorCallBack oxa_vml_kernel_GetErrorCallBack(void);
VmlErrorCallBack oxa_vml_kernel_ClearErrorCallBack(void);
const void* oxa_vml_kernel_SetInterfInputVectorPointer(const void* pointer);

uint32_t _vmlGetMode(void);
uint32_t _vmlSetMode(uint32_t mode);
int32_t _vmlSetErrStatus(int32_t status);
int32_t _vmlGetErrStatus(void);
int32_t _vmlClearErrStatus(void);
VmlErrorCallBack _vmlSetErrorCallBack(VmlErrorCallBack callback);
VmlErrorCallBack _vmlGetErrorCallBack(void);
VmlErrorCallBack _vmlClearErrorCallBack(void);
const void* _vmlSetInterfInputVectorPointer(const void* pointer);

/* ---- Error routines: report element i of a kernel's arrays ---------------- */

void oxa_vml_kernel_sError(int32_t code, int32_t i, const float* a, const float* b,
                           float* r1, float* r2, const char* name);
void oxa_vml_kernel_dError(int32_t code, int32_t i, const double* a, const double* b,
                           double* r1, double* r2, const char* name);
void oxa_vml_kernel_cError(int32_t code, int32_t i, const OxaComplex8* a, const OxaComplex8* b,
                           OxaComplex8* r1, OxaComplex8* r2, const char* name);
void oxa_vml_kernel_zError(int32_t code, int32_t i, const OxaComplex16* a, const OxaComplex16* b,
                           OxaComplex16* r1, OxaComplex16* r2, const char* name);

OXA_EXTERN_C_END

#endif /* OXA_VECTOR_MATH_H */
