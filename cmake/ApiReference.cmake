# The API reference: Doxygen's HTML pages of the public headers, generated at
# build time when doxygen is installed and TEC_BUILD_API_REFERENCE is on, and
# installed with the development package. A warning about the public API
# (Doxyfile sets WARN_AS_ERROR) fails the build; in CI a missing doxygen does.
# Included by Packaging.cmake.
set(TEC_API_REFERENCE_DIR "${PROJECT_BINARY_DIR}/api-reference")
if(NOT TEC_BUILD_API_REFERENCE)
  return()
endif()
find_program(TEC_DOXYGEN doxygen)
if(NOT TEC_DOXYGEN)
  if(DEFINED ENV{CI})
    message(FATAL_ERROR "doxygen is needed for the API reference: run scripts/bootstrap.sh")
  endif()
  message(STATUS "doxygen not found: no API reference (scripts/bootstrap.sh installs it)")
  return()
endif()

set(tec_api_headers TimelineEngineConversion.h ${TEC_PUBLIC_HEADERS_INPUT_MODELS}
                    ${TEC_PUBLIC_HEADERS_ENGINE_MODEL} ${TEC_PUBLIC_HEADERS_CONVERSION})
list(TRANSFORM tec_api_headers PREPEND "${PROJECT_SOURCE_DIR}/")
# Doxygen keeps pages of types that no longer exist: the output is made afresh.
add_custom_command(OUTPUT "${TEC_API_REFERENCE_DIR}/html/index.html"
  COMMAND "${CMAKE_COMMAND}" -E rm -rf "${TEC_API_REFERENCE_DIR}"
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${TEC_API_REFERENCE_DIR}"
  COMMAND "${CMAKE_COMMAND}" -E env "TEC_SOURCE_DIR=${PROJECT_SOURCE_DIR}"
          "TEC_VERSION=${PROJECT_VERSION}" "TEC_API_REFERENCE_DIR=${TEC_API_REFERENCE_DIR}"
          "${TEC_DOXYGEN}" "${PROJECT_SOURCE_DIR}/Doxyfile"
  DEPENDS "${PROJECT_SOURCE_DIR}/Doxyfile" ${tec_api_headers}
  COMMENT "API reference (Doxygen)"
  VERBATIM)
add_custom_target(api-reference ALL DEPENDS "${TEC_API_REFERENCE_DIR}/html/index.html")
install(DIRECTORY "${TEC_API_REFERENCE_DIR}/html"
  DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/libtimelineengineconversion-dev"
  COMPONENT development)
# Registered with doc-base, so that documentation browsers list it.
install(FILES "${PROJECT_SOURCE_DIR}/packaging/debian/libtimelineengineconversion-dev.doc-base"
  RENAME timelineengineconversion-api DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc-base"
  COMPONENT development EXCLUDE_FROM_ALL)
