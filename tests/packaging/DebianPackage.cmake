# Builds the three Debian packages into a scratch directory (nothing is
# installed on the system) and checks each one's control fields, control files
# (shlibs, symbols, triggers, no maintainer scripts), file list, licence and
# documentation: every package carries the machine-readable copyright file
# naming the Apache License 2.0 whose text is LICENSE, every relative link of
# an installed document reaches an installed file, and each package with
# binaries has a -dbgsym package holding their debugging information. The
# lintian and install tests use the packages left here.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

file(REMOVE_RECURSE "${TEC_WORK_DIR}")
tec_run("${TEC_CPACK}" -G DEB -B "${TEC_WORK_DIR}" --config "${TEC_BUILD_DIR}/CPackConfig.cmake")
tec_run("${TEC_DPKG}" --print-architecture)
string(STRIP "${tec_output}" arch)
set(version "${TEC_VERSION}-1")
tec_regex_escape(version_pattern "${version}")
tec_regex_escape(upstream_pattern "${TEC_VERSION}")
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
set(dev_doc usr/share/doc/libtimelineengineconversion-dev)
set(expected_libtimelineengineconversion-dev ${headers}
  ${dev_doc}/integration.md ${dev_doc}/guarantees.md ${dev_doc}/examples/highlight_sequence.cpp
  ${dev_doc}/examples/consumer/CMakeLists.txt ${dev_doc}/examples/consumer/main.cpp
  "usr/${TEC_LIBDIR}/${library} -> ${library}.${major}"
  "usr/${TEC_LIBDIR}/pkgconfig/TimelineEngineConversion.pc"
  "${cmake_dir}/TimelineEngineConversionConfig.cmake"
  "${cmake_dir}/TimelineEngineConversionConfigVersion.cmake"
  "${cmake_dir}/TimelineEngineConversionTargets.cmake")
set(tool_doc usr/share/doc/timeline-convert)
set(expected_timeline-convert
  usr/bin/timeline-convert usr/share/man/man1/timeline-convert.1.gz
  usr/share/bash-completion/completions/timeline-convert
  usr/share/zsh/vendor-completions/_timeline-convert
  usr/share/fish/vendor_completions.d/timeline-convert.fish
  ${tool_doc}/cli.md ${tool_doc}/json-format.md ${tool_doc}/otio.md ${tool_doc}/edl.md
  ${tool_doc}/performance.md ${tool_doc}/viewer.png ${tool_doc}/playlist.schema.json
  ${tool_doc}/otio.schema.json
  ${tool_doc}/examples/highlight.json ${tool_doc}/examples/refused.json)
# Beyond the lists: the per-configuration targets file, and the API reference
# with its doc-base registration when doxygen made it.
set(also_allowed "^(${cmake_dir}/TimelineEngineConversionTargets-[a-z]+\\.cmake"
                 "|${dev_doc}/html/[^/]+|usr/share/doc-base/timelineengineconversion-api)$")
string(JOIN "" also_allowed ${also_allowed})

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
    # The symbols file is the checked-in one: the package build fails on any
    # difference between it and the library.
    tec_run("${TEC_DPKG_DEB}" --info "${package}" symbols)
    tec_expect_lines("symbols" "${tec_output}"
      "^libTimelineEngineConversion\\.so\\.${major} ${runtime} #MINVER#\n"
      "\n _ZN3Kov10TimePoints9TimePoint8MaxValueEv@Base ${upstream_pattern}\n")
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
      "usr/share/doc/${name}/changelog.Debian.gz" "usr/share/doc/${name}/changelog.gz"
      "usr/share/lintian/overrides/${name}")
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

# Each package unpacked on its own, the runtime package's files under every
# other one too (both depend on it), for the link check.
foreach(name ${runtime} libtimelineengineconversion-dev timeline-convert)
  set(root_${name} "${TEC_WORK_DIR}/root-${name}")
  file(REMOVE_RECURSE "${root_${name}}")
  foreach(unpacked ${runtime} ${name})
    tec_run("${TEC_DPKG_DEB}" --extract "${TEC_WORK_DIR}/${unpacked}_${version}_${arch}.deb"
            "${root_${name}}")
  endforeach()
endforeach()

# The pkg-config file inside names /usr, where the package puts it.
set(root "${root_libtimelineengineconversion-dev}")
file(READ "${root}/usr/${TEC_LIBDIR}/pkgconfig/TimelineEngineConversion.pc" pc)
tec_expect_lines("TimelineEngineConversion.pc" "${pc}" "^prefix=/usr\n"
  "\nlibdir=\\\${prefix}/${TEC_LIBDIR}\n" "\nVersion: ${TEC_VERSION}\n")

# The copyright file in the machine-readable format (version 1.0): a header
# paragraph with Format and Upstream-Name, Files paragraphs with Copyright and
# License, and a stand-alone paragraph for every licence named; Apache-2.0
# points to Debian's copy of the licence, which is the text of LICENSE.
file(READ "${TEC_SOURCE_DIR}/LICENSE" license)
set(common_license /usr/share/common-licenses/Apache-2.0)
if(EXISTS "${common_license}")
  file(READ "${common_license}" debian_license)
  if(NOT license STREQUAL debian_license)
    message(FATAL_ERROR "LICENSE is not the text of ${common_license}")
  endif()
endif()
foreach(name ${runtime} libtimelineengineconversion-dev timeline-convert)
  set(copyright_file "${root_${name}}/usr/share/doc/${name}/copyright")
  file(READ "${copyright_file}" copyright)
  string(REPLACE ";" "," copyright_text "${copyright}")
  string(REGEX REPLACE "\n\n+" ";" paragraphs "${copyright_text}")
  list(POP_FRONT paragraphs header)
  tec_expect_lines("${copyright_file}, header" "${header}"
    "^Format: https://www\\.debian\\.org/doc/packaging-manuals/copyright-format/1\\.0/\n"
    "\nUpstream-Name: TimelineEngineConversion\n")
  set(named "")
  set(defined "")
  set(files_paragraphs 0)
  foreach(paragraph IN LISTS paragraphs)
    if(paragraph MATCHES "^Files: ")
      tec_expect_lines("${copyright_file}, Files" "${paragraph}" "\nCopyright: [^\n]+"
                       "\nLicense: [A-Za-z0-9.+-]+")
      string(REGEX MATCH "\nLicense: ([A-Za-z0-9.+-]+)" _ "${paragraph}")
      list(APPEND named "${CMAKE_MATCH_1}")
      math(EXPR files_paragraphs "${files_paragraphs} + 1")
    elseif(paragraph MATCHES "^License: ([A-Za-z0-9.+-]+)\n ")
      list(APPEND defined "${CMAKE_MATCH_1}")
    else()
      message(FATAL_ERROR "${copyright_file}: a paragraph neither Files nor License:\n${paragraph}")
    endif()
    # Every line is a field or a continuation (a space first, an empty one " .").
    string(REGEX MATCHALL "[^\n]+" lines "${paragraph}")
    foreach(line IN LISTS lines)
      if(NOT line MATCHES "^([A-Za-z-]+: [^ ]| [^ ]|  +[^ ])")
        message(FATAL_ERROR "${copyright_file}: neither a field nor a continuation: '${line}'")
      endif()
    endforeach()
  endforeach()
  if(files_paragraphs EQUAL 0 OR NOT named STREQUAL "Apache-2.0")
    message(FATAL_ERROR "${copyright_file}: expected the Files under Apache-2.0, found: ${named}")
  endif()
  foreach(license_name IN LISTS named)
    if(NOT license_name IN_LIST defined)
      message(FATAL_ERROR "${copyright_file}: no License paragraph for ${license_name}")
    endif()
  endforeach()
  tec_expect_lines("${copyright_file}" "${copyright}"
    "\nLicense: Apache-2.0\n Licensed under the Apache License, Version 2\\.0"
    "\"/usr/share/common-licenses/Apache-2\\.0\"")
endforeach()

# Links between the installed documents: every relative link of a Markdown
# document reaches a file of its package (or of the runtime package).
set(broken "")
foreach(name ${runtime} libtimelineengineconversion-dev timeline-convert)
  file(GLOB_RECURSE documents "${root_${name}}/usr/share/doc/*.md")
  foreach(document IN LISTS documents)
    file(READ "${document}" text)
    get_filename_component(directory "${document}" DIRECTORY)
    # Brackets and semicolons would split CMake's lists: out before matching.
    string(REPLACE "](" "<link>" text "${text}")
    string(REGEX REPLACE "[][;]" "" text "${text}")
    string(REGEX MATCHALL "<link>[^)# ]+" links "${text}")
    foreach(link IN LISTS links)
      string(SUBSTRING "${link}" 6 -1 target)
      if(target MATCHES "^[a-z]+:")
        continue()
      endif()
      if(NOT EXISTS "${directory}/${target}")
        file(RELATIVE_PATH shown "${root_${name}}" "${document}")
        list(APPEND broken "${name}: /${shown} links to ${target}, which no package installs there")
      endif()
    endforeach()
  endforeach()
endforeach()
# The files that the manual names are installed.
file(READ "${TEC_SOURCE_DIR}/tools/timeline-convert.1" manual)
string(REGEX MATCHALL "/usr/share/doc/timeline-convert/[^ \n]*" named_files "${manual}")
foreach(path IN LISTS named_files)
  if(NOT EXISTS "${root_timeline-convert}${path}")
    list(APPEND broken "timeline-convert: the manual names ${path}, which is not installed")
  endif()
endforeach()
if(broken)
  list(JOIN broken "\n  " report)
  message(FATAL_ERROR "broken documentation links:\n  ${report}")
endif()

# The binaries' debugging information, found by build id.
foreach(name ${runtime} timeline-convert)
  set(debug_package "${TEC_WORK_DIR}/${name}-dbgsym_${version}_${arch}.ddeb")
  if(NOT EXISTS "${debug_package}")
    message(FATAL_ERROR "no debugging symbols package: ${debug_package}")
  endif()
  tec_run("${TEC_DPKG_DEB}" --contents "${debug_package}")
  tec_expect_lines("${debug_package}" "${tec_output}"
    " \\./usr/lib/debug/\\.build-id/[0-9a-f][0-9a-f]/[0-9a-f]+\\.debug\n")
endforeach()
