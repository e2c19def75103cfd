/* oxa summary_stats: public C interface. C11 and C++20. */
#ifndef OXA_SUMMARY_STATS_H
#define OXA_SUMMARY_STATS_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

OXA_EXTERN_C_END

#endif /* OXA_SUMMARY_STATS_H */
