// Vector-math error callbacks installed by the distribution generators. They
// turn the special results of the kernels (ln 0, erfinv ±1) into finite
// values and return 0, so the error routine writes the values back.
#pragma once

#include "oxa/vector_math.h"

extern "C" {
// Gaussian family: ln 0 and erfinv ±1 (double and single precision).
int32_t _vdCallBack(VmlErrorContext* context);
int32_t _vsCallBack(VmlErrorContext* context);
// Generators that only take logarithms: ln 0.
int32_t _vdLnCallBack(VmlErrorContext* context);
int32_t _vsLnCallBack(VmlErrorContext* context);
}

namespace oxa::distributions {

// ln of the smallest positive subnormal, and erfinv of the largest value
// below 1, per element type: the finite stand-ins for -inf and ±inf.
template <class T>
struct Stand;
template <>
struct Stand<double> {
  static constexpr double kLnZero = -0x1.74385446d71c3p+9;   // -744.4400719213812 = -1074 ln 2
  static constexpr double kErfInvOne = 0x1.7744f8f74e94ap+2;  // 5.8635847487551676
};
template <>
struct Stand<float> {
  static constexpr float kLnZero = -0x1.9d1da0p+6f;   // -103.27893 = -149 ln 2
  static constexpr float kErfInvOne = 0x1.ea8f96p+1f;  // 3.8325069 = erfinv(1 - 2^-24)
};

template <class T>
inline constexpr VmlErrorCallBack kGaussianCallBack = nullptr;
template <>
inline constexpr VmlErrorCallBack kGaussianCallBack<double> = _vdCallBack;
template <>
inline constexpr VmlErrorCallBack kGaussianCallBack<float> = _vsCallBack;
template <class T>
inline constexpr VmlErrorCallBack kLnCallBack = nullptr;
template <>
inline constexpr VmlErrorCallBack kLnCallBack<double> = _vdLnCallBack;
template <>
inline constexpr VmlErrorCallBack kLnCallBack<float> = _vsLnCallBack;

}  // namespace oxa::distributions
