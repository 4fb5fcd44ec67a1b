# Every installed header is the integrator's documentation: it must open with
# its licence's SPDX identifier (it is installed apart from the copyright
# file), then a comment paragraph of at least eight words saying what it is
# for, then `#pragma once`.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

tec_public_headers(headers "${TEC_SOURCE_DIR}")
set(problems "")
foreach(header IN LISTS headers)
  file(READ "${TEC_SOURCE_DIR}/${header}" text)
  if(NOT text MATCHES "^// SPDX-License-Identifier: Apache-2\\.0\n((//[^\n]*\n)+)#pragma once\n")
    list(APPEND problems "${header}: not the SPDX line, then an opening comment, then #pragma once")
    continue()
  endif()
  string(REGEX MATCHALL "[A-Za-z][A-Za-z'-]*" words "${CMAKE_MATCH_1}")
  list(LENGTH words word_count)
  if(word_count LESS 8)
    list(APPEND problems "${header}: the opening comment says too little (${word_count} words)")
  endif()
endforeach()
if(problems)
  list(JOIN problems "\n  " report)
  message(FATAL_ERROR "public headers:\n  ${report}")
endif()
