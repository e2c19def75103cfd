/* Quickstart section: summary_stats. Mean, variance and covariance of a
 * generated three-component sample, fed to the estimator in two pieces. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

enum { P = 3, N = 1000 };

/* Observation i, component j: a deterministic pseudo-random mix in which
 * component 2 follows component 0. */
static double sample(int i, int j) {
  const double u = (double)((i * 7919 + j * 104729) % 1000) / 1000.0;
  const double v = (double)((i * 6007) % 997) / 997.0;
  return j == 2 ? 2.0 * v + 0.1 * u : (j == 0 ? v : u) + j;
}

int tour_summary_stats(void) {
  printf("== summary statistics ==\n");
  static double x[N * P]; /* observation-major: the P values of one observation adjacent */
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < P; ++j) x[i * P + j] = sample(i, j);

  double mean[P], raw2[P], variance[P], cov[P * (P + 1) / 2], accumulated[2] = {0.0, 0.0};
  const int32_t p = P, half = N / 2, storage = OXA_SS_STORAGE_BY_OBSERVATION;
  const int32_t cov_storage = OXA_SS_MATRIX_PACKED_UPPER;
  SSTask* task = NULL;
  oxa_status s = _vsldSSNewTask(&task, &p, &half, &storage, x, NULL, NULL, 0);
  /* The variance (central moment 2) is kept with the raw moment 2. */
  if (s == 0) s = _vsldSSEditMoments(task, mean, raw2, NULL, NULL, variance, NULL, NULL);
  if (s == 0) s = _vsldSSEditCovCor(task, NULL, cov, &cov_storage, NULL, NULL);
  /* The accumulated weights carry the state from one call to the next. */
  if (s == 0) s = _vsldSSEditTask(task, OXA_SS_ID_ACCUMULATED_WEIGHTS, accumulated);
  const uint64_t wanted = OXA_SS_EST_MEAN | OXA_SS_EST_CENTRAL2 | OXA_SS_EST_COVARIANCE;
  if (s == 0) s = _vsldSSBasic(task, wanted, OXA_SS_METHOD_ONE_PASS);
  /* The second half: point the task at it and call again. */
  if (s == 0) s = _vsldSSEditTask(task, OXA_SS_ID_OBSERVATIONS, x + half * P);
  if (s == 0) s = _vsldSSBasic(task, wanted, OXA_SS_METHOD_ONE_PASS);
  _vslSSDeleteTask(&task);
  if (s != 0) {
    printf("summary statistics failed: %d\n", (int)s);
    return 1;
  }
  printf("%d observations of %d components (two calls)\n", (int)accumulated[0], P);
  for (int j = 0; j < P; ++j)
    printf("  component %d: mean %.6f  variance %.6f\n", j, mean[j], variance[j]);
  printf("  covariance (upper triangle): %.6f %.6f %.6f / %.6f %.6f / %.6f\n", cov[0], cov[1],
         cov[2], cov[3], cov[4], cov[5]);
  return 0;
}
