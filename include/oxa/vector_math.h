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

/* Kernel shapes. n is the element count; arithmetic kernels use its low 32
 * bits and do nothing for n <= 0. */
typedef void (*OxaVmlKernel_s)(int64_t n, const float* a, float* r);
typedef void (*OxaVmlKernel_d)(int64_t n, const double* a, double* r);

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

/* ---- Inverse of the standard normal CDF: r[i] = Phi^-1(a[i]) --------------- */

void oxa_vml_kernel_dCdfNormInv_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dCdfNormInv_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dCdfNormInv_E9EPnnn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_sCdfNormInv_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sCdfNormInv_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sCdfNormInv_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dCdfNormInv_ttab[3]; /* LA, HA, EP */
extern const OxaVmlKernel_s oxa_vml_kernel_sCdfNormInv_ttab[3];
extern const float oxa_vml_kernel_dCdfNormInv_ctab[3]; /* relative costs LA, HA, EP */
extern const float oxa_vml_kernel_sCdfNormInv_ctab[3];
void _vmldCdfNormInv(int64_t n, const double* a, double* r);    /* HA */
void _vmldCdfNormInv_HA(int64_t n, const double* a, double* r);
void _vmldCdfNormInv_50(int64_t n, const double* a, double* r); /* LA */
void _vmldCdfNormInv_26(int64_t n, const double* a, double* r); /* EP */
void _vmlsCdfNormInv(int64_t n, const float* a, float* r);
void _vmlsCdfNormInv_HA(int64_t n, const float* a, float* r);
void _vmlsCdfNormInv_21(int64_t n, const float* a, float* r);
void _vmlsCdfNormInv_11(int64_t n, const float* a, float* r);

/* ---- Exponential, logarithm and power with a scalar exponent ----------------
 * r[i] = e^a[i], ln a[i], a[i]^b. dExp has no EP kernel: its slot 2 holds LA. */

typedef void (*OxaVmlKernelPowx_s)(int64_t n, const float* a, float b, float* r);
typedef void (*OxaVmlKernelPowx_d)(int64_t n, const double* a, double b, double* r);
void oxa_vml_kernel_dExp_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dExp_E9LAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dExp_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dExp_ctab[3];
void _vmldExp(int64_t n, const double* a, double* r); /* HA */
void _vmldExp_HA(int64_t n, const double* a, double* r);
void _vmldExp_50(int64_t n, const double* a, double* r); /* LA */
void _vmldExp_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sExp_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sExp_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sExp_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sExp_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sExp_ctab[3];
void _vmlsExp(int64_t n, const float* a, float* r); /* HA */
void _vmlsExp_HA(int64_t n, const float* a, float* r);
void _vmlsExp_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsExp_11(int64_t n, const float* a, float* r); /* EP */
void oxa_vml_kernel_dLn_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dLn_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dLn_E9EPnnn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dLn_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dLn_ctab[3];
void _vmldLn(int64_t n, const double* a, double* r); /* HA */
void _vmldLn_HA(int64_t n, const double* a, double* r);
void _vmldLn_50(int64_t n, const double* a, double* r); /* LA */
void _vmldLn_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sLn_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sLn_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sLn_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sLn_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sLn_ctab[3];
void _vmlsLn(int64_t n, const float* a, float* r); /* HA */
void _vmlsLn_HA(int64_t n, const float* a, float* r);
void _vmlsLn_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsLn_11(int64_t n, const float* a, float* r); /* EP */
void oxa_vml_kernel_dPowx_E9HAynn(int64_t n, const double* a, double b, double* r);
void oxa_vml_kernel_dPowx_E9LAynn(int64_t n, const double* a, double b, double* r);
void oxa_vml_kernel_dPowx_E9EPnnn(int64_t n, const double* a, double b, double* r);
extern const OxaVmlKernelPowx_d oxa_vml_kernel_dPowx_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dPowx_ctab[3];
void _vmldPowx(int64_t n, const double* a, double b, double* r); /* HA */
void _vmldPowx_HA(int64_t n, const double* a, double b, double* r);
void _vmldPowx_50(int64_t n, const double* a, double b, double* r); /* LA */
void _vmldPowx_26(int64_t n, const double* a, double b, double* r); /* EP */
void oxa_vml_kernel_sPowx_E9HAynn(int64_t n, const float* a, float b, float* r);
void oxa_vml_kernel_sPowx_E9LAynn(int64_t n, const float* a, float b, float* r);
void oxa_vml_kernel_sPowx_E9EPnnn(int64_t n, const float* a, float b, float* r);
extern const OxaVmlKernelPowx_s oxa_vml_kernel_sPowx_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sPowx_ctab[3];
void _vmlsPowx(int64_t n, const float* a, float b, float* r); /* HA */
void _vmlsPowx_HA(int64_t n, const float* a, float b, float* r);
void _vmlsPowx_21(int64_t n, const float* a, float b, float* r); /* LA */
void _vmlsPowx_11(int64_t n, const float* a, float b, float* r); /* EP */
/* ---- Trigonometric functions; |a| of any size is reduced exactly -------- */

typedef void (*OxaVmlKernel2_s)(int64_t n, const float* a, float* r1, float* r2);
typedef void (*OxaVmlKernel2_d)(int64_t n, const double* a, double* r1, double* r2);

/* Sine: r[i] = sin(a[i]) */
void oxa_vml_kernel_dSin_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dSin_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dSin_E9EPnnn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dSin_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dSin_ctab[3];
void _vmldSin(int64_t n, const double* a, double* r);    /* HA */
void _vmldSin_HA(int64_t n, const double* a, double* r);
void _vmldSin_50(int64_t n, const double* a, double* r); /* LA */
void _vmldSin_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sSin_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sSin_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sSin_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sSin_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sSin_ctab[3];
void _vmlsSin(int64_t n, const float* a, float* r);    /* HA */
void _vmlsSin_HA(int64_t n, const float* a, float* r);
void _vmlsSin_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsSin_11(int64_t n, const float* a, float* r); /* EP */

/* Cosine: r[i] = cos(a[i]) */
void oxa_vml_kernel_dCos_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dCos_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dCos_E9EPnnn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dCos_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dCos_ctab[3];
void _vmldCos(int64_t n, const double* a, double* r);    /* HA */
void _vmldCos_HA(int64_t n, const double* a, double* r);
void _vmldCos_50(int64_t n, const double* a, double* r); /* LA */
void _vmldCos_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sCos_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sCos_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sCos_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sCos_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sCos_ctab[3];
void _vmlsCos(int64_t n, const float* a, float* r);    /* HA */
void _vmlsCos_HA(int64_t n, const float* a, float* r);
void _vmlsCos_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsCos_11(int64_t n, const float* a, float* r); /* EP */

/* Sine and cosine: r1[i] = sin(a[i]), r2[i] = cos(a[i]) */
void oxa_vml_kernel_dSinCos_E9HAynn(int64_t n, const double* a, double* r1, double* r2);
void oxa_vml_kernel_dSinCos_E9LAynn(int64_t n, const double* a, double* r1, double* r2);
void oxa_vml_kernel_dSinCos_E9EPnnn(int64_t n, const double* a, double* r1, double* r2);
extern const OxaVmlKernel2_d oxa_vml_kernel_dSinCos_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dSinCos_ctab[3];
void _vmldSinCos(int64_t n, const double* a, double* r1, double* r2);    /* HA */
void _vmldSinCos_HA(int64_t n, const double* a, double* r1, double* r2);
void _vmldSinCos_50(int64_t n, const double* a, double* r1, double* r2); /* LA */
void _vmldSinCos_26(int64_t n, const double* a, double* r1, double* r2); /* EP */
void oxa_vml_kernel_sSinCos_E9HAynn(int64_t n, const float* a, float* r1, float* r2);
void oxa_vml_kernel_sSinCos_E9LAynn(int64_t n, const float* a, float* r1, float* r2);
void oxa_vml_kernel_sSinCos_E9EPnnn(int64_t n, const float* a, float* r1, float* r2);
extern const OxaVmlKernel2_s oxa_vml_kernel_sSinCos_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sSinCos_ctab[3];
void _vmlsSinCos(int64_t n, const float* a, float* r1, float* r2);    /* HA */
void _vmlsSinCos_HA(int64_t n, const float* a, float* r1, float* r2);
void _vmlsSinCos_21(int64_t n, const float* a, float* r1, float* r2); /* LA */
void _vmlsSinCos_11(int64_t n, const float* a, float* r1, float* r2); /* EP */

/* Tangent: r[i] = tan(a[i]) */
void oxa_vml_kernel_dTan_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dTan_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dTan_E9EPnnn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dTan_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dTan_ctab[3];
void _vmldTan(int64_t n, const double* a, double* r);    /* HA */
void _vmldTan_HA(int64_t n, const double* a, double* r);
void _vmldTan_50(int64_t n, const double* a, double* r); /* LA */
void _vmldTan_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sTan_E7HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sTan_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sTan_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sTan_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sTan_ctab[3];
void _vmlsTan(int64_t n, const float* a, float* r);    /* HA */
void _vmlsTan_HA(int64_t n, const float* a, float* r);
void _vmlsTan_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsTan_11(int64_t n, const float* a, float* r); /* EP */
/* ---- Square root: r[i] = sqrt(a[i]) ------------------------------------- */

void oxa_vml_kernel_dSqrt_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dSqrt_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dSqrt_E9EPnnn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_sSqrt_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sSqrt_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sSqrt_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dSqrt_ttab[3]; /* LA, HA, EP */
extern const OxaVmlKernel_s oxa_vml_kernel_sSqrt_ttab[3];
extern const float oxa_vml_kernel_dSqrt_ctab[3]; /* relative costs LA, HA, EP */
extern const float oxa_vml_kernel_sSqrt_ctab[3];
void _vmldSqrt(int64_t n, const double* a, double* r);    /* HA */
void _vmldSqrt_HA(int64_t n, const double* a, double* r);
void _vmldSqrt_50(int64_t n, const double* a, double* r); /* LA */
void _vmldSqrt_26(int64_t n, const double* a, double* r); /* EP */
void _vmlsSqrt(int64_t n, const float* a, float* r);    /* HA */
void _vmlsSqrt_HA(int64_t n, const float* a, float* r);
void _vmlsSqrt_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsSqrt_11(int64_t n, const float* a, float* r); /* EP */

/* ---- Reciprocal square root: r[i] = 1/sqrt(a[i]) ------------------------ */

void oxa_vml_kernel_dInvSqrt_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dInvSqrt_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dInvSqrt_E9EPnnn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_sInvSqrt_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sInvSqrt_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sInvSqrt_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dInvSqrt_ttab[3]; /* LA, HA, EP */
extern const OxaVmlKernel_s oxa_vml_kernel_sInvSqrt_ttab[3];
extern const float oxa_vml_kernel_dInvSqrt_ctab[3]; /* relative costs LA, HA, EP */
extern const float oxa_vml_kernel_sInvSqrt_ctab[3];
void _vmldInvSqrt(int64_t n, const double* a, double* r);    /* HA */
void _vmldInvSqrt_HA(int64_t n, const double* a, double* r);
void _vmldInvSqrt_50(int64_t n, const double* a, double* r); /* LA */
void _vmldInvSqrt_26(int64_t n, const double* a, double* r); /* EP */
void _vmlsInvSqrt(int64_t n, const float* a, float* r);    /* HA */
void _vmlsInvSqrt_HA(int64_t n, const float* a, float* r);
void _vmlsInvSqrt_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsInvSqrt_11(int64_t n, const float* a, float* r); /* EP */

/* ---- Inverse error function: r[i] = erfinv(a[i]) ------------------------ */

void oxa_vml_kernel_dErfInv_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dErfInv_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dErfInv_E9EPnnn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_sErfInv_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sErfInv_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sErfInv_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dErfInv_ttab[3]; /* LA, HA, EP */
extern const OxaVmlKernel_s oxa_vml_kernel_sErfInv_ttab[3];
extern const float oxa_vml_kernel_dErfInv_ctab[3]; /* relative costs LA, HA, EP */
extern const float oxa_vml_kernel_sErfInv_ctab[3];
void _vmldErfInv(int64_t n, const double* a, double* r);    /* HA */
void _vmldErfInv_HA(int64_t n, const double* a, double* r);
void _vmldErfInv_50(int64_t n, const double* a, double* r); /* LA */
void _vmldErfInv_26(int64_t n, const double* a, double* r); /* EP */
void _vmlsErfInv(int64_t n, const float* a, float* r);    /* HA */
void _vmlsErfInv_HA(int64_t n, const float* a, float* r);
void _vmlsErfInv_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsErfInv_11(int64_t n, const float* a, float* r); /* EP */

/* Two inputs, one output (Add, Sub, Mul, Div, Hypot). */
typedef void (*OxaVmlKernelIn2_s)(int64_t n, const float* a, const float* b, float* r);
typedef void (*OxaVmlKernelIn2_d)(int64_t n, const double* a, const double* b, double* r);
/* Linear fraction: r = (scalea*a + shifta) / (scaleb*b + shiftb). */
typedef void (*OxaVmlKernelLinearFrac_s)(int64_t n, const float* a, const float* b, float scalea,
                                         float shifta, float scaleb, float shiftb, float* r);
typedef void (*OxaVmlKernelLinearFrac_d)(int64_t n, const double* a, const double* b, double scalea,
                                         double shifta, double scaleb, double shiftb, double* r);

/* Add */
void oxa_vml_kernel_dAdd_E9HAynn(int64_t n, const double* a, const double* b, double* r);
extern const OxaVmlKernelIn2_d oxa_vml_kernel_dAdd_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dAdd_ctab[3];
void _vmldAdd(int64_t n, const double* a, const double* b, double* r); /* HA */
void _vmldAdd_HA(int64_t n, const double* a, const double* b, double* r);
void _vmldAdd_50(int64_t n, const double* a, const double* b, double* r); /* LA */
void _vmldAdd_26(int64_t n, const double* a, const double* b, double* r); /* EP */
void oxa_vml_kernel_sAdd_E9HAynn(int64_t n, const float* a, const float* b, float* r);
extern const OxaVmlKernelIn2_s oxa_vml_kernel_sAdd_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sAdd_ctab[3];
void _vmlsAdd(int64_t n, const float* a, const float* b, float* r); /* HA */
void _vmlsAdd_HA(int64_t n, const float* a, const float* b, float* r);
void _vmlsAdd_21(int64_t n, const float* a, const float* b, float* r); /* LA */
void _vmlsAdd_11(int64_t n, const float* a, const float* b, float* r); /* EP */

/* Sub */
void oxa_vml_kernel_dSub_E9HAynn(int64_t n, const double* a, const double* b, double* r);
extern const OxaVmlKernelIn2_d oxa_vml_kernel_dSub_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dSub_ctab[3];
void _vmldSub(int64_t n, const double* a, const double* b, double* r); /* HA */
void _vmldSub_HA(int64_t n, const double* a, const double* b, double* r);
void _vmldSub_50(int64_t n, const double* a, const double* b, double* r); /* LA */
void _vmldSub_26(int64_t n, const double* a, const double* b, double* r); /* EP */
void oxa_vml_kernel_sSub_E9HAynn(int64_t n, const float* a, const float* b, float* r);
extern const OxaVmlKernelIn2_s oxa_vml_kernel_sSub_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sSub_ctab[3];
void _vmlsSub(int64_t n, const float* a, const float* b, float* r); /* HA */
void _vmlsSub_HA(int64_t n, const float* a, const float* b, float* r);
void _vmlsSub_21(int64_t n, const float* a, const float* b, float* r); /* LA */
void _vmlsSub_11(int64_t n, const float* a, const float* b, float* r); /* EP */

/* Mul */
void oxa_vml_kernel_dMul_E9HAynn(int64_t n, const double* a, const double* b, double* r);
extern const OxaVmlKernelIn2_d oxa_vml_kernel_dMul_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dMul_ctab[3];
void _vmldMul(int64_t n, const double* a, const double* b, double* r); /* HA */
void _vmldMul_HA(int64_t n, const double* a, const double* b, double* r);
void _vmldMul_50(int64_t n, const double* a, const double* b, double* r); /* LA */
void _vmldMul_26(int64_t n, const double* a, const double* b, double* r); /* EP */
void oxa_vml_kernel_sMul_E9HAynn(int64_t n, const float* a, const float* b, float* r);
extern const OxaVmlKernelIn2_s oxa_vml_kernel_sMul_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sMul_ctab[3];
void _vmlsMul(int64_t n, const float* a, const float* b, float* r); /* HA */
void _vmlsMul_HA(int64_t n, const float* a, const float* b, float* r);
void _vmlsMul_21(int64_t n, const float* a, const float* b, float* r); /* LA */
void _vmlsMul_11(int64_t n, const float* a, const float* b, float* r); /* EP */

/* Div */
void oxa_vml_kernel_dDiv_E9HAynn(int64_t n, const double* a, const double* b, double* r);
void oxa_vml_kernel_dDiv_E9LAynn(int64_t n, const double* a, const double* b, double* r);
void oxa_vml_kernel_dDiv_E9EPnnn(int64_t n, const double* a, const double* b, double* r);
extern const OxaVmlKernelIn2_d oxa_vml_kernel_dDiv_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dDiv_ctab[3];
void _vmldDiv(int64_t n, const double* a, const double* b, double* r); /* HA */
void _vmldDiv_HA(int64_t n, const double* a, const double* b, double* r);
void _vmldDiv_50(int64_t n, const double* a, const double* b, double* r); /* LA */
void _vmldDiv_26(int64_t n, const double* a, const double* b, double* r); /* EP */
void oxa_vml_kernel_sDiv_E9HAynn(int64_t n, const float* a, const float* b, float* r);
void oxa_vml_kernel_sDiv_E9LAynn(int64_t n, const float* a, const float* b, float* r);
void oxa_vml_kernel_sDiv_E9EPnnn(int64_t n, const float* a, const float* b, float* r);
extern const OxaVmlKernelIn2_s oxa_vml_kernel_sDiv_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sDiv_ctab[3];
void _vmlsDiv(int64_t n, const float* a, const float* b, float* r); /* HA */
void _vmlsDiv_HA(int64_t n, const float* a, const float* b, float* r);
void _vmlsDiv_21(int64_t n, const float* a, const float* b, float* r); /* LA */
void _vmlsDiv_11(int64_t n, const float* a, const float* b, float* r); /* EP */

/* Sqr */
void oxa_vml_kernel_dSqr_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dSqr_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dSqr_ctab[3];
void _vmldSqr(int64_t n, const double* a, double* r); /* HA */
void _vmldSqr_HA(int64_t n, const double* a, double* r);
void _vmldSqr_50(int64_t n, const double* a, double* r); /* LA */
void _vmldSqr_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sSqr_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sSqr_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sSqr_ctab[3];
void _vmlsSqr(int64_t n, const float* a, float* r); /* HA */
void _vmlsSqr_HA(int64_t n, const float* a, float* r);
void _vmlsSqr_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsSqr_11(int64_t n, const float* a, float* r); /* EP */

/* Inv */
void oxa_vml_kernel_dInv_E9HAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dInv_E9LAynn(int64_t n, const double* a, double* r);
void oxa_vml_kernel_dInv_E9EPnnn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dInv_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dInv_ctab[3];
void _vmldInv(int64_t n, const double* a, double* r); /* HA */
void _vmldInv_HA(int64_t n, const double* a, double* r);
void _vmldInv_50(int64_t n, const double* a, double* r); /* LA */
void _vmldInv_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sInv_E9HAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sInv_E9LAynn(int64_t n, const float* a, float* r);
void oxa_vml_kernel_sInv_E9EPnnn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sInv_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sInv_ctab[3];
void _vmlsInv(int64_t n, const float* a, float* r); /* HA */
void _vmlsInv_HA(int64_t n, const float* a, float* r);
void _vmlsInv_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsInv_11(int64_t n, const float* a, float* r); /* EP */

/* Abs */
void oxa_vml_kernel_dAbs_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dAbs_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dAbs_ctab[3];
void _vmldAbs(int64_t n, const double* a, double* r); /* HA */
void _vmldAbs_HA(int64_t n, const double* a, double* r);
void _vmldAbs_50(int64_t n, const double* a, double* r); /* LA */
void _vmldAbs_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sAbs_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sAbs_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sAbs_ctab[3];
void _vmlsAbs(int64_t n, const float* a, float* r); /* HA */
void _vmlsAbs_HA(int64_t n, const float* a, float* r);
void _vmlsAbs_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsAbs_11(int64_t n, const float* a, float* r); /* EP */

/* Hypot */
void oxa_vml_kernel_dHypot_E9HAynn(int64_t n, const double* a, const double* b, double* r);
void oxa_vml_kernel_dHypot_E9LAynn(int64_t n, const double* a, const double* b, double* r);
void oxa_vml_kernel_dHypot_E9EPnnn(int64_t n, const double* a, const double* b, double* r);
extern const OxaVmlKernelIn2_d oxa_vml_kernel_dHypot_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dHypot_ctab[3];
void _vmldHypot(int64_t n, const double* a, const double* b, double* r); /* HA */
void _vmldHypot_HA(int64_t n, const double* a, const double* b, double* r);
void _vmldHypot_50(int64_t n, const double* a, const double* b, double* r); /* LA */
void _vmldHypot_26(int64_t n, const double* a, const double* b, double* r); /* EP */
void oxa_vml_kernel_sHypot_E9HAynn(int64_t n, const float* a, const float* b, float* r);
void oxa_vml_kernel_sHypot_E9LAynn(int64_t n, const float* a, const float* b, float* r);
void oxa_vml_kernel_sHypot_E9EPnnn(int64_t n, const float* a, const float* b, float* r);
extern const OxaVmlKernelIn2_s oxa_vml_kernel_sHypot_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sHypot_ctab[3];
void _vmlsHypot(int64_t n, const float* a, const float* b, float* r); /* HA */
void _vmlsHypot_HA(int64_t n, const float* a, const float* b, float* r);
void _vmlsHypot_21(int64_t n, const float* a, const float* b, float* r); /* LA */
void _vmlsHypot_11(int64_t n, const float* a, const float* b, float* r); /* EP */

/* Ceil */
void oxa_vml_kernel_dCeil_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dCeil_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dCeil_ctab[3];
void _vmldCeil(int64_t n, const double* a, double* r); /* HA */
void _vmldCeil_HA(int64_t n, const double* a, double* r);
void _vmldCeil_50(int64_t n, const double* a, double* r); /* LA */
void _vmldCeil_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sCeil_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sCeil_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sCeil_ctab[3];
void _vmlsCeil(int64_t n, const float* a, float* r); /* HA */
void _vmlsCeil_HA(int64_t n, const float* a, float* r);
void _vmlsCeil_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsCeil_11(int64_t n, const float* a, float* r); /* EP */

/* Floor */
void oxa_vml_kernel_dFloor_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dFloor_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dFloor_ctab[3];
void _vmldFloor(int64_t n, const double* a, double* r); /* HA */
void _vmldFloor_HA(int64_t n, const double* a, double* r);
void _vmldFloor_50(int64_t n, const double* a, double* r); /* LA */
void _vmldFloor_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sFloor_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sFloor_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sFloor_ctab[3];
void _vmlsFloor(int64_t n, const float* a, float* r); /* HA */
void _vmlsFloor_HA(int64_t n, const float* a, float* r);
void _vmlsFloor_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsFloor_11(int64_t n, const float* a, float* r); /* EP */

/* Round */
void oxa_vml_kernel_dRound_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dRound_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dRound_ctab[3];
void _vmldRound(int64_t n, const double* a, double* r); /* HA */
void _vmldRound_HA(int64_t n, const double* a, double* r);
void _vmldRound_50(int64_t n, const double* a, double* r); /* LA */
void _vmldRound_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sRound_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sRound_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sRound_ctab[3];
void _vmlsRound(int64_t n, const float* a, float* r); /* HA */
void _vmlsRound_HA(int64_t n, const float* a, float* r);
void _vmlsRound_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsRound_11(int64_t n, const float* a, float* r); /* EP */

/* Trunc */
void oxa_vml_kernel_dTrunc_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dTrunc_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dTrunc_ctab[3];
void _vmldTrunc(int64_t n, const double* a, double* r); /* HA */
void _vmldTrunc_HA(int64_t n, const double* a, double* r);
void _vmldTrunc_50(int64_t n, const double* a, double* r); /* LA */
void _vmldTrunc_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sTrunc_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sTrunc_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sTrunc_ctab[3];
void _vmlsTrunc(int64_t n, const float* a, float* r); /* HA */
void _vmlsTrunc_HA(int64_t n, const float* a, float* r);
void _vmlsTrunc_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsTrunc_11(int64_t n, const float* a, float* r); /* EP */

/* Rint */
void oxa_vml_kernel_dRint_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dRint_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dRint_ctab[3];
void _vmldRint(int64_t n, const double* a, double* r); /* HA */
void _vmldRint_HA(int64_t n, const double* a, double* r);
void _vmldRint_50(int64_t n, const double* a, double* r); /* LA */
void _vmldRint_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sRint_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sRint_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sRint_ctab[3];
void _vmlsRint(int64_t n, const float* a, float* r); /* HA */
void _vmlsRint_HA(int64_t n, const float* a, float* r);
void _vmlsRint_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsRint_11(int64_t n, const float* a, float* r); /* EP */

/* NearbyInt */
void oxa_vml_kernel_dNearbyInt_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dNearbyInt_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dNearbyInt_ctab[3];
void _vmldNearbyInt(int64_t n, const double* a, double* r); /* HA */
void _vmldNearbyInt_HA(int64_t n, const double* a, double* r);
void _vmldNearbyInt_50(int64_t n, const double* a, double* r); /* LA */
void _vmldNearbyInt_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sNearbyInt_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sNearbyInt_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sNearbyInt_ctab[3];
void _vmlsNearbyInt(int64_t n, const float* a, float* r); /* HA */
void _vmlsNearbyInt_HA(int64_t n, const float* a, float* r);
void _vmlsNearbyInt_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsNearbyInt_11(int64_t n, const float* a, float* r); /* EP */

/* Frac */
void oxa_vml_kernel_dFrac_E9HAynn(int64_t n, const double* a, double* r);
extern const OxaVmlKernel_d oxa_vml_kernel_dFrac_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dFrac_ctab[3];
void _vmldFrac(int64_t n, const double* a, double* r); /* HA */
void _vmldFrac_HA(int64_t n, const double* a, double* r);
void _vmldFrac_50(int64_t n, const double* a, double* r); /* LA */
void _vmldFrac_26(int64_t n, const double* a, double* r); /* EP */
void oxa_vml_kernel_sFrac_E9HAynn(int64_t n, const float* a, float* r);
extern const OxaVmlKernel_s oxa_vml_kernel_sFrac_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sFrac_ctab[3];
void _vmlsFrac(int64_t n, const float* a, float* r); /* HA */
void _vmlsFrac_HA(int64_t n, const float* a, float* r);
void _vmlsFrac_21(int64_t n, const float* a, float* r); /* LA */
void _vmlsFrac_11(int64_t n, const float* a, float* r); /* EP */

/* Modf */
void oxa_vml_kernel_dModf_E9HAynn(int64_t n, const double* a, double* r1, double* r2);
extern const OxaVmlKernel2_d oxa_vml_kernel_dModf_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dModf_ctab[3];
void _vmldModf(int64_t n, const double* a, double* r1, double* r2); /* HA */
void _vmldModf_HA(int64_t n, const double* a, double* r1, double* r2);
void _vmldModf_50(int64_t n, const double* a, double* r1, double* r2); /* LA */
void _vmldModf_26(int64_t n, const double* a, double* r1, double* r2); /* EP */
void oxa_vml_kernel_sModf_E9HAynn(int64_t n, const float* a, float* r1, float* r2);
extern const OxaVmlKernel2_s oxa_vml_kernel_sModf_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sModf_ctab[3];
void _vmlsModf(int64_t n, const float* a, float* r1, float* r2); /* HA */
void _vmlsModf_HA(int64_t n, const float* a, float* r1, float* r2);
void _vmlsModf_21(int64_t n, const float* a, float* r1, float* r2); /* LA */
void _vmlsModf_11(int64_t n, const float* a, float* r1, float* r2); /* EP */

/* LinearFrac */
void oxa_vml_kernel_dLinearFrac_H8HAynn(int64_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
extern const OxaVmlKernelLinearFrac_d oxa_vml_kernel_dLinearFrac_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_dLinearFrac_ctab[3];
void _vmldLinearFrac(int64_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r); /* HA */
void _vmldLinearFrac_HA(int64_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r);
void _vmldLinearFrac_50(int64_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r); /* LA */
void _vmldLinearFrac_26(int64_t n, const double* a, const double* b, double scalea, double shifta, double scaleb, double shiftb, double* r); /* EP */
void oxa_vml_kernel_sLinearFrac_H8HAynn(int64_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
extern const OxaVmlKernelLinearFrac_s oxa_vml_kernel_sLinearFrac_ttab[3]; /* LA, HA, EP */
extern const float oxa_vml_kernel_sLinearFrac_ctab[3];
void _vmlsLinearFrac(int64_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r); /* HA */
void _vmlsLinearFrac_HA(int64_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r);
void _vmlsLinearFrac_21(int64_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r); /* LA */
void _vmlsLinearFrac_11(int64_t n, const float* a, const float* b, float scalea, float shifta, float scaleb, float shiftb, float* r); /* EP */

OXA_EXTERN_C_END

#endif /* OXA_VECTOR_MATH_H */
