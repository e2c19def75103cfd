/* oxa data_fitting: public C interface. C11 and C++20. */
#ifndef OXA_DATA_FITTING_H
#define OXA_DATA_FITTING_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

OXA_EXTERN_C_END

#endif /* OXA_DATA_FITTING_H */
