/* oxa distributions: generators that turn a stream's output into samples.
 * C11 and C++20. Every generator takes a method word, the stream, a count n
 * and a caller-owned output array, and returns a status (0 or a negative code
 * of oxa/streams.h). */
#ifndef OXA_DISTRIBUTIONS_H
#define OXA_DISTRIBUTIONS_H

#include "oxa/streams.h"

OXA_EXTERN_C_BEGIN

/* Method words of the continuous uniform generators. The accurate method
 * clamps every value into [a, b], so that rounding in the scaling can never
 * leave the interval. The integer and bit generators ignore the word. */
enum {
  OXA_RNG_METHOD_STANDARD = 0,
  OXA_RNG_METHOD_ACCURATE = 0x40000000
};

/* n values uniform on [a, b). */
int32_t _vsldRngUniform(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                        double b);
int32_t _vslsRngUniform(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                        float b);
/* n integers uniform on [a, b - 1] (for b > a). */
int32_t _vsliRngUniform(uint32_t method, StreamState* stream, int32_t n, int32_t r[], int32_t a,
                        int32_t b);
/* n raw output words of the stream's generator (each WordBytes wide). */
int32_t _vsliRngUniformBits(uint32_t method, StreamState* stream, int32_t n, uint32_t r[]);
/* n uniformly distributed 32-bit or 64-bit words; VSL_RNG_ERROR_NO_UNIFORMBITS
 * for generators whose words are not uniform over all bits. */
int32_t _vsliRngUniformBits32(uint32_t method, StreamState* stream, int32_t n, uint32_t r[]);
int32_t _vsliRngUniformBits64(uint32_t method, StreamState* stream, int32_t n, uint64_t r[]);

OXA_EXTERN_C_END

#endif /* OXA_DISTRIBUTIONS_H */
