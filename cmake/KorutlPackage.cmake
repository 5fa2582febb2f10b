# Debian packages with CPack, made in the build of the `package` preset
# (`cpack` in build-package/; see README.md):
#   libkorutl2     the five shared libraries
#   libkorutl-dev  headers, korutl.pc, CMake package, unversioned links
#   korutl-tools   the korutl command, its manual page and sample data
# and for each a -dbgsym package with the debug information that CPack
# strips from its binaries. That preset installs under /usr, so that
# GNUInstallDirs puts the libraries in the multiarch folder; a build for
# another prefix makes packages of that layout, which is not Debian's.
#
# Dependencies on system libraries come from dpkg-shlibdeps; those between
# the three packages are stated here, as dpkg-shlibdeps cannot see
# libraries of a package not yet installed. libkorutl2 carries a symbols
# file and a shlibs file, so that whatever is built against it depends on
# it, and activates the ldconfig trigger.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  message(STATUS "Debian packages: configure with the package preset (prefix /usr) to make them")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korutl)
set(CPACK_PACKAGE_VENDOR "Vantrel")
# The Maintainer field: whoever publishes the packages sets it
# (-DKORUTL_PACKAGE_CONTACT="Name <address>").
set(KORUTL_PACKAGE_CONTACT "korutl maintainers <korutl@vantrel.example>" CACHE STRING
    "Maintainer of the Debian packages")
set(CPACK_PACKAGE_CONTACT "${KORUTL_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each package's description below is its synopsis, then the lines of its
# long description, which CPack indents. CPack puts a summary other than its
# default one in front of every description, so the summary is set to that
# default.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

# The packaging lives in korutl's own tree, so the packages are native:
# their version is korutl's, without a Debian revision, and their history
# is packaging/changelog, whose latest entry must name this version.
file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/changelog KORUTL_CHANGELOG_TOP LIMIT_COUNT 1)
if(NOT KORUTL_CHANGELOG_TOP MATCHES "^korutl \\(${PROJECT_VERSION}\\) ")
  message(WARNING "packaging/changelog: the latest entry is not for korutl ${PROJECT_VERSION}: "
                  "${KORUTL_CHANGELOG_TOP}")
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL libs dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE korutl)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
# The package's own libraries, so that dpkg-shlibdeps can read the command.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${KORUTL_BUILD_LIBDIR})
set(KORUTL_DEB_VERSION "${PROJECT_VERSION}")

# Every package has its copyright file and changelog in
# /usr/share/doc/PACKAGE. They are installed only into the packages
# (EXCLUDE_FROM_ALL: CPack installs each component by name), not by a
# plain `cmake --install`.
set(KORUTL_DEB_DIR ${PROJECT_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${KORUTL_DEB_DIR})
execute_process(COMMAND gzip -9n -c ${PROJECT_SOURCE_DIR}/packaging/changelog
  OUTPUT_FILE ${KORUTL_DEB_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog)
foreach(component_package libs:libkorutl2 dev:libkorutl-dev tools:korutl-tools)
  string(REPLACE ":" ";" pair ${component_package})
  list(GET pair 0 component)
  list(GET pair 1 package)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${KORUTL_DEB_DIR}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

# libkorutl2's symbols file, made from the libraries' version scripts: each
# exported name and each version node, as name@node, with the first
# package version that had it. Every node so far came with 2.2.1; a node
# added later gets its version here (KORUTL_SYMBOLS_SINCE_<node>).
set(KORUTL_SYMBOLS_SINCE 2.2.1)
function(korutl_symbols_of_library target map out)
  get_target_property(soversion ${target} SOVERSION)
  get_target_property(output_name ${target} OUTPUT_NAME)
  if(NOT output_name)
    set(output_name ${target})
  endif()
  set(text "lib${output_name}.so.${soversion} libkorutl2 #MINVER#\n")
  string(APPEND text "* Build-Depends-Package: libkorutl-dev\n")
  file(STRINGS ${map} lines)
  set(node "")
  set(in_global FALSE)
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "/\\*.*\\*/" "" line "${line}")
    if(line MATCHES "^[ \t]*([A-Za-z_][A-Za-z0-9_.]*)[ \t]*{")
      set(node ${CMAKE_MATCH_1})
      set(since ${KORUTL_SYMBOLS_SINCE})
      if(DEFINED KORUTL_SYMBOLS_SINCE_${node})
        set(since ${KORUTL_SYMBOLS_SINCE_${node}})
      endif()
      string(APPEND text " ${node}@${node} ${since}\n")
    elseif(line MATCHES "^[ \t]*global:")
      set(in_global TRUE)
    elseif(line MATCHES "^[ \t]*local:" OR line MATCHES "^[ \t]*}")
      set(in_global FALSE)
    elseif(in_global)
      string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*" names "${line}")
      foreach(name IN LISTS names)
        string(APPEND text " ${name}@${node} ${since}\n")
      endforeach()
    endif()
  endforeach()
  set(${out} "${${out}}${text}" PARENT_SCOPE)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${map})
endfunction()
set(KORUTL_SYMBOLS "")
korutl_symbols_of_library(korutl ${KORUTL_VERSION_SCRIPT} KORUTL_SYMBOLS)
get_property(KORUTL_PACKAGED_SIBLINGS GLOBAL PROPERTY KORUTL_SIBLINGS)
get_property(KORUTL_PACKAGED_SIBLING_MAPS GLOBAL PROPERTY KORUTL_SIBLING_MAPS)
foreach(sibling map IN ZIP_LISTS KORUTL_PACKAGED_SIBLINGS KORUTL_PACKAGED_SIBLING_MAPS)
  korutl_symbols_of_library(${sibling} ${map} KORUTL_SYMBOLS)
endforeach()
file(WRITE ${KORUTL_DEB_DIR}/libs/symbols "${KORUTL_SYMBOLS}")
# The libraries are in a folder of the dynamic linker: ldconfig runs once
# per dpkg run through its trigger.
file(WRITE ${KORUTL_DEB_DIR}/libs/triggers "activate-noawait ldconfig\n")

set(CPACK_DEBIAN_LIBS_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBS_DESCRIPTION "Halcyra utility library
The shared libraries of korutl, the utility library of the Halcyra
management product: libkorutl.so.2 and its four sibling libraries, the
registry service libkorrsv.so.1, the spin locks libkorshm.so.22, the OS
services libkoross.so.19 and the code-page conversion libkorcpx.so.1.")
# The shlibs file (one line per library, >= this version) comes from CPack;
# of the three packages only libkorutl2 holds libraries with a SONAME.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The registry service loads libpq only for a store on a PostgreSQL server.
set(CPACK_DEBIAN_LIBS_PACKAGE_RECOMMENDS "libpq5")
set(CPACK_DEBIAN_LIBS_PACKAGE_CONTROL_EXTRA "${KORUTL_DEB_DIR}/libs/symbols;${KORUTL_DEB_DIR}/libs/triggers")

set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libkorutl2 (= ${KORUTL_DEB_VERSION})")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Halcyra utility library - development files
The C header korutl.h and the headers of the sibling libraries
(korutl/rsv.h, korutl/shm.h, korutl/oss.h, korutl/cpx.h), the pkg-config
file korutl.pc, the CMake package (find_package(korutl)) and the
unversioned library links.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libkorutl2 (= ${KORUTL_DEB_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Halcyra utility library - the korutl command
korutl calls the library from a shell: the configuration store, localised
messages, object identifiers, buffer protection and encodings. With its
manual page, a sample configuration tree and sample language libraries;
`korutl demo` shows the library at work.")

# What CPack 3.25 leaves to do on the packages it made: see the script.
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/KorutlDebFinish.cmake)

include(CPack)
