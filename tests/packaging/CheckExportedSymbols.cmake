# Compares the dynamic symbols that the shared library defines with the
# documented list (TEC_REQUIRED_LIST, demangled names as `nm -DC` prints them)
# and fails on every symbol exported beyond the list and every listed symbol
# missing. Symbols that sanitizer runtimes and the toolchain add are not the
# library's and are left out. TEC_INJECT_SYMBOL (a mangled name) and
# TEC_DROP_SYMBOL (a demangled name) doctor the table, so that the tests can
# show the check catches both faults.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

tec_run("${TEC_NM}" -D --defined-only -P "${TEC_LIBRARY}")
string(REGEX REPLACE "([^ \n]+) [^\n]*" "\\1" mangled "${tec_output}")
string(STRIP "${mangled}" mangled)
if(TEC_INJECT_SYMBOL)
  string(APPEND mangled "\n${TEC_INJECT_SYMBOL}")
endif()
string(REGEX REPLACE "(^|\n)_*(init|fini|edata|end|bss_start|asan|odr_asan|sanitizer|ubsan|tsan|lsan|sancov)[^\n]*" ""
       mangled "${mangled}")
set(mangled_file "${TEC_WORK_DIR}/symbols.mangled")
file(WRITE "${mangled_file}" "${mangled}\n")
execute_process(COMMAND "${TEC_CXXFILT}" INPUT_FILE "${mangled_file}" OUTPUT_VARIABLE demangled
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${TEC_CXXFILT} failed (${result})")
endif()
string(STRIP "${demangled}" demangled)
string(REPLACE "\n" ";" exported "${demangled}")
list(REMOVE_DUPLICATES exported)
if(TEC_DROP_SYMBOL)
  list(REMOVE_ITEM exported "${TEC_DROP_SYMBOL}")
endif()

file(STRINGS "${TEC_REQUIRED_LIST}" documented REGEX "^[^#]")
set(problems "")
foreach(symbol IN LISTS exported)
  if(NOT symbol IN_LIST documented)
    list(APPEND problems "exported but not in the documented list: ${symbol}")
  endif()
endforeach()
foreach(symbol IN LISTS documented)
  if(NOT symbol IN_LIST exported)
    list(APPEND problems "documented but not exported: ${symbol}")
  endif()
endforeach()
if(problems)
  list(JOIN problems "\n  " report)
  message(FATAL_ERROR "${TEC_LIBRARY} (list: ${TEC_REQUIRED_LIST}):\n  ${report}")
endif()
list(LENGTH exported count)
message(STATUS "${count} exported names, exactly the documented list")
