// Method validation, the internal estimate mask and its dependency tables.
#include "summary_stats/basic_plan.hpp"

#include <algorithm>
#include <bit>

namespace oxa::ss {
namespace {

// clang-format off
// Internal bit i needs the bits of entry i (itself included).
constexpr uint32_t kNeedsOnePass[20] = {
    0x1, 0x2, 0x4, 0x8, 0x13, 0x27, 0x4f, 0x81, 0x101, 0x25f,
    0x437, 0x813, 0x1000, 0x2000, 0x4000, 0x8000, 0x10001, 0x20001, 0x40001, 0x80001};
// Central sums come from the raw moments up to their order.
constexpr uint32_t kNeedsFast[20] = {
    0x1, 0x2, 0x4, 0x8, 0x13, 0x27, 0x4f, 0x81, 0x101, 0x25f,
    0x437, 0x813, 0x1000, 0x2000, 0x4000, 0x8000, 0x10003, 0x20007, 0x4000f, 0x80001};
// Moments come from their sums, covariance and correlation from the cross
// products; sums and cross-products themselves cannot be produced.
constexpr uint32_t kNeedsConvert[20] = {
    0x1001, 0x2002, 0x4004, 0x8008, 0x10010, 0x20020, 0x40040, 0x80080, 0x80100, 0x251,
    0x431, 0x811, 0x100000, 0x100000, 0x100000, 0x100000, 0x100000, 0x100000, 0x100000, 0x100000};

constexpr int32_t kMissingCode[21] = {
    -4006, -4007, -4008, -4009, -4010, -4011, -4012, -4018, -4019, -4013, -4014,
    -4017, -4074, -4075, -4076, -4077, -4078, -4079, -4080, -4081, -4029};

// (external estimate bit, internal bit)
constexpr struct { uint64_t external; Bit internal; } kMap[20] = {
    {0x1, kMean}, {0x2, kRaw2}, {0x4, kRaw3}, {0x8, kRaw4}, {0x10, kCentral2},
    {0x20, kCentral3}, {0x40, kCentral4}, {0x1000, kCovariance}, {0x2000, kCorrelation},
    {0x80, kKurtosis}, {0x100, kSkewness}, {0x200, kVariation}, {0x2000000, kSum},
    {0x4000000, kRawSum2}, {0x8000000, kRawSum3}, {0x10000000, kRawSum4},
    {0x20000000, kCentralSum2}, {0x40000000, kCentralSum3}, {0x80000000, kCentralSum4},
    {0x100000000, kCrossProduct}};
// clang-format on

// Highest order k in 2..4 whose bit (base + k - 2) is set, else `none`.
int highest_order(uint32_t mask, Bit base, int none) {
  for (int k = 4; k >= 2; --k)
    if (mask & bit(static_cast<Bit>(base + k - 2))) return k;
  return none;
}

}  // namespace

bool classify_method(int64_t word, Method& method) {
  const int bases = ((word & 0x1) != 0) + ((word & 0x2) != 0) + ((word & 0x100) != 0);
  if (bases == 0) {
    // Either conversion flag, or both, selects conversion; what is converted
    // follows from the requested estimates alone.
    if ((word & 0x600) == 0) return false;
    method = Method::Convert;
    return true;
  }
  if (bases != 1) return false;
  method = (word & 0x1) ? Method::Fast : (word & 0x2) ? Method::OnePass : Method::GivenMean;
  return true;
}

uint32_t internal_mask(uint64_t estimates) {
  uint32_t mask = 0;
  for (const auto& m : kMap)
    if (estimates & m.external) mask |= bit(m.internal);
  return mask;
}

uint32_t required_mask(uint32_t requested, Method method) {
  const uint32_t* table = method == Method::Fast      ? kNeedsFast
                          : method == Method::Convert ? kNeedsConvert
                                                      : kNeedsOnePass;
  uint32_t required = 0;
  for (int b = 0; b < 20; ++b)
    if (requested & (uint32_t{1} << b)) required |= table[b];
  return required;
}

uint32_t present_mask(const SSTask& t) {
  const void* fields[20] = {t.mean,
                            t.raw_moment[0],
                            t.raw_moment[1],
                            t.raw_moment[2],
                            t.central_moment[0],
                            t.central_moment[1],
                            t.central_moment[2],
                            t.covariance,
                            t.correlation,
                            t.kurtosis,
                            t.skewness,
                            t.variation,
                            t.sum,
                            t.raw_sum[0],
                            t.raw_sum[1],
                            t.raw_sum[2],
                            t.central_sum[0],
                            t.central_sum[1],
                            t.central_sum[2],
                            t.cross_product};
  uint32_t mask = 0;
  for (int b = 0; b < 20; ++b)
    if (fields[b] != nullptr) mask |= uint32_t{1} << b;
  return mask;
}

int32_t missing_field_code(uint32_t required, uint32_t present) {
  const uint32_t missing = required & ~present;
  return missing == 0 ? 0 : kMissingCode[std::countr_zero(missing)];
}

Plan make_plan(uint32_t required, Method method) {
  Plan plan{method, 0, false, 1, 0};
  plan.cross_products =
      (required & (bit(kCovariance) | bit(kCorrelation) | bit(kCrossProduct))) != 0;
  const int raw = std::max(highest_order(required, kRaw2, 1), highest_order(required, kRawSum2, 1));
  const int central =
      std::max(highest_order(required, kCentral2, 0), highest_order(required, kCentralSum2, 0));
  switch (method) {
    case Method::OnePass:  // R1___C____, R1___C2___, R12__C2___, R1234C234_
      plan.level = (raw >= 3 || central >= 3) ? 3 : raw == 2 ? 2 : central == 2 ? 1 : 0;
      plan.raw_order = plan.level == 3 ? 4 : plan.level == 2 ? 2 : 1;
      plan.central_order = plan.level == 3 ? 4 : plan.level >= 1 ? 2 : 0;
      break;
    case Method::Fast:  // R1___, R12__, R123_, R1234, with central sums of the same order
      plan.raw_order = std::max(raw, central);
      plan.level = plan.raw_order - 1;
      plan.central_order = plan.raw_order >= 2 ? plan.raw_order : 0;
      break;
    case Method::GivenMean:  // R____C2__, R____C23_, R____C234, R_234C234
      plan.level = raw >= 2 ? 3 : central <= 2 ? 0 : central - 1;
      plan.raw_order = plan.level == 3 ? 4 : 1;
      plan.central_order = plan.level == 0 ? 2 : plan.level == 1 ? 3 : 4;
      break;
    case Method::Convert:
      plan.raw_order = raw;
      plan.central_order = central;
      break;
  }
  return plan;
}

}  // namespace oxa::ss
