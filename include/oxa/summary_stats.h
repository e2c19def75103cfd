/* oxa summary_stats: tasks that describe a data set and the estimates wanted,
 * and the basic estimator (moments, sums, cross-products, covariance,
 * correlation). C11 and C++20.
 *
 * A task stores addresses of the caller's arrays and never copies them. Integer
 * parameters (dimension, number of observations, storage words, index arrays)
 * are int32_t when the task was created with index width 0 and int64_t with
 * index width 1; they are passed as `const void*` for that reason. */
#ifndef OXA_SUMMARY_STATS_H
#define OXA_SUMMARY_STATS_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

typedef struct SSTask SSTask;

/* A clean-up routine registered on a task; deletion calls it with the task. */
typedef void (*SSCleanupRoutine)(SSTask* task);

/* Status codes (0 success; the common ones are in oxa/types.h). Each parameter id also has its own code for a null
 * address; see the editors below. */
enum {
  VSL_SS_ERROR_MEM_FAILURE = -4000,
  VSL_SS_ERROR_BAD_DIMENSION = -4001,
  VSL_SS_ERROR_BAD_OBS_NUMBER = -4002,
  VSL_SS_ERROR_BAD_STORAGE = -4003,
  VSL_SS_ERROR_BAD_METHOD = -4029,
  VSL_SS_ERROR_NULL_TASK = -4031,
  VSL_SS_ERROR_NULL_OBSERVATIONS = -4032,
  VSL_SS_ERROR_NULL_STORAGE = -4044
};

/* Storage of the observation matrix: the n values of one component adjacent
 * (component-major) or the p values of one observation adjacent. */
enum { OXA_SS_STORAGE_BY_COMPONENT = 0x10000, OXA_SS_STORAGE_BY_OBSERVATION = 0x20000 };

/* Storage words of matrix results (covariance, correlation, cross-product).
 * 0: full p x p, row-major. UPPER (bit 0x1): the upper triangle packed row by
 * row, (0,0) (0,1) .. (0,p-1) (1,1) ..; LOWER (bit 0x2): the lower triangle
 * packed row by row, (0,0) (1,0) (1,1) (2,0) ..; both take p(p+1)/2 elements.
 * When both bits are set, UPPER wins. */
enum { OXA_SS_MATRIX_FULL = 0, OXA_SS_MATRIX_PACKED_UPPER = 0x1, OXA_SS_MATRIX_PACKED_LOWER = 0x2 };

/* Method word of the basic estimator: exactly one base method, or none with a
 * conversion flag. */
enum {
  OXA_SS_METHOD_FAST = 0x1,         /* raw sums first, central quantities derived */
  OXA_SS_METHOD_ONE_PASS = 0x2,     /* updating (merging) accumulation */
  OXA_SS_METHOD_GIVEN_MEAN = 0x100, /* central sums about the mean field's values,
                                      which are read and never written */
  OXA_SS_METHOD_CONVERT = 0x200,    /* derive results from accumulated sums */
  OXA_SS_METHOD_CONVERT_ALT = 0x400
};

/* Estimate bits of the basic estimator's 64-bit request mask. */
static const uint64_t OXA_SS_EST_MEAN = 0x1;
static const uint64_t OXA_SS_EST_RAW2 = 0x2;
static const uint64_t OXA_SS_EST_RAW3 = 0x4;
static const uint64_t OXA_SS_EST_RAW4 = 0x8;
static const uint64_t OXA_SS_EST_CENTRAL2 = 0x10;
static const uint64_t OXA_SS_EST_CENTRAL3 = 0x20;
static const uint64_t OXA_SS_EST_CENTRAL4 = 0x40;
static const uint64_t OXA_SS_EST_KURTOSIS = 0x80;
static const uint64_t OXA_SS_EST_SKEWNESS = 0x100;
static const uint64_t OXA_SS_EST_VARIATION = 0x200;
static const uint64_t OXA_SS_EST_COVARIANCE = 0x1000;
static const uint64_t OXA_SS_EST_CORRELATION = 0x2000;
static const uint64_t OXA_SS_EST_SUM = 0x2000000;
static const uint64_t OXA_SS_EST_RAW_SUM2 = 0x4000000;
static const uint64_t OXA_SS_EST_RAW_SUM3 = 0x8000000;
static const uint64_t OXA_SS_EST_RAW_SUM4 = 0x10000000;
static const uint64_t OXA_SS_EST_CENTRAL_SUM2 = 0x20000000;
static const uint64_t OXA_SS_EST_CENTRAL_SUM3 = 0x40000000;
static const uint64_t OXA_SS_EST_CENTRAL_SUM4 = 0x80000000;
static const uint64_t OXA_SS_EST_CROSS_PRODUCT = 0x100000000;

/* Parameter ids of the generic editors (R: real array, I: integer). */
enum {
  OXA_SS_ID_DIMENSION = 1,         /* I */
  OXA_SS_ID_N_OBSERVATIONS = 2,    /* I */
  OXA_SS_ID_OBSERVATIONS = 3,      /* R */
  OXA_SS_ID_X_STORAGE = 4,         /* I */
  OXA_SS_ID_COMPONENT_INDICES = 5, /* I: p flags, non-zero selects a component */
  OXA_SS_ID_WEIGHTS = 6,           /* R */
  OXA_SS_ID_MEAN = 7,              /* R; 8..10 raw moments 2..4, 11..13 central 2..4 */
  OXA_SS_ID_KURTOSIS = 14,
  OXA_SS_ID_SKEWNESS = 15,
  OXA_SS_ID_MIN = 16,
  OXA_SS_ID_MAX = 17,
  OXA_SS_ID_VARIATION = 18,
  OXA_SS_ID_COVARIANCE = 19,
  OXA_SS_ID_COVARIANCE_STORAGE = 20, /* I */
  OXA_SS_ID_CORRELATION = 21,
  OXA_SS_ID_CORRELATION_STORAGE = 22, /* I */
  OXA_SS_ID_ACCUMULATED_WEIGHTS = 23, /* R: {sum of weights, sum of squared weights} */
  OXA_SS_ID_SUM = 67,                 /* R; 68..70 raw sums 2..4, 71..73 central sums 2..4 */
  OXA_SS_ID_CROSS_PRODUCT = 74,
  OXA_SS_ID_CROSS_PRODUCT_STORAGE = 75 /* I */
};

/* Creates a task. p, n and x_storage are integer addresses; x (p x n reals)
 * and weights (n reals) may be null, as may indices (p integers). When x is
 * null, n and x_storage are not checked. index_width: 0 (int32_t) or 1
 * (int64_t). Checks in order: index_width (-3); p (-4001); with x: x_storage
 * null (-4044), its value (-4003), n (-4002); allocation (-4000, *task = NULL). */
oxa_status _vsldSSNewTask(SSTask** task, const void* p, const void* n, const void* x_storage,
                          const double* x, const double* weights, const void* indices,
                          int32_t index_width);
oxa_status _vslsSSNewTask(SSTask** task, const void* p, const void* n, const void* x_storage,
                          const float* x, const float* weights, const void* indices,
                          int32_t index_width);

/* Generic editors: store `address` for parameter `id`. Null task -4031; an id
 * the editor does not take -3; a null address the id's own code. */
oxa_status _vsldSSEditTask(SSTask* task, int32_t id, const double* address);
oxa_status _vslsSSEditTask(SSTask* task, int32_t id, const float* address);
oxa_status _vsliSSEditTask(SSTask* task, int32_t id, const void* address);

/* Grouped editors: each non-null address is stored, each null one leaves its
 * field as it was. Integer arguments are `const void*` (index width). */
oxa_status _vsldSSEditMoments(SSTask* task, double* mean, double* raw2, double* raw3, double* raw4,
                              double* central2, double* central3, double* central4);
oxa_status _vslsSSEditMoments(SSTask* task, float* mean, float* raw2, float* raw3, float* raw4,
                              float* central2, float* central3, float* central4);
oxa_status _vsldSSEditSums(SSTask* task, double* sum, double* raw_sum2, double* raw_sum3,
                           double* raw_sum4, double* central_sum2, double* central_sum3,
                           double* central_sum4);
oxa_status _vslsSSEditSums(SSTask* task, float* sum, float* raw_sum2, float* raw_sum3,
                           float* raw_sum4, float* central_sum2, float* central_sum3,
                           float* central_sum4);
oxa_status _vsldSSEditCovCor(SSTask* task, double* mean, double* covariance,
                             const void* covariance_storage, double* correlation,
                             const void* correlation_storage);
oxa_status _vslsSSEditCovCor(SSTask* task, float* mean, float* covariance,
                             const void* covariance_storage, float* correlation,
                             const void* correlation_storage);
oxa_status _vsldSSEditCP(SSTask* task, double* mean, double* sum, double* cross_product,
                         const void* cross_product_storage);
oxa_status _vslsSSEditCP(SSTask* task, float* mean, float* sum, float* cross_product,
                         const void* cross_product_storage);
oxa_status _vsldSSEditPartialCovCor(SSTask* task, const void* partial_indices, double* covariance,
                                    const void* covariance_storage, double* correlation,
                                    const void* correlation_storage, double* partial_covariance,
                                    const void* partial_covariance_storage,
                                    double* partial_correlation,
                                    const void* partial_correlation_storage);
oxa_status _vslsSSEditPartialCovCor(SSTask* task, const void* partial_indices, float* covariance,
                                    const void* covariance_storage, float* correlation,
                                    const void* correlation_storage, float* partial_covariance,
                                    const void* partial_covariance_storage,
                                    float* partial_correlation,
                                    const void* partial_correlation_storage);
oxa_status _vsldSSEditQuantiles(SSTask* task, const void* n_orders, const double* orders,
                                double* quantiles, double* order_statistics,
                                const void* order_statistics_storage);
oxa_status _vslsSSEditQuantiles(SSTask* task, const void* n_orders, const float* orders,
                                float* quantiles, float* order_statistics,
                                const void* order_statistics_storage);
oxa_status _vsldSSEditStreamQuantiles(SSTask* task, const void* n_orders, const double* orders,
                                      double* quantiles, const void* n_params,
                                      const double* params);
oxa_status _vslsSSEditStreamQuantiles(SSTask* task, const void* n_orders, const float* orders,
                                      float* quantiles, const void* n_params, const float* params);
oxa_status _vsldSSEditPooledCovariance(SSTask* task, const void* group_indices, double* pooled_mean,
                                       double* pooled_covariance, const void* requested_groups,
                                       double* group_means, double* group_covariances);
oxa_status _vslsSSEditPooledCovariance(SSTask* task, const void* group_indices, float* pooled_mean,
                                       float* pooled_covariance, const void* requested_groups,
                                       float* group_means, float* group_covariances);
oxa_status _vsldSSEditRCov(SSTask* task, const void* storage, const void* n_params,
                           const double* params, double* robust_mean, double* robust_covariance);
oxa_status _vslsSSEditRCov(SSTask* task, const void* storage, const void* n_params,
                           const float* params, float* robust_mean, float* robust_covariance);
oxa_status _vsldSSEditOutDetect(SSTask* task, const void* n_params, const double* params,
                                double* outlier_weights);
oxa_status _vslsSSEditOutDetect(SSTask* task, const void* n_params, const float* params,
                                float* outlier_weights);
oxa_status _vsldSSEditMissingVals(SSTask* task, const void* n1, const double* a1, const void* n2,
                                  const double* a2, const void* n3, const double* a3,
                                  const void* n4, const double* a4, const void* n5,
                                  const double* a5);
oxa_status _vslsSSEditMissingVals(SSTask* task, const void* n1, const float* a1, const void* n2,
                                  const float* a2, const void* n3, const float* a3, const void* n4,
                                  const float* a4, const void* n5, const float* a5);
oxa_status _vsldSSEditMtxParametrz(SSTask* task, double* correlation,
                                   const void* correlation_storage,
                                   double* parametrized_correlation,
                                   const void* parametrized_storage);
oxa_status _vslsSSEditMtxParametrz(SSTask* task, float* correlation,
                                   const void* correlation_storage, float* parametrized_correlation,
                                   const void* parametrized_storage);

/* Releases the task (its owned buffer, then its clean-up routines in order)
 * and sets *task to NULL. A null `task` gives -4031; *task must not be NULL. */
oxa_status _vslSSDeleteTask(SSTask** task);

/* Basic estimator: the estimates of `estimates` by `method`, continuing from
 * the state held in the caller's result arrays and accumulated weights.
 * Conventions (Wt = sum of weights, Wt2 = sum of squared weights, S_k the
 * central sum of order k):
 *   raw moment k      = raw sum k / Wt
 *   central moment 2  = S_2 / (Wt - Wt2/Wt)      (the unbiased variance)
 *   central moment k  = S_k / Wt                 (k = 3, 4)
 *   skewness          = (S_3/Wt) / (S_2/Wt)^(3/2)
 *   kurtosis          = (S_4/Wt) / (S_2/Wt)^2 - 3 (excess kurtosis)
 *   variation         = sqrt(central moment 2) / mean
 *   covariance        = cross-product / (Wt - Wt2/Wt) for Wt > 0, else itself
 *   correlation       = cp_ij / sqrt(cp_ii cp_jj)
 * Running state: each quantity continues from its sum field when that is
 * requested, else from its moment field (mean, raw and central moments,
 * covariance); accumulated weights {0, 0} start afresh whatever the other
 * arrays hold, and without an accumulated-weights array every call starts
 * afresh. A correlation requested without covariance or cross-product
 * describes the current call's observations only. The given-mean method
 * centres central sums and cross-products on the mean field's values.
 * Conversion mode (no base method) reads no observations: moments from their
 * sums, covariance and correlation from the cross-product, with Wt and Wt2
 * from the accumulated weights (or both equal to n when that array is absent
 * and there are no weights). Only components whose index flag is non-zero (all
 * when there is no index array) are computed; other entries are left as they
 * are. Estimate bits of other estimators are ignored. */
oxa_status _vsldSSBasic(SSTask* task, uint64_t estimates, int64_t method);
oxa_status _vslsSSBasic(SSTask* task, uint64_t estimates, int64_t method);

OXA_EXTERN_C_END

#endif /* OXA_SUMMARY_STATS_H */
