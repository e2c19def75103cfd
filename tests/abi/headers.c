/* The umbrella header compiles as strict C11, and a C program links against
 * both libraries and reaches the service layer. */
#include <string.h>

#include "oxa/oxa.h"

int main(void) {
  void* p = oxa_serv_allocate(64, 128);
  if (p == NULL || ((uintptr_t)p & 127u) != 0) return 1;
  oxa_serv_deallocate(p);
  if (oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for") == NULL) return 2;
  if (oxa_serv_df_threading.parallel_for == NULL) return 3;
  {
    double keys[3] = {2.0, -1.0, 0.5};
    uint32_t word = 0;
    if (oxa_prim_sort(OXA_PRIM_DOUBLE, 3, keys, OXA_PRIM_ASCENDING) != 0 || keys[0] != -1.0) return 4;
    if (oxa_prim_fp_get(&word) != 0 || (word & OXA_FP_EXCEPTION_MASKS) != OXA_FP_EXCEPTION_MASKS) return 5;
  }
  return 0;
}
