/* Quickstart section: data_fitting. Builds the linear spline of two functions
 * on a non-uniform partition and places a few sites in its cells. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

int tour_data_fitting(void) {
  printf("== data fitting ==\n");
  enum { NX = 5, NY = 2, NSITE = 6 };
  const double x[NX] = {0.0, 0.5, 1.5, 3.0, 5.0};
  /* Function 0: x^2; function 1: 2x + 1, one row of values per function. */
  double y[NY * NX];
  for (int i = 0; i < NX; ++i) {
    y[i] = x[i] * x[i];
    y[NX + i] = 2.0 * x[i] + 1.0;
  }
  double coeff[NY * 2 * (NX - 1)];

  DfTask* task = NULL;
  oxa_status s = oxa_df_kernel_dNewTask1D(&task, NX, x, DF_X_NON_UNIFORM, NY, y, DF_STORE_ROWS, 0);
  if (s == DF_OK)
    s = oxa_df_kernel_dEditPPSpline1D(task, 2, 0, 0, NULL, 0, NULL, coeff, DF_STORE_DEFAULT);
  if (s == DF_OK) s = oxa_df_kernel_dDFLinearSpline1D(task, 0, NULL, &oxa_serv_df_threading);
  if (s != DF_OK) {
    printf("linear spline failed: %d\n", (int)s);
    if (task != NULL) oxa_df_kernel_DeleteTask(&task);
    return 1;
  }
  printf("linear spline of x^2, cell by cell (value, slope):\n");
  for (int m = 0; m < NX - 1; ++m)
    printf("  [%.1f, %.1f): %.3f + %.3f (t - %.1f)\n", x[m], x[m + 1], coeff[2 * m],
           coeff[2 * m + 1], x[m]);

  const double site[NSITE] = {-1.0, 0.0, 0.7, 1.5, 4.9, 5.0};
  int64_t cell[NSITE];
  s = oxa_df_kernel_dDFSearch1D(task, DF_CELL_64, NSITE, site, 0, NULL, cell, NULL, NULL,
                                &oxa_serv_df_threading);
  if (s != DF_OK) {
    printf("search failed: %d\n", (int)s);
    oxa_df_kernel_DeleteTask(&task);
    return 1;
  }
  printf("cells of the sites (0 = left of x[0], %d = right of x[%d]):\n", NX, NX - 1);
  for (int i = 0; i < NSITE; ++i)
    printf("  site %5.2f -> cell %lld\n", site[i], (long long)cell[i]);
  oxa_df_kernel_DeleteTask(&task);
  return 0;
}
