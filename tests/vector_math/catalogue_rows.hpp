// Checks one catalogue row of a one-in, one-out family: the dispatch table
// holds the LA, HA and EP kernels in that order, and each of the four
// accuracy stubs gives what its slot's kernel gives.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace oxa::test {

template <class T>
struct CatalogueRow {
  const char* name;
  void (*const* ttab)(int64_t, const T*, T*);
  void (*la)(int64_t, const T*, T*);
  void (*ha)(int64_t, const T*, T*);
  void (*ep)(int64_t, const T*, T*);
  void (*stub_default)(int64_t, const T*, T*);  // _vml<t><Func>
  void (*stub_ha)(int64_t, const T*, T*);
  void (*stub_la)(int64_t, const T*, T*);  // _50 or _21
  void (*stub_ep)(int64_t, const T*, T*);  // _26 or _11
};

template <class T>
void check_row(const CatalogueRow<T>& row, const std::vector<T>& inputs) {
  EXPECT_EQ(row.ttab[0], row.la) << row.name;
  EXPECT_EQ(row.ttab[1], row.ha) << row.name;
  EXPECT_EQ(row.ttab[2], row.ep) << row.name;
  const int64_t n = static_cast<int64_t>(inputs.size());
  const struct { void (*stub)(int64_t, const T*, T*); void (*kernel)(int64_t, const T*, T*); } pairs[] = {
      {row.stub_default, row.ha}, {row.stub_ha, row.ha}, {row.stub_la, row.la}, {row.stub_ep, row.ep}};
  for (const auto& p : pairs) {
    std::vector<T> want(inputs.size()), got(inputs.size());
    p.kernel(n, inputs.data(), want.data());
    p.stub(n, inputs.data(), got.data());
    EXPECT_EQ(std::memcmp(want.data(), got.data(), sizeof(T) * inputs.size()), 0) << row.name;
  }
}

}  // namespace oxa::test
