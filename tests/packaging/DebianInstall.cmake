# Installs, upgrades and removes the three packages that DebianPackage.cmake
# built with dpkg, in a scratch root with its own package database: nothing on
# the machine changes. The database knows the machine's copies of the packages
# ours depend on (libc6, libstdc++6...), so dpkg checks every dependency for
# real: the development package alone is refused, all three install, the tool
# runs from the scratch root, release 2 replaces release 1 and removal leaves
# no file behind.
include("${CMAKE_CURRENT_LIST_DIR}/PackagingTestSupport.cmake")

set(root "${TEC_WORK_DIR}/install-root")
set(admin "${root}/var/lib/dpkg")
file(REMOVE_RECURSE "${root}")
file(MAKE_DIRECTORY "${admin}/info" "${admin}/updates" "${admin}/triggers")
file(GLOB packages "${TEC_WORK_DIR}/*_${TEC_VERSION}-1_*.deb")
set(dpkg "${TEC_DPKG}" "--root=${root}" "--log=/dev/null" --force-not-root)

# The database: the machine's entries of every package that ours depend on.
set(depended "")
foreach(package IN LISTS packages)
  tec_run("${TEC_DPKG_DEB}" --field "${package}" Depends)
  string(REGEX MATCHALL "(^|, )[a-z0-9.+-]+" names "${tec_output}")
  list(TRANSFORM names REPLACE "^, " "")
  list(APPEND depended ${names})
endforeach()
list(FILTER depended EXCLUDE REGEX "^libtimelineengineconversion")
list(REMOVE_DUPLICATES depended)
tec_run("${TEC_DPKG}-query" --status ${depended})
file(WRITE "${admin}/status" "${tec_output}")

function(tec_dpkg_expect_failure what)
  execute_process(COMMAND ${dpkg} ${ARGN} RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
  if(result EQUAL 0)
    message(FATAL_ERROR "dpkg accepted ${what}")
  endif()
endfunction()
function(tec_expect_installed version)
  tec_run("${TEC_DPKG}-query" "--admindir=${admin}" --show
          "--showformat=\${Package} \${Version} \${db:Status-Abbrev}\n" "libtimelineengineconversion*" timeline-convert)
  tec_regex_escape(version_pattern "${version}")
  foreach(name libtimelineengineconversion1 libtimelineengineconversion-dev timeline-convert)
    tec_expect_lines("installed packages" "${tec_output}" "(^|\n)${name} ${version_pattern} ii \n")
  endforeach()
endfunction()

list(FILTER packages INCLUDE REGEX "-dev_")
tec_dpkg_expect_failure("the development package without the runtime" --install ${packages})
tec_run(${dpkg} --purge libtimelineengineconversion-dev)

file(GLOB packages "${TEC_WORK_DIR}/*_${TEC_VERSION}-1_*.deb")
tec_run(${dpkg} --install ${packages})
tec_expect_installed("${TEC_VERSION}-1")
set(ENV{LD_LIBRARY_PATH} "${root}/usr/${TEC_LIBDIR}")
tec_run("${root}/usr/bin/timeline-convert" --help)
unset(ENV{LD_LIBRARY_PATH})

# Release 2: the same packages with the next Debian revision, in lock step.
set(upgrades "")
file(MAKE_DIRECTORY "${TEC_WORK_DIR}/upgrade")
foreach(package IN LISTS packages)
  set(tree "${TEC_WORK_DIR}/upgrade-tree")
  file(REMOVE_RECURSE "${tree}")
  tec_run("${TEC_DPKG_DEB}" --raw-extract "${package}" "${tree}")
  file(READ "${tree}/DEBIAN/control" control)
  string(REPLACE "${TEC_VERSION}-1" "${TEC_VERSION}-2" control "${control}")
  file(WRITE "${tree}/DEBIAN/control" "${control}")
  get_filename_component(name "${package}" NAME)
  string(REPLACE "${TEC_VERSION}-1" "${TEC_VERSION}-2" upgrade "${TEC_WORK_DIR}/upgrade/${name}")
  tec_run("${TEC_DPKG_DEB}" --root-owner-group --build "${tree}" "${upgrade}")
  list(APPEND upgrades "${upgrade}")
endforeach()
file(REMOVE_RECURSE "${tree}")
tec_run(${dpkg} --install ${upgrades})
tec_expect_installed("${TEC_VERSION}-2")

tec_run(${dpkg} --purge libtimelineengineconversion-dev timeline-convert libtimelineengineconversion1)
file(GLOB_RECURSE left RELATIVE "${root}" "${root}/usr/*")
if(left)
  message(FATAL_ERROR "files left after removal: ${left}")
endif()
