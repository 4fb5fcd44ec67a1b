# Builds the command-line tool on its own against the scratch prefix through
# find_package, with warnings as errors, and converts the shipped example with
# it: the tool needs nothing of the library but its installed public headers.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

set(build "${TEC_WORK_DIR}/tool-consumer")
file(REMOVE_RECURSE "${build}")
tec_run("${CMAKE_COMMAND}" -S "${TEC_SOURCE_DIR}/tools" -B "${build}" -G "${TEC_GENERATOR}"
        "-DCMAKE_CXX_COMPILER=${TEC_CXX_COMPILER}" "-DCMAKE_PREFIX_PATH=${TEC_PREFIX}"
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Werror ${TEC_CONSUMER_FLAGS}")
tec_run("${CMAKE_COMMAND}" --build "${build}" --target timeline-convert)
execute_process(COMMAND "${build}/timeline-convert" convert "${TEC_SOURCE_DIR}/examples/highlight.json"
                OUTPUT_VARIABLE converted RESULT_VARIABLE status)
file(READ "${TEC_SOURCE_DIR}/tests/tools/golden/highlight.timeline.json" expected)
if(NOT status EQUAL 0 OR NOT converted STREQUAL expected)
  message(FATAL_ERROR "the tool built against the installed package converts the example "
                      "differently (exit status ${status})")
endif()
