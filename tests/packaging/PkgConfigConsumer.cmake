# Asks pkg-config for the version of the package installed in the scratch
# prefix, then compiles the one-file consumer with nothing but
# `pkg-config --cflags --libs` (nothing is installed system-wide, so wrong paths
# fail) and runs it, in C++17 and in C++20. The headers come in by -I, not as
# system headers, so they must be free of warnings under the strict set that
# integrators commonly build with.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

set(ENV{PKG_CONFIG_PATH} "${TEC_PREFIX}/${TEC_LIBDIR}/pkgconfig")
set(package TimelineEngineConversion)
tec_run("${TEC_PKG_CONFIG}" --modversion ${package})
string(STRIP "${tec_output}" version)
if(NOT version STREQUAL TEC_VERSION)
  message(FATAL_ERROR "pkg-config reports version '${version}', the project is ${TEC_VERSION}")
endif()

tec_run("${TEC_PKG_CONFIG}" --cflags --libs ${package})
separate_arguments(flags UNIX_COMMAND "${tec_output}")
tec_run("${TEC_PKG_CONFIG}" --variable=libdir ${package})
string(STRIP "${tec_output}" libdir)
separate_arguments(consumer_flags UNIX_COMMAND "${TEC_CONSUMER_FLAGS}")

foreach(standard 17 20)
  set(executable "${TEC_WORK_DIR}/pkg-config-consumer-${standard}")
  file(REMOVE "${executable}")
  tec_run("${TEC_CXX_COMPILER}" -std=c++${standard} -Wall -Wextra -Wpedantic -Wnon-virtual-dtor
          -Wconversion -Wshadow -Werror ${consumer_flags} "${TEC_CONSUMER_SOURCE}" -o "${executable}"
          ${flags} "-Wl,-rpath,${libdir}")
  tec_check_consumer_run("${executable}" "${TEC_VERSION}")
endforeach()
