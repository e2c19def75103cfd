// Behaviour of the Sin, Cos, SinCos and Tan kernels: special values and
// statuses in every position, and the exact reduction of huge arguments.
#include <gtest/gtest.h>


