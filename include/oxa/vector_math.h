/* oxa vector_math: public C interface. C11 and C++20. */
#ifndef OXA_VECTOR_MATH_H
#define OXA_VECTOR_MATH_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

OXA_EXTERN_C_END

#endif /* OXA_VECTOR_MATH_H */
