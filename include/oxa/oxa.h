/* oxa: umbrella header for the whole public C interface. */
#ifndef OXA_OXA_H
#define OXA_OXA_H

#include "oxa/types.h"
#include "oxa/service.h"
#include "oxa/streams.h"
#include "oxa/distributions.h"
#include "oxa/summary_stats.h"
#include "oxa/data_fitting.h"
#include "oxa/vector_math.h"
#include "oxa/primitives.h"

#endif /* OXA_OXA_H */
