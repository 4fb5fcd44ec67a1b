# The library's detail/ headers are private to its own build: the tool, the
# benchmarks, the fuzzers and the examples use the installed public headers
# only, so that each can be built against an installed development package.
# Configuring fails when one of them includes a detail/ header.
function(tec_check_private_headers)
  set(tec_outside_folders tools bench fuzz examples)
  foreach(folder IN LISTS tec_outside_folders)
    file(GLOB_RECURSE tec_sources "${PROJECT_SOURCE_DIR}/${folder}/*.cpp"
         "${PROJECT_SOURCE_DIR}/${folder}/*.h" "${PROJECT_SOURCE_DIR}/${folder}/*.hpp")
    foreach(source IN LISTS tec_sources)
      file(STRINGS "${source}" tec_private_includes REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"][^>\"]*detail/")
      if(tec_private_includes)
        message(FATAL_ERROR "${source} includes a private header of the library "
                            "(${tec_private_includes}); use the public headers")
      endif()
    endforeach()
  endforeach()
endfunction()
