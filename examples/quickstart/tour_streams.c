/* Quickstart section: streams. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

int tour_streams(void) { return 0; }
