# Compile settings every target of the project shares.
function(korutl_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
  if(KORUTL_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${KORUTL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${KORUTL_SANITIZE})
  endif()
endfunction()
