// The Gaussian methods, each (stream, n, r, a, sigma) -> status, behind the
// method table of _vsldRngGaussian / _vslsRngGaussian. They expect the error
// frame of the dispatcher (error mode "callback only", _vdCallBack or
// _vsCallBack installed).
#pragma once

#include "oxa/distributions.h"

extern "C" {
int32_t _vdRngGaussianBoxMuller(StreamState* stream, int32_t n, double r[], double a, double sigma);
int32_t _vdRngGaussianBoxMuller2(StreamState* stream, int32_t n, double r[], double a, double sigma);
int32_t _vdRngGaussianICDF(StreamState* stream, int32_t n, double r[], double a, double sigma);
int32_t _vsRngGaussianBoxMuller(StreamState* stream, int32_t n, float r[], float a, float sigma);
int32_t _vsRngGaussianBoxMuller2(StreamState* stream, int32_t n, float r[], float a, float sigma);
int32_t _vsRngGaussianICDF(StreamState* stream, int32_t n, float r[], float a, float sigma);
}

namespace oxa::distributions {

// Method 0, 1 or 2 of the Gaussian table inside the Gaussian error frame;
// VSL_ERROR_BAD_ARGUMENT for another method, 0 for n < 1.
template <class T>
int32_t gaussian(uint32_t method, StreamState* stream, int32_t n, T* r, T a, T sigma);

}  // namespace oxa::distributions
