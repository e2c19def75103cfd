// Shared by the generic and the grouped editors.
#pragma once

#include "summary_stats/task.hpp"

namespace oxa::ss {

inline constexpr int32_t kMaxParameterId = 79;

enum class FieldKind : uint8_t { None, Real, Integer };

// What parameter `id` holds; None for ids that do not exist.
FieldKind field_kind(int32_t id);

// The task field that parameter `id` (an existing one) sets.
const void** field_slot(SSTask& task, int32_t id);

// Generic editing: task check, id check for the editor's kind, null check.
oxa_status edit_field(SSTask* task, int32_t id, const void* address, FieldKind kind);

// Grouped editing: stores each non-null address in the field of its id.
oxa_status edit_group(SSTask* task, const int32_t* ids, const void* const* addresses, int count);

}  // namespace oxa::ss
