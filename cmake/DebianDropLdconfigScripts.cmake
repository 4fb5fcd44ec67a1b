# CPack post-build script. CPack's Debian generator gives every package with a
# library under /usr/lib a postinst and a postrm that only run ldconfig; Debian
# runs ldconfig through the trigger the runtime package declares instead, and
# lintian rejects such scripts. This rebuilds each such package without them,
# leaving every other file and control field as CPack made it.
find_program(TEC_DPKG_DEB dpkg-deb REQUIRED)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "\\.deb$")
    continue()
  endif()
  set(tree "${package}.tree")
  file(REMOVE_RECURSE "${tree}")
  execute_process(COMMAND "${TEC_DPKG_DEB}" --raw-extract "${package}" "${tree}"
                  COMMAND_ERROR_IS_FATAL ANY)
  set(dropped FALSE)
  foreach(script postinst postrm)
    set(path "${tree}/DEBIAN/${script}")
    if(EXISTS "${path}")
      file(READ "${path}" text)
      # Only CPack's own script: a shell header and one guarded ldconfig.
      string(REGEX REPLACE "\n+" "\n" text "${text}")
      if(text MATCHES "^#!/bin/sh\nset -e\nif \\[ \"\\$1\" = \"[a-z]+\" \\]; then\n\tldconfig\nfi\n?$")
        file(REMOVE "${path}")
        set(dropped TRUE)
      endif()
    endif()
  endforeach()
  if(dropped)
    execute_process(COMMAND "${TEC_DPKG_DEB}" --root-owner-group --build "${tree}" "${package}"
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE "${tree}")
endforeach()
