// Task creation and deletion.
#include "summary_stats/task.hpp"

#include <cstring>

#include "oxa/service.h"

namespace {

// Creation is the same for both precisions: the record holds untyped addresses.
oxa_status new_task(SSTask** out, const void* p, const void* n, const void* x_storage,
                    const void* x, const void* weights, const void* indices, int32_t index_width) {
  if (out == nullptr) return VSL_SS_ERROR_NULL_TASK;
  // The width decides how every integer is read, so a width other than 0 or 1
  // is refused before any integer is looked at.
  if (index_width != 0 && index_width != 1) return VSL_ERROR_BAD_ARGUMENT;
  SSTask probe{};
  probe.index_width = index_width;
  if (p == nullptr || oxa::ss::read_int(probe, p) < 1) return VSL_SS_ERROR_BAD_DIMENSION;
  if (x != nullptr) {
    if (x_storage == nullptr) return VSL_SS_ERROR_NULL_STORAGE;
    const int64_t storage = oxa::ss::read_int(probe, x_storage);
    if (storage != OXA_SS_STORAGE_BY_COMPONENT && storage != OXA_SS_STORAGE_BY_OBSERVATION)
      return VSL_SS_ERROR_BAD_STORAGE;
    if (n == nullptr || oxa::ss::read_int(probe, n) < 1) return VSL_SS_ERROR_BAD_OBS_NUMBER;
  }
  auto* task = static_cast<SSTask*>(oxa_serv_allocate(sizeof(SSTask), 128));
  *out = task;
  if (task == nullptr) return VSL_SS_ERROR_MEM_FAILURE;
  std::memset(static_cast<void*>(task), 0, sizeof(SSTask));
  task->index_width = index_width;
  task->work_a = 2;
  task->work_b = 1;
  task->dimension = p;
  task->n_observations = n;
  task->component_indices = indices;
  task->observations = x;
  task->weights = weights;
  task->x_storage = x_storage;
  return VSL_STATUS_OK;
}

}  // namespace

extern "C" oxa_status _vsldSSNewTask(SSTask** task, const void* p, const void* n,
                                     const void* x_storage, const double* x, const double* weights,
                                     const void* indices, int32_t index_width) {
  return new_task(task, p, n, x_storage, x, weights, indices, index_width);
}

extern "C" oxa_status _vslsSSNewTask(SSTask** task, const void* p, const void* n,
                                     const void* x_storage, const float* x, const float* weights,
                                     const void* indices, int32_t index_width) {
  return new_task(task, p, n, x_storage, x, weights, indices, index_width);
}

// The handle's current value is not checked: deleting a task twice is the
// caller's error, like freeing a block twice.
extern "C" oxa_status _vslSSDeleteTask(SSTask** handle) {
  if (handle == nullptr) return VSL_SS_ERROR_NULL_TASK;
  SSTask* task = *handle;
  if (task->owned_buffer != nullptr) oxa_serv_deallocate(task->owned_buffer);
  task->owned_buffer = nullptr;
  for (intptr_t i = 0; i < task->n_cleanup; ++i) task->cleanup[i](task);
  oxa_serv_deallocate(task);
  *handle = nullptr;
  return VSL_STATUS_OK;
}
