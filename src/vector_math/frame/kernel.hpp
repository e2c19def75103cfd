// Declarations of the kernel templates that the catalogue turns into exported
// entry points. A family's .cpp defines them for its levels by explicit
// instantiation (see kernel_frame.hpp); the catalogue only needs these names.
#pragma once

#include <cstdint>

namespace oxa::vml {

enum class Acc { LA, HA, EP };

// Family tags are empty structs named after the function, e.g. fam::CdfNormInv.
// Policy<Family, T, Acc> is specialised by each family (kernel_frame.hpp).
template <class Family, class T, Acc A>
struct Policy;

// One template per argument shape.
template <class Family, class T, Acc A>
void kernel_in1_out1(int64_t n, const T* a, T* r);
template <class Family, class T, Acc A>
void kernel_in2_out1(int64_t n, const T* a, const T* b, T* r);
template <class Family, class T, Acc A>
void kernel_in1_scalar_out1(int64_t n, const T* a, T b, T* r);
template <class Family, class T, Acc A>
void kernel_in1_out2(int64_t n, const T* a, T* r1, T* r2);

}  // namespace oxa::vml
