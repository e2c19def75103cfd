// Cells of the sites of an evaluation or of the limits of an integration: the
// search method chosen from the task's partition hint, the site hint and the
// data hint as the search dispatcher chooses it, then the method's sequential
// rule over blocks of sites. Uniform sites (hint 4, two ends given) are
// materialised block by block by the dispatcher's formula.
#pragma once

#include "data_fitting/search_job.hpp"
#include "data_fitting/spline_common.hpp"

namespace oxa::df {

// The search job of a task for the given hints; -1026 for a bad data hint.
template <Real T>
oxa_status site_search_job(const DfTask& task, int64_t sitehint, const T* datahint,
                           SearchJob<T>& j) {
  j = SearchJob<T>{};
  if (const oxa_status s = choose_method(task, sitehint, datahint, false, j); s != DF_OK) return s;
  j.nx = task.nx;
  j.x = static_cast<const T*>(task.x);
  j.width = Width::k64;
  const T x_last = task.xhint == DF_X_UNIFORM ? j.x[1] : j.x[j.nx - 1];
  j.inv = uniform_inverse_step(j.x[0], x_last, j.nx);
  if (task.nbins > 0) {
    j.bins = task.bins;
    j.inv_bin_width = inv_bin_width<T>(task);
  }
  return DF_OK;
}

// Sites of a request: stored, or the nsite uniform sites between two ends.
template <Real T>
struct Sites {
  const T* s;
  int64_t n;
  bool uniform;
  T operator[](int64_t i) const {
    return uniform ? uniform_site(s, n, i) : s[i];
  }
};

inline constexpr int64_t kSiteBlock = 256;

// Cells of sites [begin, begin + n), n ≤ kSiteBlock, into cell; the sites
// themselves into t. *pos carries the sorted rule's position from block to
// block. A task without an accelerator table (made on a uniform partition
// and re-hinted) searches with one bin over the whole partition.
template <Real T>
void site_cells(const SearchJob<T>& job, const Sites<T>& sites, int64_t begin, int64_t n, T* t,
                int64_t* cell, int64_t* pos) {
  for (int64_t i = 0; i < n; ++i) t[i] = sites[begin + i];
  SearchJob<T> j = job;
  const DfSearchBin whole[2] = {{0, j.nx - 1}, {0, j.nx - 1}};
  if (j.bins == nullptr) j.bins = whole, j.inv_bin_width = T(0);
  j.site = t;
  j.cell = cell;
  search_range<T, Cells64>(j, 0, n, pos);
}

}  // namespace oxa::df
