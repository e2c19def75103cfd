// The accumulated state of the basic estimator over a set of observations, and
// the pairwise merge of two such states.
#pragma once

#include <cstdint>
#include <cstring>

namespace oxa::ss {

// State over the selected components (dense, k = 0..pc-1; arrays padded to a
// stride `ps` that is a multiple of 8). Only the parts the plan names are kept
// up to date; cp holds its upper triangle (a <= b) with row stride ps.
template <class T>
struct Partial {
  T W = 0;        // sum of weights
  T W2 = 0;       // sum of squared weights
  T* sum;         // sum of w x
  T* mean;        // weighted mean (the given mean in the given-mean method)
  T* raw[3];      // sums of w x^k, k = 2, 3, 4
  T* central[3];  // sums of w (x - mean)^k, k = 2, 3, 4
  T* cp;          // sums of w (x_a - mean_a)(x_b - mean_b)

  // Elements a partial of stride ps takes.
  static int64_t elements(int64_t ps, bool with_cp) { return 8 * ps + (with_cp ? ps * ps : 0); }

  // Points the arrays into `memory` (elements(ps, with_cp) values) and zeroes it.
  void bind(T* memory, int64_t ps, bool with_cp) {
    std::memset(static_cast<void*>(memory), 0, sizeof(T) * elements(ps, with_cp));
    W = W2 = 0;
    sum = memory;
    mean = memory + ps;
    for (int k = 0; k < 3; ++k) {
      raw[k] = memory + (2 + k) * ps;
      central[k] = memory + (5 + k) * ps;
    }
    cp = with_cp ? memory + 8 * ps : nullptr;
  }
};

// What a merge carries.
struct Parts {
  int64_t pc;         // components
  int64_t ps;         // stride
  int raw_order;      // raw power sums 2..raw_order
  int central_order;  // central sums 2..central_order (0: none)
  bool cp;            // cross-products
};

// Folds state B into state A so that A describes the union of both sets of
// observations, as if B's observations had followed A's one by one.
// With d = mean_B - mean_A, W = W_A + W_B and f = W_A W_B / W:
//   S2 = S2_A + S2_B + f d^2
//   S3 = S3_A + S3_B + f d^3 (W_A - W_B)/W + 3 d (W_A S2_B - W_B S2_A)/W
//   S4 = S4_A + S4_B + f d^4 (W_A^2 - W_A W_B + W_B^2)/W^2
//        + 6 d^2 (W_A^2 S2_B + W_B^2 S2_A)/W^2 + 4 d (W_A S3_B - W_B S3_A)/W
//   C_ab = C_ab,A + C_ab,B + f d_a d_b,  mean = mean_A + d W_B/W.
// (Expand sum w (x - m)^k about the union mean m = mean_A + d W_B/W for each
// half and collect powers of d; S1 about a set's own mean is zero.) With a
// single observation as B this is the one-pass update r = 1/(W_A + w):
// S2 += w W_A r d^2, mean = W_A r mean + w r x. An empty A (W_A = 0) takes B
// as it is, whatever A's arrays hold; an empty B changes nothing.
template <class T>
void merge(Partial<T>& A, const Partial<T>& B, const Parts& parts) {
  if (B.W == 0) return;
  const int64_t pc = parts.pc;
  if (A.W == 0) {
    A.W = B.W;
    A.W2 = B.W2;
    std::memcpy(A.sum, B.sum, sizeof(T) * pc);
    std::memcpy(A.mean, B.mean, sizeof(T) * pc);
    for (int k = 2; k <= parts.raw_order; ++k)
      std::memcpy(A.raw[k - 2], B.raw[k - 2], sizeof(T) * pc);
    for (int k = 2; k <= parts.central_order; ++k)
      std::memcpy(A.central[k - 2], B.central[k - 2], sizeof(T) * pc);
    if (parts.cp)
      for (int64_t a = 0; a < pc; ++a)
        std::memcpy(A.cp + a * parts.ps + a, B.cp + a * parts.ps + a, sizeof(T) * (pc - a));
    return;
  }
  const T wa = A.W, wb = B.W, w = wa + wb;
  const T f = wa * wb / w;
  const T bw = wb / w;
  for (int64_t j = 0; j < pc; ++j) {
    const T dj = B.mean[j] - A.mean[j];
    if (parts.central_order >= 2) {
      const T s2a = A.central[0][j], s2b = B.central[0][j];
      const T fd2 = f * dj * dj;
      if (parts.central_order >= 4) {
        const T s3a = A.central[1][j], s3b = B.central[1][j];
        const T t1 = fd2 * dj * dj * ((wa * wa - wa * wb + wb * wb) / (w * w));
        const T t2 = T(6) * dj * dj * (wa * wa * s2b + wb * wb * s2a) / (w * w);
        const T t3 = T(4) * dj * (wa * s3b - wb * s3a) / w;
        A.central[2][j] += B.central[2][j] + t1 + t2 + t3;
      }
      if (parts.central_order >= 3) {
        const T s3a = A.central[1][j], s3b = B.central[1][j];
        const T t1 = fd2 * dj * ((wa - wb) / w);
        const T t2 = T(3) * dj * (wa * s2b - wb * s2a) / w;
        A.central[1][j] = s3a + s3b + t1 + t2;
      }
      A.central[0][j] = s2a + s2b + fd2;
    }
    for (int k = 2; k <= parts.raw_order; ++k) A.raw[k - 2][j] += B.raw[k - 2][j];
    A.sum[j] += B.sum[j];
  }
  if (parts.cp) {
    for (int64_t a = 0; a < pc; ++a) {
      const T fda = f * (B.mean[a] - A.mean[a]);
      T* ca = A.cp + a * parts.ps;
      const T* cb = B.cp + a * parts.ps;
      for (int64_t b = a; b < pc; ++b) ca[b] += cb[b] + fda * (B.mean[b] - A.mean[b]);
    }
  }
  for (int64_t j = 0; j < pc; ++j) A.mean[j] += (B.mean[j] - A.mean[j]) * bw;
  A.W = w;
  A.W2 += B.W2;
}

}  // namespace oxa::ss
