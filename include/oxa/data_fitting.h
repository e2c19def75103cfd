/* oxa data_fitting: one-dimensional data-fitting tasks, cell search and
 * linear spline construction. C11 and C++20.
 *
 * A task (DfTask) describes a partition of nx breakpoints, ny functions
 * sampled on it and the spline whose coefficients a construction kernel
 * writes. Tasks point at the caller's arrays; they never copy them. Every
 * entry point returns a status: DF_OK or one of the negative DF_ERR_ codes. */
#ifndef OXA_DATA_FITTING_H
#define OXA_DATA_FITTING_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

/* Status codes. */
enum {
  DF_OK = 0,
  DF_ERR_NULL_TASK = -1000,      /* null task (or null handle for the destructor) */
  DF_ERR_MEM = -1001,            /* an allocation failed */
  DF_ERR_UNEXPECTED_ARG = -1002, /* an argument the kernel does not take was given */
  DF_ERR_BAD_NX = -1004,
  DF_ERR_BAD_X = -1005,
  DF_ERR_BAD_X_HINT = -1006,
  DF_ERR_BAD_NY = -1007,
  DF_ERR_BAD_Y = -1008,
  DF_ERR_BAD_Y_HINT = -1009,
  DF_ERR_BAD_ORDER = -1010,
  DF_ERR_BAD_TYPE = -1011,
  DF_ERR_BAD_IC_TYPE = -1012,
  DF_ERR_BAD_IC = -1013,
  DF_ERR_BAD_BC_TYPE = -1014,
  DF_ERR_BAD_BC = -1015,
  DF_ERR_BAD_COEFF = -1016,
  DF_ERR_BAD_COEFF_HINT = -1017,
  DF_ERR_PERIODIC_VALUES = -1018,
  DF_ERR_BAD_PARAM_ID = -1019,
  DF_ERR_BAD_INDEX = -1020,
  DF_ERR_BAD_NSITE = -1021,      /* negative number of sites or of integration limits */
  DF_ERR_BAD_SITE = -1022,       /* null sites or limits with a positive count */
  DF_ERR_BAD_DORDER = -1023,     /* derivative-order count outside 0 .. 8 */
  DF_ERR_BAD_RESULT = -1024,     /* null result array where results are due */
  DF_ERR_BAD_DATA_HINT = -1026,
  DF_ERR_BAD_RESULT_HINT = -1034,
  DF_ERR_BAD_AUX_FLAG = -1036,
  DF_ERR_NULL_OUTPUT = -1037
};

/* Partition hints. */
enum { DF_X_NO_HINT = 0, DF_X_NON_UNIFORM = 1, DF_X_QUASI_UNIFORM = 2, DF_X_UNIFORM = 4 };

/* Storage hints of function values and coefficients. */
enum { DF_STORE_DEFAULT = 0, DF_STORE_ROWS = 16, DF_STORE_COLS = 32, DF_STORE_SEPARATE = 128 };

/* Site hints of a search: sorted ascending, or uniform given by the two ends. */
enum { DF_SITE_UNIFORM = 4, DF_SITE_SORTED = 64 };

/* Boundary-condition bits. DF_BC_NOT_A_KNOT, DF_BC_FREE_END and
 * DF_BC_PERIODIC stand alone and carry no values. Otherwise one left bit
 * (first or second derivative at x[0]) and one right bit (at x[nx-1]) are
 * combined; bc then holds the left value and the right value, shared by
 * all functions. */
enum {
  DF_BC_NOT_A_KNOT = 1,
  DF_BC_FREE_END = 2,     /* second derivative 0 at both ends */
  DF_BC_FIRST_LEFT = 4,   /* first derivative at x[0] */
  DF_BC_FIRST_RIGHT = 8,  /* first derivative at x[nx-1] */
  DF_BC_SECOND_LEFT = 16, /* second derivative at x[0] */
  DF_BC_SECOND_RIGHT = 32,/* second derivative at x[nx-1] */
  DF_BC_PERIODIC = 64
};

/* Spline orders (s_order) and types (s_type). */
enum { DF_ORDER_STEP = 0, DF_ORDER_LINEAR = 2, DF_ORDER_QUADRATIC = 3, DF_ORDER_CUBIC = 4 };
enum {
  DF_TYPE_DEFAULT = 0,    /* order 3: standard; order 4: as DF_TYPE_NATURAL */
  DF_TYPE_SUBBOTIN = 1,   /* order 3 with knots between the breakpoints */
  DF_TYPE_NATURAL = 2,    /* order 4, conditions from bc_type */
  DF_TYPE_HERMITE = 3,    /* order 4, first derivatives given in ic */
  DF_TYPE_BESSEL = 4,     /* order 4, derivatives of local parabolas */
  DF_TYPE_AKIMA = 5,      /* order 4, Akima's weighted slopes */
  DF_TYPE_LOOKUP = 6,     /* order 0: y_i at x[i], NaN elsewhere */
  DF_TYPE_STEP_RIGHT = 7, /* order 0: y_m on [x[m], x[m+1]) */
  DF_TYPE_STEP_LEFT = 8   /* order 0: y_{m+1} on (x[m], x[m+1]] */
};

/* Internal-condition type of the Hermite cubic: ic holds the first
 * derivatives of every function at every breakpoint, function j's nx values
 * from ic + j*nx. */
enum { DF_IC_FIRST_DER = 1 };

/* Ids of oxa_df_kernel_iEditVal / iQueryVal. */
enum {
  DF_PARAM_NX = 14,
  DF_PARAM_XHINT = 15,
  DF_PARAM_NY = 16,
  DF_PARAM_YHINT = 17,
  DF_PARAM_ORDER = 18,
  DF_PARAM_TYPE = 19,
  DF_PARAM_IC_TYPE = 20,
  DF_PARAM_BC_TYPE = 21,
  DF_PARAM_COEFF_HINT = 22,
  DF_PARAM_AUX_FLAG = 23
};

/* Ids of the pointer editors and queries. */
enum { DF_PTR_X = 1, DF_PTR_Y = 2, DF_PTR_IC = 3, DF_PTR_BC = 4, DF_PTR_COEFF = 5 };

/* Output widths of the width-choosing search entries: DF_CELL_32 (bit 2 set,
 * bit 1 clear) writes int32_t cells; any other flags word writes int64_t. */
enum { DF_CELL_64 = 0, DF_CELL_32 = 2 };

/* The task record; opaque to callers, created and released by this library. */
typedef struct DfTask DfTask;

/* One entry of a task's cell-search accelerator table: every site that falls
 * into the bin lies in [x[lo], x[hi]]. */
typedef struct DfSearchBin {
  int64_t lo;
  int64_t hi;
} DfSearchBin;

/* ---- Task: creation, deletion, editors, queries ------------------------- */

/* Creates a task over nx breakpoints x (for xhint DF_X_UNIFORM, x holds only
 * the two ends) and ny functions y stored as yhint says. int64_output selects
 * the width oxa_df_kernel_iQueryVal writes (0: 32-bit). *task_out receives the
 * record's address, also when a later allocation fails (release it with
 * oxa_df_kernel_DeleteTask); a NULL task_out gives DF_ERR_NULL_TASK. */
oxa_status oxa_df_kernel_dNewTask1D(DfTask** task_out, int64_t nx, const double* x, int64_t xhint,
                                    int64_t ny, const double* y, int64_t yhint,
                                    uint32_t int64_output);
oxa_status oxa_df_kernel_sNewTask1D(DfTask** task_out, int64_t nx, const float* x, int64_t xhint,
                                    int64_t ny, const float* y, int64_t yhint,
                                    uint32_t int64_output);

/* Releases the task and everything it owns; sets *task_ref to NULL. */
oxa_status oxa_df_kernel_DeleteTask(DfTask** task_ref);

/* Integer parameters, ids DF_PARAM_NX .. DF_PARAM_AUX_FLAG. The query writes
 * an int32_t or an int64_t into *out according to the task's int64_output. */
oxa_status oxa_df_kernel_iEditVal(DfTask* task, int64_t id, int64_t value);
oxa_status oxa_df_kernel_iQueryVal(DfTask* task, int64_t id, void* out);

/* Pointer parameters, ids DF_PTR_X .. DF_PTR_COEFF. */
oxa_status oxa_df_kernel_dEditPtr(DfTask* task, int64_t id, const double* ptr);
oxa_status oxa_df_kernel_sEditPtr(DfTask* task, int64_t id, const float* ptr);
oxa_status oxa_df_kernel_dQueryPtr(DfTask* task, int64_t id, const double** out);
oxa_status oxa_df_kernel_sQueryPtr(DfTask* task, int64_t id, const float** out);

/* Per-function pointers of the values (DF_PTR_Y) and coefficients (DF_PTR_COEFF). */
oxa_status oxa_df_kernel_dEditIdxPtr(DfTask* task, int64_t id, int64_t index, const double* ptr);
oxa_status oxa_df_kernel_sEditIdxPtr(DfTask* task, int64_t id, int64_t index, const float* ptr);
oxa_status oxa_df_kernel_dQueryIdxPtr(DfTask* task, int64_t id, int64_t index, const double** out);
oxa_status oxa_df_kernel_sQueryIdxPtr(DfTask* task, int64_t id, int64_t index, const float** out);

/* Sets the whole spline description: order, type, boundary and internal
 * conditions and the coefficient memory (scoeff may be NULL). */
oxa_status oxa_df_kernel_dEditPPSpline1D(DfTask* task, int64_t s_order, int64_t s_type,
                                         int64_t bc_type, const double* bc, int64_t ic_type,
                                         const double* ic, double* scoeff, int64_t scoeffhint);
oxa_status oxa_df_kernel_sEditPPSpline1D(DfTask* task, int64_t s_order, int64_t s_type,
                                         int64_t bc_type, const float* bc, int64_t ic_type,
                                         const float* ic, float* scoeff, int64_t scoeffhint);

/* ---- Cell search --------------------------------------------------------- */
/* The cell of a site t: 0 when t < x[0] or t is NaN; k when
 * x[k-1] <= t < x[k]; nx-1 when t = x[nx-1]; nx when t > x[nx-1]. */

/* User search call-back. It receives the sites, the cell array (int32_t
 * elements when cell_bits is 32, int64_t when 64) and a flag array of nsite
 * zeros. It returns a negative status (passed on, nothing else done), 1000
 * (every cell is final) or any other value: then each site whose flag it left
 * at 0 has its cell corrected from the call-back's guess, and that value is
 * returned by the search. */
typedef int32_t (*oxa_df_dsearch_callback)(int64_t nsite, const double* site, void* cell,
                                           int32_t cell_bits, int32_t* flag, void* params);
typedef int32_t (*oxa_df_ssearch_callback)(int64_t nsite, const float* site, void* cell,
                                           int32_t cell_bits, int32_t* flag, void* params);

/* Places nsite sites in the task's cells. sitehint DF_SITE_SORTED promises
 * ascending sites; DF_SITE_UNIFORM means site holds only the first and last
 * of nsite equally spaced sites. datahint is NULL or an array whose element 1
 * chooses the method (0 default, 1 peak search) and element 4 gives the peak
 * position in [0, nx]. cell_flags chooses the width (DF_CELL_32 or 64-bit).
 * A non-NULL callback selects the user-defined search. threading may be NULL
 * (sequential). Fails with DF_ERR_BAD_DATA_HINT for a bad data hint and
 * DF_ERR_MEM when more than 4096 uniform sites cannot be materialised; passes
 * on a user call-back's negative status. */
oxa_status oxa_df_kernel_dDFSearch1D(DfTask* task, int32_t cell_flags, int64_t nsite,
                                     const double* site, int64_t sitehint, const double* datahint,
                                     void* cell, oxa_df_dsearch_callback callback,
                                     void* callback_params, const DfThreading* threading);
oxa_status oxa_df_kernel_sDFSearch1D(DfTask* task, int32_t cell_flags, int64_t nsite,
                                     const float* site, int64_t sitehint, const float* datahint,
                                     void* cell, oxa_df_ssearch_callback callback,
                                     void* callback_params, const DfThreading* threading);

/* Sequential search kernels. Each family has members writing int32_t cells
 * (32), int64_t cells with 64-bit index arithmetic (64), int64_t cells with
 * 32-bit arithmetic (64Pack, for nx < 2^31 - 1) and a width-choosing entry
 * taking cell_flags. nsite < 1 writes nothing.
 *
 * Uniform: x holds the two ends of the partition; inv = (nx-1)/(x[1]-x[0]).
 * Breakpoint k is x[0] + k*(x[1]-x[0])/(nx-1) evaluated left to right in the
 * partition's precision (the last one x[1]); cells follow those values. */
oxa_status oxa_df_kernel_dDFUniformSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                              const double* site, double inv, int32_t* cell);
oxa_status oxa_df_kernel_dDFUniformSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                              const double* site, double inv, int64_t* cell);
oxa_status oxa_df_kernel_dDFUniformSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                                  const double* site, double inv, int64_t* cell);
oxa_status oxa_df_kernel_dDFUniformSearch1D(int64_t nx, const double* x, int64_t nsite,
                                            const double* site, double inv, int32_t cell_flags,
                                            void* cell);
oxa_status oxa_df_kernel_sDFUniformSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                              const float* site, float inv, int32_t* cell);
oxa_status oxa_df_kernel_sDFUniformSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                              const float* site, float inv, int64_t* cell);
oxa_status oxa_df_kernel_sDFUniformSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                                  const float* site, float inv, int64_t* cell);
oxa_status oxa_df_kernel_sDFUniformSearch1D(int64_t nx, const float* x, int64_t nsite,
                                            const float* site, float inv, int32_t cell_flags,
                                            void* cell);

/* Quasi-uniform: inv = (nx-1)/(x[nx-1]-x[0]). */
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                                   const double* site, double inv, int32_t* cell);
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                                   const double* site, double inv, int64_t* cell);
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                                       const double* site, double inv,
                                                       int64_t* cell);
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D(int64_t nx, const double* x, int64_t nsite,
                                                 const double* site, double inv, int32_t cell_flags,
                                                 void* cell);
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                                   const float* site, float inv, int32_t* cell);
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                                   const float* site, float inv, int64_t* cell);
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                                       const float* site, float inv, int64_t* cell);
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D(int64_t nx, const float* x, int64_t nsite,
                                                 const float* site, float inv, int32_t cell_flags,
                                                 void* cell);

/* Sorted (ascending sites): *state is the cell to start from; on return it
 * holds the position where the last scan stopped. */
oxa_status oxa_df_kernel_dDFSortedSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                             const double* site, int64_t* state, int32_t* cell);
oxa_status oxa_df_kernel_dDFSortedSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                             const double* site, int64_t* state, int64_t* cell);
oxa_status oxa_df_kernel_dDFSortedSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                                 const double* site, int64_t* state, int64_t* cell);
oxa_status oxa_df_kernel_dDFSortedSearch1D(int64_t nx, const double* x, int64_t nsite,
                                           const double* site, int64_t* state, int32_t cell_flags,
                                           void* cell);
oxa_status oxa_df_kernel_sDFSortedSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                             const float* site, int64_t* state, int32_t* cell);
oxa_status oxa_df_kernel_sDFSortedSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                             const float* site, int64_t* state, int64_t* cell);
oxa_status oxa_df_kernel_sDFSortedSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                                 const float* site, int64_t* state, int64_t* cell);
oxa_status oxa_df_kernel_sDFSortedSearch1D(int64_t nx, const float* x, int64_t nsite,
                                           const float* site, int64_t* state, int32_t cell_flags,
                                           void* cell);

/* Peak: most sites lie near breakpoint index peak (0 <= peak <= nx). */
oxa_status oxa_df_kernel_dDFPeakSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                           const double* site, int64_t peak, int32_t* cell);
oxa_status oxa_df_kernel_dDFPeakSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                           const double* site, int64_t peak, int64_t* cell);
oxa_status oxa_df_kernel_dDFPeakSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                               const double* site, int64_t peak, int64_t* cell);
oxa_status oxa_df_kernel_dDFPeakSearch1D(int64_t nx, const double* x, int64_t nsite,
                                         const double* site, int64_t peak, int32_t cell_flags,
                                         void* cell);
oxa_status oxa_df_kernel_sDFPeakSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                           const float* site, int64_t peak, int32_t* cell);
oxa_status oxa_df_kernel_sDFPeakSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                           const float* site, int64_t peak, int64_t* cell);
oxa_status oxa_df_kernel_sDFPeakSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                               const float* site, int64_t peak, int64_t* cell);
oxa_status oxa_df_kernel_sDFPeakSearch1D(int64_t nx, const float* x, int64_t nsite,
                                         const float* site, int64_t peak, int32_t cell_flags,
                                         void* cell);

/* Hybrid: bisection narrowed by an accelerator table (1026 entries, as a task
 * builds it) and its inverse bin width. */
oxa_status oxa_df_kernel_dDFHybridSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                             const double* site, const DfSearchBin* bins,
                                             double inv_bin_width, int32_t* cell);
oxa_status oxa_df_kernel_dDFHybridSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                             const double* site, const DfSearchBin* bins,
                                             double inv_bin_width, int64_t* cell);
oxa_status oxa_df_kernel_dDFHybridSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                                 const double* site, const DfSearchBin* bins,
                                                 double inv_bin_width, int64_t* cell);
oxa_status oxa_df_kernel_dDFHybridSearch1D(int64_t nx, const double* x, int64_t nsite,
                                           const double* site, const DfSearchBin* bins,
                                           double inv_bin_width, int32_t cell_flags, void* cell);
oxa_status oxa_df_kernel_sDFHybridSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                             const float* site, const DfSearchBin* bins,
                                             float inv_bin_width, int32_t* cell);
oxa_status oxa_df_kernel_sDFHybridSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                             const float* site, const DfSearchBin* bins,
                                             float inv_bin_width, int64_t* cell);
oxa_status oxa_df_kernel_sDFHybridSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                                 const float* site, const DfSearchBin* bins,
                                                 float inv_bin_width, int64_t* cell);
oxa_status oxa_df_kernel_sDFHybridSearch1D(int64_t nx, const float* x, int64_t nsite,
                                           const float* site, const DfSearchBin* bins,
                                           float inv_bin_width, int32_t cell_flags, void* cell);

/* User-defined: the call-back guesses, the kernel corrects unflagged sites.
 * The Uni members take a uniform partition given by its two ends. The flag
 * array lives on the stack up to 1024 sites and is allocated above that
 * (DF_ERR_MEM when the allocation fails, before the call-back runs). */
oxa_status oxa_df_kernel_dDFUserDefSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                              const double* site, oxa_df_dsearch_callback callback,
                                              void* params, int32_t* cell);
oxa_status oxa_df_kernel_dDFUserDefSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                              const double* site, oxa_df_dsearch_callback callback,
                                              void* params, int64_t* cell);
oxa_status oxa_df_kernel_dDFUserDefSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                                  const double* site,
                                                  oxa_df_dsearch_callback callback, void* params,
                                                  int64_t* cell);
oxa_status oxa_df_kernel_dDFUserDefSearch1D(int64_t nx, const double* x, int64_t nsite,
                                            const double* site, oxa_df_dsearch_callback callback,
                                            void* params, int32_t cell_flags, void* cell);
oxa_status oxa_df_kernel_sDFUserDefSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                              const float* site, oxa_df_ssearch_callback callback,
                                              void* params, int32_t* cell);
oxa_status oxa_df_kernel_sDFUserDefSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                              const float* site, oxa_df_ssearch_callback callback,
                                              void* params, int64_t* cell);
oxa_status oxa_df_kernel_sDFUserDefSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                                  const float* site,
                                                  oxa_df_ssearch_callback callback, void* params,
                                                  int64_t* cell);
oxa_status oxa_df_kernel_sDFUserDefSearch1D(int64_t nx, const float* x, int64_t nsite,
                                            const float* site, oxa_df_ssearch_callback callback,
                                            void* params, int32_t cell_flags, void* cell);
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D32(int64_t nx, const double* x, int64_t nsite,
                                                 const double* site,
                                                 oxa_df_dsearch_callback callback, void* params,
                                                 int32_t* cell);
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D64(int64_t nx, const double* x, int64_t nsite,
                                                 const double* site,
                                                 oxa_df_dsearch_callback callback, void* params,
                                                 int64_t* cell);
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D64Pack(int64_t nx, const double* x, int64_t nsite,
                                                     const double* site,
                                                     oxa_df_dsearch_callback callback, void* params,
                                                     int64_t* cell);
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D(int64_t nx, const double* x, int64_t nsite,
                                               const double* site, oxa_df_dsearch_callback callback,
                                               void* params, int32_t cell_flags, void* cell);
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D32(int64_t nx, const float* x, int64_t nsite,
                                                 const float* site,
                                                 oxa_df_ssearch_callback callback, void* params,
                                                 int32_t* cell);
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D64(int64_t nx, const float* x, int64_t nsite,
                                                 const float* site,
                                                 oxa_df_ssearch_callback callback, void* params,
                                                 int64_t* cell);
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D64Pack(int64_t nx, const float* x, int64_t nsite,
                                                     const float* site,
                                                     oxa_df_ssearch_callback callback, void* params,
                                                     int64_t* cell);
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D(int64_t nx, const float* x, int64_t nsite,
                                               const float* site, oxa_df_ssearch_callback callback,
                                               void* params, int32_t cell_flags, void* cell);

/* ---- Linear spline construction ----------------------------------------- */

/* Writes, for every function j and cell m, the value y_j(x[m]) and the slope
 * at positions 2m and 2m+1 of function j's coefficient block. method is not
 * read; extra must be NULL. threading may be NULL (sequential). */
oxa_status oxa_df_kernel_dDFLinearSpline1D(DfTask* task, int64_t method, const void* extra,
                                           const DfThreading* threading);
oxa_status oxa_df_kernel_sDFLinearSpline1D(DfTask* task, int64_t method, const void* extra,
                                           const DfThreading* threading);

/* ---- Cubic spline construction ------------------------------------------ */

/* Writes, for every function j and cell m, the coefficients c0..c3 of
 * c0 + c1*u + c2*u^2 + c3*u^3, u = t - x[m], at positions 4m .. 4m+3 of
 * function j's coefficient block. The task's s_order must be 4
 * (DF_ERR_BAD_ORDER) and s_type one of:
 *   DF_TYPE_DEFAULT, DF_TYPE_NATURAL: twice continuously differentiable;
 *     bc_type 0 or DF_BC_FREE_END (second derivative 0 at both ends),
 *     DF_BC_NOT_A_KNOT, DF_BC_PERIODIC (first and last values equal, else
 *     DF_ERR_PERIODIC_VALUES), or one left bit (DF_BC_FIRST_LEFT,
 *     DF_BC_SECOND_LEFT) with one right bit (DF_BC_FIRST_RIGHT,
 *     DF_BC_SECOND_RIGHT) and bc = {left value, right value}, shared by all
 *     functions. Not-a-knot on 2 points gives the line, on 3 the parabola.
 *   DF_TYPE_HERMITE: ic_type DF_IC_FIRST_DER, ic the derivatives at every
 *     breakpoint (function j's from ic + j*nx).
 *   DF_TYPE_BESSEL: slopes of the parabolas through three neighbours.
 *   DF_TYPE_AKIMA: Akima's slopes, two secants extrapolated at each end.
 *   The last three take bc_type 0 only.
 * Failures, all before any coefficient is written: DF_ERR_NULL_TASK,
 * DF_ERR_UNEXPECTED_ARG (extra not NULL), DF_ERR_BAD_NX, DF_ERR_BAD_ORDER,
 * DF_ERR_BAD_TYPE, DF_ERR_BAD_BC_TYPE (a condition the type cannot take),
 * DF_ERR_BAD_BC (values needed, bc NULL), DF_ERR_BAD_IC_TYPE, DF_ERR_BAD_IC,
 * DF_ERR_BAD_Y_HINT, DF_ERR_BAD_Y, DF_ERR_BAD_COEFF, DF_ERR_PERIODIC_VALUES,
 * DF_ERR_MEM (scratch of (9 + 8*threads)*nx reals). threading may be NULL;
 * blocks of four functions go to its parallel-for. */
oxa_status oxa_df_kernel_dDFCubicSpline1D(DfTask* task, int64_t method, const void* extra,
                                          const DfThreading* threading);
oxa_status oxa_df_kernel_sDFCubicSpline1D(DfTask* task, int64_t method, const void* extra,
                                          const DfThreading* threading);

/* ---- Quadratic spline construction ---------------------------------------- */

/* Writes c0 + c1*u + c2*u^2 per cell at positions 3m .. 3m+2 of function j's
 * block. s_order must be 3. s_type DF_TYPE_DEFAULT: cells of the partition,
 * u = t - x[m], once continuously differentiable, with one end condition:
 * bc_type 0 or DF_BC_FREE_END (first cell a line), DF_BC_NOT_A_KNOT (first
 * two cells one parabola), or one of DF_BC_FIRST_LEFT, DF_BC_FIRST_RIGHT,
 * DF_BC_SECOND_LEFT, DF_BC_SECOND_RIGHT with its value in bc[0].
 * DF_TYPE_SUBBOTIN: knots t_0 = x[0], t_i = (x[i-1] + x[i])/2, t_nx =
 * x[nx-1], nx cells (coefficient stride 3*nx), u = t - t_i, interpolating at
 * the breakpoints; one left bit and one right bit (first or second
 * derivative), bc = {left value, right value}. Failures as for the cubic
 * kernel, before any coefficient is written. */
oxa_status oxa_df_kernel_dDFQuadraticSpline1D(DfTask* task, int64_t method, const void* extra,
                                              const DfThreading* threading);
oxa_status oxa_df_kernel_sDFQuadraticSpline1D(DfTask* task, int64_t method, const void* extra,
                                              const DfThreading* threading);

/* ---- Order 0, and construction by order --------------------------------- */

/* The look-up and step-wise interpolants (s_order 0, s_type DF_TYPE_LOOKUP,
 * DF_TYPE_STEP_RIGHT or DF_TYPE_STEP_LEFT) are evaluated from the function
 * values and have no coefficients: this kernel checks the task (order, type,
 * bc_type 0, the value pointers) and writes nothing. */
oxa_status oxa_df_kernel_dDFStepSpline1D(DfTask* task, int64_t method, const void* extra,
                                         const DfThreading* threading);
oxa_status oxa_df_kernel_sDFStepSpline1D(DfTask* task, int64_t method, const void* extra,
                                         const DfThreading* threading);

/* Calls the construction kernel of the task's s_order (0, 2, 3 or 4; any
 * other order gives DF_ERR_BAD_ORDER) and returns its status. */
oxa_status oxa_df_kernel_dDFConstruct1D(DfTask* task, int64_t method, const void* extra,
                                        const DfThreading* threading);
oxa_status oxa_df_kernel_sDFConstruct1D(DfTask* task, int64_t method, const void* extra,
                                        const DfThreading* threading);

/* ---- Evaluation and integration of a constructed spline ------------------ */

/* Extrapolation call-back: called for each site left of x[0] (the left one,
 * cell 0) or right of x[nx-1] (the right one, cell nx). It writes n results
 * for that site, function-major: r[f*nd + d] for the f-th chosen function and
 * the d-th requested derivative, and returns 0 or a negative status, which
 * stops the evaluation and is returned. */
typedef int32_t (*oxa_df_dinterp_callback)(int64_t n, int64_t cell, double site, double* r,
                                           void* params);
typedef int32_t (*oxa_df_sinterp_callback)(int64_t n, int64_t cell, float site, float* r,
                                           void* params);

/* Values and derivatives of a constructed spline (orders 2, 3, 4,
 * and 0 with types DF_TYPE_LOOKUP, DF_TYPE_STEP_RIGHT, DF_TYPE_STEP_LEFT) at
 * nsite sites. sitehint and datahint choose the cell search as for
 * oxa_df_kernel_dDFSearch1D (DF_SITE_SORTED, DF_SITE_UNIFORM with the two
 * ends in site). func lists nfunc function indices (NULL: the first nfunc
 * functions; nfunc 0: all). dorder holds ndorder flags, dorder[d] != 0
 * requesting derivative d (NULL: values only); nd is the number requested.
 * Results: rhint 0, DF_STORE_ROWS or DF_STORE_SEPARATE by function,
 * r[(f*nd + k)*nsite + i]; DF_STORE_COLS by site, r[(i*nfunc + f)*nd + k].
 * Extrapolation: beyond an end, the polynomial of the end cell (step-wise:
 * the end value), unless the call-back of that end is given. Look-up: y_i
 * where a site equals x[i], NaN elsewhere. Failures: DF_ERR_NULL_TASK,
 * DF_ERR_BAD_NX, DF_ERR_BAD_ORDER, DF_ERR_BAD_TYPE, DF_ERR_BAD_NSITE,
 * DF_ERR_BAD_SITE, DF_ERR_BAD_DORDER, DF_ERR_BAD_RESULT_HINT,
 * DF_ERR_BAD_INDEX (function index), DF_ERR_BAD_Y, DF_ERR_BAD_COEFF,
 * DF_ERR_BAD_DATA_HINT, DF_ERR_BAD_RESULT, DF_ERR_MEM, or a call-back's
 * status. threading may be NULL; chunks of 4096 sites go to its
 * parallel-for. */
oxa_status oxa_df_kernel_dDFInterpolate1D(DfTask* task, int64_t nsite, const double* site,
                                          int64_t sitehint, const double* datahint, int64_t nfunc,
                                          const int64_t* func, int64_t ndorder,
                                          const int64_t* dorder, double* r, int64_t rhint,
                                          oxa_df_dinterp_callback left, void* left_params,
                                          oxa_df_dinterp_callback right, void* right_params,
                                          const DfThreading* threading);
oxa_status oxa_df_kernel_sDFInterpolate1D(DfTask* task, int64_t nsite, const float* site,
                                          int64_t sitehint, const float* datahint, int64_t nfunc,
                                          const int64_t* func, int64_t ndorder,
                                          const int64_t* dorder, float* r, int64_t rhint,
                                          oxa_df_sinterp_callback left, void* left_params,
                                          oxa_df_sinterp_callback right, void* right_params,
                                          const DfThreading* threading);

/* Integrals of a constructed spline over [llim[k], rlim[k]], k < nlim (a
 * limit pair in either order gives the signed integral), by the closed form
 * of each cell's polynomial; beyond the ends the same extrapolation as the
 * evaluation without call-backs. llimhint/rlimhint and ldatahint/rdatahint
 * choose each limit array's search as the site hints do (DF_SITE_UNIFORM:
 * two ends given). Functions as in the evaluation. Results: rhint 0,
 * DF_STORE_ROWS or DF_STORE_SEPARATE r[f*nlim + k]; DF_STORE_COLS
 * r[k*nfunc + f]; other hints DF_ERR_BAD_RESULT_HINT. The look-up
 * interpolant has no integral (DF_ERR_BAD_TYPE). Other failures as in the
 * evaluation. */
oxa_status oxa_df_kernel_dDFIntegrate1D(DfTask* task, int64_t nlim, const double* llim,
                                        int64_t llimhint, const double* rlim, int64_t rlimhint,
                                        const double* ldatahint, const double* rdatahint,
                                        int64_t nfunc, const int64_t* func, double* r,
                                        int64_t rhint, const DfThreading* threading);
oxa_status oxa_df_kernel_sDFIntegrate1D(DfTask* task, int64_t nlim, const float* llim,
                                        int64_t llimhint, const float* rlim, int64_t rlimhint,
                                        const float* ldatahint, const float* rdatahint,
                                        int64_t nfunc, const int64_t* func, float* r,
                                        int64_t rhint, const DfThreading* threading);

OXA_EXTERN_C_END

#endif /* OXA_DATA_FITTING_H */
