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

# The documentation goes where Debian puts a package's documents,
# share/doc/<package>, for a plain `cmake --install` too, so that the relative
# links between the documents hold wherever the tree is installed. Each package
# carries every document its documents link to (tests/packaging checks).
set(TEC_DEV_DOC_DIR "${CMAKE_INSTALL_DATAROOTDIR}/doc/libtimelineengineconversion-dev")
install(FILES docs/integration.md docs/guarantees.md DESTINATION ${TEC_DEV_DOC_DIR}
        COMPONENT development)
install(FILES examples/highlight_sequence.cpp DESTINATION ${TEC_DEV_DOC_DIR}/examples
        COMPONENT development)
install(FILES examples/consumer/CMakeLists.txt examples/consumer/main.cpp
        DESTINATION ${TEC_DEV_DOC_DIR}/examples/consumer COMPONENT development)
include(ApiReference)
if(TEC_BUILD_TOOLS)
  set(tec_tool_doc_dir "${CMAKE_INSTALL_DATAROOTDIR}/doc/timeline-convert")
  install(FILES docs/cli.md docs/json-format.md docs/otio.md docs/edl.md docs/performance.md
                docs/viewer.png docs/playlist.schema.json docs/otio.schema.json
          DESTINATION ${tec_tool_doc_dir} COMPONENT tool)
  install(FILES examples/highlight.json examples/refused.json
          DESTINATION ${tec_tool_doc_dir}/examples COMPONENT tool)
  # Completion for zsh and fish, where Debian's shells look for a package's own.
  install(FILES tools/timeline-convert.zsh-completion RENAME _timeline-convert
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/vendor-completions COMPONENT tool)
  install(FILES tools/timeline-convert.fish-completion RENAME timeline-convert.fish
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d COMPONENT tool)
endif()


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
# The integrators' change log, under the name Debian gives an upstream one. It
# must have a section for the version being built.
file(STRINGS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" tec_changelog_sections REGEX "^## ")
if(NOT "## ${PROJECT_VERSION}" IN_LIST tec_changelog_sections)
  message(FATAL_ERROR "CHANGELOG.md has no section '## ${PROJECT_VERSION}': say what changed "
                      "for integrators in this version")
endif()
execute_process(COMMAND "${TEC_GZIP}" -9nc "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
                OUTPUT_FILE "${TEC_DEBIAN_BUILD}/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
             "${TEC_DEBIAN_SOURCE}/changelog" "${TEC_DEBIAN_SOURCE}/copyright")
foreach(component package IN ZIP_LISTS TEC_INSTALL_COMPONENTS TEC_DEBIAN_PACKAGES)
  install(FILES "${TEC_DEBIAN_BUILD}/copyright" "${TEC_DEBIAN_BUILD}/changelog.Debian.gz"
                "${TEC_DEBIAN_BUILD}/changelog.gz"
          DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}"
          COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES "${TEC_DEBIAN_SOURCE}/${package}.lintian-overrides" RENAME ${package}
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
# As Debian ships binaries: stripped, their debugging information in a
# separate -dbgsym package (.ddeb) per package with binaries. CPack strips them
# itself for that, so CPACK_STRIP_FILES stays off; DebianFinishPackages.cmake
# then drops the sections that dh_strip drops too (.comment, .note).
set(CPACK_STRIP_FILES OFF)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libtimelineengineconversion1")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "library converting replay server sequences to timeline models
TimelineEngineConversion turns the edited sequence of a replay server (a
playlist of recorded clips played between IN and OUT points, at a speed, with
video and audio transitions) into the model of a timeline editing engine:
tracks of media and transition items in frames, and one description per
media asset. A sequence the engine cannot represent is refused with a fixed
message. The conversion runs in the caller's process, without I/O or threads.
.
This package holds the shared library.")
# The shlibs file lets other packages depend on the library by soname; a later
# release of the same major version keeps the binary interface, so packages
# built against this one accept it (">=" rather than "="). The ldconfig trigger
# replaces the maintainer scripts that CPack would write for it. The symbols
# file (packaging/debian/, checked against the library when the package is
# built) tells dependent packages the oldest version with each symbol.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${TEC_DEBIAN_BUILD}/triggers")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/DebianFinishPackages.cmake")
set(CPACK_TEC_SYMBOLS_TEMPLATE "${TEC_DEBIAN_SOURCE}/libtimelineengineconversion1.symbols")
set(CPACK_TEC_UPSTREAM_VERSION "${PROJECT_VERSION}")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "libtimelineengineconversion-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "development files of the timeline conversion library
TimelineEngineConversion turns the edited sequence of a replay server into
the tracks, items and media descriptions of a timeline editing engine.
.
This package holds what a C++17 program needs to use the library: the
headers, the link to the shared library, the CMake package
(find_package(TimelineEngineConversion)) and the pkg-config file, with the
API reference (HTML), the integration guide (ownership, threads, exception
texts, duration modes), the guarantees and how they are tested, and two
example programs.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME "timeline-convert")
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION "video")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "convert, draw and check replay server sequences as timelines
timeline-convert runs the TimelineEngineConversion library on a replay server
sequence kept as a JSON document with its media assets:
 - convert: writes the timeline as JSON, or as an OpenTimelineIO document for
   editing applications;
 - assets: lists the assets the sequence uses, present or missing;
 - render: draws the timeline as an SVG picture or an offline HTML viewer
   (zoom, search, details), the refused element highlighted;
 - check: reports what converts but is probably not meant.
A refused sequence gets the library's message and the place it comes from.
The manual, the document format with its JSON Schema, the OpenTimelineIO
mapping and two example documents are included.")
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
