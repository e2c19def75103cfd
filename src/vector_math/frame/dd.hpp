// Double-double arithmetic: a value carried as an unevaluated sum hi + lo with
// |lo| <= ulp(hi)/2. Works on double and on simd::Vec<double> alike.
#pragma once

#include "vector_math/frame/simd.hpp"

namespace oxa::vml::dd {

using simd::fma;
using simd::fms;

template <class V>
struct DD {
  V hi, lo;
};

// a + b exactly (any magnitudes).
template <class V>
DD<V> two_sum(V a, V b) {
  const V s = a + b;
  const V bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}

// a + b exactly when |a| >= |b| (or a is 0).
template <class V>
DD<V> fast_two_sum(V a, V b) {
  const V s = a + b;
  return {s, b - (s - a)};
}

// a * b exactly.
template <class V>
DD<V> two_prod(V a, V b) {
  const V p = a * b;
  return {p, fms(a, b, p)};
}

// Sum of a double-double and a value: relative error about 2^-104.
template <class V>
DD<V> add(DD<V> a, V b) {
  const DD<V> s = two_sum(a.hi, b);
  return fast_two_sum(s.hi, s.lo + a.lo);
}

template <class V>
DD<V> add(DD<V> a, DD<V> b) {
  const DD<V> s = two_sum(a.hi, b.hi);
  return fast_two_sum(s.hi, s.lo + (a.lo + b.lo));
}

// Products: relative error about 2^-102.
template <class V>
DD<V> mul(DD<V> a, V b) {
  const DD<V> p = two_prod(a.hi, b);
  return fast_two_sum(p.hi, fma(a.lo, b, p.lo));
}

template <class V>
DD<V> mul(DD<V> a, DD<V> b) {
  const DD<V> p = two_prod(a.hi, b.hi);
  return fast_two_sum(p.hi, fma(a.hi, b.lo, fma(a.lo, b.hi, p.lo)));
}

}  // namespace oxa::vml::dd
