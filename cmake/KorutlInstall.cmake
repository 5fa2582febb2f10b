# Installs the header, the libraries, korutl.pc and the CMake package that
# gives find_package(korutl) the imported target korutl::korutl. Components
# are the Debian packages (cmake/KorutlPackage.cmake): libs the shared
# libraries, dev what a client builds with, tools the command and its data.
include(CMakePackageConfigHelpers)

get_property(KORUTL_SIBLINGS GLOBAL PROPERTY KORUTL_SIBLINGS)
install(TARGETS korutl ${KORUTL_SIBLINGS} EXPORT korutlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libs NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT libs
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

set(KORUTL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/korutl)
install(EXPORT korutlTargets NAMESPACE korutl:: DESTINATION ${KORUTL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(cmake/korutlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/korutlConfig.cmake INSTALL_DESTINATION ${KORUTL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korutlConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korutlConfig.cmake
  ${PROJECT_BINARY_DIR}/korutlConfigVersion.cmake DESTINATION ${KORUTL_CMAKE_DIR} COMPONENT dev)

# The .pc file finds its prefix from its own place, so an install with
# --prefix (or a moved tree) stays right.
file(RELATIVE_PATH KORUTL_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" KORUTL_PC_TO_PREFIX "${KORUTL_PC_TO_PREFIX}")
configure_file(cmake/korutl.pc.in ${PROJECT_BINARY_DIR}/korutl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korutl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# The sample configuration tree, read by `korutl demo` and `reg import`.
install(FILES examples/halcyra-sample.reg DESTINATION ${KORUTL_INSTALL_DATADIR} COMPONENT tools)
# The sample language libraries it registers, for KORVO_LANGUAGE_PATH.
if(TARGET korutl_language_libraries)
  get_target_property(KORUTL_LANGUAGE_TARGETS korutl_language_libraries MANUALLY_ADDED_DEPENDENCIES)
  install(TARGETS ${KORUTL_LANGUAGE_TARGETS} LIBRARY DESTINATION ${KORUTL_INSTALL_LANGDIR} COMPONENT tools)
endif()
