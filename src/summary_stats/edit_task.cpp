// The generic editors: one table maps a parameter id to the task field it sets,
// whether that field holds reals or integers, and the status for a null address.
#include "summary_stats/edit_task.hpp"

#include <array>
#include <cstddef>

namespace oxa::ss {
namespace {

struct IdRow {
  FieldKind kind;     // None: the id does not exist
  int32_t null_code;  // status for a null address
  size_t offset;      // offsetof(SSTask, field)
};

constexpr IdRow real(int32_t code, size_t offset) {
  return {FieldKind::Real, code, offset};
}
constexpr IdRow integer(int32_t code, size_t offset) {
  return {FieldKind::Integer, code, offset};
}

constexpr std::array<IdRow, kMaxParameterId + 1> build_table() {
  std::array<IdRow, kMaxParameterId + 1> t{};
  t[1] = integer(-4001, offsetof(SSTask, dimension));
  t[2] = integer(-4002, offsetof(SSTask, n_observations));
  t[3] = real(-4032, offsetof(SSTask, observations));
  t[4] = integer(-4044, offsetof(SSTask, x_storage));
  t[5] = integer(-4004, offsetof(SSTask, component_indices));
  t[6] = real(-4005, offsetof(SSTask, weights));
  t[7] = real(-4006, offsetof(SSTask, mean));
  for (int k = 0; k < 3; ++k) {
    t[8 + k] = real(-4007 - k, offsetof(SSTask, raw_moment) + k * sizeof(void*));
    t[11 + k] = real(-4010 - k, offsetof(SSTask, central_moment) + k * sizeof(void*));
    t[68 + k] = real(-4075 - k, offsetof(SSTask, raw_sum) + k * sizeof(void*));
    t[71 + k] = real(-4078 - k, offsetof(SSTask, central_sum) + k * sizeof(void*));
  }
  t[14] = real(-4013, offsetof(SSTask, kurtosis));
  t[15] = real(-4014, offsetof(SSTask, skewness));
  t[16] = real(-4015, offsetof(SSTask, minimum));
  t[17] = real(-4016, offsetof(SSTask, maximum));
  t[18] = real(-4017, offsetof(SSTask, variation));
  t[19] = real(-4018, offsetof(SSTask, covariance));
  t[20] = integer(-4044, offsetof(SSTask, covariance_storage));
  t[21] = real(-4019, offsetof(SSTask, correlation));
  t[22] = integer(-4044, offsetof(SSTask, correlation_storage));
  t[23] = real(-4020, offsetof(SSTask, accumulated_weights));
  t[24] = integer(-4022, offsetof(SSTask, n_quantile_orders));
  t[25] = real(-4021, offsetof(SSTask, quantile_orders));
  t[26] = real(-4023, offsetof(SSTask, quantiles));
  t[27] = real(-4024, offsetof(SSTask, order_statistics));
  t[28] = integer(-4038, offsetof(SSTask, group_indices));
  t[29] = integer(-4044, offsetof(SSTask, pooled_covariance_storage));
  t[30] = real(-4035, offsetof(SSTask, pooled_mean));
  t[31] = real(-4034, offsetof(SSTask, pooled_covariance));
  t[32] = integer(-4038, offsetof(SSTask, requested_groups));
  t[33] = real(-4037, offsetof(SSTask, group_means));
  t[34] = integer(-4044, offsetof(SSTask, group_covariance_storage));
  t[35] = real(-4036, offsetof(SSTask, group_covariances));
  t[36] = integer(-4044, offsetof(SSTask, robust_covariance_storage));
  t[37] = integer(-4043, offsetof(SSTask, n_robust_cov_params));
  t[38] = real(-4042, offsetof(SSTask, robust_cov_params));
  t[39] = real(-4028, offsetof(SSTask, robust_mean));
  t[40] = real(-4027, offsetof(SSTask, robust_covariance));
  t[41] = integer(-4040, offsetof(SSTask, n_outlier_params));
  t[42] = real(-4039, offsetof(SSTask, outlier_params));
  t[43] = real(-4041, offsetof(SSTask, outlier_weights));
  t[44] = integer(-4044, offsetof(SSTask, order_statistics_storage));
  t[45] = integer(-4045, offsetof(SSTask, partial_indices));
  t[46] = real(-4046, offsetof(SSTask, partial_covariance));
  t[47] = integer(-4044, offsetof(SSTask, partial_covariance_storage));
  t[48] = real(-4047, offsetof(SSTask, partial_correlation));
  t[49] = integer(-4044, offsetof(SSTask, partial_correlation_storage));
  // The missing-values group lies in the record as the pairs (50, 51), (52, 53),
  // (58, 59), (54, 55), (56, 57).
  constexpr int missing_ids[10] = {50, 51, 52, 53, 58, 59, 54, 55, 56, 57};
  constexpr int32_t missing_codes[10] = {-4049, -4048, -4052, -4053, -4061,
                                         -4062, -4055, -4054, -4056, -4057};
  for (int k = 0; k < 10; ++k) {
    const size_t at = offsetof(SSTask, missing_values) + k * sizeof(void*);
    t[missing_ids[k]] = (k % 2 == 0) ? integer(missing_codes[k], at) : real(missing_codes[k], at);
  }
  t[60] = real(-4071, offsetof(SSTask, parametrized_correlation));
  t[61] = integer(-4044, offsetof(SSTask, parametrized_correlation_storage));
  t[62] = integer(-4066, offsetof(SSTask, n_stream_quantile_params));
  t[63] = real(-4065, offsetof(SSTask, stream_quantile_params));
  t[64] = integer(-4069, offsetof(SSTask, n_stream_quantile_orders));
  t[65] = real(-4068, offsetof(SSTask, stream_quantile_orders));
  t[66] = real(-4070, offsetof(SSTask, stream_quantiles));
  t[67] = real(-4006, offsetof(SSTask, sum));  // the mean's code, deliberately
  t[74] = real(-4081, offsetof(SSTask, cross_product));
  t[75] = integer(-4044, offsetof(SSTask, cross_product_storage));
  t[76] = real(-4082, offsetof(SSTask, median_abs_deviation));
  t[77] = real(-4083, offsetof(SSTask, mean_abs_deviation));
  t[78] = real(-4084, offsetof(SSTask, sorted_observations));
  t[79] = integer(-4044, offsetof(SSTask, sorted_observations_storage));
  return t;
}

constexpr std::array<IdRow, kMaxParameterId + 1> kIds = build_table();

}  // namespace

FieldKind field_kind(int32_t id) {
  return (id < 0 || id > kMaxParameterId) ? FieldKind::None : kIds[id].kind;
}

const void** field_slot(SSTask& task, int32_t id) {
  return reinterpret_cast<const void**>(reinterpret_cast<char*>(&task) + kIds[id].offset);
}

oxa_status edit_field(SSTask* task, int32_t id, const void* address, FieldKind kind) {
  if (task == nullptr) return VSL_SS_ERROR_NULL_TASK;
  if (field_kind(id) != kind) return VSL_ERROR_BAD_ARGUMENT;
  if (address == nullptr) return kIds[id].null_code;
  *field_slot(*task, id) = address;
  return VSL_STATUS_OK;
}

oxa_status edit_group(SSTask* task, const int32_t* ids, const void* const* addresses, int count) {
  if (task == nullptr) return VSL_SS_ERROR_NULL_TASK;
  for (int k = 0; k < count; ++k)
    if (addresses[k] != nullptr) *field_slot(*task, ids[k]) = addresses[k];
  return VSL_STATUS_OK;
}

}  // namespace oxa::ss

extern "C" oxa_status _vsldSSEditTask(SSTask* task, int32_t id, const double* address) {
  return oxa::ss::edit_field(task, id, address, oxa::ss::FieldKind::Real);
}
extern "C" oxa_status _vslsSSEditTask(SSTask* task, int32_t id, const float* address) {
  return oxa::ss::edit_field(task, id, address, oxa::ss::FieldKind::Real);
}
extern "C" oxa_status _vsliSSEditTask(SSTask* task, int32_t id, const void* address) {
  return oxa::ss::edit_field(task, id, address, oxa::ss::FieldKind::Integer);
}
