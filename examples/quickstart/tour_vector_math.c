/* Quickstart section: vector_math. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

int tour_vector_math(void) { return 0; }
