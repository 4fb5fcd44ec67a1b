# Builds the three Debian packages into a scratch directory (nothing is
# installed on the system) and checks each one's control fields, control files
# and file list. The lintian and install tests use the packages left here.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(REMOVE_RECURSE "${TEC_WORK_DIR}")
tec_run("${TEC_CPACK}" -G DEB -B "${TEC_WORK_DIR}" --config "${TEC_BUILD_DIR}/CPackConfig.cmake")
tec_run("${TEC_DPKG}" --print-architecture)
string(STRIP "${tec_output}" arch)
set(version "${TEC_VERSION}-1")
tec_regex_escape(version_pattern "${version}")
string(REGEX MATCH "^[0-9]+" major "${TEC_VERSION}")
set(runtime libtimelineengineconversion1)
set(depends_on_runtime "\nDepends: ${runtime} \\(= ${version_pattern}\\)")

# Each package's entries as "path" or "path -> link target", without "./".
function(tec_package_files out_var package)
  tec_run("${TEC_DPKG_DEB}" --contents "${package}")
  string(REGEX MATCHALL "[^\n]+" lines "${tec_output}")
  set(files "")
  foreach(line IN LISTS lines)
    if(NOT line MATCHES "^d" AND line MATCHES " \\./([^ ]+( -> [^ ]+)?)$")
      list(APPEND files "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  set(${out_var} "${files}" PARENT_SCOPE)
endfunction()

set(library "libTimelineEngineConversion.so")
set(cmake_dir "usr/${TEC_LIBDIR}/cmake/TimelineEngineConversion")
tec_public_headers(headers "${TEC_SOURCE_DIR}")
list(TRANSFORM headers PREPEND "usr/include/TimelineEngineConversion/")
set(expected_libtimelineengineconversion1
  "usr/${TEC_LIBDIR}/${library}.${TEC_VERSION}"
  "usr/${TEC_LIBDIR}/${library}.${major} -> ${library}.${TEC_VERSION}")
set(expected_libtimelineengineconversion-dev ${headers}
  "usr/${TEC_LIBDIR}/${library} -> ${library}.${major}"
  "usr/${TEC_LIBDIR}/pkgconfig/TimelineEngineConversion.pc"
  "${cmake_dir}/TimelineEngineConversionConfig.cmake"
  "${cmake_dir}/TimelineEngineConversionConfigVersion.cmake"
  "${cmake_dir}/TimelineEngineConversionTargets.cmake")
set(expected_timeline-convert
  usr/bin/timeline-convert usr/share/man/man1/timeline-convert.1.gz
  usr/share/bash-completion/completions/timeline-convert
  usr/share/doc/timeline-convert/json-format.md usr/share/doc/timeline-convert/playlist.schema.json)
# Beyond the lists: the per-configuration targets file.
set(also_allowed "^${cmake_dir}/TimelineEngineConversionTargets-[a-z]+\\.cmake$")

set(problems "")
foreach(name ${runtime} libtimelineengineconversion-dev timeline-convert)
  set(package "${TEC_WORK_DIR}/${name}_${version}_${arch}.deb")
  if(NOT EXISTS "${package}")
    list(APPEND problems "not built: ${package}")
    continue()
  endif()
  tec_run("${TEC_DPKG_DEB}" --field "${package}")
  set(fields "${tec_output}")
  tec_expect_lines("${name} control" "${fields}" "(^|\n)Package: ${name}\n"
    "\nVersion: ${version_pattern}\n" "\nMaintainer: [^<\n]+ <[^@\n]+@[^>\n]+>\n")
  if(name STREQUAL runtime)
    tec_expect_lines("${name} control" "${fields}" "\nSection: libs\n" "\nDepends: [^\n]*libstdc\\+\\+6")
    tec_run("${TEC_DPKG_DEB}" --info "${package}" shlibs)
    tec_expect_lines("shlibs" "${tec_output}"
      "^libTimelineEngineConversion ${major} ${runtime} \\(>= ${version_pattern}\\)\n$")
    tec_run("${TEC_DPKG_DEB}" --info "${package}" triggers)
    tec_expect_lines("triggers" "${tec_output}" "^activate-noawait ldconfig\n$")
  else()
    tec_expect_lines("${name} control" "${fields}" "${depends_on_runtime}")
  endif()
  # The runtime package runs ldconfig through its trigger; no package has
  # maintainer scripts.
  tec_run("${TEC_DPKG_DEB}" --info "${package}")
  if(tec_output MATCHES "(pre|post)(inst|rm)")
    list(APPEND problems "${name}: has maintainer scripts")
  endif()

  set(expected ${expected_${name}} "usr/share/doc/${name}/copyright"
      "usr/share/doc/${name}/changelog.Debian.gz" "usr/share/lintian/overrides/${name}")
  tec_package_files(files "${package}")
  foreach(path IN LISTS expected)
    if(NOT path IN_LIST files)
      list(APPEND problems "${name}: missing ${path}")
    endif()
  endforeach()
  foreach(path IN LISTS files)
    if(NOT path IN_LIST expected AND NOT path MATCHES "${also_allowed}")
      list(APPEND problems "${name}: unexpected ${path}")
    endif()
  endforeach()
endforeach()
if(problems)
  list(JOIN problems "\n  " report)
  message(FATAL_ERROR "${TEC_WORK_DIR}:\n  ${report}")
endif()

# The pkg-config file inside names /usr, where the package puts it.
set(root "${TEC_WORK_DIR}/dev-root")
tec_run("${TEC_DPKG_DEB}" --extract
        "${TEC_WORK_DIR}/libtimelineengineconversion-dev_${version}_${arch}.deb" "${root}")
file(READ "${root}/usr/${TEC_LIBDIR}/pkgconfig/TimelineEngineConversion.pc" pc)
tec_expect_lines("TimelineEngineConversion.pc" "${pc}" "^prefix=/usr\n"
  "\nlibdir=\\\${prefix}/${TEC_LIBDIR}\n" "\nVersion: ${TEC_VERSION}\n")
