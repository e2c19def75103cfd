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

// Threaded drivers, one per method, in method order (user-defined ones run
// sequentially: the call-back sees the whole array at once).
template <Real T>
using SearchDriver = oxa_status (*)(const SearchJob<T>&, const DfThreading*);

template <Real T>
SearchDriver<T> search_driver(Method m);

}  // namespace oxa::df
