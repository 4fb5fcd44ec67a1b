# Runs lintian on the three packages that DebianPackage.cmake built and fails
# on any error or warning (informational notes are left to the maintainer).
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(GLOB packages "${TEC_WORK_DIR}/*.deb")
list(LENGTH packages count)
if(NOT count EQUAL 3)
  message(FATAL_ERROR "expected the three packages in ${TEC_WORK_DIR}, found: ${packages}")
endif()
execute_process(COMMAND "${TEC_LINTIAN}" --no-cfg --fail-on error,warning ${packages}
                RESULT_VARIABLE result OUTPUT_VARIABLE report ERROR_VARIABLE errors)
if(NOT result EQUAL 0 OR report MATCHES "(^|\n)[EW]: ")
  message(FATAL_ERROR "lintian (${result}):\n${report}${errors}")
endif()
