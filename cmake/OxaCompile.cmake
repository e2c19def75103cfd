# Compile options shared by every oxa target.
#
# Kernels target AVX2+FMA. Floating-point contraction is off so that results do
# not depend on the compiler's choice to fuse: kernels write fma() where they
# mean it. -ffast-math is never used.
set(OXA_ARCH_FLAGS -march=x86-64-v3 -ffp-contract=off -fno-math-errno)

function(oxa_kernel_options target)
  target_compile_options(${target} PRIVATE
    ${OXA_ARCH_FLAGS}
    -Wall -Wextra
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>)
  target_include_directories(${target}
    PUBLIC  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
endfunction()

# An internal subsystem: its sources compile once into the object library
# oxa_<name>_objects, which the kernel library takes whole; the static library
# oxa_<name> packs the same objects for the tests.
#   - another subsystem it calls: target_link_libraries(oxa_<name> PUBLIC oxa_<other>)
#     (the kernel library holds every subsystem's objects anyway);
#   - an external library it calls: target_link_libraries(oxa_<name>_objects PUBLIC <lib>)
#     so that the kernel library links it too.
function(oxa_add_subsystem name)
  add_library(oxa_${name}_objects OBJECT ${ARGN})
  oxa_kernel_options(oxa_${name}_objects)
  target_link_libraries(oxa_${name}_objects PUBLIC oxa_service)
  add_library(oxa_${name} STATIC)
  target_link_libraries(oxa_${name} PUBLIC oxa_${name}_objects)
endfunction()
