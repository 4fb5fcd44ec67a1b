# How the library reaches its integrators: the install layout, the CMake
# package with its version rule, the pkg-config file and the Debian package.
# Included by the top-level CMakeLists.txt once the library target exists; the
# tool's own install rule (tools/) puts it into the same package.
include(CMakePackageConfigHelpers)

# Version.h carries the version as macros for callers' `#if` tests; it must say
# what the project says, or the shared object would report another version
# than its file name and package.
function(tec_check_version_header header)
  file(STRINGS "${header}" lines REGEX "^#define TIMELINE_ENGINE_CONVERSION_VERSION_[A-Z]+ ")
  foreach(line IN LISTS lines)
    if(line MATCHES "^#define TIMELINE_ENGINE_CONVERSION_VERSION_([A-Z]+) \"?([0-9.]+)\"?$")
      set(header_${CMAKE_MATCH_1} "${CMAKE_MATCH_2}")
    endif()
  endforeach()
  set(header_version "${header_MAJOR}.${header_MINOR}.${header_PATCH}")
  if(NOT header_version STREQUAL PROJECT_VERSION OR NOT header_TEXT STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "${header} says ${header_version} (text \"${header_TEXT}\") but the "
                        "project version is ${PROJECT_VERSION}: update one to match the other")
  endif()
endfunction()
tec_check_version_header("${PROJECT_SOURCE_DIR}/input-models/Version.h")

# The library, its headers under include/TimelineEngineConversion/, the CMake package.
set(TEC_CMAKE_INSTALL_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/TimelineEngineConversion")
install(TARGETS TimelineEngineConversion EXPORT TimelineEngineConversionTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES TimelineEngineConversion.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TimelineEngineConversion)
install(FILES ${TEC_PUBLIC_HEADERS_INPUT_MODELS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TimelineEngineConversion/input-models)
install(FILES ${TEC_PUBLIC_HEADERS_ENGINE_MODEL}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TimelineEngineConversion/engine-model)
install(FILES ${TEC_PUBLIC_HEADERS_CONVERSION}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/TimelineEngineConversion/conversion)
install(EXPORT TimelineEngineConversionTargets
  NAMESPACE TimelineEngineConversion::
  DESTINATION ${TEC_CMAKE_INSTALL_DIR})
configure_package_config_file(cmake/TimelineEngineConversionConfig.cmake.in
  "${PROJECT_BINARY_DIR}/TimelineEngineConversionConfig.cmake"
  INSTALL_DESTINATION ${TEC_CMAKE_INSTALL_DIR})
# A new major version breaks the binary interface, so a request for 1.x never
# accepts 2.0; the version file also refuses a consumer of another pointer size.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TimelineEngineConversionConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/TimelineEngineConversionConfig.cmake"
  "${PROJECT_BINARY_DIR}/TimelineEngineConversionConfigVersion.cmake"
  DESTINATION ${TEC_CMAKE_INSTALL_DIR})

# The pkg-config file names the prefix it is installed into, which is only known
# at install time (`cmake --install --prefix`, or /usr inside the Debian
# package), so it is written by an install script rather than at configure time.
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(TEC_PC_${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(TEC_PC_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(TEC_PC_INSTALL_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
else()
  set(TEC_PC_INSTALL_DIR "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endif()
set(TEC_PC_TEMPLATE "${PROJECT_SOURCE_DIR}/cmake/TimelineEngineConversion.pc.in")
configure_file(cmake/InstallPkgConfig.cmake.in "${PROJECT_BINARY_DIR}/InstallPkgConfig.cmake" @ONLY)
install(SCRIPT "${PROJECT_BINARY_DIR}/InstallPkgConfig.cmake")

# One Debian package with the library, the headers, both package files and the
# command-line tool: `cpack -G DEB` in the build directory.
set(CPACK_PACKAGE_NAME "timeline-engine-conversion")
set(CPACK_PACKAGE_VENDOR "Kov")
set(CPACK_PACKAGE_CONTACT "Timeline engine conversion maintainers <tec-maintainers@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Converts replay server sequences into timeline editing engine models")
set(CPACK_PACKAGE_DESCRIPTION
    "A C++17 shared library, its headers, CMake and pkg-config files, and the timeline-convert tool.")
set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION "libs")
# As Debian ships binaries: without debugging information.
set(CPACK_STRIP_FILES ON)
# The shlibs file lets other packages depend on this one by soname; ldconfig
# runs on install and removal because the library lands in /usr/lib. A later
# release of the same major version keeps the binary interface, so packages
# built against this one accept it (">=" rather than the default "=").
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
find_program(TEC_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(TEC_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
else()
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libgcc-s1, libstdc++6")
endif()
set(CPACK_SOURCE_GENERATOR "TGZ")
set(CPACK_SOURCE_IGNORE_FILES "/\\\\.git/" "/build/" "/out/" "/Testing/")
include(CPack)
