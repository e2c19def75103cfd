/* Quickstart section: vector math. Quantiles of the standard normal
 * distribution in the three accuracy levels, the dispatch table that follows
 * the thread's mode, and an error callback that replaces special results. */
#include <math.h>
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

/* Turns the infinite quantiles of 0 and 1 into -+8.5. Returning 0 lets the error
 * routine carry on (errno, as the mode says) and write the replaced result back. */
static int32_t clamp_infinite(VmlErrorContext* c) {
  if (c->code == VML_ERR_SINGULARITY) c->res1 = c->res2 = c->arg1 < 0.5 ? -8.5 : 8.5;
  return 0;
}

int tour_vector_math(void) {
  printf("== vector math ==\n");
  const double p[6] = {0.001, 0.025, 0.5, 0.975, 0.999, 1e-300};
  double ha[6], la[6], ep[6];
  oxa_vml_kernel_dCdfNormInv_E9HAynn(6, p, ha);
  oxa_vml_kernel_dCdfNormInv_E9LAynn(6, p, la);
  oxa_vml_kernel_dCdfNormInv_E9EPnnn(6, p, ep);
  for (int i = 0; i < 6; ++i)
    printf("Phi^-1(%g) = %.17g (HA)  %.17g (LA)  %.9g (EP)\n", p[i], ha[i], la[i], ep[i]);

  /* The front layer's way: pick the slot of the dispatch table from the mode. */
  const uint32_t saved = oxa_vml_kernel_SetMode(OXA_VML_EP);
  oxa_vml_kernel_dCdfNormInv_ttab[oxa_vml_kernel_GetTTableIndex()](6, p, ha);
  printf("mode 0x%x selects slot %d: Phi^-1(0.975) = %.9g\n", (unsigned)oxa_vml_kernel_GetMode(),
         (int)oxa_vml_kernel_GetTTableIndex(), ha[3]);
  oxa_vml_kernel_SetMode(saved);

  /* Special inputs: status and callback. */
  const double edge[4] = {0.0, 0.3, 1.0, 1.5};
  double r[4];
  oxa_vml_kernel_ClearErrStatus();
  const VmlErrorCallBack previous = oxa_vml_kernel_SetErrorCallBack(clamp_infinite);
  oxa_vml_kernel_dCdfNormInv_E9HAynn(4, edge, r);
  printf("Phi^-1 of 0, 0.3, 1, 1.5 with the callback: %g %.6f %g %g, last status %d\n", r[0], r[1],
         r[2], r[3], (int)oxa_vml_kernel_GetErrStatus());
  oxa_vml_kernel_SetErrorCallBack(previous);
  oxa_vml_kernel_ClearErrStatus();
  return (r[0] == -8.5 && r[2] == 8.5 && isnan(r[3]) && fabs(ha[3] - 1.959964) < 1e-6) ? 0 : 1;
}
