// Exported sequential search kernels: for each method and precision the
// 32, 64 and 64Pack members and the width-choosing entry. Each is a one-line
// call of the method's template in search_methods.hpp.
#include "data_fitting/search_methods.hpp"

namespace oxa::df {
namespace {

// Calls run.template operator()<W>(cells) with the width the flags choose.
template <class Run>
oxa_status by_width(int32_t flags, int64_t nx, void* cell, Run run) {
  switch (choose_width(flags, nx)) {
    case Width::k32:
      return run.template operator()<Cells32>(static_cast<int32_t*>(cell));
    case Width::k64:
      return run.template operator()<Cells64>(static_cast<int64_t*>(cell));
    case Width::k64Pack:
      break;
  }
  return run.template operator()<Cells64Pack>(static_cast<int64_t*>(cell));
}

}  // namespace
}  // namespace oxa::df

using namespace oxa::df;

extern "C" {

// Uniform, double.
oxa_status oxa_df_kernel_dDFUniformSearch1D32(int64_t nx, const double* x, int64_t n,
                                              const double* s, double inv, int32_t* c) {
  search_uniform<double, Cells32>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFUniformSearch1D64(int64_t nx, const double* x, int64_t n,
                                              const double* s, double inv, int64_t* c) {
  search_uniform<double, Cells64>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFUniformSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                                  const double* s, double inv, int64_t* c) {
  search_uniform<double, Cells64Pack>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFUniformSearch1D(int64_t nx, const double* x, int64_t n, const double* s,
                                            double inv, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_uniform<double, W>(nx, x, inv, n, s, c);
    return DF_OK;
  });
}

// QuasiUniform, double.
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D32(int64_t nx, const double* x, int64_t n,
                                                   const double* s, double inv, int32_t* c) {
  search_quasi_uniform<double, Cells32>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D64(int64_t nx, const double* x, int64_t n,
                                                   const double* s, double inv, int64_t* c) {
  search_quasi_uniform<double, Cells64>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                                       const double* s, double inv, int64_t* c) {
  search_quasi_uniform<double, Cells64Pack>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFQuasiUniformSearch1D(int64_t nx, const double* x, int64_t n,
                                                 const double* s, double inv, int32_t flags,
                                                 void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_quasi_uniform<double, W>(nx, x, inv, n, s, c);
    return DF_OK;
  });
}

// Sorted, double.
oxa_status oxa_df_kernel_dDFSortedSearch1D32(int64_t nx, const double* x, int64_t n,
                                             const double* s, int64_t* state, int32_t* c) {
  search_sorted<double, Cells32>(nx, x, state, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFSortedSearch1D64(int64_t nx, const double* x, int64_t n,
                                             const double* s, int64_t* state, int64_t* c) {
  search_sorted<double, Cells64>(nx, x, state, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFSortedSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                                 const double* s, int64_t* state, int64_t* c) {
  search_sorted<double, Cells64Pack>(nx, x, state, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFSortedSearch1D(int64_t nx, const double* x, int64_t n, const double* s,
                                           int64_t* state, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_sorted<double, W>(nx, x, state, n, s, c);
    return DF_OK;
  });
}

// Peak, double.
oxa_status oxa_df_kernel_dDFPeakSearch1D32(int64_t nx, const double* x, int64_t n, const double* s,
                                           int64_t peak, int32_t* c) {
  search_peak<double, Cells32>(nx, x, peak, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFPeakSearch1D64(int64_t nx, const double* x, int64_t n, const double* s,
                                           int64_t peak, int64_t* c) {
  search_peak<double, Cells64>(nx, x, peak, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFPeakSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                               const double* s, int64_t peak, int64_t* c) {
  search_peak<double, Cells64Pack>(nx, x, peak, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFPeakSearch1D(int64_t nx, const double* x, int64_t n, const double* s,
                                         int64_t peak, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_peak<double, W>(nx, x, peak, n, s, c);
    return DF_OK;
  });
}

// Hybrid, double.
oxa_status oxa_df_kernel_dDFHybridSearch1D32(int64_t nx, const double* x, int64_t n,
                                             const double* s, const DfSearchBin* bins, double ibw,
                                             int32_t* c) {
  search_hybrid<double, Cells32>(nx, x, bins, ibw, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFHybridSearch1D64(int64_t nx, const double* x, int64_t n,
                                             const double* s, const DfSearchBin* bins, double ibw,
                                             int64_t* c) {
  search_hybrid<double, Cells64>(nx, x, bins, ibw, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFHybridSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                                 const double* s, const DfSearchBin* bins,
                                                 double ibw, int64_t* c) {
  search_hybrid<double, Cells64Pack>(nx, x, bins, ibw, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_dDFHybridSearch1D(int64_t nx, const double* x, int64_t n, const double* s,
                                           const DfSearchBin* bins, double ibw, int32_t flags,
                                           void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_hybrid<double, W>(nx, x, bins, ibw, n, s, c);
    return DF_OK;
  });
}

// UserDef, double.
oxa_status oxa_df_kernel_dDFUserDefSearch1D32(int64_t nx, const double* x, int64_t n,
                                              const double* s, oxa_df_dsearch_callback cb,
                                              void* params, int32_t* c) {
  return search_user<double, Cells32>(StoredPoints<double>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_dDFUserDefSearch1D64(int64_t nx, const double* x, int64_t n,
                                              const double* s, oxa_df_dsearch_callback cb,
                                              void* params, int64_t* c) {
  return search_user<double, Cells64>(StoredPoints<double>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_dDFUserDefSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                                  const double* s, oxa_df_dsearch_callback cb,
                                                  void* params, int64_t* c) {
  return search_user<double, Cells64Pack>(StoredPoints<double>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_dDFUserDefSearch1D(int64_t nx, const double* x, int64_t n, const double* s,
                                            oxa_df_dsearch_callback cb, void* params, int32_t flags,
                                            void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    return search_user<double, W>(StoredPoints<double>{x, nx}, n, s, cb, params, c);
  });
}

// UniUserDef, double.
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D32(int64_t nx, const double* x, int64_t n,
                                                 const double* s, oxa_df_dsearch_callback cb,
                                                 void* params, int32_t* c) {
  return search_user<double, Cells32>(EvenPoints<double>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D64(int64_t nx, const double* x, int64_t n,
                                                 const double* s, oxa_df_dsearch_callback cb,
                                                 void* params, int64_t* c) {
  return search_user<double, Cells64>(EvenPoints<double>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D64Pack(int64_t nx, const double* x, int64_t n,
                                                     const double* s, oxa_df_dsearch_callback cb,
                                                     void* params, int64_t* c) {
  return search_user<double, Cells64Pack>(EvenPoints<double>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_dDFUniUserDefSearch1D(int64_t nx, const double* x, int64_t n,
                                               const double* s, oxa_df_dsearch_callback cb,
                                               void* params, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    return search_user<double, W>(EvenPoints<double>{x, nx}, n, s, cb, params, c);
  });
}

// Uniform, float.
oxa_status oxa_df_kernel_sDFUniformSearch1D32(int64_t nx, const float* x, int64_t n, const float* s,
                                              float inv, int32_t* c) {
  search_uniform<float, Cells32>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFUniformSearch1D64(int64_t nx, const float* x, int64_t n, const float* s,
                                              float inv, int64_t* c) {
  search_uniform<float, Cells64>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFUniformSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                                  const float* s, float inv, int64_t* c) {
  search_uniform<float, Cells64Pack>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFUniformSearch1D(int64_t nx, const float* x, int64_t n, const float* s,
                                            float inv, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_uniform<float, W>(nx, x, inv, n, s, c);
    return DF_OK;
  });
}

// QuasiUniform, float.
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D32(int64_t nx, const float* x, int64_t n,
                                                   const float* s, float inv, int32_t* c) {
  search_quasi_uniform<float, Cells32>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D64(int64_t nx, const float* x, int64_t n,
                                                   const float* s, float inv, int64_t* c) {
  search_quasi_uniform<float, Cells64>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                                       const float* s, float inv, int64_t* c) {
  search_quasi_uniform<float, Cells64Pack>(nx, x, inv, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFQuasiUniformSearch1D(int64_t nx, const float* x, int64_t n,
                                                 const float* s, float inv, int32_t flags,
                                                 void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_quasi_uniform<float, W>(nx, x, inv, n, s, c);
    return DF_OK;
  });
}

// Sorted, float.
oxa_status oxa_df_kernel_sDFSortedSearch1D32(int64_t nx, const float* x, int64_t n, const float* s,
                                             int64_t* state, int32_t* c) {
  search_sorted<float, Cells32>(nx, x, state, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFSortedSearch1D64(int64_t nx, const float* x, int64_t n, const float* s,
                                             int64_t* state, int64_t* c) {
  search_sorted<float, Cells64>(nx, x, state, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFSortedSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                                 const float* s, int64_t* state, int64_t* c) {
  search_sorted<float, Cells64Pack>(nx, x, state, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFSortedSearch1D(int64_t nx, const float* x, int64_t n, const float* s,
                                           int64_t* state, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_sorted<float, W>(nx, x, state, n, s, c);
    return DF_OK;
  });
}

// Peak, float.
oxa_status oxa_df_kernel_sDFPeakSearch1D32(int64_t nx, const float* x, int64_t n, const float* s,
                                           int64_t peak, int32_t* c) {
  search_peak<float, Cells32>(nx, x, peak, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFPeakSearch1D64(int64_t nx, const float* x, int64_t n, const float* s,
                                           int64_t peak, int64_t* c) {
  search_peak<float, Cells64>(nx, x, peak, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFPeakSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                               const float* s, int64_t peak, int64_t* c) {
  search_peak<float, Cells64Pack>(nx, x, peak, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFPeakSearch1D(int64_t nx, const float* x, int64_t n, const float* s,
                                         int64_t peak, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_peak<float, W>(nx, x, peak, n, s, c);
    return DF_OK;
  });
}

// Hybrid, float.
oxa_status oxa_df_kernel_sDFHybridSearch1D32(int64_t nx, const float* x, int64_t n, const float* s,
                                             const DfSearchBin* bins, float ibw, int32_t* c) {
  search_hybrid<float, Cells32>(nx, x, bins, ibw, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFHybridSearch1D64(int64_t nx, const float* x, int64_t n, const float* s,
                                             const DfSearchBin* bins, float ibw, int64_t* c) {
  search_hybrid<float, Cells64>(nx, x, bins, ibw, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFHybridSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                                 const float* s, const DfSearchBin* bins, float ibw,
                                                 int64_t* c) {
  search_hybrid<float, Cells64Pack>(nx, x, bins, ibw, n, s, c);
  return DF_OK;
}
oxa_status oxa_df_kernel_sDFHybridSearch1D(int64_t nx, const float* x, int64_t n, const float* s,
                                           const DfSearchBin* bins, float ibw, int32_t flags,
                                           void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    search_hybrid<float, W>(nx, x, bins, ibw, n, s, c);
    return DF_OK;
  });
}

// UserDef, float.
oxa_status oxa_df_kernel_sDFUserDefSearch1D32(int64_t nx, const float* x, int64_t n, const float* s,
                                              oxa_df_ssearch_callback cb, void* params,
                                              int32_t* c) {
  return search_user<float, Cells32>(StoredPoints<float>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_sDFUserDefSearch1D64(int64_t nx, const float* x, int64_t n, const float* s,
                                              oxa_df_ssearch_callback cb, void* params,
                                              int64_t* c) {
  return search_user<float, Cells64>(StoredPoints<float>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_sDFUserDefSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                                  const float* s, oxa_df_ssearch_callback cb,
                                                  void* params, int64_t* c) {
  return search_user<float, Cells64Pack>(StoredPoints<float>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_sDFUserDefSearch1D(int64_t nx, const float* x, int64_t n, const float* s,
                                            oxa_df_ssearch_callback cb, void* params, int32_t flags,
                                            void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    return search_user<float, W>(StoredPoints<float>{x, nx}, n, s, cb, params, c);
  });
}

// UniUserDef, float.
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D32(int64_t nx, const float* x, int64_t n,
                                                 const float* s, oxa_df_ssearch_callback cb,
                                                 void* params, int32_t* c) {
  return search_user<float, Cells32>(EvenPoints<float>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D64(int64_t nx, const float* x, int64_t n,
                                                 const float* s, oxa_df_ssearch_callback cb,
                                                 void* params, int64_t* c) {
  return search_user<float, Cells64>(EvenPoints<float>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D64Pack(int64_t nx, const float* x, int64_t n,
                                                     const float* s, oxa_df_ssearch_callback cb,
                                                     void* params, int64_t* c) {
  return search_user<float, Cells64Pack>(EvenPoints<float>{x, nx}, n, s, cb, params, c);
}
oxa_status oxa_df_kernel_sDFUniUserDefSearch1D(int64_t nx, const float* x, int64_t n,
                                               const float* s, oxa_df_ssearch_callback cb,
                                               void* params, int32_t flags, void* cell) {
  return by_width(flags, nx, cell, [&]<class W>(typename W::Out* c) {
    return search_user<float, W>(EvenPoints<float>{x, nx}, n, s, cb, params, c);
  });
}

}  // extern "C"
