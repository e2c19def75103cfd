/* oxa distributions: public C interface. C11 and C++20. */
#ifndef OXA_DISTRIBUTIONS_H
#define OXA_DISTRIBUTIONS_H

#include "oxa/streams.h"

OXA_EXTERN_C_BEGIN

OXA_EXTERN_C_END

#endif /* OXA_DISTRIBUTIONS_H */
