// Special values of every catalogued kernel, driven by ieee_cases.txt:
// each case (input bits, expected result bits, expected status) runs alone
// and at every position of a vector of ordinary inputs, so that every block
// and tail group of the kernel frame meets it and the other lanes must keep
// the results they have without it. Kernels are found through the
// catalogue's dispatch tables.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "oxa/vector_math.h"

namespace {

struct Catalogued {
  std::string t, func, shape;
  const void* ttab;
};
#define OXA_VML_FAMILY(t, Func, shape, la, ha, ep, cost_la, cost_ha, cost_ep, name) \
  {#t, #Func, #shape, static_cast<const void*>(oxa_vml_kernel_##t##Func##_ttab)},
const Catalogued kCatalogue[] = {
#include "vector_math/catalogue.def"
};
#undef OXA_VML_FAMILY

// Status left in place when a case reports nothing.
constexpr int32_t kUntouched = 77;

struct Case {
  std::string func, t, levels;
  std::vector<std::string> in, out;
  int32_t status;
  int line;
};

template <class T>
using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;

template <class T>
T from_bits(const std::string& s) {
  return std::bit_cast<T>(static_cast<Bits<T>>(std::strtoull(s.c_str(), nullptr, 16)));
}

// "nan": any NaN; otherwise the exact bits (signed zeros included).
template <class T>
bool matches(T got, const std::string& want) {
  if (want == "nan") return std::isnan(got);
  return std::bit_cast<Bits<T>>(got) == std::bit_cast<Bits<T>>(from_bits<T>(want));
}

// One level of a catalogued function on n elements; b is the scalar argument,
// bv the second input array of the two-input shape.
template <class T>
struct Kernel {
  const Catalogued* k;
  int slot;
  void operator()(int64_t n, const T* a, T b, const T* bv, T* r1, T* r2) const {
    if (k->shape == "in2_out1")
      static_cast<void (*const*)(int64_t, const T*, const T*, T*)>(k->ttab)[slot](n, a, bv, r1);
    else if (k->shape == "in1_out1")
      static_cast<void (*const*)(int64_t, const T*, T*)>(k->ttab)[slot](n, a, r1);
    else if (k->shape == "in1_out2")
      static_cast<void (*const*)(int64_t, const T*, T*, T*)>(k->ttab)[slot](n, a, r1, r2);
    else if (k->shape == "in1_scalar_out1")
      static_cast<void (*const*)(int64_t, const T*, T, T*)>(k->ttab)[slot](n, a, b, r1);
    else
      ADD_FAILURE() << "no special-value driver for shape " << k->shape;
  }
};

template <class T>
void check_case(const Case& c, const Kernel<T>& kernel, const std::vector<T>& ordinary) {
  const std::string where = "ieee_cases.txt:" + std::to_string(c.line) + " " + c.t + c.func + " slot " +
                            std::to_string(kernel.slot);
  const T a = from_bits<T>(c.in[0]);
  const T b = c.in.size() > 1 ? from_bits<T>(c.in[1]) : T(0);
  const int32_t want_status = c.status ? c.status : kUntouched;
  const size_t n = ordinary.size();
  // Two inputs: the other lanes' b are the ordinary inputs in reverse order.
  const std::vector<T> ordinary_b(ordinary.rbegin(), ordinary.rend());
  std::vector<T> plain1(n), plain2(n);
  kernel(static_cast<int64_t>(n), ordinary.data(), b, ordinary_b.data(), plain1.data(), plain2.data());
  for (size_t pos = 0; pos <= n; ++pos) {  // pos == n: the case alone
    std::vector<T> in = pos == n ? std::vector<T>{a} : ordinary, r1(in.size()), r2(in.size());
    std::vector<T> in_b = pos == n ? std::vector<T>{b} : ordinary_b;
    const size_t at = pos == n ? 0 : pos;
    in[at] = a, in_b[at] = b;
    oxa_vml_kernel_SetErrStatus(kUntouched);
    kernel(static_cast<int64_t>(in.size()), in.data(), b, in_b.data(), r1.data(), r2.data());
    EXPECT_TRUE(matches(r1[at], c.out[0])) << where << " position " << pos << " gave " << r1[at];
    if (c.out.size() > 1) {
      EXPECT_TRUE(matches(r2[at], c.out[1])) << where << " position " << pos << " gave " << r2[at];
    }
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), want_status) << where << " position " << pos;
    for (size_t i = 0; pos < n && i < n; ++i) {
      if (i == at) continue;
      EXPECT_EQ(std::bit_cast<Bits<T>>(r1[i]), std::bit_cast<Bits<T>>(plain1[i])) << where << " lane " << i;
      EXPECT_EQ(std::bit_cast<Bits<T>>(r2[i]), std::bit_cast<Bits<T>>(plain2[i])) << where << " lane " << i;
    }
  }
}

// Ordinary inputs lo + (hi - lo) i/n: 13 doubles or 29 floats reach the main
// pass and every tail group. With a scalar above 64 in magnitude they are all
// lo, whose powers must not over- or underflow themselves.
template <class T>
std::vector<T> ordinary_inputs(const std::vector<std::string>& range, T b) {
  const int n = sizeof(T) == 8 ? 13 : 29;
  const T lo = static_cast<T>(std::strtod(range[0].c_str(), nullptr));
  const T hi = std::fabs(b) > 64 ? lo : static_cast<T>(std::strtod(range[1].c_str(), nullptr));
  std::vector<T> v;
  for (int i = 0; i < n; ++i) v.push_back(lo + (hi - lo) * T(i) / T(n));
  return v;
}

template <class T>
void check(const Case& c, const std::map<std::string, std::vector<std::string>>& ordinary) {
  const Catalogued* k = nullptr;
  for (const Catalogued& e : kCatalogue)
    if (e.t == c.t && e.func == c.func) k = &e;
  const auto range = ordinary.find(c.t + c.func);
  if (k == nullptr || range == ordinary.end()) {
    ADD_FAILURE() << "ieee_cases.txt:" << c.line << " " << c.t << c.func << " not catalogued or no ordinary line";
    return;
  }
  const T b = c.in.size() > 1 ? from_bits<T>(c.in[1]) : T(0);
  const char* names[] = {"LA", "HA", "EP"};
  for (int slot = 0; slot < 3; ++slot)
    if (c.levels == "*" || c.levels.find(names[slot]) != std::string::npos)
      check_case<T>(c, Kernel<T>{k, slot}, ordinary_inputs<T>(range->second, b));
}

TEST(VectorMathSpecialValues, EveryCaseInEveryPosition) {
  std::ifstream in(OXA_VML_TEST_DATA "/ieee_cases.txt");
  ASSERT_TRUE(in.good()) << "ieee_cases.txt not found";
  std::map<std::string, std::vector<std::string>> ordinary;
  std::vector<Case> cases;
  std::string line;
  for (int no = 1; std::getline(in, line); ++no) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::vector<std::string> w;
    for (std::string s; words >> s;) w.push_back(s);
    if (w.empty()) continue;
    if (w[0] == "ordinary") {
      ordinary[w[2] + w[1]] = {w[3], w[4]};
      continue;
    }
    Case c{w[0], w[1], w[2], {}, {}, 0, no};
    size_t i = 3;
    for (; i < w.size() && w[i] != "->"; ++i) c.in.push_back(w[i]);
    for (++i; i + 1 < w.size(); ++i) c.out.push_back(w[i]);
    ASSERT_TRUE(!c.in.empty() && !c.out.empty() && i < w.size()) << "ieee_cases.txt:" << no;
    c.status = std::atoi(w.back().c_str());
    cases.push_back(c);
  }
  const uint32_t mode = oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  for (const Case& c : cases) {
    if (c.t == "d") check<double>(c, ordinary);
    else if (c.t == "s") check<float>(c, ordinary);
    else ADD_FAILURE() << "ieee_cases.txt:" << c.line << ": no driver for type " << c.t;
  }
  oxa_vml_kernel_SetMode(mode);
  oxa_vml_kernel_ClearErrStatus();
}

}  // namespace
