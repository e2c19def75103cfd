// Plain -O3 loops and memory floors beside the exact families (exact_loops.cpp).
#pragma once

#include <cstdint>

namespace oxa::bench::loops {

void add(int64_t n, const double* a, const double* b, double* r);
void mul(int64_t n, const double* a, const double* b, double* r);
void div(int64_t n, const double* a, const double* b, double* r);
void sqr(int64_t n, const double* a, double* r);
void abs(int64_t n, const double* a, double* r);
void floor(int64_t n, const double* a, double* r);
void inv(int64_t n, const double* a, double* r);
void add_s(int64_t n, const float* a, const float* b, float* r);
void div_s(int64_t n, const float* a, const float* b, float* r);
void hypot(int64_t n, const double* a, const double* b, double* r);
void copy(int64_t n, const double* a, double* r);
void triad(int64_t n, const double* a, const double* b, double* r);

}  // namespace oxa::bench::loops
