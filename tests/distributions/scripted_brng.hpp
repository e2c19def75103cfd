// A registered test generator whose outputs are chosen by the test: unit
// values from a script (cycled), scaled to the caller's [a, b). It records
// every request (count, precision, and the vector-math mode and callback in
// force at that moment) and can be told to fail from a given request on.
#pragma once

#include <cstdint>
#include <vector>

#include "oxa/streams.h"
#include "oxa/vector_math.h"

namespace oxa_test {

constexpr int32_t kScriptedFailure = -1111;

struct Request {
  int32_t n;
  bool single;
  uint32_t mode;
  VmlErrorCallBack callback;
};

struct Script {
  std::vector<double> units{0.5};
  int32_t fail_from = -1;  // index of the first failing request; -1 never
  std::vector<Request> requests;
  size_t next = 0;

  void reset(std::vector<double> u, int32_t fail = -1) {
    units = std::move(u);
    fail_from = fail;
    requests.clear();
    next = 0;
  }
  std::vector<int32_t> counts() const {
    std::vector<int32_t> c;
    for (const Request& r : requests) c.push_back(r.n);
    return c;
  }
};

inline Script& script() {
  static Script s;
  return s;
}

template <class T>
int32_t scripted_real(StreamState*, int32_t n, T* r, T a, T b) {
  Script& s = script();
  s.requests.push_back({n, sizeof(T) == sizeof(float), oxa_vml_kernel_GetMode(),
                        oxa_vml_kernel_GetErrorCallBack()});
  if (s.fail_from >= 0 && static_cast<int32_t>(s.requests.size()) > s.fail_from)
    return kScriptedFailure;
  for (int32_t i = 0; i < n; ++i)
    r[i] = static_cast<T>(a + (b - a) * static_cast<T>(s.units[s.next++ % s.units.size()]));
  return 0;
}

inline int32_t scripted_init(int32_t, StreamState*, int32_t, const uint32_t*) { return 0; }
inline int32_t scripted_bits(StreamState*, int32_t, uint32_t*) { return kScriptedFailure; }

// The generator's id (registered on first use).
inline int32_t scripted_id() {
  static const int32_t id = [] {
    const BrngProperties p{24, 1, 1, 4, 32, scripted_init, scripted_real<float>,
                           scripted_real<double>, scripted_bits};
    return _vslRegisterBrng(&p);
  }();
  return id;
}

}  // namespace oxa_test
