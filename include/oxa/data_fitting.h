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

/* Boundary-condition type of the periodic condition. */
enum { DF_BC_PERIODIC = 64 };

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

OXA_EXTERN_C_END

#endif /* OXA_DATA_FITTING_H */
