// Level-3 BLAS for the subsystems: float and double overloads over the Fortran
// interface (column-major, 32-bit integers, every argument by address).
//
// Which BLAS: the single-threaded OpenBLAS build (see CMakeLists.txt). The
// library threads at its own level, through the service layer's OpenMP team,
// and hands BLAS blocks of a few thousand elements (a multivariate Gaussian
// chunk, a p × p covariance), where a second thread pool only adds hand-off
// cost: on two cores the threaded build was nowhere faster for the
// multivariate Gaussian (dimensions 3 to 1000) and 1.8 times slower at 1000
// (bench_distributions). The threaded builds also start their pool when the
// library is loaded, in every process, whether it calls BLAS or not, and their
// spin-wait hand-off is invisible to ThreadSanitizer, which then reports the
// pool's reads of the caller's arrays as races. The serial build has no pool.
#pragma once

#include <cstddef>

extern "C" {
// The trailing size_t arguments are the hidden lengths of the character
// arguments (one each).
void sgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
            const float* alpha, const float* a, const int* lda, const float* b, const int* ldb,
            const float* beta, float* c, const int* ldc, size_t, size_t);
void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
            const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
            const double* beta, double* c, const int* ldc, size_t, size_t);
void ssyrk_(const char* uplo, const char* trans, const int* n, const int* k, const float* alpha,
            const float* a, const int* lda, const float* beta, float* c, const int* ldc, size_t,
            size_t);
void dsyrk_(const char* uplo, const char* trans, const int* n, const int* k, const double* alpha,
            const double* a, const int* lda, const double* beta, double* c, const int* ldc, size_t,
            size_t);
void strmm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,
            const int* n, const float* alpha, const float* a, const int* lda, float* b,
            const int* ldb, size_t, size_t, size_t, size_t);
void dtrmm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,
            const int* n, const double* alpha, const double* a, const int* lda, double* b,
            const int* ldb, size_t, size_t, size_t, size_t);
void strsm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,
            const int* n, const float* alpha, const float* a, const int* lda, float* b,
            const int* ldb, size_t, size_t, size_t, size_t);
void dtrsm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,
            const int* n, const double* alpha, const double* a, const int* lda, double* b,
            const int* ldb, size_t, size_t, size_t, size_t);
}

namespace oxa::linalg {

// C <- alpha·op(A)·op(B) + beta·C; op(A) is m × k, op(B) k × n.
inline void gemm(char transa, char transb, int m, int n, int k, float alpha, const float* a,
                 int lda, const float* b, int ldb, float beta, float* c, int ldc) {
  sgemm_(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}
inline void gemm(char transa, char transb, int m, int n, int k, double alpha, const double* a,
                 int lda, const double* b, int ldb, double beta, double* c, int ldc) {
  dgemm_(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}

// The `uplo` triangle of the n × n C <- alpha·A·Aᵀ + beta·C (trans 'N', A is
// n × k) or alpha·Aᵀ·A + beta·C (trans 'T', A is k × n).
inline void syrk(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                 float beta, float* c, int ldc) {
  ssyrk_(&uplo, &trans, &n, &k, &alpha, a, &lda, &beta, c, &ldc, 1, 1);
}
inline void syrk(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                 double beta, double* c, int ldc) {
  dsyrk_(&uplo, &trans, &n, &k, &alpha, a, &lda, &beta, c, &ldc, 1, 1);
}

// B <- alpha·op(A)·B (side 'L') or alpha·B·op(A) (side 'R'), B m × n, A
// triangular (`uplo` triangle read, unit diagonal assumed if diag is 'U').
inline void trmm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb) {
  strmm_(&side, &uplo, &transa, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
}
inline void trmm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb) {
  dtrmm_(&side, &uplo, &transa, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
}

// Solves op(A)·X = alpha·B (side 'L') or X·op(A) = alpha·B (side 'R'); X
// overwrites B. Arguments as for trmm.
inline void trsm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb) {
  strsm_(&side, &uplo, &transa, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
}
inline void trsm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb) {
  dtrsm_(&side, &uplo, &transa, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
}

}  // namespace oxa::linalg
