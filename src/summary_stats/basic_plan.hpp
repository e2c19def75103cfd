// Planning of a basic-estimator call: the method, the internal estimate mask,
// its dependencies and the codes for missing result fields.
#pragma once

#include <cstdint>

#include "summary_stats/task.hpp"

namespace oxa::ss {

// Internal estimate bits, in the order the missing-field codes follow.
enum Bit : uint32_t {
  kMean = 0,
  kRaw2 = 1,
  kRaw3 = 2,
  kRaw4 = 3,
  kCentral2 = 4,
  kCentral3 = 5,
  kCentral4 = 6,
  kCovariance = 7,
  kCorrelation = 8,
  kKurtosis = 9,
  kSkewness = 10,
  kVariation = 11,
  kSum = 12,
  kRawSum2 = 13,
  kRawSum3 = 14,
  kRawSum4 = 15,
  kCentralSum2 = 16,
  kCentralSum3 = 17,
  kCentralSum4 = 18,
  kCrossProduct = 19,
  kNotComputable = 20,
};
constexpr uint32_t bit(Bit b) {
  return uint32_t{1} << b;
}

enum class Method : uint8_t { OnePass, Fast, GivenMean, Convert };

// The method a method word selects; false when the word is invalid.
bool classify_method(int64_t word, Method& method);

// The 64-bit estimate mask mapped to internal bits. Estimates this estimator
// does not compute (order statistics, pooled covariance, ...) are ignored.
uint32_t internal_mask(uint64_t estimates);

// The requested internal bits with everything they need, for `method`.
uint32_t required_mask(uint32_t requested, Method method);

// Bits whose result field is set on the task (bit 20 never is).
uint32_t present_mask(const SSTask& task);

// 0, or the code of the lowest required bit whose field is absent.
int32_t missing_field_code(uint32_t required, uint32_t present);

// What the block kernels must accumulate for a required mask.
struct Plan {
  Method method;
  int level;  // kernel level 0..3 within the method's table
  bool cross_products;
  int raw_order;      // highest raw power sum kept (1 = only the sum)
  int central_order;  // highest central sum kept (0 = none)
};
Plan make_plan(uint32_t required, Method method);

}  // namespace oxa::ss
