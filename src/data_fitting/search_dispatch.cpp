// The search dispatcher: picks the method from the task's partition hint, the
// site hint, the data hint and the call-back, materialises uniform sites, and
// runs the method's threaded driver (32 sites and more) or its sequential
// rule inline.
#include "data_fitting/search_job.hpp"

namespace oxa::df {
namespace {

constexpr int64_t kStackSites = 4096;

// site[0] + i·(site[1] − site[0])/(nsite − 1) for i = 0 .. nsite−1.
template <Real T>
void materialise_sites(const T* ends, int64_t n, T* out) {
  for (int64_t i = 0; i < n; ++i) out[i] = uniform_site(ends, n, i);
}

template <Real T>
oxa_status dispatch(DfTask* task, int32_t flags, int64_t nsite, const T* site, int64_t sitehint,
                    const T* datahint, void* cell, SearchCallback<T> cb, void* params,
                    const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  SearchJob<T> j{};
  if (const oxa_status s = choose_method(*task, sitehint, datahint, cb != nullptr, j); s != DF_OK)
    return s;
  if (nsite < 1) return DF_OK;

  j.nx = task->nx;
  j.x = static_cast<const T*>(task->x);
  j.nsite = nsite;
  j.cell = cell;
  j.width = choose_width(flags, j.nx);
  j.callback = cb;
  j.callback_params = params;
  int64_t state = 0;
  j.state = &state;
  const T x_last = task->xhint == DF_X_UNIFORM ? j.x[1] : j.x[j.nx - 1];
  j.inv = uniform_inverse_step(j.x[0], x_last, j.nx);

  // A task created on a uniform partition and re-hinted without a rebuild
  // has no table; one bin spanning the partition keeps the hybrid rule exact.
  const DfSearchBin whole[2] = {{0, j.nx - 1}, {0, j.nx - 1}};
  if (task->nbins > 0) {
    j.bins = task->bins;
    j.inv_bin_width = inv_bin_width<T>(*task);
  } else {
    j.bins = whole;
    j.inv_bin_width = T(0);
  }

  T stack_sites[kStackSites];
  T* sites = nullptr;
  if (sitehint == DF_SITE_UNIFORM) {
    sites = nsite <= kStackSites ? stack_sites : allocate_array<T>(nsite);
    if (sites == nullptr) return DF_ERR_MEM;
    materialise_sites(site, nsite, sites);
    j.site = sites;
  } else {
    j.site = site;
  }

  const oxa_status s =
      nsite >= 32 ? search_driver<T>(j.method)(j, threading) : search_range(j, 0, nsite, &state);
  if (sites != nullptr && sites != stack_sites) oxa_serv_deallocate(sites);
  return s;
}

}  // namespace
}  // namespace oxa::df

using namespace oxa::df;

extern "C" {

oxa_status oxa_df_kernel_dDFSearch1D(DfTask* task, int32_t flags, int64_t nsite, const double* site,
                                     int64_t sitehint, const double* datahint, void* cell,
                                     oxa_df_dsearch_callback cb, void* params,
                                     const DfThreading* threading) {
  return dispatch(task, flags, nsite, site, sitehint, datahint, cell, cb, params, threading);
}

oxa_status oxa_df_kernel_sDFSearch1D(DfTask* task, int32_t flags, int64_t nsite, const float* site,
                                     int64_t sitehint, const float* datahint, void* cell,
                                     oxa_df_ssearch_callback cb, void* params,
                                     const DfThreading* threading) {
  return dispatch(task, flags, nsite, site, sitehint, datahint, cell, cb, params, threading);
}

}  // extern "C"
