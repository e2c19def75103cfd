// The error routine shared by every kernel: records the status, then, as the
// thread's mode asks, calls the callback, sets errno, prints a report and
// writes the (possibly replaced) results back.
#pragma once

#include <cstdint>

#include "oxa/vector_math.h"

namespace oxa::vml {

// One element's report as the kernels hand it over. `base` is the kernel's
// first input array (for the index correction); r1/r2 receive the results
// after the callback (r2 first, then r1) unless the callback handled the
// error. Values are read only for codes other than -1 and -2.
template <class T>
struct ErrorSite {
  int32_t code;
  int32_t index;
  const T* base;
  T arg1, arg2;
  T* r1;
  T* r2;
  const char* name;
};

// Kernels call this with element i of their arrays.
template <class T>
void report_error(int32_t code, int32_t i, const T* a, const T* b, T* r1, T* r2, const char* name);

// For shapes whose second argument is a scalar (it is reported as arg2).
template <class T>
void report_error_site(const ErrorSite<T>& site);

}  // namespace oxa::vml
