# Warnings and sanitizers applied to every target the project builds.
function(tec_apply_project_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(TEC_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(TEC_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${TEC_SANITIZE} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${TEC_SANITIZE})
  endif()
endfunction()
