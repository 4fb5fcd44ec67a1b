# How the library reaches its integrators: the install layout, the CMake
# package with its version rule, the pkg-config file and the Debian packages.
# Included by the top-level CMakeLists.txt once the library target exists.
# Everything installed belongs to one of three components, each a Debian
# package of its own:
#   runtime      the versioned shared object      libtimelineengineconversion1
#   development  headers, link, CMake, pkg-config libtimelineengineconversion-dev
#   tool         timeline-convert, its manual     timeline-convert
# (tools/ installs the tool with COMPONENT tool.)
include(CMakePackageConfigHelpers)
set(TEC_INSTALL_COMPONENTS runtime development tool)

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
# A shared object is not a program: installed without execute permission.
install(TARGETS TimelineEngineConversion EXPORT TimelineEngineConversionTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
          PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
set(TEC_INCLUDE_INSTALL_DIR "${CMAKE_INSTALL_INCLUDEDIR}/TimelineEngineConversion")
install(FILES TimelineEngineConversion.h DESTINATION ${TEC_INCLUDE_INSTALL_DIR} COMPONENT development)
install(FILES ${TEC_PUBLIC_HEADERS_INPUT_MODELS}
  DESTINATION ${TEC_INCLUDE_INSTALL_DIR}/input-models COMPONENT development)
install(FILES ${TEC_PUBLIC_HEADERS_ENGINE_MODEL}
  DESTINATION ${TEC_INCLUDE_INSTALL_DIR}/engine-model COMPONENT development)
install(FILES ${TEC_PUBLIC_HEADERS_CONVERSION}
  DESTINATION ${TEC_INCLUDE_INSTALL_DIR}/conversion COMPONENT development)
install(EXPORT TimelineEngineConversionTargets
  NAMESPACE TimelineEngineConversion::
  DESTINATION ${TEC_CMAKE_INSTALL_DIR} COMPONENT development)
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
  DESTINATION ${TEC_CMAKE_INSTALL_DIR} COMPONENT development)

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
install(SCRIPT "${PROJECT_BINARY_DIR}/InstallPkgConfig.cmake" COMPONENT development)


# The Debian packages: `cpack -G DEB` in the build directory makes all three.
# The maintainer is named here and nowhere else: the control files, the
# changelog and the copyright file take it from this variable.
set(TEC_PACKAGE_MAINTAINER "TimelineEngineConversion maintainers <maintainers@users.noreply.c-seed-81ef509b.example>"
    CACHE STRING "Maintainer of the Debian packages, as 'Name <address>'")
set(TEC_DEBIAN_RELEASE 1)
set(TEC_DEBIAN_PACKAGES libtimelineengineconversion1 libtimelineengineconversion-dev timeline-convert)

# The changelog's newest entry must name the version being packaged.
set(TEC_DEBIAN_SOURCE "${PROJECT_SOURCE_DIR}/packaging/debian")
file(STRINGS "${TEC_DEBIAN_SOURCE}/changelog" newest_entry LIMIT_COUNT 1)
if(NOT newest_entry MATCHES "^timeline-engine-conversion \\(${PROJECT_VERSION}-${TEC_DEBIAN_RELEASE}\\) ")
  message(FATAL_ERROR "packaging/debian/changelog starts with '${newest_entry}': add an entry for "
                      "${PROJECT_VERSION}-${TEC_DEBIAN_RELEASE}")
endif()
# Every package carries its copyright file, the changelog, compressed as
# Debian wants it (maximum compression, no name or time stamp), and the lintian
# overrides, each with its reason. Only the
# package build installs them: a plain `cmake --install` leaves them out.
set(TEC_DEBIAN_BUILD "${PROJECT_BINARY_DIR}/debian")
configure_file("${TEC_DEBIAN_SOURCE}/copyright" "${TEC_DEBIAN_BUILD}/copyright" @ONLY)
configure_file("${TEC_DEBIAN_SOURCE}/changelog" "${TEC_DEBIAN_BUILD}/changelog" @ONLY)
find_program(TEC_GZIP gzip REQUIRED)
execute_process(COMMAND "${TEC_GZIP}" -9nc "${TEC_DEBIAN_BUILD}/changelog"
                OUTPUT_FILE "${TEC_DEBIAN_BUILD}/changelog.Debian.gz" COMMAND_ERROR_IS_FATAL ANY)
file(WRITE "${TEC_DEBIAN_BUILD}/triggers" "activate-noawait ldconfig\n")
foreach(component package IN ZIP_LISTS TEC_INSTALL_COMPONENTS TEC_DEBIAN_PACKAGES)
  install(FILES "${TEC_DEBIAN_BUILD}/copyright" "${TEC_DEBIAN_BUILD}/changelog.Debian.gz"
          DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}"
          COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES "${TEC_DEBIAN_SOURCE}/lintian-overrides" RENAME ${package}
          DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides"
          COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_PACKAGE_NAME "timeline-engine-conversion")
set(CPACK_PACKAGE_VENDOR "Kov")
set(CPACK_PACKAGE_CONTACT "${TEC_PACKAGE_MAINTAINER}")
set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL ${TEC_INSTALL_COMPONENTS})
if(NOT TEC_BUILD_TOOLS)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE "${CPACK_PACKAGE_NAME}")
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TEC_DEBIAN_RELEASE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# As Debian ships binaries: without debugging information.
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libtimelineengineconversion1")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "library converting replay server sequences to timeline models
TimelineEngineConversion turns the sequences of a replay server (playlists of
video, audio and transition elements with their media assets) into the
timeline, track and media models of a timeline editing engine.
.
This package holds the shared library.")
# The shlibs file lets other packages depend on the library by soname; a later
# release of the same major version keeps the binary interface, so packages
# built against this one accept it (">=" rather than "="). The ldconfig trigger
# replaces the maintainer scripts that CPack would write for it.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${TEC_DEBIAN_BUILD}/triggers")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/DebianDropLdconfigScripts.cmake")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "libtimelineengineconversion-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "development files of the timeline conversion library
TimelineEngineConversion turns the sequences of a replay server into the
timeline, track and media models of a timeline editing engine.
.
This package holds the C++17 headers, the link to the shared library, the
CMake package (find_package(TimelineEngineConversion)) and the pkg-config
file.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME "timeline-convert")
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION "video")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "convert replay server sequences to timeline models
timeline-convert reads a replay server sequence with its media assets from a
JSON document and writes the timeline that the TimelineEngineConversion
library makes of it, or the reason the sequence is refused.")
set(CPACK_COMPONENT_TOOL_DEPENDS runtime)
# The library and the tool come from one build: each depends on the runtime
# package of exactly its own version.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

# The other dependencies come from the binaries. The tool's own library is not
# installed on the build machine; dpkg-shlibdeps finds it in the build tree
# and the dependency above covers it.
find_program(TEC_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(TEC_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
else()
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libgcc-s1, libstdc++6")
endif()
set(CPACK_SOURCE_GENERATOR "TGZ")
set(CPACK_SOURCE_IGNORE_FILES "/\\\\.git/" "/build/" "/out/" "/Testing/")
include(CPack)

# Anything installed outside the three components would be left out of every
# package; called at the end of the top-level CMakeLists.txt, when every
# install rule is known.
function(tec_check_install_components)
  get_cmake_property(components COMPONENTS)
  list(REMOVE_ITEM components ${TEC_INSTALL_COMPONENTS})
  if(components)
    message(FATAL_ERROR "install() rules with components outside '${TEC_INSTALL_COMPONENTS}': "
                        "${components}. Give each rule COMPONENT runtime, development or tool.")
  endif()
endfunction()
