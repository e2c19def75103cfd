/* oxa streams: public C interface. C11 and C++20. */
#ifndef OXA_STREAMS_H
#define OXA_STREAMS_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

OXA_EXTERN_C_END

#endif /* OXA_STREAMS_H */
