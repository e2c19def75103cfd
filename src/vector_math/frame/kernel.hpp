// Declarations of the kernel templates that the catalogue turns into exported
// entry points. A family's .cpp defines them for its levels by explicit
// instantiation (see kernel_frame.hpp); the catalogue only needs these names.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace oxa::vml {

enum class Acc { LA, HA, EP };

namespace simd {
struct Avx2;
}  // namespace simd

// Family tags are empty structs named after the function, e.g. fam::CdfNormInv.
// Policy<Family, T, Acc> is specialised by each family (kernel_frame.hpp).
template <class Family, class T, Acc A>
struct Policy;

// One template per argument shape. Isa is the instruction set of the vector
// formula (simd.hpp); the exported kernels are the Avx2 ones.
template <class Family, class T, Acc A, class Isa = simd::Avx2>
void kernel_in1_out1(int64_t n, const T* a, T* r);
template <class Family, class T, Acc A, class Isa = simd::Avx2>
void kernel_in2_out1(int64_t n, const T* a, const T* b, T* r);
template <class Family, class T, Acc A, class Isa = simd::Avx2>
void kernel_in1_scalar_out1(int64_t n, const T* a, T b, T* r);
template <class Family, class T, Acc A, class Isa = simd::Avx2>
void kernel_in1_out2(int64_t n, const T* a, T* r1, T* r2);
template <class Family, class T, Acc A, class Isa = simd::Avx2>
void kernel_linear_frac(int64_t n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* r);

// "v" + type letter + name, e.g. "vdExp".
template <class Family, class T>
struct DerivedErrorName {
  static constexpr std::string_view kBase = Family::kName;
  static constexpr std::array<char, kBase.size() + 3> kText = [] {
    std::array<char, kBase.size() + 3> s{};
    s[0] = 'v', s[1] = std::is_same_v<T, double> ? 'd' : 's';
    for (std::size_t i = 0; i < kBase.size(); ++i) s[i + 2] = kBase[i];
    return s;
  }();
};

// The one hook for the name kernel <Family, T, A> reports its errors under:
// derived from the family tag's kName unless specialised (by a family whose
// names follow another pattern, or by a list generated from the catalogue).
template <class Family, class T, Acc A>
inline constexpr const char* kErrorName = DerivedErrorName<Family, T>::kText.data();

}  // namespace oxa::vml
