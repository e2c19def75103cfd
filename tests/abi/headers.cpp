// The umbrella header compiles as C++20 with every warning an error.
#include "oxa/oxa.h"

static_assert(sizeof(oxa_status) == 4);
static_assert(sizeof(DfThreading) == 5 * sizeof(void*));
static_assert(sizeof(OxaCpuInfo) == 48);
