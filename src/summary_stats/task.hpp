// The summary-statistics task record and the helpers every reader of it uses.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oxa/summary_stats.h"

// The task record. It holds only addresses of the caller's arrays (a task never
// copies data), three 32-bit words and the few buffers the estimators own.
// Member order is part of the record's layout and must not change.
struct SSTask {
  int32_t index_width;             // 0: integers behind the addresses are int32_t, 1: int64_t
  int32_t work_a;                  // 2 at creation; reserved for the estimators
  int32_t work_b;                  // 1 at creation; reserved for the estimators
  const void* dimension;           // id 1
  const void* n_observations;      // id 2
  const void* component_indices;   // id 5
  const void* observations;        // id 3
  const void* weights;             // id 6
  void* accumulated_weights;       // id 23: {sum of weights, sum of squared weights}
  const void* x_storage;           // id 4
  void* parametrized_correlation;  // id 60
  const void* parametrized_correlation_storage;  // id 61
  void* mean;                                    // id 7
  void* raw_moment[3];                           // ids 8, 9, 10 (orders 2, 3, 4)
  void* central_moment[3];                       // ids 11, 12, 13
  void* sum;                                     // id 67
  void* raw_sum[3];                              // ids 68, 69, 70
  void* central_sum[3];                          // ids 71, 72, 73
  void* kurtosis;                                // id 14
  void* skewness;                                // id 15
  void* variation;                               // id 18
  void* minimum;                                 // id 16
  void* maximum;                                 // id 17
  const void* covariance_storage;                // id 20
  void* covariance;                              // id 19
  const void* correlation_storage;               // id 22
  void* correlation;                             // id 21
  const void* cross_product_storage;             // id 75
  void* cross_product;                           // id 74
  const void* group_indices;                     // id 28
  const void* requested_groups;                  // id 32
  void* group_means;                             // id 33
  void* group_covariances;                       // id 35
  const void* group_covariance_storage;          // id 34
  void* pooled_mean;                             // id 30
  void* pooled_covariance;                       // id 31
  const void* pooled_covariance_storage;         // id 29
  const void* n_quantile_orders;                 // id 24
  const void* quantile_orders;                   // id 25
  void* quantiles;                               // id 26
  void* order_statistics;                        // id 27
  const void* order_statistics_storage;          // id 44
  const void* n_stream_quantile_orders;          // id 64
  const void* stream_quantile_orders;            // id 65
  void* stream_quantiles;                        // id 66
  void* unused_by_editors;                       // set by no editor
  const void* n_stream_quantile_params;          // id 62
  const void* stream_quantile_params;            // id 63
  void* mean_abs_deviation;                      // id 77
  void* median_abs_deviation;                    // id 76
  const void* n_robust_cov_params;               // id 37
  const void* robust_cov_params;                 // id 38
  void* robust_mean;                             // id 39
  void* robust_covariance;                       // id 40
  const void* robust_covariance_storage;         // id 36
  const void* n_outlier_params;                  // id 41
  const void* outlier_params;                    // id 42
  void* outlier_weights;                         // id 43
  const void* partial_indices;                   // id 45
  void* partial_covariance;                      // id 46
  const void* partial_covariance_storage;        // id 47
  void* partial_correlation;                     // id 48
  const void* partial_correlation_storage;       // id 49
  const void* missing_values[10];                // ids 50, 51, 52, 53, 58, 59, 54, 55, 56, 57
  void* estimator_work[8];                       // working fields of the estimators
  intptr_t n_cleanup;                            // number of registered clean-up routines
  SSCleanupRoutine* cleanup;                     // array of n_cleanup routines, called at deletion
  void* sorted_observations;                     // id 78
  const void* sorted_observations_storage;       // id 79
  void* owned_buffer;                            // from oxa_serv_allocate, released at deletion
};

// 3 words + 91 addresses (the int32 triple pads to one address-aligned slot pair).
static_assert(offsetof(SSTask, dimension) == 16, "three 32-bit words first");
static_assert(sizeof(SSTask) == 16 + 91 * sizeof(void*), "94 fields");

namespace oxa::ss {

// Reads the integer at `address` with the task's index width. int32_t values
// are sign-extended.
inline int64_t read_int(const SSTask& task, const void* address) {
  if (task.index_width == 0) return *static_cast<const int32_t*>(address);
  return *static_cast<const int64_t*>(address);
}

// The integer at `address`, or `fallback` when the address is null.
inline int64_t read_int_or(const SSTask& task, const void* address, int64_t fallback) {
  return address == nullptr ? fallback : read_int(task, address);
}

// Reads element i of an integer array with the task's index width.
inline int64_t read_int_at(const SSTask& task, const void* array, int64_t i) {
  if (task.index_width == 0) return static_cast<const int32_t*>(array)[i];
  return static_cast<const int64_t*>(array)[i];
}

}  // namespace oxa::ss
