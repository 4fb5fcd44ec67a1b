# Builds the Debian package into a scratch directory (nothing is installed on
# the system) and checks it: its control fields, the shlibs entry other
# packages depend on, and its file list, which must be exactly the library
# with its soname links, every public header, the CMake and pkg-config files
# and, when the tool is built, usr/bin/timeline-convert. The pkg-config file
# inside must name /usr as its prefix.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(REMOVE_RECURSE "${TEC_WORK_DIR}")
tec_run("${TEC_CPACK}" -G DEB -B "${TEC_WORK_DIR}" --config "${TEC_BUILD_DIR}/CPackConfig.cmake")
file(GLOB packages "${TEC_WORK_DIR}/*.deb")
list(LENGTH packages package_count)
if(NOT package_count EQUAL 1)
  message(FATAL_ERROR "expected one .deb in ${TEC_WORK_DIR}, found: ${packages}")
endif()

tec_regex_escape(version "${TEC_VERSION}")
tec_run("${TEC_DPKG_DEB}" --field "${packages}")
tec_expect_lines("control" "${tec_output}"
  "(^|\n)Package: timeline-engine-conversion\n" "\nVersion: ${version}\n"
  "\nSection: libs\n" "\nDepends: [^\n]*libstdc\\+\\+6")
string(REGEX MATCH "^[0-9]+" major "${TEC_VERSION}")
tec_run("${TEC_DPKG_DEB}" --info "${packages}" shlibs)
tec_expect_lines("shlibs" "${tec_output}"
  "^libTimelineEngineConversion ${major} timeline-engine-conversion \\(>= ${version}\\)")

# Each entry as "path" or "path -> link target", without the leading "./".
tec_run("${TEC_DPKG_DEB}" --contents "${packages}")
string(REGEX MATCHALL "[^\n]+" lines "${tec_output}")
set(files "")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^d" AND line MATCHES " \\./([^ ]+( -> [^ ]+)?)$")
    list(APPEND files "${CMAKE_MATCH_1}")
  endif()
endforeach()

set(library "libTimelineEngineConversion.so")
set(cmake_dir "usr/lib/cmake/TimelineEngineConversion")
set(expected
  "usr/lib/${library}.${TEC_VERSION}"
  "usr/lib/${library}.${major} -> ${library}.${TEC_VERSION}"
  "usr/lib/${library} -> ${library}.${major}"
  "usr/lib/pkgconfig/TimelineEngineConversion.pc"
  "${cmake_dir}/TimelineEngineConversionConfig.cmake"
  "${cmake_dir}/TimelineEngineConversionConfigVersion.cmake"
  "${cmake_dir}/TimelineEngineConversionTargets.cmake")
tec_public_headers(headers "${TEC_SOURCE_DIR}")
foreach(header IN LISTS headers)
  list(APPEND expected "usr/include/TimelineEngineConversion/${header}")
endforeach()
if(TEC_TOOL_NAME)
  list(APPEND expected "usr/bin/${TEC_TOOL_NAME}" "usr/share/man/man1/${TEC_TOOL_NAME}.1.gz"
    "usr/share/bash-completion/completions/${TEC_TOOL_NAME}"
    "usr/share/doc/${TEC_TOOL_NAME}/json-format.md"
    "usr/share/doc/${TEC_TOOL_NAME}/playlist.schema.json")
endif()

set(problems "")
foreach(path IN LISTS expected)
  if(NOT path IN_LIST files)
    list(APPEND problems "missing: ${path}")
  endif()
endforeach()
foreach(path IN LISTS files)
  # The per-configuration targets file is named after the build type.
  if(NOT path IN_LIST expected AND
     NOT path MATCHES "^${cmake_dir}/TimelineEngineConversionTargets-[a-z]+\\.cmake$")
    list(APPEND problems "unexpected: ${path}")
  endif()
endforeach()
if(problems)
  list(JOIN problems "\n  " report)
  message(FATAL_ERROR "${packages}:\n  ${report}")
endif()

set(root "${TEC_WORK_DIR}/root")
tec_run("${TEC_DPKG_DEB}" --extract "${packages}" "${root}")
file(READ "${root}/usr/lib/pkgconfig/TimelineEngineConversion.pc" pc)
tec_expect_lines("TimelineEngineConversion.pc" "${pc}" "^prefix=/usr\n" "\nVersion: ${version}\n")

# The packaged tool must find the packaged library through its own run path:
# no copy of the library is installed on this machine.
if(TEC_TOOL_NAME)
  set(ENV{LD_LIBRARY_PATH} "")
  tec_run("${root}/usr/bin/${TEC_TOOL_NAME}" --help)
endif()
