// Radix sort against std::stable_sort under the same order, for every key
// type, on several input shapes and sizes (small, insertion/radix boundary,
// around the threading threshold), ascending and descending, with and
// without an index, and as argsort.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "oxa/primitives.h"
#include "primitives/radix_sort.hpp"

namespace {

using oxa::prim::radix_argsort;
using oxa::prim::radix_sort;

// Reference order: integers by value; reals by the signed-integer view of
// their bits with the magnitude bits of negatives inverted (IEEE totalOrder).
template <class T>
auto order_key(T x) {
  if constexpr (std::is_floating_point_v<T>) {
    using S = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
    const S s = std::bit_cast<S>(x);
    return s >= 0 ? s : S(s ^ std::numeric_limits<S>::max());
  } else {
    return x;
  }
}

enum class Shape { kRandom, kFewValues, kAllEqual, kSorted, kReversed, kSpecials };

template <class T>
std::vector<T> make_keys(Shape shape, int64_t n, uint64_t seed) {
  std::mt19937_64 rng(seed);
  using U = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
  auto random_key = [&] {
    const U bits = U(rng());
    if constexpr (std::is_floating_point_v<T>) {
      return std::bit_cast<T>(bits);  // every class: normals, subnormals, infinities, NaNs
    } else {
      return T(bits);
    }
  };
  std::vector<T> v(static_cast<size_t>(n));
  for (auto& x : v) x = random_key();
  switch (shape) {
    case Shape::kRandom: break;
    case Shape::kFewValues: {  // many equal keys, differing in high and low digits
      const T pool[3] = {random_key(), random_key(), random_key()};
      for (auto& x : v) x = pool[rng() % 3];
      break;
    }
    case Shape::kAllEqual: std::fill(v.begin(), v.end(), random_key()); break;
    case Shape::kSorted:
    case Shape::kReversed:
      std::stable_sort(v.begin(), v.end(), [](T a, T b) { return order_key(a) < order_key(b); });
      if (shape == Shape::kReversed) std::reverse(v.begin(), v.end());
      break;
    case Shape::kSpecials:
      if constexpr (std::is_floating_point_v<T>) {
        using L = std::numeric_limits<T>;
        const T specials[] = {T(0), -T(0), L::infinity(), -L::infinity(), L::quiet_NaN(),
                              -L::quiet_NaN(), L::denorm_min(), -L::denorm_min(), T(1), T(-1)};
        for (auto& x : v) x = specials[rng() % std::size(specials)];
      } else {
        const T specials[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(0),
                              T(1), T(-1)};
        for (auto& x : v) x = specials[rng() % std::size(specials)];
      }
      break;
  }
  return v;
}

// Positions in stable sorted order, by the reference.
template <class T>
std::vector<uint64_t> reference_permutation(const std::vector<T>& keys, bool descending) {
  std::vector<uint64_t> perm(keys.size());
  std::iota(perm.begin(), perm.end(), 0);
  std::stable_sort(perm.begin(), perm.end(), [&](uint64_t a, uint64_t b) {
    return descending ? order_key(keys[b]) < order_key(keys[a])
                      : order_key(keys[a]) < order_key(keys[b]);
  });
  return perm;
}

template <class T>
void check_all_modes(const std::vector<T>& keys, bool descending, int32_t threads,
                     const std::string& what) {
  const int64_t n = int64_t(keys.size());
  const auto perm = reference_permutation(keys, descending);
  std::vector<T> expected(keys.size());
  for (size_t i = 0; i < perm.size(); ++i) expected[i] = keys[perm[i]];
  auto same_bits = [](const std::vector<T>& a, const std::vector<T>& b) {
    return a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
  };

  std::vector<T> sorted = keys;
  ASSERT_EQ(radix_sort<T>(sorted.data(), n, descending, threads), 0) << what;
  EXPECT_TRUE(same_bits(sorted, expected)) << what << " keys only";

  // A 64-bit index carried along: the stable permutation of the original positions.
  std::vector<T> carried = keys;
  std::vector<uint64_t> index(keys.size());
  std::iota(index.begin(), index.end(), 0);
  ASSERT_EQ((radix_sort<T, uint64_t>(carried.data(), index.data(), n, descending, threads)), 0);
  EXPECT_TRUE(same_bits(carried, expected)) << what << " with index";
  EXPECT_EQ(index, perm) << what << " carried index";

  std::vector<uint32_t> arg(keys.size(), 0xDEADBEEF);
  ASSERT_EQ((radix_argsort<T, uint32_t>(keys.data(), arg.data(), n, descending, threads)), 0);
  EXPECT_TRUE(std::equal(arg.begin(), arg.end(), perm.begin())) << what << " argsort";
}

template <class T>
class RadixSort : public ::testing::Test {};
using KeyTypes = ::testing::Types<uint8_t, int8_t, uint16_t, int16_t, uint32_t, int32_t, uint64_t,
                                  int64_t, float, double>;
TYPED_TEST_SUITE(RadixSort, KeyTypes);

TYPED_TEST(RadixSort, MatchesStableSortOnEveryShape) {
  const Shape shapes[] = {Shape::kRandom, Shape::kFewValues, Shape::kAllEqual,
                          Shape::kSorted, Shape::kReversed,  Shape::kSpecials};
  const int64_t sizes[] = {0, 1, 2, 3, oxa::prim::kInsertionMax, oxa::prim::kInsertionMax + 1, 5000};
  uint64_t seed = 1;
  for (Shape shape : shapes)
    for (int64_t n : sizes)
      for (bool descending : {false, true}) {
        const auto keys = make_keys<TypeParam>(shape, n, seed++);
        check_all_modes(keys, descending, 0,
                        "shape " + std::to_string(int(shape)) + " n " + std::to_string(n) +
                            (descending ? " descending" : " ascending"));
      }
}

// Around the threading threshold, with the thread count forced so that chunk
// boundaries fall at odd places even on a small machine.
TYPED_TEST(RadixSort, MatchesStableSortAroundThreadingThreshold) {
  const int64_t t = OXA_PRIM_SORT_PARALLEL_MIN;
  const struct {
    Shape shape;
    int64_t n;
    int32_t threads;
    bool descending;
  } cases[] = {{Shape::kRandom, t - 1, 0, false},   {Shape::kRandom, t, 0, true},
               {Shape::kFewValues, t + 1, 3, false}, {Shape::kSpecials, 3 * t + 7, 3, true},
               {Shape::kAllEqual, t, 2, false}};
  uint64_t seed = 100;
  for (const auto& c : cases) {
    const auto keys = make_keys<TypeParam>(c.shape, c.n, seed++);
    check_all_modes(keys, c.descending, c.threads,
                    "shape " + std::to_string(int(c.shape)) + " n " + std::to_string(c.n) +
                        " threads " + std::to_string(c.threads));
  }
}

// Arrays beyond the non-temporal threshold, where whole staged lines are
// streamed out.
TEST(RadixSortLarge, StreamedScatter) {
  const int64_t n32 = OXA_PRIM_NONTEMPORAL_BYTES / 4 + 5, n64 = OXA_PRIM_NONTEMPORAL_BYTES / 8 + 3;
  check_all_modes(make_keys<uint32_t>(Shape::kRandom, n32, 7), false, 1, "uint32 large");
  check_all_modes(make_keys<double>(Shape::kSpecials, n64, 8), true, 2, "double large");
}

// The documented order of the real classes, written out.
TEST(RadixSortOrder, RealsFollowTotalOrder) {
  const double inf = INFINITY, nan = std::nan("");
  const double in[] = {nan, 1.0, -0.0, -inf, 0.0, -nan, inf, -1.0, 0x1p-1074, -0x1p-1074};
  const double out[] = {-nan, -inf, -1.0, -0x1p-1074, -0.0, 0.0, 0x1p-1074, 1.0, inf, nan};
  double keys[10];
  std::memcpy(keys, in, sizeof keys);
  ASSERT_EQ(oxa_prim_sort(OXA_PRIM_DOUBLE, 10, keys, OXA_PRIM_ASCENDING), 0);
  EXPECT_EQ(std::memcmp(keys, out, sizeof keys), 0);
  ASSERT_EQ(oxa_prim_sort(OXA_PRIM_DOUBLE, 10, keys, OXA_PRIM_DESCENDING), 0);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(std::bit_cast<uint64_t>(keys[i]), std::bit_cast<uint64_t>(out[9 - i]));
}

// The C entry points: type dispatch, index widths and every refusal.
TEST(RadixSortEntryPoints, DispatchAndRefusals) {
  std::vector<float> keys = {3, 1, 2, 1};
  std::vector<int32_t> i32 = {10, 11, 12, 13};
  ASSERT_EQ(oxa_prim_sort_index(OXA_PRIM_FLOAT, 4, keys.data(), OXA_PRIM_INT32, i32.data(),
                                OXA_PRIM_DESCENDING), 0);
  EXPECT_EQ(keys, (std::vector<float>{3, 2, 1, 1}));
  EXPECT_EQ(i32, (std::vector<int32_t>{10, 12, 11, 13}));
  const int16_t k16[] = {5, -5, 0};
  int64_t i64[3];
  ASSERT_EQ(oxa_prim_argsort(OXA_PRIM_INT16, 3, k16, OXA_PRIM_UINT64, i64, OXA_PRIM_ASCENDING), 0);
  EXPECT_EQ(i64[0], 1);
  EXPECT_EQ(i64[2], 0);

  const struct {
    oxa_status got, want;
  } refusals[] = {
      {oxa_prim_sort(OXA_PRIM_FLOAT, -1, keys.data(), 0), OXA_PRIM_ERROR_BAD_LENGTH},
      {oxa_prim_sort(OXA_PRIM_COMPLEX_FLOAT, 4, keys.data(), 0), OXA_PRIM_ERROR_BAD_ARGUMENT},
      {oxa_prim_sort(99, 4, keys.data(), 0), OXA_PRIM_ERROR_BAD_ARGUMENT},
      {oxa_prim_sort(OXA_PRIM_FLOAT, 4, keys.data(), 2), OXA_PRIM_ERROR_BAD_ARGUMENT},
      {oxa_prim_sort(OXA_PRIM_FLOAT, 4, nullptr, 0), OXA_PRIM_ERROR_NULL_POINTER},
      {oxa_prim_sort(OXA_PRIM_FLOAT, 0, nullptr, 0), OXA_PRIM_STATUS_OK},
      {oxa_prim_sort_index(OXA_PRIM_FLOAT, 4, keys.data(), OXA_PRIM_INT16, i32.data(), 0),
       OXA_PRIM_ERROR_BAD_ARGUMENT},
      {oxa_prim_sort_index(OXA_PRIM_FLOAT, 4, keys.data(), OXA_PRIM_INT32, nullptr, 0),
       OXA_PRIM_ERROR_NULL_POINTER},
      {oxa_prim_argsort(OXA_PRIM_FLOAT, (int64_t(1) << 31) + 1, keys.data(), OXA_PRIM_INT32,
                        i32.data(), 0),
       OXA_PRIM_ERROR_BAD_LENGTH},
  };
  for (size_t i = 0; i < std::size(refusals); ++i) EXPECT_EQ(refusals[i].got, refusals[i].want) << i;
  EXPECT_EQ(keys, (std::vector<float>{3, 2, 1, 1}));
}

}  // namespace
