# Runs lintian on the three packages that DebianPackage.cmake built, with
# informational and pedantic tags too, and fails on any tag it prints: a tag
# that is right for these packages gets an override with its reason in
# packaging/debian/<package>.lintian-overrides, which lintian then keeps quiet.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(GLOB packages "${TEC_WORK_DIR}/*.deb")
list(LENGTH packages count)
if(NOT count EQUAL 3)
  message(FATAL_ERROR "expected the three packages in ${TEC_WORK_DIR}, found: ${packages}")
endif()
execute_process(COMMAND "${TEC_LINTIAN}" --no-cfg -I --pedantic --fail-on error,warning,info,pedantic ${packages}
                RESULT_VARIABLE result OUTPUT_VARIABLE report ERROR_VARIABLE errors)
if(NOT result EQUAL 0 OR report MATCHES "(^|\n)[EWIPX]: ")
  message(FATAL_ERROR "lintian (${result}):\n${report}${errors}")
endif()
