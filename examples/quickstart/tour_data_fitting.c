/* Quickstart section: data_fitting. */
#include <stdio.h>

#include "oxa/oxa.h"
#include "tour.h"

int tour_data_fitting(void) { return 0; }
