// MPFR reference for the inverse standard normal CDF (MPFR has none): Halley
// iteration on erfc at 40 bits above the target precision, started from a
// rational guess refined in double precision.
#pragma once

#include <mpfr.h>

#include <cmath>

namespace oxa::test {

// One Halley step for Phi(w) = q: w -= u / (1 + w u / 2), u = (Phi(w) - q) / phi(w).
inline double halley_step(double w, double q) {
  const double f = 0.5 * std::erfc(-w * M_SQRT1_2) - q;
  const double u = f / (std::exp(-0.5 * w * w) * 0.3989422804014327);
  return w - u / (1.0 + 0.5 * w * u);
}

inline int mpfr_norm_inv(mpfr_ptr z, mpfr_srcptr p, mpfr_rnd_t rnd) {
  if (mpfr_nan_p(p) || mpfr_cmp_ui(p, 0) < 0 || mpfr_cmp_ui(p, 1) > 0) return mpfr_set_nan(z), 0;
  if (mpfr_zero_p(p)) return mpfr_set_inf(z, -1), 0;
  if (mpfr_cmp_ui(p, 1) == 0) return mpfr_set_inf(z, 1), 0;
  if (mpfr_cmp_d(p, 0.5) == 0) return mpfr_set_zero(z, 1), 0;

  const mpfr_prec_t prec = mpfr_get_prec(z) + 40;
  mpfr_t q, w, f, t, scale, root2;
  mpfr_init2(q, prec + mpfr_get_prec(p));
  mpfr_inits2(prec, w, f, t, scale, root2, static_cast<mpfr_ptr>(nullptr));
  // q = min(p, 1 - p), exactly; the result is -sign * Phi^-1(q).
  const bool upper = mpfr_cmp_d(p, 0.5) > 0;
  upper ? mpfr_ui_sub(q, 1, p, MPFR_RNDN) : mpfr_set(q, p, MPFR_RNDN);

  // Guess within 5e-4, then double-precision Halley steps while erfc is representable.
  mpfr_log(t, q, MPFR_RNDN);
  const double tt = std::sqrt(-2.0 * mpfr_get_d(t, MPFR_RNDN));
  double w0 = -(tt - (2.515517 + 0.802853 * tt + 0.010328 * tt * tt) /
                         (1 + 1.432788 * tt + 0.189269 * tt * tt + 0.001308 * tt * tt * tt));
  const double qd = mpfr_get_d(q, MPFR_RNDN);
  if (qd > 1e-290)
    for (int it = 0; it < 3; ++it) w0 = halley_step(w0, qd);
  mpfr_set_d(w, w0, MPFR_RNDN);

  mpfr_const_pi(scale, MPFR_RNDN);  // scale = 1 / sqrt(2 pi)
  mpfr_mul_2ui(scale, scale, 1, MPFR_RNDN);
  mpfr_rec_sqrt(scale, scale, MPFR_RNDN);
  mpfr_sqrt_ui(root2, 2, MPFR_RNDN);
  for (int it = 0; it < 30; ++it) {
    mpfr_div(t, w, root2, MPFR_RNDN);  // f = erfc(-w / sqrt2) / 2 - q
    mpfr_neg(t, t, MPFR_RNDN);
    mpfr_erfc(f, t, MPFR_RNDN);
    mpfr_div_2ui(f, f, 1, MPFR_RNDN);
    mpfr_sub(f, f, q, MPFR_RNDN);
    mpfr_sqr(t, w, MPFR_RNDN);  // t = phi(w)
    mpfr_div_2ui(t, t, 1, MPFR_RNDN);
    mpfr_neg(t, t, MPFR_RNDN);
    mpfr_exp(t, t, MPFR_RNDN);
    mpfr_mul(t, t, scale, MPFR_RNDN);
    mpfr_div(f, f, t, MPFR_RNDN);  // f = u
    mpfr_mul(t, w, f, MPFR_RNDN);
    mpfr_div_2ui(t, t, 1, MPFR_RNDN);
    mpfr_add_ui(t, t, 1, MPFR_RNDN);
    mpfr_div(f, f, t, MPFR_RNDN);
    mpfr_sub(w, w, f, MPFR_RNDN);
    if (mpfr_zero_p(f) || mpfr_get_exp(f) < mpfr_get_exp(w) - static_cast<mpfr_exp_t>(prec) / 3) break;
  }
  if (upper) mpfr_neg(w, w, MPFR_RNDN);
  const int inexact = mpfr_set(z, w, rnd);
  mpfr_clears(q, w, f, t, scale, root2, static_cast<mpfr_ptr>(nullptr));
  return inexact;
}

}  // namespace oxa::test
