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
  # The hardening a distribution expects of a library that parses files and
  # loads plug-ins: stack canaries, checked string and memory calls, and a
  # read-only relocation table resolved at start-up. Sanitizer and fuzz
  # builds instrument the same calls themselves and go without. glibc checks
  # calls only in optimised code and warns otherwise, so Debug builds leave
  # _FORTIFY_SOURCE out. ELF only: MinGW would need its libssp for the
  # first two, and PE has no RELRO.
  if(KORUTL_HARDENING AND NOT WIN32 AND NOT KORUTL_SANITIZE AND NOT KORUTL_BUILD_FUZZ)
    target_compile_options(${target} PRIVATE -fstack-protector-strong
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
    get_target_property(type ${target} TYPE)
    if(type MATCHES "EXECUTABLE|SHARED_LIBRARY|MODULE_LIBRARY")
      target_link_options(${target} PRIVATE "LINKER:-z,relro" "LINKER:-z,now")
    endif()
  endif()
endfunction()

# A library that is installed: on ELF platforms it lands in the build
# tree's library folder, laid out as the install is, and carries its
# install RUNPATH from the start, so the same file runs from the build tree
# and from any prefix. (A binary that CMake rewrites at install time gets a
# RUNPATH padded with an empty entry, which the loader reads as the current
# folder.)
function(korutl_installed_library target)
  if(NOT WIN32)
    set_target_properties(${target} PROPERTIES
      LIBRARY_OUTPUT_DIRECTORY ${KORUTL_BUILD_LIBDIR}
      BUILD_WITH_INSTALL_RPATH ON)
  endif()
endfunction()

# korutl_add_sibling(NAME MAP VERSION v SOVERSION s HEADER h SOURCES ...):
# a sibling library of the family, its own shared library exporting only
# what its version script MAP lists, linked into korutl and installed with
# it. Its file name carries its own interface generation (SOVERSION), not
# korutl's; HEADER is its public C header, installed as korutl/HEADER and
# found the same way in the build tree. Clients link korutl::NAME.
function(korutl_add_sibling name map)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "VERSION;SOVERSION;HEADER" "SOURCES")
  add_library(${name} SHARED ${arg_SOURCES})
  add_library(korutl::${name} ALIAS ${name})
  korutl_target_defaults(${name})
  korutl_installed_library(${name})
  # Clients include <korutl/HEADER>: a copy in the build tree's include
  # folder gives a parent project (add_subdirectory) the installed name.
  set(header ${CMAKE_CURRENT_SOURCE_DIR}/${arg_HEADER})
  configure_file(${header} ${PROJECT_BINARY_DIR}/include/korutl/${arg_HEADER} COPYONLY)
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR})
  # On Windows the dllexport marks of the sibling's header choose the exports.
  if(NOT WIN32)
    target_link_options(${name} PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${map}")
  endif()
  set_target_properties(${name} PROPERTIES
    VERSION ${arg_VERSION}
    SOVERSION ${arg_SOVERSION}
    LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${map}
    PUBLIC_HEADER ${header})
  target_link_libraries(korutl_core PUBLIC ${name})
  set_property(GLOBAL APPEND PROPERTY KORUTL_SIBLINGS ${name})
  set_property(GLOBAL APPEND PROPERTY KORUTL_SIBLING_MAPS ${CMAKE_CURRENT_SOURCE_DIR}/${map})
endfunction()
