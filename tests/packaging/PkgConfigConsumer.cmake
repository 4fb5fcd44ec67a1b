# Asks pkg-config for the version of the package installed in the scratch
# prefix, then compiles the one-file consumer with nothing but
# `pkg-config --cflags --libs` (nothing is installed system-wide, so wrong paths
# fail; the headers are not system headers here, so they must be free of
# warnings) and runs it.
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

set(executable "${TEC_WORK_DIR}/pkg-config-consumer")
file(REMOVE "${executable}")
tec_run("${TEC_CXX_COMPILER}" -std=c++17 -Wall -Wextra -Wpedantic -Werror ${consumer_flags}
        "${TEC_CONSUMER_SOURCE}" -o "${executable}" ${flags} "-Wl,-rpath,${libdir}")
tec_check_consumer_run("${executable}" "${TEC_VERSION}")
