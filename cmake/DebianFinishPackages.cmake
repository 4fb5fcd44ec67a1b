# CPack post-build script: finishes each Debian package as dh_strip,
# dh_makeshlibs and dh_md5sums would.
# - CPack gives every package with a library under /usr/lib a postinst and a
#   postrm that only run ldconfig; Debian runs ldconfig through the trigger the
#   runtime package declares instead, and lintian rejects such scripts.
# - Binaries lose the .comment and .note sections (compiler identification)
#   that CPack's strip leaves; their build ids, which the -dbgsym packages are
#   found by, stay.
# - The runtime package gets its symbols file, made by dpkg-gensymbols from the
#   checked-in one and the library; any difference fails the build with the
#   difference, so a symbol is never added or lost unnoticed
#   (scripts/update-abi.sh records a deliberate change).
# Every other file and control field stays as CPack made it.
find_program(TEC_DPKG_DEB dpkg-deb REQUIRED)
find_program(TEC_OBJCOPY objcopy REQUIRED)
find_program(TEC_DPKG_GENSYMBOLS dpkg-gensymbols)

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "\\.deb$")
    continue()
  endif()
  set(tree "${package}.tree")
  file(REMOVE_RECURSE "${tree}")
  execute_process(COMMAND "${TEC_DPKG_DEB}" --raw-extract "${package}" "${tree}"
                  COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND "${TEC_DPKG_DEB}" --field "${package}" Package
                  OUTPUT_VARIABLE name OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

  foreach(script postinst postrm)
    set(path "${tree}/DEBIAN/${script}")
    if(EXISTS "${path}")
      file(READ "${path}" text)
      # Only CPack's own script: a shell header and one guarded ldconfig.
      string(REGEX REPLACE "\n+" "\n" text "${text}")
      if(text MATCHES "^#!/bin/sh\nset -e\nif \\[ \"\\$1\" = \"[a-z]+\" \\]; then\n\tldconfig\nfi\n?$")
        file(REMOVE "${path}")
      endif()
    endif()
  endforeach()

  file(GLOB_RECURSE binaries LIST_DIRECTORIES false "${tree}/usr/bin/*" "${tree}/usr/lib/*.so*")
  foreach(binary IN LISTS binaries)
    if(NOT IS_SYMLINK "${binary}")
      execute_process(COMMAND "${TEC_OBJCOPY}" --remove-section=.comment --remove-section=.note
                              "${binary}" COMMAND_ERROR_IS_FATAL ANY)
    endif()
  endforeach()

  if(name MATCHES "^lib.*[0-9]$" AND CPACK_TEC_SYMBOLS_TEMPLATE)
    if(NOT TEC_DPKG_GENSYMBOLS)
      message(FATAL_ERROR "dpkg-gensymbols (dpkg-dev) is needed for the symbols file of ${name}")
    endif()
    file(GLOB libraries "${tree}/usr/lib/*/lib*.so.*.*" "${tree}/usr/lib/lib*.so.*.*")
    execute_process(
      COMMAND "${TEC_DPKG_GENSYMBOLS}" -p${name} -P${tree} -v${CPACK_TEC_UPSTREAM_VERSION}
              -I${CPACK_TEC_SYMBOLS_TEMPLATE} -O${tree}/DEBIAN/symbols -c4 -q -e${libraries}
      WORKING_DIRECTORY "${tree}"
      RESULT_VARIABLE result OUTPUT_VARIABLE difference ERROR_VARIABLE errors)
    if(NOT result EQUAL 0)
      message(FATAL_ERROR "The symbols of ${name} differ from ${CPACK_TEC_SYMBOLS_TEMPLATE} "
                          "(+ new, - lost). A lost symbol breaks the ABI: restore it, or raise the "
                          "SOVERSION; a new one is recorded with scripts/update-abi.sh.\n"
                          "${difference}${errors}")
    endif()
    file(CHMOD "${tree}/DEBIAN/symbols" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endif()

  # md5sums lists every file under the package root, as dh_md5sums writes it.
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${tree}" "${tree}/*")
  list(FILTER files EXCLUDE REGEX "^DEBIAN/")
  list(SORT files)
  set(md5sums "")
  foreach(file IN LISTS files)
    if(NOT IS_SYMLINK "${tree}/${file}")
      file(MD5 "${tree}/${file}" sum)
      string(APPEND md5sums "${sum}  ${file}\n")
    endif()
  endforeach()
  file(WRITE "${tree}/DEBIAN/md5sums" "${md5sums}")
  execute_process(COMMAND "${TEC_DPKG_DEB}" --root-owner-group --build "${tree}" "${package}"
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${tree}")
endforeach()
