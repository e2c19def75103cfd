// The kernel frame, exercised through probe families defined here: blocking
// and tails for every n, special lanes settled lowest first and kept away from
// the vector formula, statuses reported with local indices, the control word
// set from the mode and restored, and the other argument shapes.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <thread>
#include <vector>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Probe {
  static constexpr const char* kName = "Probe";
};
struct Probe2 {
  static constexpr const char* kName = "Probe2";
};
struct ProbeScalar {
  static constexpr const char* kName = "ProbeScalar";
};
struct ProbeTwoOut {
  static constexpr const char* kName = "ProbeTwoOut";
};
}  // namespace fam

namespace {

// What the probes observed.
struct Log {
  std::vector<int> settled;  // order in which special elements were settled
  bool formula_saw_special = false;
  unsigned mxcsr_inside = 0;
} g_log;

}  // namespace

// r = 2a; negative inputs are special: -1 reports status 3 with result -7,
// other negatives are settled quietly to 0.
template <class T, Acc A>
struct Policy<fam::Probe, T, A> {
  static simd::Mask<T> special(simd::Vec<T> a) {
    using VI = simd::Vec<simd::IntOf<T>>;
    return simd::mask_cast<T>(VI(0) > simd::bits(a));
  }
  static simd::Vec<T> vector(simd::Vec<T> a) {
    g_log.mxcsr_inside = _mm_getcsr();
    if (simd::lane_bits(special(a)) != 0) g_log.formula_saw_special = true;
    return a + a;
  }
  static int32_t scalar(const T* a, T* r) {
    g_log.settled.push_back(static_cast<int>(-*a));
    if (*a == T(-1)) return *r = T(-7), 3;
    *r = 0;
    return 0;
  }
};

template <class T, Acc A>
struct Policy<fam::Probe2, T, A> {
  static constexpr bool kSetsControlWord = false;
  static constexpr T kSafeInput = T(1), kSafeInput2 = T(2);
  static simd::Mask<T> special(simd::Vec<T>, simd::Vec<T> b) { return Policy<fam::Probe, T, A>::special(b); }
  static simd::Vec<T> vector(simd::Vec<T> a, simd::Vec<T> b) { return a * b; }
  static int32_t scalar(const T*, const T* b, T* r) { return *r = *b, 1; }
};

template <class T, Acc A>
struct Policy<fam::ProbeScalar, T, A> {
  static constexpr bool kSetsControlWord = false;
  static constexpr T kSafeInput = T(1);
  static simd::Mask<T> special(simd::Vec<T> a, simd::Vec<T>) { return Policy<fam::Probe, T, A>::special(a); }
  static simd::Vec<T> vector(simd::Vec<T> a, simd::Vec<T> b) { return a + b; }
  static int32_t scalar(const T*, const T* b, T* r) { return *r = -*b, 4; }
};

template <class T, Acc A>
struct Policy<fam::ProbeTwoOut, T, A> {
  static constexpr bool kSetsControlWord = false;
  static constexpr T kSafeInput = T(1);
  static simd::Mask<T> special(simd::Vec<T> a) { return Policy<fam::Probe, T, A>::special(a); }
  static void vector(simd::Vec<T> a, simd::Vec<T>& r1, simd::Vec<T>& r2) { r1 = a + a, r2 = a * a; }
  static int32_t scalar(const T*, T* r1, T* r2) { return *r1 = 0, *r2 = 0, 1; }
};

namespace {

std::vector<std::pair<int32_t, int32_t>> g_reports;  // (index, code)
int32_t collect(VmlErrorContext* c) {
  g_reports.emplace_back(c->index, c->code);
  return 0;
}

template <class T>
void check_blocking() {
  oxa_vml_kernel_SetErrorCallBack(collect);
  for (int n = 0; n <= 41; ++n) {
    for (int pos = -1; pos < n; ++pos) {
      std::vector<T> a(n + 1, T(0)), r(n + 1, T(99));
      for (int i = 0; i < n; ++i) a[i] = T(i + 1);
      std::vector<int> want_settled;
      std::vector<std::pair<int32_t, int32_t>> want_reports;
      if (pos >= 0) {
        a[pos] = T(-1);
        want_settled.push_back(1);
        want_reports.emplace_back(pos, 3);
        if (pos + 3 < n) a[pos + 3] = T(-2), want_settled.push_back(2);
      }
      a[n] = T(-5);  // beyond n: must be neither read as special nor written
      g_log = {};
      g_reports.clear();
      kernel_in1_out1<fam::Probe, T, Acc::HA>(n, a.data(), r.data());
      for (int i = 0; i < n; ++i) {
        const T want = a[i] == T(-1) ? T(-7) : a[i] < 0 ? T(0) : 2 * a[i];
        ASSERT_EQ(r[i], want) << "n=" << n << " pos=" << pos << " i=" << i;
      }
      ASSERT_EQ(r[n], T(99)) << "n=" << n;
      ASSERT_EQ(g_log.settled, want_settled) << "n=" << n << " pos=" << pos;
      ASSERT_EQ(g_reports, want_reports) << "n=" << n << " pos=" << pos;
      ASSERT_FALSE(g_log.formula_saw_special) << "n=" << n;
    }
  }
  oxa_vml_kernel_ClearErrorCallBack();
}

TEST(VmlFrame, EveryLengthEveryPositionDouble) { check_blocking<double>(); }
TEST(VmlFrame, EveryLengthEveryPositionSingle) { check_blocking<float>(); }

TEST(VmlFrame, CountUsesThirtyTwoBitsAndNonPositiveDoesNothing) {
  double a[6] = {1, 2, 3, 4, 5, 6}, r[6] = {};
  kernel_in1_out1<fam::Probe, double, Acc::HA>(int64_t{1} << 32 | 5, a, r);
  EXPECT_EQ(r[4], 10.0);
  EXPECT_EQ(r[5], 0.0);
  kernel_in1_out1<fam::Probe, double, Acc::HA>(-3, a, r + 5);
  EXPECT_EQ(r[5], 0.0);
}

TEST(VmlFrame, ControlWordFollowsTheModeAndIsRestored) {
  std::thread([] {
    const unsigned saved = _mm_getcsr();
    const struct {
      uint32_t denormal;
      unsigned before;  // FTZ/DAZ/rounding bits of MXCSR on entry
      unsigned inside;
    } cases[] = {
        {OXA_VML_DENORMAL_FLUSH, 0x0000, 0x8040}, {OXA_VML_DENORMAL_FLUSH, 0x6000, 0x8040},
        {OXA_VML_DENORMAL_FLUSH, 0x8040, 0x8040}, {OXA_VML_DENORMAL_KEEP, 0x8040, 0x0000},
        {OXA_VML_DENORMAL_KEEP, 0x2000, 0x0000},  {OXA_VML_DENORMAL_KEEP, 0x0000, 0x0000},
    };
    for (const auto& c : cases) {
      oxa_vml_kernel_SetMode(c.denormal);
      const unsigned entry = (saved & ~0xE040u) | c.before;
      _mm_setcsr(entry);
      double a[3] = {1, 2, 3}, r[3];
      kernel_in1_out1<fam::Probe, double, Acc::HA>(3, a, r);
      EXPECT_EQ(g_log.mxcsr_inside & 0xE040u, c.inside) << std::hex << c.before;
      EXPECT_EQ(_mm_getcsr() & 0xFFC0u, entry & 0xFFC0u) << std::hex << c.before;
    }
    _mm_setcsr(saved);
  }).join();
}

TEST(VmlFrame, OtherShapes) {
  oxa_vml_kernel_SetErrorCallBack(collect);
  g_reports.clear();
  double a[7] = {1, 2, 3, 4, 5, 6, 7}, b[7] = {1, 1, -1, 1, 1, 1, 1}, r[7], r2[7];
  kernel_in2_out1<fam::Probe2, double, Acc::HA>(7, a, b, r);
  EXPECT_EQ(r[1], 2.0);
  EXPECT_EQ(r[2], -1.0);
  EXPECT_EQ(r[6], 7.0);

  a[5] = -1;
  kernel_in1_scalar_out1<fam::ProbeScalar, double, Acc::HA>(7, a, 0.5, r);
  EXPECT_EQ(r[0], 1.5);
  EXPECT_EQ(r[5], -0.5);

  kernel_in1_out2<fam::ProbeTwoOut, double, Acc::HA>(7, a, r, r2);
  EXPECT_EQ(r[6], 14.0);
  EXPECT_EQ(r2[6], 49.0);
  EXPECT_EQ(r[5], 0.0);
  const std::vector<std::pair<int32_t, int32_t>> want = {{2, 1}, {5, 4}, {5, 1}};
  EXPECT_EQ(g_reports, want);
  oxa_vml_kernel_ClearErrorCallBack();
}

}  // namespace
}  // namespace oxa::vml
