// Task creation, deletion, editors and queries. One template per operation
// serves the double and the single forms; they differ only in element type.
#include "data_fitting/task.hpp"

#include <cstring>

namespace oxa::df {
namespace {

// Length of the y pointer array: 1 for column storage, else ny taken as a
// 32-bit signed count (a count above 2^31 is not supported).
int64_t y_pointer_count(int64_t ny, int64_t yhint) {
  return yhint == DF_STORE_COLS ? 1 : static_cast<int64_t>(static_cast<int32_t>(ny));
}

// Releases the old y pointer array and builds a new one over `values`.
template <Real T>
oxa_status attach_values(DfTask& t, const T* values) {
  const int64_t count = y_pointer_count(t.ny, t.yhint);
  if (count < 1) return DF_ERR_BAD_NY;  // no functions (or a count beyond 2^31)
  release_pointer_array(t.y);
  t.y = nullptr;
  const void** y = allocate_pointer_array<const void*>(count);
  if (y == nullptr) return DF_ERR_MEM;
  if (t.yhint == DF_STORE_DEFAULT || t.yhint == DF_STORE_ROWS) {
    for (int64_t j = 0; j < count; ++j) y[j] = values + j * t.nx;
  } else {
    y[0] = values;  // column storage, or per-function pointers set one by one
  }
  t.y = y;
  return DF_OK;
}

// Releases the old scoeff array and builds ny pointers into `base`.
template <Real T>
oxa_status attach_coefficients(DfTask& t, T* base, int64_t scoeffhint) {
  release_pointer_array(t.scoeff);
  t.scoeff = nullptr;
  void** c = allocate_pointer_array<void*>(t.ny);
  if (c == nullptr) return DF_ERR_MEM;
  if (scoeffhint & DF_STORE_SEPARATE) {
    c[0] = base;
  } else {
    // Every cell but the last carries s_order coefficients; the Subbotin
    // quadratic (type 1) keeps one cell more.
    const int64_t stride = t.s_type == 1 ? t.nx * t.s_order : t.nx * t.s_order - t.s_order;
    for (int64_t j = 0; j < t.ny; ++j) c[j] = base + j * stride;
  }
  t.scoeff = c;
  return DF_OK;
}

template <Real T>
oxa_status new_task(DfTask** out, int64_t nx, const T* x, int64_t xhint, int64_t ny, const T* y,
                    int64_t yhint, uint32_t int64_output) {
  if (nx < 2) return DF_ERR_BAD_NX;
  if (x == nullptr) return DF_ERR_BAD_X;
  if (xhint != DF_X_NO_HINT && xhint != DF_X_UNIFORM && xhint != DF_X_NON_UNIFORM &&
      xhint != DF_X_QUASI_UNIFORM)
    return DF_ERR_BAD_X_HINT;
  if (ny != 0 && y == nullptr) return DF_ERR_BAD_Y;
  if (ny == 0 && y != nullptr) return DF_ERR_BAD_NY;
  if (!is_storage_hint(yhint)) return DF_ERR_BAD_Y_HINT;

  if (out == nullptr) return DF_ERR_NULL_TASK;  // nowhere to hand the task back
  auto* t = static_cast<DfTask*>(oxa_serv_allocate(sizeof(DfTask), kAlign));
  *out = t;
  if (t == nullptr) return DF_ERR_MEM;
  std::memset(static_cast<void*>(t), 0, sizeof(DfTask));
  t->nx = nx;
  t->x = x;
  t->xhint = xhint;
  if (y != nullptr) {
    t->ny = ny;  // the pointer rule reads ny and yhint
    t->yhint = yhint;
    if (const oxa_status s = attach_values(*t, y); s != DF_OK) return s;
  }
  t->yhint = yhint;
  t->ny = ny;
  t->int64_output = int64_output;
  t->kind = 4;
  t->precision = std::is_same_v<T, double> ? 1 : 0;
  t->dimension = 1;
  t->bins = allocate_array<DfSearchBin>(kBinEntries);
  if (t->bins == nullptr) return DF_ERR_MEM;
  if (xhint == DF_X_UNIFORM) return DF_OK;
  build_accelerator<T>(*t);
  return DF_OK;
}

template <Real T>
oxa_status edit_ptr(DfTask* t, int64_t id, const T* p) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (t->dimension != 1) return DF_OK;
  switch (id) {
    case DF_PTR_X:
      if (p == nullptr) return DF_ERR_BAD_X;
      t->x = p;  // the accelerator table is rebuilt only by a new DF_PARAM_XHINT of 1
      return DF_OK;
    case DF_PTR_Y:
      if (p == nullptr) return DF_ERR_BAD_Y;
      return attach_values(*t, p);
    case DF_PTR_IC:
      if (p == nullptr) return DF_ERR_BAD_IC;
      t->ic = p;
      return DF_OK;
    case DF_PTR_BC:
      if (p == nullptr) return DF_ERR_BAD_BC;
      t->bc = p;
      return DF_OK;
    case DF_PTR_COEFF:
      if (p == nullptr) return DF_ERR_BAD_COEFF;
      if (t->ny == 0) return DF_ERR_BAD_NY;
      return attach_coefficients(*t, const_cast<T*>(p), t->scoeffhint);
    default:
      return DF_ERR_BAD_PARAM_ID;
  }
}

template <Real T>
oxa_status query_ptr(DfTask* t, int64_t id, const T** out) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (out == nullptr) return DF_ERR_NULL_OUTPUT;
  if (t->dimension != 1) return DF_OK;
  const void* p = nullptr;
  switch (id) {
    case DF_PTR_X:
      p = t->x;
      break;
    case DF_PTR_Y:
      p = t->y ? t->y[0] : nullptr;
      break;
    case DF_PTR_IC:
      p = t->ic;
      break;
    case DF_PTR_BC:
      p = t->bc;
      break;
    case DF_PTR_COEFF:
      p = t->scoeff ? t->scoeff[0] : nullptr;
      break;
    default:
      return DF_ERR_BAD_PARAM_ID;
  }
  *out = static_cast<const T*>(p);
  return DF_OK;
}

template <Real T>
oxa_status edit_idx_ptr(DfTask* t, int64_t id, int64_t index, const T* p) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (t->dimension != 1) return DF_OK;
  if (id != DF_PTR_Y && id != DF_PTR_COEFF) return DF_ERR_BAD_PARAM_ID;
  if (id == DF_PTR_Y && t->yhint == DF_STORE_COLS) return DF_ERR_BAD_Y_HINT;
  if (index < 0 || index >= t->ny) return DF_ERR_BAD_INDEX;
  if (p == nullptr) return id == DF_PTR_Y ? DF_ERR_BAD_Y : DF_ERR_BAD_COEFF;
  // The arrays must exist (values or coefficients attached before); a task
  // without them reports the missing array instead of writing through null.
  if (id == DF_PTR_Y) {
    if (index >= pointer_capacity(t->y)) return t->y ? DF_ERR_BAD_INDEX : DF_ERR_BAD_Y;
    t->y[index] = p;
  } else {
    if (index >= pointer_capacity(t->scoeff))
      return t->scoeff ? DF_ERR_BAD_INDEX : DF_ERR_BAD_COEFF;
    t->scoeff[index] = const_cast<T*>(p);
  }
  return DF_OK;
}

// Reads pointer `index` of a pointer array; the trailing null slot makes
// index = capacity readable.
template <Real T, class P>
oxa_status read_slot(P* array, int64_t index, const T** out) {
  if (index > pointer_capacity(array)) return DF_ERR_BAD_INDEX;
  *out = array == nullptr ? nullptr : static_cast<const T*>(array[index]);
  return DF_OK;
}

template <Real T>
oxa_status query_idx_ptr(DfTask* t, int64_t id, int64_t index, const T** out) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (out == nullptr) return DF_ERR_NULL_OUTPUT;
  // Inclusive upper bound: index ny reads one past the last function's
  // pointer, an interface the front layer relies on.
  if (index < 0 || index > t->ny) return DF_ERR_BAD_INDEX;
  if (t->dimension != 1) return DF_OK;
  if (id == DF_PTR_Y) {
    if (t->yhint == DF_STORE_COLS) return DF_ERR_BAD_Y_HINT;
    return read_slot(t->y, index, out);
  }
  if (id == DF_PTR_COEFF) return read_slot(t->scoeff, index, out);
  return DF_ERR_BAD_PARAM_ID;
}

template <Real T>
oxa_status edit_pp_spline(DfTask* t, int64_t s_order, int64_t s_type, int64_t bc_type, const T* bc,
                          int64_t ic_type, const T* ic, T* scoeff, int64_t scoeffhint) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (s_order < 0) return DF_ERR_BAD_ORDER;
  if (s_type < 0) return DF_ERR_BAD_TYPE;
  t->s_order = s_order;
  t->s_type = s_type;
  const bool bc_needs_values = bc_type != 0 && bc_type != 1 && bc_type != 2 && bc_type != 64;
  if (bc_needs_values && bc == nullptr) return DF_ERR_BAD_BC;
  t->bc_type = bc_type;
  t->bc = bc;
  if (ic_type == 0 && ic != nullptr) return DF_ERR_BAD_IC_TYPE;
  if (ic_type != 0 && ic == nullptr) return DF_ERR_BAD_IC;
  t->ic_type = ic_type;
  t->ic = ic;
  if (scoeff != nullptr) {
    if (t->ny == 0) return DF_ERR_BAD_NY;
    if (const oxa_status s = attach_coefficients(*t, scoeff, scoeffhint); s != DF_OK) return s;
  }
  t->scoeffhint = scoeffhint;
  return DF_OK;
}

oxa_status edit_val(DfTask* t, int64_t id, int64_t v) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (t->dimension != 1) return DF_OK;
  switch (id) {
    case DF_PARAM_NX:
      if (v < 2) return DF_ERR_BAD_NX;
      t->nx = v;
      return DF_OK;
    case DF_PARAM_XHINT:
      if (v != 0 && v != 1 && v != 2 && v != 4) return DF_ERR_BAD_X_HINT;
      t->xhint = v;
      if (v == DF_X_NON_UNIFORM) {
        if (t->precision == 1)
          build_accelerator<double>(*t);
        else
          build_accelerator<float>(*t);
      }
      return DF_OK;
    case DF_PARAM_NY:
      if (v < 1) return DF_ERR_BAD_NY;
      t->ny = v;
      return DF_OK;
    case DF_PARAM_YHINT:
      if (!is_storage_hint(v)) return DF_ERR_BAD_Y_HINT;
      t->yhint = v;
      return DF_OK;
    case DF_PARAM_ORDER:
      if (v < 0) return DF_ERR_BAD_ORDER;
      t->s_order = v;
      return DF_OK;
    case DF_PARAM_TYPE:  // step-wise and look-up types 6..8 only via EditPPSpline1D
      if (v < 0 || v > 5) return DF_ERR_BAD_TYPE;
      t->s_type = v;
      return DF_OK;
    case DF_PARAM_IC_TYPE:
      if (v != 0 && v != 1 && v != 2 && (v & 8) == 0) return DF_ERR_BAD_IC_TYPE;
      t->ic_type = v;
      return DF_OK;
    case DF_PARAM_BC_TYPE:
      if (v < 0) return DF_ERR_BAD_BC_TYPE;
      t->bc_type = v;
      return DF_OK;
    case DF_PARAM_COEFF_HINT:
      if (!is_storage_hint(v)) return DF_ERR_BAD_COEFF_HINT;
      t->scoeffhint = v;
      return DF_OK;
    case DF_PARAM_AUX_FLAG:
      if (v != 0 && v != 1) return DF_ERR_BAD_AUX_FLAG;
      t->aux_flag = static_cast<int32_t>(v);
      return DF_OK;
    default:
      return DF_ERR_BAD_PARAM_ID;
  }
}

oxa_status query_val(DfTask* t, int64_t id, void* out) {
  if (t == nullptr) return DF_ERR_NULL_TASK;
  if (out == nullptr) return DF_ERR_NULL_OUTPUT;
  if (t->dimension != 1) return DF_OK;
  int64_t v = 0;
  switch (id) {
    case DF_PARAM_NX:
      v = t->nx;
      break;
    case DF_PARAM_XHINT:
      v = t->xhint;
      break;
    case DF_PARAM_NY:
      v = t->ny;
      break;
    case DF_PARAM_YHINT:
      v = t->yhint;
      break;
    case DF_PARAM_ORDER:
      v = t->s_order;
      break;
    case DF_PARAM_TYPE:
      v = t->s_type;
      break;
    case DF_PARAM_IC_TYPE:
      v = t->ic_type;
      break;
    case DF_PARAM_BC_TYPE:
      v = t->bc_type;
      break;
    case DF_PARAM_COEFF_HINT:
      v = t->scoeffhint;
      break;
    case DF_PARAM_AUX_FLAG:
      v = t->aux_flag;
      break;
    default:
      return DF_ERR_BAD_PARAM_ID;
  }
  if (t->int64_output != 0) {
    std::memcpy(out, &v, sizeof v);
  } else {
    const auto low = static_cast<int32_t>(v);
    std::memcpy(out, &low, sizeof low);
  }
  return DF_OK;
}

}  // namespace
}  // namespace oxa::df

using namespace oxa::df;

extern "C" {

oxa_status oxa_df_kernel_dNewTask1D(DfTask** out, int64_t nx, const double* x, int64_t xhint,
                                    int64_t ny, const double* y, int64_t yhint, uint32_t w) {
  return new_task(out, nx, x, xhint, ny, y, yhint, w);
}
oxa_status oxa_df_kernel_sNewTask1D(DfTask** out, int64_t nx, const float* x, int64_t xhint,
                                    int64_t ny, const float* y, int64_t yhint, uint32_t w) {
  return new_task(out, nx, x, xhint, ny, y, yhint, w);
}

oxa_status oxa_df_kernel_DeleteTask(DfTask** ref) {
  if (ref == nullptr || *ref == nullptr) return DF_ERR_NULL_TASK;
  DfTask* t = *ref;
  release_pointer_array(t->y);
  release_pointer_array(t->scoeff);
  oxa_serv_deallocate(t->bins);
  oxa_serv_deallocate(t);
  *ref = nullptr;
  return DF_OK;
}

oxa_status oxa_df_kernel_iEditVal(DfTask* t, int64_t id, int64_t v) {
  return edit_val(t, id, v);
}
oxa_status oxa_df_kernel_iQueryVal(DfTask* t, int64_t id, void* out) {
  return query_val(t, id, out);
}

oxa_status oxa_df_kernel_dEditPtr(DfTask* t, int64_t id, const double* p) {
  return edit_ptr(t, id, p);
}
oxa_status oxa_df_kernel_sEditPtr(DfTask* t, int64_t id, const float* p) {
  return edit_ptr(t, id, p);
}
oxa_status oxa_df_kernel_dQueryPtr(DfTask* t, int64_t id, const double** o) {
  return query_ptr(t, id, o);
}
oxa_status oxa_df_kernel_sQueryPtr(DfTask* t, int64_t id, const float** o) {
  return query_ptr(t, id, o);
}

oxa_status oxa_df_kernel_dEditIdxPtr(DfTask* t, int64_t id, int64_t i, const double* p) {
  return edit_idx_ptr(t, id, i, p);
}
oxa_status oxa_df_kernel_sEditIdxPtr(DfTask* t, int64_t id, int64_t i, const float* p) {
  return edit_idx_ptr(t, id, i, p);
}
oxa_status oxa_df_kernel_dQueryIdxPtr(DfTask* t, int64_t id, int64_t i, const double** o) {
  return query_idx_ptr(t, id, i, o);
}
oxa_status oxa_df_kernel_sQueryIdxPtr(DfTask* t, int64_t id, int64_t i, const float** o) {
  return query_idx_ptr(t, id, i, o);
}

oxa_status oxa_df_kernel_dEditPPSpline1D(DfTask* t, int64_t order, int64_t type, int64_t bct,
                                         const double* bc, int64_t ict, const double* ic, double* c,
                                         int64_t chint) {
  return edit_pp_spline(t, order, type, bct, bc, ict, ic, c, chint);
}
oxa_status oxa_df_kernel_sEditPPSpline1D(DfTask* t, int64_t order, int64_t type, int64_t bct,
                                         const float* bc, int64_t ict, const float* ic, float* c,
                                         int64_t chint) {
  return edit_pp_spline(t, order, type, bct, bc, ict, ic, c, chint);
}

}  // extern "C"
