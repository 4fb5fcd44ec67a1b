# Builds examples/consumer against the scratch prefix through find_package, with
# warnings as errors, and runs it.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

set(build "${TEC_WORK_DIR}/cmake-consumer")
file(REMOVE_RECURSE "${build}")
tec_run("${CMAKE_COMMAND}" -S "${TEC_CONSUMER_SOURCE_DIR}" -B "${build}" -G "${TEC_GENERATOR}"
        "-DCMAKE_CXX_COMPILER=${TEC_CXX_COMPILER}" "-DCMAKE_PREFIX_PATH=${TEC_PREFIX}"
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror ${TEC_CONSUMER_FLAGS}")
tec_run("${CMAKE_COMMAND}" --build "${build}")
tec_check_consumer_run("${build}/timeline-consumer" "${TEC_VERSION}")
