// MPFR reference for the inverse error function (MPFR has none): Newton
// iteration at 40 bits above the target precision, on erf(w) = x for |x| < 1/2
// and on erfc(w) = 1 - |x| (exact) above, so that neither end loses digits.
#pragma once

#include <mpfr.h>

#include <cmath>

namespace oxa::test {

inline int mpfr_erfinv(mpfr_ptr z, mpfr_srcptr x, mpfr_rnd_t rnd) {
  if (mpfr_nan_p(x) || mpfr_cmpabs_ui(x, 1) > 0) return mpfr_set_nan(z), 0;
  if (mpfr_cmpabs_ui(x, 1) == 0) return mpfr_set_inf(z, mpfr_sgn(x)), 0;
  if (mpfr_zero_p(x)) return mpfr_set(z, x, rnd);

  const mpfr_prec_t prec = mpfr_get_prec(z) + 40;
  mpfr_t ax, q, w, f, t, half_root_pi;
  mpfr_init2(ax, mpfr_get_prec(x));
  mpfr_init2(q, mpfr_get_prec(x) + 2);
  mpfr_inits2(prec, w, f, t, half_root_pi, static_cast<mpfr_ptr>(nullptr));
  mpfr_abs(ax, x, MPFR_RNDN);
  const bool upper = mpfr_cmp_d(ax, 0.5) >= 0;
  mpfr_ui_sub(q, 1, ax, MPFR_RNDN);  // exact for |x| >= 1/2
  mpfr_const_pi(half_root_pi, MPFR_RNDN);
  mpfr_sqrt(half_root_pi, half_root_pi, MPFR_RNDN);
  mpfr_div_2ui(half_root_pi, half_root_pi, 1, MPFR_RNDN);

  // Start: x sqrt(pi)/2 near 0; from erfc(w) ~ e^-w^2 / (w sqrt(pi)) in the tail.
  if (!upper) {
    mpfr_mul(w, ax, half_root_pi, MPFR_RNDN);
  } else {
    const double lq = mpfr_get_d(q, MPFR_RNDN) > 0 ? std::log(mpfr_get_d(q, MPFR_RNDN)) : -745.0;
    double w0 = std::sqrt(-lq);
    for (int it = 0; it < 4; ++it) w0 = std::sqrt(std::fmax(-lq - std::log(w0 * 1.7724538509055160), 0.01));
    mpfr_set_d(w, w0, MPFR_RNDN);
  }
  for (int it = 0; it < 60; ++it) {
    // f = (erf(w) - |x|) or (q - erfc(w)); step = f * sqrt(pi)/2 * e^(w^2).
    if (upper) {
      mpfr_erfc(f, w, MPFR_RNDN);
      mpfr_sub(f, q, f, MPFR_RNDN);
    } else {
      mpfr_erf(f, w, MPFR_RNDN);
      mpfr_sub(f, f, ax, MPFR_RNDN);
    }
    mpfr_sqr(t, w, MPFR_RNDN);
    mpfr_exp(t, t, MPFR_RNDN);
    mpfr_mul(t, t, half_root_pi, MPFR_RNDN);
    mpfr_mul(f, f, t, MPFR_RNDN);
    mpfr_sub(w, w, f, MPFR_RNDN);
    if (mpfr_zero_p(f) || mpfr_get_exp(f) < mpfr_get_exp(w) - static_cast<mpfr_exp_t>(prec) + 4) break;
  }
  if (mpfr_sgn(x) < 0) mpfr_neg(w, w, MPFR_RNDN);
  const int inexact = mpfr_set(z, w, rnd);
  mpfr_clears(ax, q, w, f, t, half_root_pi, static_cast<mpfr_ptr>(nullptr));
  return inexact;
}

}  // namespace oxa::test
