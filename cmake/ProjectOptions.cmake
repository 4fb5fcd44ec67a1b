# Warnings, hardening and sanitizers applied to every target the project builds.

# Hardening as Debian builds its packages: the flags that dpkg-buildflags gives
# with every hardening feature on (stack protector, fortified functions,
# read-only relocations bound at load time), and position-independent
# executables. The build type still chooses optimisation and debugging
# information. Not with sanitizers, which bring their own checks; fortified
# functions need optimisation, so not in Debug builds either.
option(TEC_HARDENING "Build with Debian's hardening flags (dpkg-buildflags)" ON)
set(TEC_HARDENING_COMPILE_FLAGS "")
set(TEC_HARDENING_LINK_FLAGS "")
if(TEC_HARDENING AND NOT TEC_SANITIZE)
  find_program(TEC_DPKG_BUILDFLAGS dpkg-buildflags)
  if(TEC_DPKG_BUILDFLAGS)
    foreach(kind CPPFLAGS CXXFLAGS LDFLAGS)
      execute_process(COMMAND "${CMAKE_COMMAND}" -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all
                              "${TEC_DPKG_BUILDFLAGS}" --get ${kind}
                      OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                      COMMAND_ERROR_IS_FATAL ANY)
      separate_arguments(flags UNIX_COMMAND "${flags}")
      list(FILTER flags EXCLUDE REGEX "^-(g|O[0-9sz]?|ffile-prefix-map=.*)$")
      if(CMAKE_BUILD_TYPE STREQUAL "Debug")
        list(FILTER flags EXCLUDE REGEX "^-D_FORTIFY_SOURCE")
      endif()
      if(kind STREQUAL "LDFLAGS")
        list(APPEND TEC_HARDENING_LINK_FLAGS ${flags})
      else()
        list(APPEND TEC_HARDENING_COMPILE_FLAGS ${flags})
      endif()
    endforeach()
    include(CheckPIESupported)
    check_pie_supported()
  endif()
endif()

function(tec_apply_project_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(TEC_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(TEC_HARDENING_COMPILE_FLAGS OR TEC_HARDENING_LINK_FLAGS)
    target_compile_options(${target} PRIVATE ${TEC_HARDENING_COMPILE_FLAGS})
    target_link_options(${target} PRIVATE ${TEC_HARDENING_LINK_FLAGS})
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  endif()
  if(TEC_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${TEC_SANITIZE} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${TEC_SANITIZE})
  endif()
endfunction()
