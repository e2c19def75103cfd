// The exported processor queries of the streams interface.
#include "streams/cpu_features.hpp"

#include "oxa/streams.h"

extern "C" {

int32_t _vslCPUisAES(void) { return oxa::streams::cpu_has_aes() ? 1 : 0; }
int32_t _vslCPUisRDRAND(void) { return oxa::streams::cpu_has_rdrand() ? 1 : 0; }

}  // extern "C"
