// The cell-search accelerator table of a non-uniform partition.
//
// The interval [x[0], x[nx-1]] is cut into nbins equal bins. Entry b holds
// breakpoint indices lo <= hi with x[lo] <= t <= x[hi] for every site t whose
// bin index trunc(inv_bin_width * (t - x[0])) is b. Because that bin index is
// a monotone function of t (same rounded operations for sites and
// breakpoints), a breakpoint in a later bin is > t and one in an earlier bin
// is <= t, which is all the hybrid search relies on.
#include "data_fitting/task.hpp"

namespace oxa::df {

template <Real T>
void build_accelerator(DfTask& task) {
  const int64_t nx = task.nx;
  const T* x = static_cast<const T*>(task.x);
  DfSearchBin* e = task.bins;

  int64_t nbins = nx / 16;
  if (nbins <= 16) nbins = 16;
  if (nbins >= 1024) nbins = 1024;
  task.nbins = nbins;
  for (int64_t k = 0; k < nbins; ++k) e[k] = {-1, -1};

  const T width = (x[nx - 1] - x[0]) / static_cast<T>(nbins);
  const T inv = T(1) / width;
  inv_bin_width<T>(task) = inv;

  e[0].lo = 0;
  for (int64_t i = 1; i < nx; ++i) {
    const int64_t b = static_cast<int64_t>(inv * (x[i] - x[0]));
    // A breakpoint of bin 0 records nothing: entry 1's lower bound then comes
    // from the gap filling as 0, looser but still valid.
    if (b == 0) continue;
    if (e[b - 1].hi == -1) e[b - 1].hi = i;  // first breakpoint beyond bin b-1
    e[b + 1].lo = i;                         // last breakpoint before bin b+1
  }
  e[nbins - 1].hi = nx - 1;

  for (int64_t k = 0; k + 1 < nbins; ++k)
    if (e[k + 1].lo == -1) e[k + 1].lo = e[k].lo;
  for (int64_t k = nbins - 1; k >= 1; --k)
    if (e[k - 1].hi == -1) e[k - 1].hi = e[k].hi;
  // A site equal to x[nx-1] has bin index nbins.
  e[nbins] = e[nbins - 1];
}

template void build_accelerator<double>(DfTask&);
template void build_accelerator<float>(DfTask&);

}  // namespace oxa::df
