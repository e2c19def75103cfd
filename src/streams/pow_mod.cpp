// Modular powers for leapfrog and skip-ahead of the congruential generators.
#include <cstdint>

#include "oxa/streams.h"

namespace {

constexpr uint64_t kM31 = 2147483647u;  // 2^31 - 1
constexpr uint64_t kMask59 = (uint64_t{1} << 59) - 1;

// (x * y) mod (2^31 - 1) for x, y < 2^31: fold the 62-bit product once.
uint64_t mul_mod_m31(uint64_t x, uint64_t y) {
  uint64_t p = x * y;
  p = (p & kM31) + (p >> 31);
  return p >= kM31 ? p - kM31 : p;
}

// (x * y) mod m for x, y < m <= 2^32: the product fits 64 bits.
uint64_t mul_mod(uint64_t x, uint64_t y, uint64_t m) { return x * y % m; }

}  // namespace

extern "C" {

uint32_t _vsliPowMod(uint32_t a, uint64_t n, uint32_t m) {
  uint64_t base = a % m, r = 1 % m;
  for (; n; n >>= 1) {
    if (n & 1) r = mul_mod(r, base, m);
    base = mul_mod(base, base, m);
  }
  return static_cast<uint32_t>(r);
}

uint32_t _vsliPowMod2P31M1(uint32_t a, uint64_t n) {
  uint64_t base = a % kM31, r = 1;
  for (; n; n >>= 1) {
    if (n & 1) r = mul_mod_m31(r, base);
    base = mul_mod_m31(base, base);
  }
  return static_cast<uint32_t>(r);
}

uint64_t _vsliPowMod2P59(uint64_t a, uint64_t n) {
  uint64_t base = a & kMask59, r = 1;
  for (; n; n >>= 1) {
    if (n & 1) r = (r * base) & kMask59;
    base = (base * base) & kMask59;
  }
  return r;
}

void _vsliVect3PowMod(uint32_t x[3], const uint32_t matrix[9], uint64_t n, uint32_t m) {
  uint64_t p[9], v[3] = {x[0] % m, x[1] % m, x[2] % m};
  for (int i = 0; i < 9; ++i) p[i] = matrix[i] % m;
  for (; n; n >>= 1) {
    if (n & 1) {
      uint64_t w[3];
      for (int i = 0; i < 3; ++i)
        w[i] = (mul_mod(p[3 * i], v[0], m) + mul_mod(p[3 * i + 1], v[1], m) +
                mul_mod(p[3 * i + 2], v[2], m)) % m;
      for (int i = 0; i < 3; ++i) v[i] = w[i];
    }
    uint64_t q[9];
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        q[3 * i + j] = (mul_mod(p[3 * i], p[j], m) + mul_mod(p[3 * i + 1], p[3 + j], m) +
                        mul_mod(p[3 * i + 2], p[6 + j], m)) % m;
    for (int i = 0; i < 9; ++i) p[i] = q[i];
  }
  for (int i = 0; i < 3; ++i) x[i] = static_cast<uint32_t>(v[i]);
}

}  // extern "C"
