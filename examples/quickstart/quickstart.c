/* A short tour of oxa, in C. Each subsystem has its section in tour_<subsystem>.c. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

/* Adds the squares of each index's block of 1000 integers, one block a call. */
static void sum_squares(void* context, int64_t index, int32_t thread, int32_t nthreads) {
  double* partial = (double*)context;
  double s = 0.0;
  (void)thread;
  (void)nthreads;
  for (int64_t k = index * 1000; k < (index + 1) * 1000; ++k) s += (double)k * (double)k;
  partial[index] = s;
}

int tour_service(void) {
  printf("== service layer ==\n");
  const oxa_num_threads_limit_fn limit = (oxa_num_threads_limit_fn)oxa_serv_load_thread_fun(
      "oxa_vsl_serv_threader_get_num_threads_limit");
  const oxa_parallel_for_fn parallel_for =
      (oxa_parallel_for_fn)oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for");
  const int64_t blocks = 100;
  double* partial = (double*)oxa_serv_allocate((size_t)blocks * sizeof(double), 128);
  if (partial == NULL) return 1;
  parallel_for(blocks, limit(), partial, sum_squares);
  double total = 0.0;
  for (int64_t i = 0; i < blocks; ++i) total += partial[i];
  oxa_serv_deallocate(partial);
  printf("threads available: %d\n", (int)limit());
  printf("sum of k^2 for k < 100000, in %d parallel blocks: %.0f (exact 333328333350000)\n",
         (int)blocks, total);
  return 0;
}

int main(void) {
  int (*const tours[])(void) = {tour_service,       tour_streams,      tour_distributions,
                                tour_summary_stats, tour_data_fitting, tour_vector_math};
  for (size_t i = 0; i < sizeof tours / sizeof tours[0]; ++i)
    if (tours[i]() != 0) return 1;
  return 0;
}
