// The grouped editors: each sets a fixed list of parameters, skipping null
// addresses, and checks nothing but the task pointer. Both precisions share
// one body per editor; only the pointer types of the entry points differ.
#include <initializer_list>

#include "summary_stats/edit_task.hpp"

namespace {

template <class... A>
oxa_status group(SSTask* task, std::initializer_list<int32_t> ids, A... addresses) {
  const void* const list[] = {static_cast<const void*>(addresses)...};
  return oxa::ss::edit_group(task, ids.begin(), list, static_cast<int>(sizeof...(A)));
}

template <class T>
oxa_status moments(SSTask* t, T* m, T* r2, T* r3, T* r4, T* c2, T* c3, T* c4) {
  return group(t, {7, 8, 9, 10, 11, 12, 13}, m, r2, r3, r4, c2, c3, c4);
}
template <class T>
oxa_status sums(SSTask* t, T* s, T* r2, T* r3, T* r4, T* c2, T* c3, T* c4) {
  return group(t, {67, 68, 69, 70, 71, 72, 73}, s, r2, r3, r4, c2, c3, c4);
}
template <class T>
oxa_status cov_cor(SSTask* t, T* m, T* cov, const void* cov_st, T* cor, const void* cor_st) {
  return group(t, {7, 19, 20, 21, 22}, m, cov, cov_st, cor, cor_st);
}
template <class T>
oxa_status cross_product(SSTask* t, T* m, T* s, T* cp, const void* cp_st) {
  return group(t, {7, 67, 74, 75}, m, s, cp, cp_st);
}
template <class T>
oxa_status partial_cov_cor(SSTask* t, const void* idx, T* cov, const void* cov_st, T* cor,
                           const void* cor_st, T* pcov, const void* pcov_st, T* pcor,
                           const void* pcor_st) {
  return group(t, {45, 19, 20, 21, 22, 46, 47, 48, 49}, idx, cov, cov_st, cor, cor_st, pcov,
               pcov_st, pcor, pcor_st);
}
template <class T>
oxa_status quantiles(SSTask* t, const void* no, const T* o, T* q, T* os, const void* os_st) {
  return group(t, {24, 25, 26, 27, 44}, no, o, q, os, os_st);
}
template <class T>
oxa_status stream_quantiles(SSTask* t, const void* no, const T* o, T* q, const void* np,
                            const T* prm) {
  return group(t, {64, 65, 66, 62, 63}, no, o, q, np, prm);
}
template <class T>
oxa_status pooled(SSTask* t, const void* gi, T* pm, T* pc, const void* rg, T* gm, T* gc) {
  return group(t, {28, 30, 31, 32, 33, 35}, gi, pm, pc, rg, gm, gc);
}
template <class T>
oxa_status robust(SSTask* t, const void* st, const void* np, const T* prm, T* rm, T* rc) {
  return group(t, {36, 37, 38, 39, 40}, st, np, prm, rm, rc);
}
template <class T>
oxa_status outliers(SSTask* t, const void* np, const T* prm, T* w) {
  return group(t, {41, 42, 43}, np, prm, w);
}
template <class T>
oxa_status missing(SSTask* t, const void* n1, const T* a1, const void* n2, const T* a2,
                   const void* n3, const T* a3, const void* n4, const T* a4, const void* n5,
                   const T* a5) {
  return group(t, {50, 51, 52, 53, 58, 59, 54, 55, 56, 57}, n1, a1, n2, a2, n3, a3, n4, a4, n5, a5);
}
template <class T>
oxa_status parametrization(SSTask* t, T* cor, const void* cor_st, T* pc, const void* pc_st) {
  return group(t, {21, 22, 60, 61}, cor, cor_st, pc, pc_st);
}

}  // namespace

extern "C" {

oxa_status _vsldSSEditMoments(SSTask* t, double* m, double* r2, double* r3, double* r4, double* c2,
                              double* c3, double* c4) {
  return moments(t, m, r2, r3, r4, c2, c3, c4);
}
oxa_status _vslsSSEditMoments(SSTask* t, float* m, float* r2, float* r3, float* r4, float* c2,
                              float* c3, float* c4) {
  return moments(t, m, r2, r3, r4, c2, c3, c4);
}
oxa_status _vsldSSEditSums(SSTask* t, double* s, double* r2, double* r3, double* r4, double* c2,
                           double* c3, double* c4) {
  return sums(t, s, r2, r3, r4, c2, c3, c4);
}
oxa_status _vslsSSEditSums(SSTask* t, float* s, float* r2, float* r3, float* r4, float* c2,
                           float* c3, float* c4) {
  return sums(t, s, r2, r3, r4, c2, c3, c4);
}
oxa_status _vsldSSEditCovCor(SSTask* t, double* m, double* cov, const void* cov_st, double* cor,
                             const void* cor_st) {
  return cov_cor(t, m, cov, cov_st, cor, cor_st);
}
oxa_status _vslsSSEditCovCor(SSTask* t, float* m, float* cov, const void* cov_st, float* cor,
                             const void* cor_st) {
  return cov_cor(t, m, cov, cov_st, cor, cor_st);
}
oxa_status _vsldSSEditCP(SSTask* t, double* m, double* s, double* cp, const void* cp_st) {
  return cross_product(t, m, s, cp, cp_st);
}
oxa_status _vslsSSEditCP(SSTask* t, float* m, float* s, float* cp, const void* cp_st) {
  return cross_product(t, m, s, cp, cp_st);
}
oxa_status _vsldSSEditPartialCovCor(SSTask* t, const void* idx, double* cov, const void* cov_st,
                                    double* cor, const void* cor_st, double* pcov,
                                    const void* pcov_st, double* pcor, const void* pcor_st) {
  return partial_cov_cor(t, idx, cov, cov_st, cor, cor_st, pcov, pcov_st, pcor, pcor_st);
}
oxa_status _vslsSSEditPartialCovCor(SSTask* t, const void* idx, float* cov, const void* cov_st,
                                    float* cor, const void* cor_st, float* pcov,
                                    const void* pcov_st, float* pcor, const void* pcor_st) {
  return partial_cov_cor(t, idx, cov, cov_st, cor, cor_st, pcov, pcov_st, pcor, pcor_st);
}
oxa_status _vsldSSEditQuantiles(SSTask* t, const void* no, const double* o, double* q, double* os,
                                const void* os_st) {
  return quantiles(t, no, o, q, os, os_st);
}
oxa_status _vslsSSEditQuantiles(SSTask* t, const void* no, const float* o, float* q, float* os,
                                const void* os_st) {
  return quantiles(t, no, o, q, os, os_st);
}
oxa_status _vsldSSEditStreamQuantiles(SSTask* t, const void* no, const double* o, double* q,
                                      const void* np, const double* prm) {
  return stream_quantiles(t, no, o, q, np, prm);
}
oxa_status _vslsSSEditStreamQuantiles(SSTask* t, const void* no, const float* o, float* q,
                                      const void* np, const float* prm) {
  return stream_quantiles(t, no, o, q, np, prm);
}
oxa_status _vsldSSEditPooledCovariance(SSTask* t, const void* gi, double* pm, double* pc,
                                       const void* rg, double* gm, double* gc) {
  return pooled(t, gi, pm, pc, rg, gm, gc);
}
oxa_status _vslsSSEditPooledCovariance(SSTask* t, const void* gi, float* pm, float* pc,
                                       const void* rg, float* gm, float* gc) {
  return pooled(t, gi, pm, pc, rg, gm, gc);
}
oxa_status _vsldSSEditRCov(SSTask* t, const void* st, const void* np, const double* prm, double* rm,
                           double* rc) {
  return robust(t, st, np, prm, rm, rc);
}
oxa_status _vslsSSEditRCov(SSTask* t, const void* st, const void* np, const float* prm, float* rm,
                           float* rc) {
  return robust(t, st, np, prm, rm, rc);
}
oxa_status _vsldSSEditOutDetect(SSTask* t, const void* np, const double* prm, double* w) {
  return outliers(t, np, prm, w);
}
oxa_status _vslsSSEditOutDetect(SSTask* t, const void* np, const float* prm, float* w) {
  return outliers(t, np, prm, w);
}
oxa_status _vsldSSEditMissingVals(SSTask* t, const void* n1, const double* a1, const void* n2,
                                  const double* a2, const void* n3, const double* a3,
                                  const void* n4, const double* a4, const void* n5,
                                  const double* a5) {
  return missing(t, n1, a1, n2, a2, n3, a3, n4, a4, n5, a5);
}
oxa_status _vslsSSEditMissingVals(SSTask* t, const void* n1, const float* a1, const void* n2,
                                  const float* a2, const void* n3, const float* a3, const void* n4,
                                  const float* a4, const void* n5, const float* a5) {
  return missing(t, n1, a1, n2, a2, n3, a3, n4, a4, n5, a5);
}
oxa_status _vsldSSEditMtxParametrz(SSTask* t, double* cor, const void* cor_st, double* pc,
                                   const void* pc_st) {
  return parametrization(t, cor, cor_st, pc, pc_st);
}
oxa_status _vslsSSEditMtxParametrz(SSTask* t, float* cor, const void* cor_st, float* pc,
                                   const void* pc_st) {
  return parametrization(t, cor, cor_st, pc, pc_st);
}

}  // extern "C"
