/* Quickstart section: distributions. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

int tour_distributions(void) { return 0; }
