// LAPACK factorizations for the subsystems: float and double overloads over the
// Fortran interface of the same single-threaded build as blas.hpp (column-major,
// 32-bit integers). Each returns LAPACK's info: 0 on success, -i if argument i
// was bad, > 0 for the routine's numerical failure (stated per routine).
#pragma once

#include <cstddef>

extern "C" {
// The trailing size_t arguments are the hidden lengths of the character
// arguments (one each).
void spotrf_(const char* uplo, const int* n, float* a, const int* lda, int* info, size_t);
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info, size_t);
void spotri_(const char* uplo, const int* n, float* a, const int* lda, int* info, size_t);
void dpotri_(const char* uplo, const int* n, double* a, const int* lda, int* info, size_t);
void strtri_(const char* uplo, const char* diag, const int* n, float* a, const int* lda, int* info,
             size_t, size_t);
void dtrtri_(const char* uplo, const char* diag, const int* n, double* a, const int* lda,
             int* info, size_t, size_t);
void ssyev_(const char* jobz, const char* uplo, const int* n, float* a, const int* lda, float* w,
            float* work, const int* lwork, int* info, size_t, size_t);
void dsyev_(const char* jobz, const char* uplo, const int* n, double* a, const int* lda, double* w,
            double* work, const int* lwork, int* info, size_t, size_t);
}

namespace oxa::linalg {

// Cholesky factor of the symmetric positive definite n × n A, written over its
// `uplo` triangle (A = L·Lᵀ for 'L', Uᵀ·U for 'U'). info k > 0: the leading
// minor of order k is not positive definite.
inline int potrf(char uplo, int n, float* a, int lda) {
  int info = 0;
  spotrf_(&uplo, &n, a, &lda, &info, 1);
  return info;
}
inline int potrf(char uplo, int n, double* a, int lda) {
  int info = 0;
  dpotrf_(&uplo, &n, a, &lda, &info, 1);
  return info;
}

// A⁻¹ from potrf's factor in the `uplo` triangle, written over that triangle.
// info k > 0: the factor's k-th diagonal element is zero.
inline int potri(char uplo, int n, float* a, int lda) {
  int info = 0;
  spotri_(&uplo, &n, a, &lda, &info, 1);
  return info;
}
inline int potri(char uplo, int n, double* a, int lda) {
  int info = 0;
  dpotri_(&uplo, &n, a, &lda, &info, 1);
  return info;
}

// Inverse of the triangular A in place. info k > 0: A[k-1][k-1] is zero.
inline int trtri(char uplo, char diag, int n, float* a, int lda) {
  int info = 0;
  strtri_(&uplo, &diag, &n, a, &lda, &info, 1, 1);
  return info;
}
inline int trtri(char uplo, char diag, int n, double* a, int lda) {
  int info = 0;
  dtrtri_(&uplo, &diag, &n, a, &lda, &info, 1, 1);
  return info;
}

// Eigenvalues of the symmetric A into w (ascending); with jobz 'V' the
// orthonormal eigenvectors overwrite A's columns. work holds lwork elements,
// lwork >= max(1, 3n - 1); lwork = -1 only writes the best lwork to work[0].
// info k > 0: k off-diagonal elements did not converge.
inline int syev(char jobz, char uplo, int n, float* a, int lda, float* w, float* work, int lwork) {
  int info = 0;
  ssyev_(&jobz, &uplo, &n, a, &lda, w, work, &lwork, &info, 1, 1);
  return info;
}
inline int syev(char jobz, char uplo, int n, double* a, int lda, double* w, double* work,
                int lwork) {
  int info = 0;
  dsyev_(&jobz, &uplo, &n, a, &lda, w, work, &lwork, &info, 1, 1);
  return info;
}

}  // namespace oxa::linalg
