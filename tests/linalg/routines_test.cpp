// The BLAS and LAPACK overloads reach the routines they name with the
// arguments in the right places, in both precisions: each is run on a 3 × 3
// problem whose answer is known exactly. Matrices are column-major.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "linalg/blas.hpp"
#include "linalg/lapack.hpp"

namespace {

using oxa::linalg::gemm;
using oxa::linalg::potrf;
using oxa::linalg::potri;
using oxa::linalg::syev;
using oxa::linalg::syrk;
using oxa::linalg::trmm;
using oxa::linalg::trsm;
using oxa::linalg::trtri;

constexpr int n = 3;
// A = L·Lᵀ; every step of its Cholesky factorization is exact.
constexpr double kL[n * n] = {2, 1, -1, 0, 3, 2, 0, 0, 4};
constexpr double kA[n * n] = {4, 2, -2, 2, 10, 5, -2, 5, 21};
constexpr double kB[n * n] = {1, -2, 3, 0.5, 4, -1, 2, 2, 2};  // any right-hand side

template <class T>
class LinalgRoutines : public testing::Test {
 protected:
  static std::vector<T> m(const double* v) { return std::vector<T>(v, v + n * n); }
  static std::vector<T> identity() {
    std::vector<T> e(n * n, T(0));
    for (int i = 0; i < n; ++i) e[i * n + i] = 1;
    return e;
  }
  // Compares the `uplo` triangle ('A': all) of x with y, to a few rounding errors.
  static void expect_near(const std::vector<T>& x, const std::vector<T>& y, char uplo, const char* what) {
    const double tol = 64 * std::numeric_limits<T>::epsilon();
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i)
        if (uplo == 'A' || (uplo == 'L' ? i >= j : i <= j)) {
          EXPECT_NEAR(x[i + j * n], y[i + j * n], tol * (1 + std::fabs(double(y[i + j * n]))))
              << what << " (" << i << ", " << j << ")";
        }
  }
};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(LinalgRoutines, Precisions);

TYPED_TEST(LinalgRoutines, ProductsAndSolves) {
  using T = TypeParam;
  const auto L = this->m(kL), A = this->m(kA), B = this->m(kB);
  auto c = this->m(kB);
  syrk('L', 'N', n, n, T(1), L.data(), n, T(0), c.data(), n);
  this->expect_near(c, A, 'L', "syrk L·Lᵀ");
  c = this->m(kB);
  syrk('U', 'T', n, n, T(1), L.data(), n, T(0), c.data(), n);
  auto g = this->m(kB);
  gemm('T', 'N', n, n, n, T(1), L.data(), n, L.data(), n, T(0), g.data(), n);
  this->expect_near(c, g, 'U', "syrk Lᵀ·L against gemm");
  std::vector<T> expected(n * n);
  for (int k = 0; k < n * n; ++k) expected[k] = 2 * A[k] - g[k];
  gemm('N', 'T', n, n, n, T(2), L.data(), n, L.data(), n, T(-1), g.data(), n);
  this->expect_near(g, expected, 'A', "gemm 2·L·Lᵀ − Lᵀ·L");

  // trsm undoes trmm on both sides.
  auto x = B;
  trmm('L', 'L', 'N', 'N', n, n, T(1), L.data(), n, x.data(), n);
  gemm('N', 'N', n, n, n, T(1), L.data(), n, B.data(), n, T(0), g.data(), n);
  this->expect_near(x, g, 'A', "trmm left = gemm");
  trsm('L', 'L', 'N', 'N', n, n, T(1), L.data(), n, x.data(), n);
  this->expect_near(x, B, 'A', "trsm left");
  trmm('R', 'L', 'T', 'N', n, n, T(2), L.data(), n, x.data(), n);
  gemm('N', 'T', n, n, n, T(2), B.data(), n, L.data(), n, T(0), g.data(), n);
  this->expect_near(x, g, 'A', "trmm right transposed = gemm");
  trsm('R', 'L', 'T', 'N', n, n, T(0.5), L.data(), n, x.data(), n);
  this->expect_near(x, B, 'A', "trsm right transposed");
}

TYPED_TEST(LinalgRoutines, Factorizations) {
  using T = TypeParam;
  const auto L = this->m(kL), A = this->m(kA), E = this->identity();
  auto f = A;
  ASSERT_EQ(potrf('L', n, f.data(), n), 0);
  this->expect_near(f, L, 'L', "potrf");
  auto inv_a = f;
  ASSERT_EQ(potri('L', n, inv_a.data(), n), 0);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < j; ++i) inv_a[i + j * n] = inv_a[j + i * n];
  std::vector<T> g(n * n);
  gemm('N', 'N', n, n, n, T(1), A.data(), n, inv_a.data(), n, T(0), g.data(), n);
  this->expect_near(g, E, 'A', "A·potri(A)");

  auto inv_l = L;
  ASSERT_EQ(trtri('L', 'N', n, inv_l.data(), n), 0);
  trmm('L', 'L', 'N', 'N', n, n, T(1), L.data(), n, inv_l.data(), n);
  this->expect_near(inv_l, E, 'L', "L·trtri(L)");

  auto singular = A;
  singular[8] = 4;  // the last pivot becomes 4 − 1 − 4 < 0
  EXPECT_EQ(potrf('L', n, singular.data(), n), 3);
}

TYPED_TEST(LinalgRoutines, SymmetricEigenproblem) {
  using T = TypeParam;
  const auto A = this->m(kA);
  auto v = A;
  T w[n], query = 0;
  ASSERT_EQ(syev('V', 'U', n, v.data(), n, w, &query, -1), 0);
  std::vector<T> work(static_cast<size_t>(query));
  ASSERT_EQ(syev('V', 'U', n, v.data(), n, w, work.data(), static_cast<int>(work.size())), 0);
  EXPECT_LE(w[0], w[1]);
  EXPECT_LE(w[1], w[2]);
  EXPECT_NEAR(w[0] + w[1] + w[2], 35, 35 * 64 * std::numeric_limits<T>::epsilon()) << "trace";
  EXPECT_NEAR(w[0] * w[1] * w[2], 576, 576 * 64 * std::numeric_limits<T>::epsilon()) << "det = (2·3·4)²";
  std::vector<T> av(n * n), vw(v);
  gemm('N', 'N', n, n, n, T(1), A.data(), n, v.data(), n, T(0), av.data(), n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) vw[i + j * n] *= w[j] / 35;
  for (auto& e : av) e /= 35;
  this->expect_near(av, vw, 'A', "A·V = V·diag(w)");
}

}  // namespace
