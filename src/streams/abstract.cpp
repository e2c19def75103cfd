// Abstract generators: streams over a caller-owned buffer of 32-bit words
// (iAbstract), doubles (dAbstract) or floats (sAbstract) and a caller
// call-back that refills it.
// State: the buffer, its length, the call-back, the next value to hand out
//   (pos) and the end of the values refilled last (end). A new stream starts
//   on a full buffer (pos 0, end length).
// Refill: when pos reaches end the call-back is asked to refill from index
//   end (0 when end is the length): it returns the count k it wrote at
//   buffer[index .. index + k). k <= 0 or k > length - index stops the
//   generation with VSL_RNG_ERROR_ABSTRACT_CALLBACK; values before the stop
//   are written, the rest of the output is left alone, and the next call
//   asks the call-back again.
// Values: words u map to reals a + (b - a) 2^-32 u (the unsigned word
//   scaling); buffer reals u in [0, 1) to a + (b - a) u computed in double
//   (then rounded to float for singles) and to words floor(2^32 u), clamped
//   to 0 .. 2^32 - 1.
// Leapfrog -1002, skip-ahead -1003; saving is refused (stream.cpp,
// save_load.cpp) since the buffer and call-back belong to the caller.
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "oxa/service.h"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"
#include "streams/word_scaling.hpp"

namespace oxa::streams {

namespace {

struct AbstractState {
  void* buffer;
  void* callback;
  int32_t length;
  int32_t pos;
  int32_t end;
};
static_assert(sizeof(StreamState) + sizeof(AbstractState) <= 48, "fits the smallest row");

template <class V>
using Callback = int32_t (*)(StreamState*, V[], int32_t, int32_t);

template <class V, class Out, class Map>
int32_t drain(StreamState* stream, int32_t n, Out* r, Map map) {
  AbstractState& s = *generator_state<AbstractState>(stream);
  V* buf = static_cast<V*>(s.buffer);
  int32_t i = 0;
  while (i < n) {
    if (s.pos >= s.end) {
      const int32_t index = s.end >= s.length ? 0 : s.end;
      const int32_t k =
          reinterpret_cast<Callback<V>>(s.callback)(stream, buf, s.length, index);
      if (k <= 0 || k > s.length - index) return VSL_RNG_ERROR_ABSTRACT_CALLBACK;
      s.pos = index;
      s.end = index + k;
    }
    const int32_t m = std::min(n - i, s.end - s.pos);
    for (int32_t j = 0; j < m; ++j) r[i + j] = map(buf[s.pos + j]);
    s.pos += m;
    i += m;
  }
  return VSL_STATUS_OK;
}

uint32_t real_to_word(double u) {
  const double w = std::floor(u * 0x1p32);
  return w <= 0.0 ? 0u : w >= 0x1p32 - 1 ? 0xFFFFFFFFu : static_cast<uint32_t>(w);
}

template <class V, class T>
int32_t reals(StreamState* stream, int32_t n, T r[], T a, T b) {
  if constexpr (std::is_same_v<V, uint32_t>) {
    const WordScale<WordMapping::kUnsigned, T> map(a, b);
    return drain<V>(stream, n, r, map);
  } else {
    const double lo = a, width = double(b) - double(a);
    return drain<V>(stream, n, r, [=](V u) { return static_cast<T>(lo + width * double(u)); });
  }
}

template <class V>
int32_t words(StreamState* stream, int32_t n, uint32_t r[]) {
  if constexpr (std::is_same_v<V, uint32_t>) {
    return drain<V>(stream, n, r, [](uint32_t u) { return u; });
  } else {
    return drain<V>(stream, n, r, [](V u) { return real_to_word(double(u)); });
  }
}

int32_t init(int32_t method) {
  switch (method) {
    case OXA_INIT_SEED:
      return VSL_STATUS_OK;  // set up by the constructors; nothing to seed
    case OXA_INIT_LEAPFROG:
      return VSL_RNG_ERROR_NO_LEAPFROG;
    case OXA_INIT_SKIPAHEAD:
      return VSL_RNG_ERROR_NO_SKIPAHEAD;
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

template <class V>
int32_t create(StreamState** handle, int32_t id, int32_t n, V* buffer, void* callback) {
  if (n <= 0 || buffer == nullptr || callback == nullptr) return VSL_ERROR_BAD_ARGUMENT;
  const BrngRef ref = decode_brng(id);
  const int32_t status = _vslAllocateStream(handle, ref.table, id, ref.row, ref.sub);
  if (status != 0) return status;
  AbstractState& s = *generator_state<AbstractState>(*handle);
  s = AbstractState{buffer, callback, n, 0, n};
  return VSL_STATUS_OK;
}

}  // namespace

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vsliNewAbstractStream(StreamState** handle, int32_t n, uint32_t ibuf[],
                               oxa_iabstract_callback callback) {
  return create(handle, OXA_BRNG_IABSTRACT, n, ibuf, reinterpret_cast<void*>(callback));
}
int32_t _vsldNewAbstractStream(StreamState** handle, int32_t n, double dbuf[],
                               oxa_dabstract_callback callback) {
  return create(handle, OXA_BRNG_DABSTRACT, n, dbuf, reinterpret_cast<void*>(callback));
}
int32_t _vslsNewAbstractStream(StreamState** handle, int32_t n, float sbuf[],
                               oxa_sabstract_callback callback) {
  return create(handle, OXA_BRNG_SABSTRACT, n, sbuf, reinterpret_cast<void*>(callback));
}

int32_t _vslBRngiAbstractInitStream(int32_t method, StreamState*, int32_t, const uint32_t[]) {
  return init(method);
}
int32_t _vslsBRngiAbstract(StreamState* stream, int32_t n, float r[], float a, float b) {
  return reals<uint32_t>(stream, n, r, a, b);
}
int32_t _vsldBRngiAbstract(StreamState* stream, int32_t n, double r[], double a, double b) {
  return reals<uint32_t>(stream, n, r, a, b);
}
int32_t _vsliBRngiAbstract(StreamState* stream, int32_t n, uint32_t r[]) {
  return words<uint32_t>(stream, n, r);
}

int32_t _vslBRngdAbstractInitStream(int32_t method, StreamState*, int32_t, const uint32_t[]) {
  return init(method);
}
int32_t _vslsBRngdAbstract(StreamState* stream, int32_t n, float r[], float a, float b) {
  return reals<double>(stream, n, r, a, b);
}
int32_t _vsldBRngdAbstract(StreamState* stream, int32_t n, double r[], double a, double b) {
  return reals<double>(stream, n, r, a, b);
}
int32_t _vsliBRngdAbstract(StreamState* stream, int32_t n, uint32_t r[]) {
  return words<double>(stream, n, r);
}

int32_t _vslBRngsAbstractInitStream(int32_t method, StreamState*, int32_t, const uint32_t[]) {
  return init(method);
}
int32_t _vslsBRngsAbstract(StreamState* stream, int32_t n, float r[], float a, float b) {
  return reals<float>(stream, n, r, a, b);
}
int32_t _vsldBRngsAbstract(StreamState* stream, int32_t n, double r[], double a, double b) {
  return reals<float>(stream, n, r, a, b);
}
int32_t _vsliBRngsAbstract(StreamState* stream, int32_t n, uint32_t r[]) {
  return words<float>(stream, n, r);
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryIABSTRACT = {
    _vslBRngiAbstractInitStream, _vslsBRngiAbstract, _vsldBRngiAbstract, _vsliBRngiAbstract};
constinit const BrngEntryPoints kBrngEntryDABSTRACT = {
    _vslBRngdAbstractInitStream, _vslsBRngdAbstract, _vsldBRngdAbstract, _vsliBRngdAbstract};
constinit const BrngEntryPoints kBrngEntrySABSTRACT = {
    _vslBRngsAbstractInitStream, _vslsBRngsAbstract, _vsldBRngsAbstract, _vsliBRngsAbstract};
}  // namespace oxa::streams
