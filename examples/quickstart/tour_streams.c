/* Quickstart section: streams. Create a stream, draw uniforms, skip ahead,
 * copy it, split it into interleaved substreams, and delete everything. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

int tour_streams(void) {
  printf("== random streams ==\n");
  StreamState* stream = NULL;
  const uint32_t seed = 777;
  if (_vslNewStreamEx(&stream, OXA_BRNG_MRG32K3A, 1, &seed) != VSL_STATUS_OK) return 1;

  /* 1000 uniforms on [0, 1): their mean should be close to 1/2. */
  double u[1000];
  if (_vsldRngUniform(OXA_RNG_METHOD_STANDARD, stream, 1000, u, 0.0, 1.0) != 0) return 1;
  double mean = 0.0;
  for (int i = 0; i < 1000; ++i) mean += u[i] / 1000.0;
  printf("MRG32K3A: mean of 1000 uniforms on [0, 1) = %.4f\n", mean);

  /* A copy continues exactly where the original is. */
  StreamState* copy = NULL;
  if (_vslCopyStream(&copy, stream) != 0) return 1;
  double a, b;
  _vsldRngUniform(OXA_RNG_METHOD_STANDARD, stream, 1, &a, 0.0, 1.0);
  _vsldRngUniform(OXA_RNG_METHOD_STANDARD, copy, 1, &b, 0.0, 1.0);
  printf("next value of the stream and of its copy: %.10f %.10f\n", a, b);

  /* Skipping 999 values of the copy lands where drawing them would. */
  double skipped, drawn[1000];
  _vslSkipAheadStream(copy, 999);
  _vsldRngUniform(OXA_RNG_METHOD_STANDARD, copy, 1, &skipped, 0.0, 1.0);
  _vsldRngUniform(OXA_RNG_METHOD_STANDARD, stream, 1000, drawn, 0.0, 1.0);
  printf("after skipping 999: %.10f, after drawing 999: %.10f\n", skipped, drawn[999]);

  /* Dice from MCG31M1, and the second of three leapfrog substreams. */
  StreamState* dice = NULL;
  if (_vslNewStreamEx(&dice, OXA_BRNG_MCG31M1, 1, &seed) != 0) return 1;
  int32_t rolls[12];
  _vslLeapfrogStream(dice, 1, 3);
  _vsliRngUniform(0, dice, 12, rolls, 1, 7);
  printf("12 dice rolls from substream 1 of 3:");
  for (int i = 0; i < 12; ++i) printf(" %d", (int)rolls[i]);
  printf("\n");

  _vslDeleteStream(&dice);
  _vslDeleteStream(&copy);
  _vslDeleteStream(&stream);
  return (stream == NULL && copy == NULL && a == b && skipped == drawn[999]) ? 0 : 1;
}
