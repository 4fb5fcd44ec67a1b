# Helpers shared by the packaging test scripts (run with cmake -P).
cmake_minimum_required(VERSION 3.25)

# Runs a command and leaves its standard output in tec_output; stops the test
# with the command line and its output when it fails.
function(tec_run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    string(JOIN " " command ${ARGN})
    message(FATAL_ERROR "failed (${result}): ${command}\n${output}${errors}")
  endif()
  set(tec_output "${output}" PARENT_SCOPE)
endfunction()

# Fails unless text matches every regular expression given after it.
function(tec_expect_lines what text)
  foreach(pattern IN LISTS ARGN)
    if(NOT text MATCHES "${pattern}")
      message(FATAL_ERROR "${what}: expected a match for '${pattern}' in:\n${text}")
    endif()
  endforeach()
endfunction()

# The public headers, relative to the source root: the umbrella header and
# every header of the three parts, not their internal detail/ folders.
function(tec_public_headers out_var source_dir)
  file(GLOB headers RELATIVE "${source_dir}"
       "${source_dir}/input-models/*.h" "${source_dir}/engine-model/*.h"
       "${source_dir}/conversion/*.h")
  list(SORT headers)
  set(${out_var} TimelineEngineConversion.h ${headers} PARENT_SCOPE)
endfunction()

# Runs the consumer example and checks what it prints: the version of the
# library it loaded and the converted two-clip sequence, with both media items
# found by a dynamic_cast across the library boundary.
function(tec_check_consumer_run executable version)
  tec_run("${executable}")
  string(REPLACE "." "\\." version_pattern "${version}")
  tec_expect_lines("${executable}" "${tec_output}"
    "^TimelineEngineConversion ${version_pattern}\n"
    "\ntimeline [0-9a-f-]+: 400 frames, 1 track\\(s\\), 2 asset\\(s\\)\n"
    "\n  media [0-9a-f-]+: frames 50-300 of the asset at 0\n"
    "\n  media [0-9a-f-]+: frames 0-150 of the asset at 250\n")
endfunction()

# text with the characters that regular expressions give a meaning escaped.
function(tec_regex_escape out_var text)
  string(REGEX REPLACE "([][+.*()^$?|\\\\])" "\\\\\\1" escaped "${text}")
  set(${out_var} "${escaped}" PARENT_SCOPE)
endfunction()
