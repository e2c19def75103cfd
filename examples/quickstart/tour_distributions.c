/* Quickstart section: distributions. Gaussian samples by each method with
 * their mean and spread, a correlated pair from the multivariate Gaussian,
 * exponential waiting times and Bernoulli coin flips. */
#include <math.h>
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

enum { kCount = 100000 };

static void mean_and_spread(const double* x, int n, double* mean, double* spread) {
  double m = 0.0, s = 0.0;
  for (int i = 0; i < n; ++i) m += x[i];
  m /= n;
  for (int i = 0; i < n; ++i) s += (x[i] - m) * (x[i] - m);
  *mean = m;
  *spread = sqrt(s / (n - 1));
}

int tour_distributions(void) {
  static double x[2 * kCount];
  printf("== distributions ==\n");
  StreamState* stream = NULL;
  const uint32_t seed = 2718;
  if (_vslNewStreamEx(&stream, OXA_BRNG_MCG59, 1, &seed) != VSL_STATUS_OK) return 1;
  int failed = 0;

  /* Gaussian samples with mean 10 and standard deviation 2. */
  const char* names[3] = {"Box-Muller", "Box-Muller2", "inverse CDF"};
  for (uint32_t method = 0; method < 3; ++method) {
    double mean, spread;
    failed |= _vsldRngGaussian(method, stream, kCount, x, 10.0, 2.0) != 0;
    mean_and_spread(x, kCount, &mean, &spread);
    printf("Gaussian (%s): mean %.3f, spread %.3f (asked 10, 2)\n", names[method], mean, spread);
    failed |= fabs(mean - 10.0) > 0.05 || fabs(spread - 2.0) > 0.05;
  }

  /* Pairs with covariance [[4, 1.2], [1.2, 1]]: the lower Cholesky factor,
   * row-major, and the correlation of the pairs drawn. */
  const double mean2[2] = {0.0, 5.0};
  const double factor[4] = {2.0, 0.0, 0.6, 0.8};
  failed |= _vsldRngGaussianMV(OXA_RNG_METHOD_GAUSSIAN_ICDF, stream, kCount, x, 2,
                               OXA_MATRIX_STORAGE_FULL, mean2, factor) != 0;
  double sxy = 0.0, sxx = 0.0, syy = 0.0;
  for (int i = 0; i < kCount; ++i) {
    const double dx = x[2 * i] - mean2[0], dy = x[2 * i + 1] - mean2[1];
    sxy += dx * dy;
    sxx += dx * dx;
    syy += dy * dy;
  }
  printf("correlated pairs: correlation %.3f (asked 0.6)\n", sxy / sqrt(sxx * syy));

  /* Waiting times with mean 3 minutes, and 20 flips of a biased coin. */
  double wait_mean, wait_spread;
  failed |= _vsldRngExponential(0, stream, kCount, x, 0.0, 3.0) != 0;
  mean_and_spread(x, kCount, &wait_mean, &wait_spread);
  printf("exponential waits: mean %.3f (asked 3)\n", wait_mean);
  int32_t flips[20];
  failed |= _vsliRngBernoulli(0, stream, 20, flips, 0.3) != 0;
  printf("coin with p = 0.3:");
  for (int i = 0; i < 20; ++i) printf(" %d", (int)flips[i]);
  printf("\n");

  _vslDeleteStream(&stream);
  return failed;
}
