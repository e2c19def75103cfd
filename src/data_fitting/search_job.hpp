// A search request as the dispatcher and the threaded drivers pass it around:
// the partition, the sites, the output and the chosen method's parameter.
#pragma once

#include "data_fitting/search_methods.hpp"

namespace oxa::df {

enum class Method : int32_t {
  kUniform = 0,
  kQuasiUniform = 1,
  kSorted = 2,
  kPeak = 3,
  kHybrid = 4,
  kUserDef = 5,
  kUserDefUniform = 6,
};

template <Real T>
struct SearchJob {
  Method method;
  int64_t nx;
  const T* x;  // two ends for the uniform methods (0 and 6)
  int64_t nsite;
  const T* site;
  void* cell;  // int32_t or int64_t elements, by width
  Width width;
  T inv;                       // uniform, quasi-uniform
  int64_t* state;              // sorted: start cell in, last scan position out
  int64_t peak;                // peak
  const DfSearchBin* bins;     // hybrid
  T inv_bin_width;             // hybrid
  SearchCallback<T> callback;  // user-defined
  void* callback_params;       // user-defined
};

// Searches sites [begin, begin + n) of the job with its method's sequential
// rule, writing the matching cells. The sorted rule starts from *pos and
// leaves its last scan position there.
template <Real T, class W>
oxa_status search_range(const SearchJob<T>& j, int64_t begin, int64_t n, int64_t* pos) {
  if (n < 1) return DF_OK;
  const T* s = j.site + begin;
  typename W::Out* c = static_cast<typename W::Out*>(j.cell) + begin;
  switch (j.method) {
    case Method::kUniform:
      search_uniform<T, W>(j.nx, j.x, j.inv, n, s, c);
      return DF_OK;
    case Method::kQuasiUniform:
      search_quasi_uniform<T, W>(j.nx, j.x, j.inv, n, s, c);
      return DF_OK;
    case Method::kSorted:
      search_sorted<T, W>(j.nx, j.x, pos, n, s, c);
      return DF_OK;
    case Method::kPeak:
      search_peak<T, W>(j.nx, j.x, j.peak, n, s, c);
      return DF_OK;
    case Method::kHybrid:
      search_hybrid<T, W>(j.nx, j.x, j.bins, j.inv_bin_width, n, s, c);
      return DF_OK;
    case Method::kUserDef:
      return search_user<T, W>(StoredPoints<T>{j.x, j.nx}, n, s, j.callback, j.callback_params, c);
    case Method::kUserDefUniform:
      return search_user<T, W>(EvenPoints<T>{j.x, j.nx}, n, s, j.callback, j.callback_params, c);
  }
  return DF_OK;
}

// The same, with the width chosen at run time.
template <Real T>
oxa_status search_range(const SearchJob<T>& j, int64_t begin, int64_t n, int64_t* pos) {
  switch (j.width) {
    case Width::k32:
      return search_range<T, Cells32>(j, begin, n, pos);
    case Width::k64:
      return search_range<T, Cells64>(j, begin, n, pos);
    case Width::k64Pack:
      return search_range<T, Cells64Pack>(j, begin, n, pos);
  }
  return DF_OK;
}

// Site i of nsite uniform sites given by their two ends:
// ends[0] + i·(ends[1] − ends[0])/(nsite − 1). Sites, unlike breakpoints, do
// not pin the last one to ends[1].
template <Real T>
inline T uniform_site(const T* ends, int64_t nsite, int64_t i) {
  if (i == 0 || nsite < 2) return ends[0];
  return ends[0] + static_cast<T>(i) * (ends[1] - ends[0]) / static_cast<T>(nsite - 1);
}

// The search method for a task and a request (partition hint, site hint, data
// hint, call-back), shared by the search dispatcher and the spline kernels;
// -1026 for a bad data hint.
template <Real T>
inline oxa_status choose_method(const DfTask& task, int64_t sitehint, const T* datahint, bool user,
                         SearchJob<T>& j) {
  if (user) {
    j.method = task.xhint == DF_X_UNIFORM ? Method::kUserDefUniform : Method::kUserDef;
  } else if (task.xhint == DF_X_UNIFORM) {
    j.method = Method::kUniform;
  } else if (task.xhint == DF_X_QUASI_UNIFORM) {
    j.method = Method::kQuasiUniform;
  } else if (sitehint == DF_SITE_SORTED) {
    j.method = Method::kSorted;
  } else if (datahint != nullptr && datahint[1] != T(0)) {
    if (datahint[1] != T(1)) return DF_ERR_BAD_DATA_HINT;  // NaN included
    const T p = datahint[4];
    if (!(p >= T(0) && p <= static_cast<T>(task.nx))) return DF_ERR_BAD_DATA_HINT;
    j.method = Method::kPeak;
    j.peak = static_cast<int64_t>(p);
  } else {
    j.method = Method::kHybrid;
  }
  return DF_OK;
}

// Threaded drivers, one per method, in method order (user-defined ones run
// sequentially: the call-back sees the whole array at once).
template <Real T>
using SearchDriver = oxa_status (*)(const SearchJob<T>&, const DfThreading*);

template <Real T>
SearchDriver<T> search_driver(Method m);

}  // namespace oxa::df
