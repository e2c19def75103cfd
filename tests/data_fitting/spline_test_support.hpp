// A spline task over caller-owned data for the spline tests: build, evaluate
// (values and derivatives 0..3), integrate.
#pragma once

#include <cstdint>
#include <vector>

#include "oxa/data_fitting.h"

namespace spline_test {

// The generator that tests/data_fitting/spline_reference.py repeats.
struct Lcg {
  uint64_t s;
  double next() {
    s = s * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<double>(s >> 11) * 0x1p-53;
  }
};

struct Spline {
  int64_t nx, ny, order, cells = 0;
  std::vector<double> x, y, bc, ic, coeff;
  int64_t xhint = DF_X_NON_UNIFORM, yhint = DF_STORE_ROWS;
  DfTask* task = nullptr;

  Spline(std::vector<double> x_, std::vector<double> y_, int64_t ny_, int64_t order_)
      : nx(0), ny(ny_), order(order_), x(std::move(x_)), y(std::move(y_)) {
    nx = xhint == DF_X_UNIFORM ? 0 : static_cast<int64_t>(x.size());
  }
  ~Spline() { oxa_df_kernel_DeleteTask(&task); }

  // Creates the task for n breakpoints (x may hold only the two ends when
  // uniform) and constructs the spline; returns the construction status.
  oxa_status build(int64_t n, int64_t type, int64_t bc_type, int64_t ic_type = 0,
                   const DfThreading* th = nullptr) {
    nx = n;
    oxa_df_kernel_DeleteTask(&task);
    if (oxa_df_kernel_dNewTask1D(&task, nx, x.data(), xhint, ny, y.data(), yhint, 0) != DF_OK)
      return -1;
    cells = order == 3 && type == DF_TYPE_SUBBOTIN ? nx : nx - 1;
    coeff.assign(static_cast<size_t>(std::max<int64_t>(cells * order, 1) * ny), -777.0);
    const oxa_status e = oxa_df_kernel_dEditPPSpline1D(task, order, type, bc_type,
                                                       bc.empty() ? nullptr : bc.data(), ic_type,
                                                       ic_type == 0 ? nullptr : ic.data(),
                                                       coeff.data(), 0);
    if (e != DF_OK) return e;
    return oxa_df_kernel_dDFConstruct1D(task, 0, nullptr, th);
  }

  const double* cell(int64_t j, int64_t m) const {
    return coeff.data() + j * cells * order + m * order;
  }

  // Value and derivatives 1..3 of every function at the sites, by function:
  // r[((j*4) + d)*n + i].
  std::vector<double> eval(const std::vector<double>& t, int64_t sitehint = 0,
                           const DfThreading* th = nullptr, oxa_status* status = nullptr) const {
    const int64_t d[4] = {1, 1, 1, 1};
    const auto n = static_cast<int64_t>(sitehint == DF_SITE_UNIFORM ? 0 : t.size());
    return eval_n(t, n, sitehint, d, th, status);
  }
  std::vector<double> eval_n(const std::vector<double>& t, int64_t n, int64_t sitehint,
                             const int64_t* d, const DfThreading* th, oxa_status* status) const {
    std::vector<double> r(static_cast<size_t>(4 * n * ny + 4), -999.0);
    const oxa_status s = oxa_df_kernel_dDFInterpolate1D(task, n, t.data(), sitehint, nullptr, 0,
                                                        nullptr, 4, d, r.data(), 0, nullptr,
                                                        nullptr, nullptr, nullptr, th);
    if (status != nullptr) *status = s;
    return r;
  }

  std::vector<double> integrate(const std::vector<double>& l, const std::vector<double>& r) const {
    std::vector<double> out(l.size() * static_cast<size_t>(ny), -999.0);
    oxa_df_kernel_dDFIntegrate1D(task, static_cast<int64_t>(l.size()), l.data(), 0, r.data(), 0,
                                 nullptr, nullptr, 0, nullptr, out.data(), 0, nullptr);
    return out;
  }
};

}  // namespace spline_test
