// Error routines: the status, the error modes (ignore, errno, stderr,
// callback), the callback's return value, the record it receives, the index
// correction and the write-back of results.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>

#include "oxa/vector_math.h"

namespace {

// Each test runs on a fresh thread with a known mode, so no state leaks.
template <class F>
void with_mode(uint32_t mode, F f) {
  std::thread([&] {
    oxa_vml_kernel_SetMode(mode);
    f();
  }).join();
}

VmlErrorContext g_seen;
int g_calls;
int32_t g_return;
double g_replace = NAN;

int32_t recorder(VmlErrorContext* c) {
  g_seen = *c;
  ++g_calls;
  if (!std::isnan(g_replace)) c->res1 = g_replace, c->res2 = g_replace + 1;
  return g_return;
}

void reset_recorder(int32_t ret, double replace = NAN) {
  g_calls = 0, g_return = ret, g_replace = replace;
  std::memset(&g_seen, 0, sizeof g_seen);
}

TEST(VmlErrors, ErrnoValuesPerStatus) {
  const struct {
    int32_t code;
    int err;
  } cases[] = {{0, 0}, {1, EDOM}, {2, ERANGE}, {3, ERANGE}, {4, ERANGE}, {-1, EINVAL}, {-2, EACCES}, {9, EFAULT}};
  for (const auto& c : cases) {
    with_mode(0x202, [&] {
      double a[2] = {1, 2}, r[2] = {3, 4};
      errno = 12345;
      oxa_vml_kernel_dError(c.code, 1, a, a, r, r, "vdTest");
      EXPECT_EQ(errno, c.err) << c.code;
      EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), c.code);
    });
  }
}

TEST(VmlErrors, IgnoreModeOnlyRecordsTheStatus) {
  with_mode(0x102, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);  // mode becomes 0x1102: not "ignore only"
    oxa_vml_kernel_SetMode(0x100);              // back to exactly ignore
    reset_recorder(0, 42.0);
    double a[1] = {5}, r[1] = {6};
    errno = 0;
    testing::internal::CaptureStderr();
    oxa_vml_kernel_dError(1, 0, a, a, r, r, "vdTest");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), 1);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(g_calls, 0);
    EXPECT_EQ(r[0], 6.0);
  });
}

TEST(VmlErrors, StderrReportForms) {
  const struct {
    int32_t code;
    double a, b, r1, r2;
    std::vector<std::string> want;  // fragments that must appear in order
    std::vector<std::string> absent;
  } cases[] = {
      {1, 0.25, 0.25, 7.5, 7.5, {"vdTest", "domain", "element 5: argument 0.25", "element 5: result 7.5"}, {"second"}},
      {2, 0.25, 0.0, 7.5, 0.0, {"singularity", "argument 0.25", "result 7.5"}, {"second"}},
      {3, 0.25, 0.5, 7.5, 7.5, {"overflow", "first argument 0.25", "second argument 0.5", "result 7.5"}, {"first result"}},
      {4, 0.25, 0.25, 7.5, 8.5, {"underflow", "argument 0.25", "first result 7.5", "second result 8.5"}, {"second argument"}},
      {6, 0.25, 0.5, 7.5, 8.5, {"unknown", "first argument 0.25", "second argument 0.5", "first result 7.5", "second result 8.5"}, {}},
      {-1, 0, 0, 0, 0, {"vdTest", "invalid argument at element 5"}, {"result"}},
      {-2, 0, 0, 0, 0, {"vdTest", "not accessible"}, {"element"}},
      {0, 0.25, 0.25, 7.5, 7.5, {}, {"vdTest"}},
  };
  for (const auto& c : cases) {
    with_mode(0x402, [&] {
      double a[6] = {}, b[6] = {}, r1[6] = {}, r2[6] = {};
      a[5] = c.a, b[5] = c.b, r1[5] = c.r1, r2[5] = c.r2;
      testing::internal::CaptureStderr();
      oxa_vml_kernel_dError(c.code, 5, a, b, r1, r2, "vdTest");
      const std::string err = testing::internal::GetCapturedStderr();
      size_t at = 0;
      for (const std::string& w : c.want) {
        const size_t found = err.find(w, at);
        EXPECT_NE(found, std::string::npos) << c.code << ": '" << w << "' in\n" << err;
        if (found != std::string::npos) at = found;
      }
      for (const std::string& w : c.absent) EXPECT_EQ(err.find(w), std::string::npos) << c.code << "\n" << err;
    });
  }
}

TEST(VmlErrors, CallbackReceivesTheRecordAndItsReturnDecides) {
  // Returning nonzero: handled, no errno, result untouched even if the record changed.
  with_mode(0x1A02, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);
    reset_recorder(1, 99.0);
    double a[4] = {0, 0, 0.5, 0}, b[4] = {0, 0, 0.75, 0}, r1[4] = {0, 0, 3.0, 0}, r2[4] = {0, 0, 4.0, 0};
    errno = 0;
    oxa_vml_kernel_dError(2, 2, a, b, r1, r2, "vdTest");
    EXPECT_EQ(g_calls, 1);
    EXPECT_EQ(g_seen.code, 2);
    EXPECT_EQ(g_seen.index, 2);
    EXPECT_EQ(g_seen.arg1, 0.5);
    EXPECT_EQ(g_seen.arg2, 0.75);
    EXPECT_EQ(g_seen.res1, 3.0);
    EXPECT_EQ(g_seen.res2, 4.0);
    EXPECT_STREQ(g_seen.func_name, "vdTest");
    EXPECT_EQ(g_seen.func_name_len, 6);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(r1[2], 3.0);
    EXPECT_EQ(r2[2], 4.0);
  });
  // Returning 0: errno follows, the record's results are written back, r2
  // first then r1 (so with one result array the first result wins).
  with_mode(0x1A02, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);
    reset_recorder(0, 99.0);
    double a[1] = {0.5}, r[1] = {3.0};
    errno = 0;
    oxa_vml_kernel_dError(1, 0, a, a, r, r, "vdTest");
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(r[0], 99.0);
  });
  // The callback bit without a callback, or a callback without the bit, calls nothing.
  with_mode(0x1002, [] {
    reset_recorder(1);
    double a[1] = {0.5}, r[1] = {3.0};
    oxa_vml_kernel_dError(1, 0, a, a, r, r, "vdTest");
    EXPECT_EQ(g_calls, 0);
  });
}

TEST(VmlErrors, InvalidAndNoAccessCodesTouchNoArrays) {
  with_mode(0x1002, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);
    reset_recorder(0, 99.0);
    oxa_vml_kernel_dError(-1, 7, nullptr, nullptr, nullptr, nullptr, "vdTest");
    EXPECT_EQ(g_calls, 1);
    EXPECT_EQ(g_seen.index, 7);
    EXPECT_EQ(g_seen.arg1, 0.0);
    oxa_vml_kernel_sError(-2, 0, nullptr, nullptr, nullptr, nullptr, "vsTest");
    EXPECT_EQ(g_seen.code, -2);
  });
}

TEST(VmlErrors, LongNamesAreCutAt64Characters) {
  with_mode(0x1002, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);
    reset_recorder(1);
    const std::string name(80, 'x');
    double a[1] = {0}, r[1] = {0};
    oxa_vml_kernel_dError(1, 0, a, a, r, r, name.c_str());
    EXPECT_EQ(g_seen.func_name_len, 64);
    EXPECT_EQ(std::string(g_seen.func_name, 64), name.substr(0, 64));
  });
}

// Indices count from the start of the caller's whole vector once the front
// layer has recorded it, by the element size of each type.
TEST(VmlErrors, IndexCorrectionByElementSize) {
  with_mode(0x1002, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);
    reset_recorder(1);
    static double d[1000];
    static float s[1000];
    static OxaComplex8 c[1000];
    static OxaComplex16 z[1000];
    oxa_vml_kernel_SetInterfInputVectorPointer(d);
    oxa_vml_kernel_dError(1, 5, d + 600, d + 600, d + 600, d + 600, "vdTest");
    EXPECT_EQ(g_seen.index, 605);
    oxa_vml_kernel_SetInterfInputVectorPointer(s);
    oxa_vml_kernel_sError(1, 5, s + 600, s + 600, s + 600, s + 600, "vsTest");
    EXPECT_EQ(g_seen.index, 605);
    oxa_vml_kernel_SetInterfInputVectorPointer(c);
    oxa_vml_kernel_cError(1, 5, c + 600, c + 600, c + 600, c + 600, "vcTest");
    EXPECT_EQ(g_seen.index, 605);
    oxa_vml_kernel_SetInterfInputVectorPointer(z);
    oxa_vml_kernel_zError(1, 5, z + 600, z + 600, z + 600, z + 600, "vzTest");
    EXPECT_EQ(g_seen.index, 605);
    oxa_vml_kernel_SetInterfInputVectorPointer(nullptr);
    oxa_vml_kernel_zError(1, 5, z + 600, z + 600, z + 600, z + 600, "vzTest");
    EXPECT_EQ(g_seen.index, 5);
  });
}

TEST(VmlErrors, SingleAndComplexValuesAreWidenedAndWrittenBack) {
  with_mode(0x1002, [] {
    oxa_vml_kernel_SetErrorCallBack(recorder);
    reset_recorder(0, 2.5);
    float a[1] = {0.1f}, r[1] = {1.0f};
    oxa_vml_kernel_sError(1, 0, a, a, r, r, "vsTest");
    EXPECT_EQ(g_seen.arg1, static_cast<double>(0.1f));
    EXPECT_EQ(r[0], 2.5f);

    OxaComplex16 za[1] = {{1.0, -2.0}}, zb[1] = {{3.0, -4.0}}, z1[1] = {{5.0, -6.0}}, z2[1] = {{7.0, -8.0}};
    oxa_vml_kernel_zError(3, 0, za, zb, z1, z2, "vzTest");
    EXPECT_EQ(g_seen.arg1_im, -2.0);
    EXPECT_EQ(g_seen.arg2_im, -4.0);
    EXPECT_EQ(g_seen.res1_im, -6.0);
    EXPECT_EQ(g_seen.res2_im, -8.0);
    EXPECT_EQ(z1[0].real, 2.5);
    EXPECT_EQ(z1[0].imag, -6.0);
    EXPECT_EQ(z2[0].real, 3.5);

    OxaComplex8 ca[1] = {{1.0f, -2.0f}}, cr[1] = {{5.0f, -6.0f}};
    oxa_vml_kernel_cError(1, 0, ca, ca, cr, cr, "vcTest");
    EXPECT_EQ(g_seen.arg1_im, -2.0);
    EXPECT_EQ(cr[0].real, 2.5f);
    EXPECT_EQ(cr[0].imag, -6.0f);
  });
}

}  // namespace
