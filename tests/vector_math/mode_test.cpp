// Mode word: parsing of OXA_VML_MODE, initialisation per thread, the SetMode
// field rules, the callback bit, dispatch indices, status and the independence
// of threads.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "oxa/vector_math.h"

namespace {

// Runs f on a fresh thread, whose mode word is still uninitialised.
template <class F>
void on_new_thread(F f) {
  std::thread(f).join();
}

void set_env(const char* value) {
  if (value == nullptr)
    unsetenv("OXA_VML_MODE");
  else
    setenv("OXA_VML_MODE", value, 1);
}

TEST(VmlMode, EnvironmentValues) {
  const std::string long_value = [] {
    std::string s;
    for (int i = 0; i < 36; ++i) s += "VML_HA,";
    return s + "VML_HA";  // 258 characters: cut at 255, mid-word
  }();
  struct Case {
    const char* value;
    int64_t parsed;
    uint32_t mode;
  } cases[] = {
      {nullptr, -1, 0x1A02},
      {"", -1, 0x1A02},
      {"VML_EP,VML_ERRMODE_STDERR", 0x403, 0x403},
      {"VML_EP, VML_ERRMODE_STDERR", -1, 0x1A02},
      {" VML_EP", -1, 0x1A02},
      {"EP", -1, 0x1A02},
      {"VML_EP,", -1, 0x1A02},
      {"VML_EP,,VML_HA", -1, 0x1A02},
      {"VML_DOUBLE_CONSISTENT", -1, 0x1A02},
      {"VML_DOUBLE_CONSISTEN", 0x20, 0x20},
      {"VML_FLOAT_CONSISTENT,VML_LA", 0x11, 0x11},
      {"VML_RESTORE", 0x30, 0x30},
      {"VML_LA,VML_HA", 0x3, 0x3},
      {"VML_HA,VML_HA,VML_ERRMODE_IGNORE", 0x102, 0x102},
      {"VML_ERRMODE_DEFAULT,VML_EP", 0x1A03, 0x1A03},
      {"VML_ERRMODE_ERRNO,VML_ERRMODE_CALLBACK,VML_ERRMODE_EXCEPT", 0x1A00, 0x1A00},
      {"VML_ERRMODE_ERRNOX", -1, 0x1A02},
      {"VML_ha", -1, 0x1A02},
      {"VML_HA\tX", -1, 0x1A02},
      {long_value.c_str(), -1, 0x1A02},
  };
  for (const Case& c : cases) {
    set_env(c.value);
    EXPECT_EQ(oxa_vml_kernel_ReadEnvVarMode(), c.parsed) << (c.value ? c.value : "(unset)");
    on_new_thread([&] { EXPECT_EQ(oxa_vml_kernel_GetMode(), c.mode) << (c.value ? c.value : "(unset)"); });
  }
  set_env(nullptr);
}

// A word worth 0 leaves the mode uninitialised, so every read consults the
// environment again.
TEST(VmlMode, ZeroFromTheEnvironmentIsReadAgain) {
  set_env("VML_DEFAULT_PRECISION");
  on_new_thread([] {
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 0u);
    EXPECT_EQ(oxa_vml_kernel_GetTTableIndex(), -1);
    set_env("VML_LA");
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 1u);
    set_env("VML_EP");
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 1u);  // now initialised, fixed
  });
  set_env(nullptr);
}

TEST(VmlMode, SetModeReplacesOnlyTheNonzeroFields) {
  set_env("VML_FLOAT_CONSISTENT,VML_HA,VML_ERRMODE_DEFAULT");
  on_new_thread([] {
    const struct {
      uint32_t arg, previous, after;
    } steps[] = {
        {0x400, 0x1A12, 0x0412},       // error field replaced whole, accuracy kept
        {0x3, 0x0412, 0x0413},         // accuracy replaced, error field kept
        {0x30, 0x0413, 0x0413},        // consistency never changes through SetMode
        {0x280000, 0x0413, 0x280413},  // denormal field
        {0x140000, 0x280413, 0x140413},
        {0, 0x140413, 0x140413},
        {0x1A01, 0x140413, 0x141A11},
    };
    for (const auto& s : steps) {
      EXPECT_EQ(oxa_vml_kernel_SetMode(s.arg), s.previous) << std::hex << s.arg;
      EXPECT_EQ(oxa_vml_kernel_GetMode(), s.after) << std::hex << s.arg;
    }
    EXPECT_EQ(_vmlSetMode(0x2), 0x141A11u);
    EXPECT_EQ(_vmlGetMode(), 0x141A12u);
  });
  set_env(nullptr);
}

int32_t handled(VmlErrorContext*) { return 1; }

TEST(VmlMode, CallbackSettersRewriteTheCallbackBit) {
  on_new_thread([] {
    EXPECT_EQ(oxa_vml_kernel_SetErrorCallBack(handled), nullptr);
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 0x1A02u);
    EXPECT_EQ(oxa_vml_kernel_GetErrorCallBack(), &handled);
    EXPECT_EQ(oxa_vml_kernel_ClearErrorCallBack(), &handled);
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 0x0A02u);
    EXPECT_EQ(oxa_vml_kernel_GetErrorCallBack(), nullptr);

    oxa_vml_kernel_SetMode(0x100);
    EXPECT_EQ(_vmlSetErrorCallBack(handled), nullptr);
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 0x1102u);

    // A field of exactly 0x1000 would become 0, which SetMode ignores.
    oxa_vml_kernel_SetMode(0x1000);
    EXPECT_EQ(_vmlClearErrorCallBack(), &handled);
    EXPECT_EQ(oxa_vml_kernel_GetMode(), 0x1002u);
    EXPECT_EQ(_vmlGetErrorCallBack(), nullptr);
  });
}

TEST(VmlMode, TableIndexAndStatus) {
  on_new_thread([] {
    EXPECT_EQ(oxa_vml_kernel_GetTTableIndex(), 1);
    oxa_vml_kernel_SetMode(OXA_VML_EP);
    EXPECT_EQ(oxa_vml_kernel_GetTTableIndex(), 2);
    oxa_vml_kernel_SetMode(OXA_VML_LA);
    EXPECT_EQ(oxa_vml_kernel_GetTTableIndex(), 0);
    EXPECT_EQ(oxa_vml_kernel_GetTTableIndexM(123, 0x1A03), 2);
    EXPECT_EQ(oxa_vml_kernel_GetTTableIndexM(0, 0x2), 1);

    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), 0);
    EXPECT_EQ(oxa_vml_kernel_SetErrStatus(3), 0);
    EXPECT_EQ(_vmlSetErrStatus(-1), 3);
    EXPECT_EQ(_vmlGetErrStatus(), -1);
    EXPECT_EQ(oxa_vml_kernel_ClearErrStatus(), -1);
    EXPECT_EQ(_vmlClearErrStatus(), 0);

    int x;
    EXPECT_EQ(oxa_vml_kernel_SetInterfInputVectorPointer(&x), &x);
    EXPECT_EQ(_vmlSetInterfInputVectorPointer(nullptr), nullptr);
  });
}

int32_t other(VmlErrorContext*) { return 0; }

TEST(VmlMode, EachThreadHasItsOwnValues) {
  constexpr int kThreads = 6;
  std::vector<std::thread> threads;
  std::vector<int> ok(kThreads, 0);
  static int anchors[kThreads];
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &ok] {
      const uint32_t mode = (t % 3 + 1) | (0x100u << (t % 4));
      const VmlErrorCallBack cb = t % 2 ? handled : other;
      for (int round = 0; round < 2000; ++round) {
        oxa_vml_kernel_SetMode(mode);
        oxa_vml_kernel_SetErrStatus(t * 10 + round % 7);
        oxa_vml_kernel_SetErrorCallBack(cb);
        oxa_vml_kernel_SetInterfInputVectorPointer(&anchors[t]);
        std::this_thread::yield();
        if ((oxa_vml_kernel_GetMode() & 0xF) != (mode & 0xF)) return;
        if (oxa_vml_kernel_GetErrStatus() != t * 10 + round % 7) return;
        if (oxa_vml_kernel_GetErrorCallBack() != cb) return;
        if (oxa_vml_kernel_SetInterfInputVectorPointer(&anchors[t]) != &anchors[t]) return;
      }
      ok[t] = 1;
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(ok[t], 1) << t;
}

}  // namespace
