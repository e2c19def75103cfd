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

# An internal subsystem library: static, position independent, with the kernel
# options, linked to the service layer.
function(oxa_add_subsystem name)
  add_library(oxa_${name} STATIC ${ARGN})
  oxa_kernel_options(oxa_${name})
  target_link_libraries(oxa_${name} PUBLIC oxa_service)
endfunction()
