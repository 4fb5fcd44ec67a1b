# Compares the binary interface of the built shared library with the one
# recorded for its SONAME in tests/packaging/abi/ (abidiff; types from the
# installed public headers only). Any difference fails: an incompatible one
# needs a new SOVERSION, a compatible one (an addition) is recorded with
# scripts/update-abi.sh. A library whose SONAME has no record yet passes when
# an older SONAME has one: a new SOVERSION is free to change the interface.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

get_filename_component(library "${TEC_LIBRARY}" REALPATH)
tec_run("${TEC_READELF}" -d "${library}")
if(NOT tec_output MATCHES "Library soname: \\[([^]]+)\\]")
  message(FATAL_ERROR "${library} has no SONAME")
endif()
set(soname "${CMAKE_MATCH_1}")
set(recorded "${TEC_SOURCE_DIR}/tests/packaging/abi/${soname}.abi")
if(NOT EXISTS "${recorded}")
  file(GLOB older "${TEC_SOURCE_DIR}/tests/packaging/abi/*.abi")
  if(older)
    message(STATUS "${soname} is a new SOVERSION; record its ABI with scripts/update-abi.sh")
    return()
  endif()
  message(FATAL_ERROR "no recorded ABI in tests/packaging/abi/: run scripts/update-abi.sh")
endif()

# The fault check compares with a doctored record in which a public type
# returned by value (MediaInfo) was 64 bits larger.
if(TEC_DOCTOR_RECORD)
  file(READ "${recorded}" record)
  string(REGEX REPLACE "<class-decl name='MediaInfo' size-in-bits='([0-9]+)'"
                       "<class-decl name='MediaInfo' size-in-bits='\\1000'" record "${record}")
  set(recorded "${TEC_WORK_DIR}/doctored.abi")
  file(WRITE "${recorded}" "${record}")
endif()

execute_process(
  COMMAND "${TEC_ABIDIFF}" --no-show-locs --drop-private-types
          --headers-dir2 "${TEC_PREFIX}/include/TimelineEngineConversion" "${recorded}" "${library}"
  RESULT_VARIABLE result OUTPUT_VARIABLE report ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  # abidiff's status: bit 1 an error, 2 a usage error, 4 a change, 8 an
  # incompatible change.
  math(EXPR incompatible "${result} & 8")
  math(EXPR failed "${result} & 3")
  if(failed)
    message(FATAL_ERROR "abidiff could not compare (${result}):\n${errors}")
  elseif(incompatible)
    set(advice "This breaks programs built against ${soname}: undo the change, or raise the "
               "SOVERSION (the project's major version) and record the new ABI")
  else()
    set(advice "If the change only adds to the interface, record it; if it changes a type or "
               "function that callers already use, raise the SOVERSION instead")
  endif()
  string(JOIN "" advice ${advice})
  message(FATAL_ERROR "The library's ABI differs from ${recorded}.\n${advice} "
                      "(./scripts/update-abi.sh ${TEC_BUILD_DIR}).\n${report}${errors}")
endif()
