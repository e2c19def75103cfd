// How the distribution generators reach the vector-math component: the
// dispatch tables of the kernels they call, the error frame that every
// generator wraps around its work, and the denormal setting around each
// kernel call.
#pragma once

#include <cstdint>

#include "oxa/vector_math.h"
#include "vector_math/frame/thread_state.hpp"

namespace oxa::distributions {

// Slots of a dispatch table.
inline constexpr int kSlotLA = 0;
inline constexpr int kSlotEP = 2;

// The kernels of one element type, so that one template serves float and
// double.
template <class T>
struct Vml;
template <>
struct Vml<double> {
  static constexpr auto& ln = oxa_vml_kernel_dLn_ttab;
  static constexpr auto& exp = oxa_vml_kernel_dExp_ttab;
  static constexpr auto& sin = oxa_vml_kernel_dSin_ttab;
  static constexpr auto& cos = oxa_vml_kernel_dCos_ttab;
  static constexpr auto& tan = oxa_vml_kernel_dTan_ttab;
  static constexpr auto& sqrt = oxa_vml_kernel_dSqrt_ttab;
  static constexpr auto& erfinv = oxa_vml_kernel_dErfInv_ttab;
  static constexpr auto& sincos = oxa_vml_kernel_dSinCos_ttab;
  static constexpr auto& powx = oxa_vml_kernel_dPowx_ttab;
};
template <>
struct Vml<float> {
  static constexpr auto& ln = oxa_vml_kernel_sLn_ttab;
  static constexpr auto& exp = oxa_vml_kernel_sExp_ttab;
  static constexpr auto& sin = oxa_vml_kernel_sSin_ttab;
  static constexpr auto& cos = oxa_vml_kernel_sCos_ttab;
  static constexpr auto& tan = oxa_vml_kernel_sTan_ttab;
  static constexpr auto& sqrt = oxa_vml_kernel_sSqrt_ttab;
  static constexpr auto& erfinv = oxa_vml_kernel_sErfInv_ttab;
  static constexpr auto& sincos = oxa_vml_kernel_sSinCos_ttab;
  static constexpr auto& powx = oxa_vml_kernel_sPowx_ttab;
};

using oxa::vml::restore_mode;

// Calls kernel(args...) with denormal results kept and denormal inputs not
// flushed, whatever the caller's mode asks, and restores the mode after.
template <class Kernel, class... Args>
void call_kernel(Kernel kernel, Args... args) {
  const uint32_t saved = oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_KEEP);
  kernel(args...);
  restore_mode(saved);
}

// For the lifetime of the object: error mode "callback only" with `callback`
// installed. The destructor puts back the caller's callback and then the
// caller's exact mode word, so every return path restores both.
class ErrorFrame {
 public:
  explicit ErrorFrame(VmlErrorCallBack callback)
      : mode_(oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_CALLBACK)),
        callback_(oxa_vml_kernel_SetErrorCallBack(callback)) {}
  ~ErrorFrame() {
    oxa_vml_kernel_SetErrorCallBack(callback_);
    restore_mode(mode_);
  }
  ErrorFrame(const ErrorFrame&) = delete;
  ErrorFrame& operator=(const ErrorFrame&) = delete;

 private:
  uint32_t mode_;
  VmlErrorCallBack callback_;
};

}  // namespace oxa::distributions
