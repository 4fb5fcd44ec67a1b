# The integration guide quotes the exception texts that integrators match on or
# show to operators. Every fixed text in its tables (those without <...>
# placeholders) must occur word for word in the library's sources, so that a
# reworded message cannot leave the guide behind.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(GLOB sources "${TEC_SOURCE_DIR}/input-models/*.[ch]*" "${TEC_SOURCE_DIR}/conversion/*.[ch]*")
set(library_text "")
foreach(source IN LISTS sources)
  file(READ "${source}" text)
  # Adjacent string literals split over lines read as one text.
  string(REGEX REPLACE "\"\n[ ]*\"" "" text "${text}")
  string(APPEND library_text "${text}")
endforeach()

file(STRINGS "${TEC_SOURCE_DIR}/docs/integration.md" rows REGEX "^\\| `std::[a-z_]+` \\| `")
set(checked 0)
set(problems "")
foreach(row IN LISTS rows)
  string(REGEX MATCH "^\\| `[^`]+` \\| `([^`]+)`" ignored "${row}")
  set(message_text "${CMAKE_MATCH_1}")
  if(message_text MATCHES "<")
    continue()
  endif()
  math(EXPR checked "${checked} + 1")
  string(FIND "${library_text}" "\"${message_text}\"" position)
  if(position LESS 0)
    list(APPEND problems "not thrown by the library: ${message_text}")
  endif()
endforeach()
if(checked LESS 10)
  message(FATAL_ERROR "only ${checked} fixed texts found in the guide's tables")
endif()
if(problems)
  list(JOIN problems "\n  " report)
  message(FATAL_ERROR "docs/integration.md:\n  ${report}")
endif()
