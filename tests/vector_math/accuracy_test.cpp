// Accuracy of every catalogued kernel against MPFR, driven by accuracy.txt:
// each row names a function, type, level, input domain, sample count and the
// error figure of the family's contract comment; the bound checked is that
// figure plus kMargin. Kernels are found through the catalogue's dispatch
// tables, references through kReferences. Random inputs are half uniform over
// the bit patterns of the domain (so subnormal and huge arguments appear),
// half uniform in value, plus the `inputs` lines of the function and type.
// Errors count where the exact result is finite and representable; ulps are
// those of the format at the exact result (subnormal ulps below the normal
// range), relative errors count where the exact result is a normal number.
//
// OXA_VML_ACCURACY_COUNT=N replaces every row's sample count (1000000 for a
// full run); OXA_VML_EXHAUSTIVE=1 also runs the rows marked all-floats over
// every float of their domain, against the double HA kernel of the function
// (whose own error is 2^-29 of a float ulp).
#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/mpfr_erfinv.hpp"
#include "vector_math/mpfr_norm_inv.hpp"

namespace {

constexpr double kMargin = 1.05;

// ---- The catalogue's dispatch tables ------------------------------------------
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

const Catalogued* find_kernel(const std::string& t, const std::string& func) {
  for (const Catalogued& c : kCatalogue)
    if (c.t == t && c.func == func) return &c;
  return nullptr;
}

// ---- References: one per output; binary ones take the scalar or b as y --------
using Unary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
using Binary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
struct Reference {
  Unary out1 = nullptr, out2 = nullptr;
  Binary binary = nullptr;
};
// The rounding functions of MPFR take no rounding mode.
int ref_ceil(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t) { return mpfr_ceil(y, x); }
int ref_floor(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t) { return mpfr_floor(y, x); }
int ref_round(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t) { return mpfr_round(y, x); }
int ref_trunc(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t) { return mpfr_trunc(y, x); }
int ref_inv(mpfr_ptr y, mpfr_srcptr x, mpfr_rnd_t rnd) { return mpfr_ui_div(y, 1, x, rnd); }
const std::map<std::string, Reference> kReferences = {
    {"Abs", {mpfr_abs}},
    {"Add", {nullptr, nullptr, mpfr_add}},
    {"CdfNormInv", {oxa::test::mpfr_norm_inv}},
    {"Ceil", {ref_ceil}},
    {"Cos", {mpfr_cos}},
    {"Div", {nullptr, nullptr, mpfr_div}},
    {"ErfInv", {oxa::test::mpfr_erfinv}},
    {"Exp", {mpfr_exp}},
    {"Floor", {ref_floor}},
    {"Frac", {mpfr_frac}},
    {"Hypot", {nullptr, nullptr, mpfr_hypot}},
    {"Inv", {ref_inv}},
    {"LinearFrac", {}},  // computed by linear_frac() below
    {"InvSqrt", {mpfr_rec_sqrt}},
    {"Ln", {mpfr_log}},
    {"Modf", {ref_trunc, mpfr_frac}},
    {"Mul", {nullptr, nullptr, mpfr_mul}},
    {"NearbyInt", {mpfr_rint}},
    {"Powx", {nullptr, nullptr, mpfr_pow}},
    {"Rint", {mpfr_rint}},
    {"Round", {ref_round}},
    {"Sin", {mpfr_sin}},
    {"SinCos", {mpfr_sin, mpfr_cos}},
    {"Sqr", {mpfr_sqr}},
    {"Sqrt", {mpfr_sqrt}},
    {"Sub", {nullptr, nullptr, mpfr_sub}},
    {"Tan", {mpfr_tan}},
    {"Trunc", {ref_trunc}},
};

template <class T>
constexpr T kInf = std::numeric_limits<T>::infinity();

// ---- The table -------------------------------------------------------------------
struct Row {
  std::string func, t, level, lo, hi, bound;
  int64_t count;
  bool all_floats;
  int line;
};
struct Table {
  std::vector<Row> rows;
  std::map<std::string, std::vector<std::string>> inputs, scalars;  // key: t + func
};

Table read_table() {
  Table table;
  std::ifstream in(OXA_VML_TEST_DATA "/accuracy.txt");
  EXPECT_TRUE(in.good()) << "accuracy.txt not found";
  std::string line;
  for (int no = 1; std::getline(in, line); ++no) {
    line = line.substr(0, line.find('#'));
    std::istringstream words(line);
    std::vector<std::string> w;
    for (std::string s; words >> s;) w.push_back(s);
    if (w.empty()) continue;
    if (w[0] == "inputs" || w[0] == "scalars") {
      auto& list = (w[0] == "inputs" ? table.inputs : table.scalars)[w[2] + w[1]];
      list.insert(list.end(), w.begin() + 3, w.end());
      continue;
    }
    EXPECT_GE(w.size(), 7u) << "accuracy.txt:" << no;
    if (w.size() < 7) continue;
    table.rows.push_back({w[0], w[1], w[2], w[3], w[4], w[5], std::atoll(w[6].c_str()),
                          w.size() > 7 && w[7] == "all-floats", no});
  }
  return table;
}

// A number of type T: a literal (hex floats too) or max, min (smallest
// normal), tiny (smallest subnormal), below1 (largest value below 1), each
// optionally negated.
template <class T>
T number(const std::string& s) {
  using L = std::numeric_limits<T>;
  const bool neg = s[0] == '-';
  const std::string m = neg ? s.substr(1) : s;
  T v;
  if (m == "max") v = L::max();
  else if (m == "min") v = L::min();
  else if (m == "tiny") v = L::denorm_min();
  else if (m == "below1") v = std::nextafter(T(1), T(0));
  else return static_cast<T>(std::strtod(s.c_str(), nullptr));
  return neg ? -v : v;
}

// Extra inputs: numbers, and near:X:K for X and its K neighbours on each
// side, and mul:C:K for C times 1, 4, 13, ... (k -> 3k + 1) below K.
template <class T>
std::vector<T> expand(const std::vector<std::string>& tokens) {
  std::vector<T> v;
  for (const std::string& s : tokens) {
    const size_t c1 = s.find(':'), c2 = s.rfind(':');
    if (s.rfind("near:", 0) == 0) {
      const T x = number<T>(s.substr(c1 + 1, c2 - c1 - 1));
      T up = x, down = x;
      v.push_back(x);
      for (int k = std::atoi(s.c_str() + c2 + 1); k > 0; --k)
        v.push_back(up = std::nextafter(up, kInf<T>)), v.push_back(down = std::nextafter(down, -kInf<T>));
    } else if (s.rfind("mul:", 0) == 0) {
      const T c = number<T>(s.substr(c1 + 1, c2 - c1 - 1));
      for (double k = 1; k < std::strtod(s.c_str() + c2 + 1, nullptr); k = 3 * k + 1) v.push_back(T(k) * c);
    } else {
      v.push_back(number<T>(s));
    }
  }
  return v;
}

// ---- Measurement ----------------------------------------------------------------
template <class T>
using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;

// Signed-magnitude bits mapped to a monotonic integer line and back.
template <class T>
int64_t ordinal(T x) {
  const auto b = std::bit_cast<Bits<T>>(x);
  constexpr Bits<T> sign = Bits<T>{1} << (sizeof(T) * 8 - 1);
  return (b & sign) ? -static_cast<int64_t>(b & ~sign) : static_cast<int64_t>(b);
}
template <class T>
T from_ordinal(int64_t o) {
  constexpr Bits<T> sign = Bits<T>{1} << (sizeof(T) * 8 - 1);
  return o < 0 ? std::bit_cast<T>(static_cast<Bits<T>>(-o) | sign) : std::bit_cast<T>(static_cast<Bits<T>>(o));
}

struct Errors {
  double ulp = 0, rel = 0, ulp_at = 0, rel_at = 0, ulp_b = 0;
  void add(double u, double r, double x, double b) {
    if (u > ulp) ulp = u, ulp_at = x, ulp_b = b;
    if (r > rel) rel = r, rel_at = x;
  }
};

// Error of `got` against the exact y, in ulps of T at y and relative; (-1, -1)
// where y is not a finite value of T's range.
template <class T>
std::pair<double, double> error(T got, mpfr_srcptr y, mpfr_ptr diff) {
  using L = std::numeric_limits<T>;
  if (!mpfr_number_p(y)) return {-1, -1};
  const double yd = mpfr_get_d(y, MPFR_RNDN);
  if (std::fabs(yd) > L::max()) return {-1, -1};
  if (!std::isfinite(got)) return {kInf<double>, kInf<double>};
  mpfr_set_d(diff, static_cast<double>(got), MPFR_RNDN);
  mpfr_sub(diff, diff, y, MPFR_RNDN);
  const double abs_err = std::fabs(mpfr_get_d(diff, MPFR_RNDN));
  const long e = mpfr_zero_p(y) ? L::min_exponent : std::max<long>(mpfr_get_exp(y), L::min_exponent);
  mpfr_abs(diff, diff, MPFR_RNDN);
  mpfr_div_2si(diff, diff, e - L::digits, MPFR_RNDN);  // y = m 2^e, m in [1/2, 1)
  const double rel = std::fabs(yd) >= L::min() ? abs_err / std::fabs(yd) : 0.0;
  return {mpfr_get_d(diff, MPFR_RNDN), rel};
}

// Runs one level's kernel on `a` (with the scalar b for the scalar shape, the
// array bv for two inputs, the four scalars in bv for the linear fraction).
template <class T>
void run(const Catalogued& k, int slot, const std::vector<T>& a, T b, const std::vector<T>& bv,
         const std::vector<T>& p, std::vector<T>& r1, std::vector<T>& r2) {
  const auto n = static_cast<int64_t>(a.size());
  r1.assign(a.size(), 0), r2.assign(a.size(), 0);
  if (k.shape == "in2_out1")
    static_cast<void (*const*)(int64_t, const T*, const T*, T*)>(k.ttab)[slot](n, a.data(), bv.data(), r1.data());
  else if (k.shape == "linear_frac")
    static_cast<void (*const*)(int64_t, const T*, const T*, T, T, T, T, T*)>(k.ttab)[slot](
        n, a.data(), bv.data(), p[0], p[1], p[2], p[3], r1.data());
  else if (k.shape == "in1_out1")
    static_cast<void (*const*)(int64_t, const T*, T*)>(k.ttab)[slot](n, a.data(), r1.data());
  else if (k.shape == "in1_out2")
    static_cast<void (*const*)(int64_t, const T*, T*, T*)>(k.ttab)[slot](n, a.data(), r1.data(), r2.data());
  else if (k.shape == "in1_scalar_out1")
    static_cast<void (*const*)(int64_t, const T*, T, T*)>(k.ttab)[slot](n, a.data(), b, r1.data());
  else
    ADD_FAILURE() << "no accuracy driver for shape " << k.shape;
}

int slot_of(const std::string& level) { return level == "LA" ? 0 : level == "HA" ? 1 : 2; }

// Bound of a row: "<x>ulp", "2^<e>rel" or "<x>rel" (the figure, times kMargin),
// "cr" (correctly rounded: 0.5 ulp, no margin) or "exact" (no error at all).
std::pair<double, double> bound_of(const std::string& s) {
  if (s == "cr") return {0.5, 0};
  if (s == "exact") return {-1, 0};
  const bool rel = s.size() > 3 && s.substr(s.size() - 3) == "rel";
  const std::string v = s.substr(0, s.size() - 3);
  const double x = v.rfind("2^", 0) == 0 ? std::exp2(std::strtod(v.c_str() + 2, nullptr)) : std::strtod(v.c_str(), nullptr);
  return rel ? std::pair{0.0, x * kMargin} : std::pair{x * kMargin, 0.0};
}

void check(const Row& row, const Errors& e, int64_t count) {
  const auto [max_ulp, max_rel] = bound_of(row.bound);
  std::printf("%s%-10s %s  n=%-8lld max %.3f ulp (at %a, b %g)  max rel %.3e (at %a)\n", row.t.c_str(),
              row.func.c_str(), row.level.c_str(), static_cast<long long>(count), e.ulp, e.ulp_at, e.ulp_b, e.rel,
              e.rel_at);
  const std::string where = "accuracy.txt:" + std::to_string(row.line) + " " + row.t + row.func + " " + row.level;
  if (max_ulp != 0) {
    EXPECT_LE(e.ulp, std::max(max_ulp, 0.0)) << where << " at " << std::hexfloat << e.ulp_at << " b " << e.ulp_b;
  }
  if (max_rel > 0) {
    EXPECT_LE(e.rel, max_rel) << where << " at " << std::hexfloat << e.rel_at;
  }
}

int64_t sample_count(int64_t row_count) {
  const char* s = std::getenv("OXA_VML_ACCURACY_COUNT");
  return s != nullptr && std::atoll(s) > 0 ? std::atoll(s) : row_count;
}

// (scalea x + shifta) / (scaleb y + shiftb), the affine parts exact.
template <class T>
void linear_frac(mpfr_ptr q, mpfr_srcptr x, mpfr_srcptr y, const std::vector<T>& p) {
  mpfr_t num, den;
  mpfr_inits2(256, num, den, static_cast<mpfr_ptr>(nullptr));
  mpfr_mul_d(num, x, p[0], MPFR_RNDN), mpfr_add_d(num, num, p[1], MPFR_RNDN);
  mpfr_mul_d(den, y, p[2], MPFR_RNDN), mpfr_add_d(den, den, p[3], MPFR_RNDN);
  mpfr_div(q, num, den, MPFR_RNDN);
  mpfr_clears(num, den, static_cast<mpfr_ptr>(nullptr));
}

// The rows of one group share function, type, domain and count: one set of
// inputs, one reference evaluation per input, every level's kernel.
template <class T>
void measure_group(const Table& table, const std::vector<const Row*>& group) {
  const Row& first = *group[0];
  const Catalogued* k = find_kernel(first.t, first.func);
  const auto ref = kReferences.find(first.func);
  if (k == nullptr || ref == kReferences.end()) {
    ADD_FAILURE() << "accuracy.txt:" << first.line << " " << first.t << first.func << " not catalogued or no reference";
    return;
  }
  const auto extra = table.inputs.find(first.t + first.func);
  const auto scalars = table.scalars.find(first.t + first.func);
  std::vector<T> bs = {T(0)}, params;
  const std::vector<std::string> no_scalars;
  if (k->shape == "in1_scalar_out1") bs = expand<T>(scalars == table.scalars.end() ? no_scalars : scalars->second);
  if (k->shape == "linear_frac") params = expand<T>(scalars == table.scalars.end() ? no_scalars : scalars->second);
  if (k->shape == "linear_frac" && params.size() != 4) {
    ADD_FAILURE() << "accuracy.txt: LinearFrac " << first.t << " needs one scalars line of four values";
    return;
  }
  // Two-input shapes: b from the same domain, drawn independently; the extra
  // inputs are paired with the extra inputs in reverse order.
  const bool two_inputs = k->shape == "in2_out1" || k->shape == "linear_frac";
  const int64_t count = std::max<int64_t>(sample_count(first.count) / static_cast<int64_t>(bs.size()), 16);
  const T lo = number<T>(first.lo), hi = number<T>(first.hi);
  std::mt19937_64 rng(0x5eed + first.line);
  std::uniform_int_distribution<int64_t> by_bits(ordinal(lo), ordinal(hi));
  std::uniform_real_distribution<double> by_value(lo, hi);
  std::vector<Errors> errors(group.size());
  mpfr_t x, bm, y1, y2, diff;
  mpfr_inits2(128, x, bm, y1, y2, diff, static_cast<mpfr_ptr>(nullptr));
  for (const T b : bs) {
    std::vector<T> a = extra == table.inputs.end() ? std::vector<T>{} : expand<T>(extra->second);
    std::vector<T> bv(a.rbegin(), a.rend());
    const auto draw = [&](int64_t i) {
      const T v = (i & 1) ? from_ordinal<T>(by_bits(rng)) : static_cast<T>(by_value(rng));
      return v < lo || v > hi ? lo : v;
    };
    for (int64_t i = 0; i < count; ++i) {
      a.push_back(draw(i));
      if (two_inputs) bv.push_back(draw(i + 1));
    }
    std::vector<std::vector<T>> r1(group.size()), r2(group.size());
    for (size_t l = 0; l < group.size(); ++l) run<T>(*k, slot_of(group[l]->level), a, b, bv, params, r1[l], r2[l]);
    mpfr_set_d(bm, b, MPFR_RNDN);
    for (size_t i = 0; i < a.size(); ++i) {
      mpfr_set_d(x, a[i], MPFR_RNDN);
      if (two_inputs) mpfr_set_d(bm, bv[i], MPFR_RNDN);
      if (k->shape == "linear_frac") linear_frac(y1, x, bm, params);
      else if (ref->second.binary) ref->second.binary(y1, x, bm, MPFR_RNDN);
      else ref->second.out1(y1, x, MPFR_RNDN);
      if (ref->second.out2) ref->second.out2(y2, x, MPFR_RNDN);
      for (size_t l = 0; l < group.size(); ++l) {
        const auto [u, r] = error<T>(r1[l][i], y1, diff);
        if (u >= 0) errors[l].add(u, r, a[i], two_inputs ? bv[i] : b);
        if (!ref->second.out2) continue;
        const auto [u2, rr2] = error<T>(r2[l][i], y2, diff);
        if (u2 >= 0) errors[l].add(u2, rr2, a[i], b);
      }
    }
  }
  mpfr_clears(x, bm, y1, y2, diff, static_cast<mpfr_ptr>(nullptr));
  for (size_t l = 0; l < group.size(); ++l) check(*group[l], errors[l], count * static_cast<int64_t>(bs.size()));
}

// Every float of the row's domain against the double HA kernel, in slices.
void measure_all_floats(const Row& row) {
  const Catalogued* k = find_kernel("s", row.func);
  const Catalogued* wide = find_kernel("d", row.func);
  ASSERT_TRUE(k != nullptr && wide != nullptr && k->shape == "in1_out1") << row.func;
  const auto kd = static_cast<void (*const*)(int64_t, const double*, double*)>(wide->ttab)[1];
  const auto ks = static_cast<void (*const*)(int64_t, const float*, float*)>(k->ttab)[slot_of(row.level)];
  Errors e;
  int64_t count = 0;
  constexpr int64_t kSlice = 1 << 20;
  std::vector<float> a, r;
  std::vector<double> ad, rd;
  for (int64_t o = ordinal(number<float>(row.lo)), hi = ordinal(number<float>(row.hi)); o <= hi; o += kSlice) {
    a.clear();
    for (int64_t j = o; j <= std::min(hi, o + kSlice - 1); ++j) a.push_back(from_ordinal<float>(j));
    ad.assign(a.begin(), a.end());
    r.resize(a.size()), rd.resize(a.size());
    ks(static_cast<int64_t>(a.size()), a.data(), r.data());
    kd(static_cast<int64_t>(a.size()), ad.data(), rd.data());
    for (size_t i = 0; i < a.size(); ++i) {
      if (!std::isfinite(rd[i]) || std::fabs(rd[i]) > std::numeric_limits<float>::max()) continue;
      const int ex = std::max(std::ilogb(rd[i]), -126);
      const double err = std::fabs(static_cast<double>(r[i]) - rd[i]);
      e.add(std::isfinite(r[i]) ? err / std::ldexp(1.0, ex - 23) : kInf<double>,
            std::fabs(rd[i]) >= 0x1p-126 ? err / std::fabs(rd[i]) : 0.0, a[i], 0);
    }
    count += static_cast<int64_t>(a.size());
  }
  check(row, e, count);
}

TEST(VectorMathAccuracy, EveryRowOfTheTable) {
  const Table table = read_table();
  ASSERT_FALSE(table.rows.empty());
  for (size_t i = 0; i < table.rows.size();) {
    std::vector<const Row*> group = {&table.rows[i]};
    for (++i; i < table.rows.size(); ++i) {
      const Row& r = table.rows[i];
      if (r.func != group[0]->func || r.t != group[0]->t || r.lo != group[0]->lo || r.hi != group[0]->hi ||
          r.count != group[0]->count)
        break;
      group.push_back(&r);
    }
    if (group[0]->t == "d") measure_group<double>(table, group);
    else if (group[0]->t == "s") measure_group<float>(table, group);
    else ADD_FAILURE() << "accuracy.txt:" << group[0]->line << ": no driver for type " << group[0]->t;
  }
}

TEST(VectorMathAccuracy, EveryFloatOfTheMarkedRows) {
  if (std::getenv("OXA_VML_EXHAUSTIVE") == nullptr) GTEST_SKIP() << "set OXA_VML_EXHAUSTIVE=1 to run";
  for (const Row& row : read_table().rows)
    if (row.all_floats && row.t == "s") measure_all_floats(row);
}

}  // namespace
