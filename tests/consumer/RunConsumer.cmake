# Installs the build tree into a scratch prefix, then configures, builds and
# runs the consumer project against it.
file(REMOVE_RECURSE "${TEC_WORK_DIR}")
set(prefix "${TEC_WORK_DIR}/prefix")
set(build "${TEC_WORK_DIR}/build")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install "${TEC_BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${TEC_CONSUMER_SOURCE_DIR}" -B "${build}" -G "${TEC_GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${TEC_CXX_COMPILER}" "-DCMAKE_PREFIX_PATH=${prefix}"
    "-DCMAKE_BUILD_RPATH=${prefix}/lib")
run(${CMAKE_COMMAND} --build "${build}")
run("${build}/consumer")
