// Plain loops over the same operations as the exact families, compiled with
// -O3 -march=x86-64-v3 (see CMakeLists.txt) as GCC vectorises them, and the
// memory floors: a copy (one stream in, one out) and a triad (two in, one out).
#include <cmath>
#include <cstdint>

#include "vector_math/exact_loops.hpp"

namespace oxa::bench::loops {

void add(int64_t n, const double* a, const double* b, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] + b[i];
}
void mul(int64_t n, const double* a, const double* b, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] * b[i];
}
void div(int64_t n, const double* a, const double* b, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] / b[i];
}
void sqr(int64_t n, const double* a, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] * a[i];
}
void abs(int64_t n, const double* a, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = std::fabs(a[i]);
}
void floor(int64_t n, const double* a, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = std::floor(a[i]);
}
void inv(int64_t n, const double* a, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = 1.0 / a[i];
}
void add_s(int64_t n, const float* a, const float* b, float* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] + b[i];
}
void div_s(int64_t n, const float* a, const float* b, float* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] / b[i];
}
void hypot(int64_t n, const double* a, const double* b, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = std::hypot(a[i], b[i]);
}
void copy(int64_t n, const double* a, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i];
}
void triad(int64_t n, const double* a, const double* b, double* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = a[i] + 3.0 * b[i];
}

}  // namespace oxa::bench::loops
