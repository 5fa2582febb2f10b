# Installs the headers, the libraries, korutl.pc and the CMake package that
# gives find_package(korutl) the imported targets korutl::korutl and the
# siblings' korutl::korrsv, korutl::korshm, korutl::koross, korutl::korcpx.
# Components are the Debian packages (cmake/KorutlPackage.cmake): libs the
# shared libraries, dev what a client builds with, tools the command and its
# data.
include(CMakePackageConfigHelpers)

# The siblings' headers go below include/korutl (<korutl/rsv.h>), beside
# korutl.h, so that their short names meet no other library's.
get_property(KORUTL_SIBLINGS GLOBAL PROPERTY KORUTL_SIBLINGS)
install(TARGETS korutl EXPORT korutlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libs NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT libs
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(TARGETS ${KORUTL_SIBLINGS} EXPORT korutlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libs NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT libs
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/korutl COMPONENT dev)

set(KORUTL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/korutl)
install(EXPORT korutlTargets NAMESPACE korutl:: DESTINATION ${KORUTL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(cmake/korutlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/korutlConfig.cmake INSTALL_DESTINATION ${KORUTL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korutlConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korutlConfig.cmake
  ${PROJECT_BINARY_DIR}/korutlConfigVersion.cmake DESTINATION ${KORUTL_CMAKE_DIR} COMPONENT dev)

# The .pc file finds its prefix from its own place, so an install with
# --prefix (or a moved tree) stays right. Outside the linker's own folders
# (any prefix but /usr) Libs also gives the program a RUNPATH to the
# library, so that a client built with pkg-config starts without
# LD_LIBRARY_PATH. Libs.private and Requires.private name what the
# library itself links, for a static link.
file(RELATIVE_PATH KORUTL_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" KORUTL_PC_TO_PREFIX "${KORUTL_PC_TO_PREFIX}")
set(KORUTL_PC_RPATH "")
if(NOT WIN32 AND NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_C_IMPLICIT_LINK_DIRECTORIES)
  set(KORUTL_PC_RPATH " -Wl,-rpath,\${libdir}")
endif()
set(KORUTL_PC_LIBS_PRIVATE "")
foreach(sibling IN LISTS KORUTL_SIBLINGS)
  string(APPEND KORUTL_PC_LIBS_PRIVATE " -l${sibling}")
endforeach()
string(APPEND KORUTL_PC_LIBS_PRIVATE " -lstdc++ -lm")
# SQLite is the registry service's alone (libkorrsv links it), so the
# library itself requires nothing further.
set(KORUTL_PC_REQUIRES_PRIVATE "")
if(NOT WIN32)
  string(APPEND KORUTL_PC_LIBS_PRIVATE " -ldl")
endif()
configure_file(cmake/korutl.pc.in ${PROJECT_BINARY_DIR}/korutl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korutl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# The sample configuration tree, read by `korutl demo` and `reg import`.
install(FILES examples/halcyra-sample.reg DESTINATION ${KORUTL_INSTALL_DATADIR} COMPONENT tools)
# The sample language libraries it registers, for KORVO_LANGUAGE_PATH.
if(TARGET korutl_language_libraries)
  get_target_property(KORUTL_LANGUAGE_TARGETS korutl_language_libraries MANUALLY_ADDED_DEPENDENCIES)
  install(TARGETS ${KORUTL_LANGUAGE_TARGETS} LIBRARY DESTINATION ${KORUTL_INSTALL_LANGDIR} COMPONENT tools)
endif()
