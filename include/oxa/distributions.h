/* oxa distributions: generators that turn a stream's output into samples.
 * C11 and C++20. Every generator takes a method word, the stream, a count n
 * and a caller-owned output array, and returns a status (0 or a negative code
 * of oxa/streams.h). */
#ifndef OXA_DISTRIBUTIONS_H
#define OXA_DISTRIBUTIONS_H

#include "oxa/streams.h"

OXA_EXTERN_C_BEGIN

/* Method words of the continuous uniform generators. The accurate method
 * clamps every value into [a, b], so that rounding in the scaling can never
 * leave the interval. The integer and bit generators ignore the word. */
enum {
  OXA_RNG_METHOD_STANDARD = 0,
  OXA_RNG_METHOD_ACCURATE = 0x40000000
};

/* n values uniform on [a, b). */
int32_t _vsldRngUniform(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                        double b);
int32_t _vslsRngUniform(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                        float b);
/* n integers uniform on [a, b - 1] (for b > a). */
int32_t _vsliRngUniform(uint32_t method, StreamState* stream, int32_t n, int32_t r[], int32_t a,
                        int32_t b);
/* n raw output words of the stream's generator (each WordBytes wide). */
int32_t _vsliRngUniformBits(uint32_t method, StreamState* stream, int32_t n, uint32_t r[]);
/* n uniformly distributed 32-bit or 64-bit words; VSL_RNG_ERROR_NO_UNIFORMBITS
 * for generators whose words are not uniform over all bits. */
int32_t _vsliRngUniformBits32(uint32_t method, StreamState* stream, int32_t n, uint32_t r[]);
int32_t _vsliRngUniformBits64(uint32_t method, StreamState* stream, int32_t n, uint64_t r[]);

/* ---- Gaussian family -------------------------------------------------------
 * The transforming generators below call the vector-math kernels. While they
 * run they switch the calling thread's vector-math error mode to "callback"
 * with a callback of their own that maps ln 0 and erfinv(±1) to finite values
 * (so no infinity or NaN is produced for valid parameters); the caller's mode
 * word and callback are back in place when they return, on every path. */

/* Methods of the Gaussian generators. Box-Muller: one variate per pair of
 * uniforms (2n uniforms). Box-Muller2: two variates per pair, the sine one at
 * the even index and the cosine one after it; an odd count ends with one
 * variate from a pair of its own (n rounded up to even uniforms); nothing is
 * kept between calls. Inverse CDF: one uniform per variate. */
enum {
  OXA_RNG_METHOD_GAUSSIAN_BOXMULLER = 0,
  OXA_RNG_METHOD_GAUSSIAN_BOXMULLER2 = 1,
  OXA_RNG_METHOD_GAUSSIAN_ICDF = 2
};
/* Methods of the lognormal generators: the Gaussian method used underneath. */
enum {
  OXA_RNG_METHOD_LOGNORMAL_BOXMULLER2 = 0,
  OXA_RNG_METHOD_LOGNORMAL_ICDF = 1
};

/* n values a + sigma·z, z standard normal. VSL_ERROR_BAD_ARGUMENT for a
 * method other than the three above. */
int32_t _vsldRngGaussian(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                         double sigma);
int32_t _vslsRngGaussian(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                         float sigma);

/* n values max(b, b + beta·exp(g)), g Gaussian with mean a and deviation
 * sigma (the displacement b is a floor that rounding cannot pierce). */
int32_t _vsldRngLognormal(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                          double sigma, double b, double beta);
int32_t _vslsRngLognormal(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                          float sigma, float b, float beta);

/* Storage forms of the factor T of the multivariate Gaussian: the lower
 * triangle of a d x d matrix with covariance C = T·Tᵀ (for example the
 * Cholesky factor of C), row-major:
 *   FULL      d·d values, T[i][j] at i·d + j; the upper triangle is not read;
 *   PACKED    d(d+1)/2 values, the lower triangle row by row, T[i][j] (j <= i)
 *             at i(i+1)/2 + j;
 *   DIAGONAL  d values, T[i][i] at i. */
enum {
  OXA_MATRIX_STORAGE_FULL = 0,
  OXA_MATRIX_STORAGE_PACKED = 1,
  OXA_MATRIX_STORAGE_DIAGONAL = 2
};

/* n vectors of dimension dimen, vector k at r[k·dimen], each mean + T·z with
 * z standard normal drawn by the Gaussian method `method`. Statuses:
 * VSL_ERROR_BAD_ARGUMENT for a bad method, dimen < 1 or an unknown storage
 * form; VSL_ERROR_NO_MEMORY if the packed factor cannot be unpacked. */
int32_t _vsldRngGaussianMV(uint32_t method, StreamState* stream, int32_t n, double r[],
                           int32_t dimen, int32_t mstorage, const double mean[],
                           const double factor[]);
int32_t _vslsRngGaussianMV(uint32_t method, StreamState* stream, int32_t n, float r[],
                           int32_t dimen, int32_t mstorage, const float mean[],
                           const float factor[]);

/* ---- Other continuous distributions (method word 0) -----------------------
 * Exponential, Weibull and Rayleigh values are never below the displacement
 * a. Cauchy leaves the vector-math error mode and callback alone. */

/* max(a, a - beta·ln u) */
int32_t _vsldRngExponential(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                            double beta);
int32_t _vslsRngExponential(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                            float beta);
/* a - beta·ln u1 if u2 <= 0.5, else a + beta·ln u1 */
int32_t _vsldRngLaplace(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                        double beta);
int32_t _vslsRngLaplace(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                        float beta);
/* max(a, a + beta·(-ln u)^(1/alpha)) */
int32_t _vsldRngWeibull(uint32_t method, StreamState* stream, int32_t n, double r[], double alpha,
                        double a, double beta);
int32_t _vslsRngWeibull(uint32_t method, StreamState* stream, int32_t n, float r[], float alpha,
                        float a, float beta);
/* a + beta·tan u, u uniform on [-pi/2, pi/2) */
int32_t _vsldRngCauchy(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                       double beta);
int32_t _vslsRngCauchy(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                       float beta);
/* max(a, a + beta·sqrt(-ln u)) */
int32_t _vsldRngRayleigh(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                         double beta);
int32_t _vslsRngRayleigh(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                         float beta);
/* a + beta·ln e, e standard exponential */
int32_t _vsldRngGumbel(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                       double beta);
int32_t _vslsRngGumbel(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                       float beta);

/* ---- Bernoulli and geometric (method word 0) ------------------------------
 * Both draw single-precision uniforms u on [0, 1). */

/* r[i] = 1 if u < p (p rounded to single precision), else 0. p <= 0 gives
 * zeros, p >= 1 ones; a NaN p gives VSL_ERROR_BAD_ARGUMENT. */
int32_t _vsliRngBernoulli(uint32_t method, StreamState* stream, int32_t n, int32_t r[], double p);
/* Failures before the first success, floor(ln u / ln(1 - p)). p must lie in
 * (0, 1], else VSL_ERROR_BAD_ARGUMENT. */
int32_t _vsliRngGeometric(uint32_t method, StreamState* stream, int32_t n, int32_t r[], double p);

OXA_EXTERN_C_END

#endif /* OXA_DISTRIBUTIONS_H */
