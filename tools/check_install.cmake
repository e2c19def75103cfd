# Installs the build into a scratch prefix, then builds and runs a consumer
# twice: through find_package(oxa) and through pkg-config.
# Usage: cmake -DBUILD_DIR=<build> -DSCRATCH=<dir> -DCONSUMER=<source dir> -P check_install.cmake
file(REMOVE_RECURSE ${SCRATCH})
set(prefix ${SCRATCH}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${SCRATCH}/cmake -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_BUILD_RPATH=${prefix}/lib)
run(${CMAKE_COMMAND} --build ${SCRATCH}/cmake)
run(${SCRATCH}/cmake/consumer)

find_program(PKG_CONFIG pkg-config REQUIRED)
file(GLOB pc_file ${prefix}/lib*/pkgconfig/oxa.pc ${prefix}/lib/*/pkgconfig/oxa.pc)
get_filename_component(pc_dir "${pc_file}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs oxa OUTPUT_VARIABLE flags
                OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not find oxa in ${pc_dir}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(cc ${CONSUMER}/consumer.c ${flags} -Wl,-rpath,${prefix}/lib -o ${SCRATCH}/pc_consumer)
run(${SCRATCH}/pc_consumer)
message(STATUS "installed package found by CMake and pkg-config")
