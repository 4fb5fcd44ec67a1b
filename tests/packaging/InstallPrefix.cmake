# Installs the build tree into an empty scratch prefix, as an integrator would
# with `cmake --install`; the consumer tests build against that prefix.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(REMOVE_RECURSE "${TEC_PREFIX}")
tec_run("${CMAKE_COMMAND}" --install "${TEC_BUILD_DIR}" --prefix "${TEC_PREFIX}")
