# Compile settings every target of the project shares. The warnings catch
# silent narrowing and sign changes at the boundary, where C callers pass
# 16- and 32-bit values; -Werror is KORUTL_WERROR's, so that a consumer
# building the sources with a newer compiler is not stopped by a warning
# that compiler has newly learnt.
function(korutl_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion
    -Wcast-qual -Wundef -Wformat=2 $<$<BOOL:${KORUTL_WERROR}>:-Werror>)
  if(KORUTL_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${KORUTL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${KORUTL_SANITIZE})
  endif()
endfunction()

# A sibling library of the family: its own shared library, exporting only
# what its version script lists, linked into korutl and installed with it.
function(korutl_add_sibling name map)
  add_library(${name} SHARED ${ARGN})
  korutl_target_defaults(${name})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  # On Windows the dllexport marks of the sibling's header choose the exports.
  if(NOT WIN32)
    target_link_options(${name} PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${map}")
  endif()
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${map})
  target_link_libraries(korutl_core PUBLIC ${name})
  set_property(GLOBAL APPEND PROPERTY KORUTL_SIBLINGS ${name})
endfunction()
