# Installs the header, the libraries, korutl.pc and the CMake package that
# gives find_package(korutl) the imported target korutl::korutl.
include(CMakePackageConfigHelpers)

install(TARGETS korutl korrsv EXPORT korutlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(KORUTL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/korutl)
install(EXPORT korutlTargets NAMESPACE korutl:: DESTINATION ${KORUTL_CMAKE_DIR})
configure_package_config_file(cmake/korutlConfig.cmake.in
  ${PROJECT_BINARY_DIR}/korutlConfig.cmake INSTALL_DESTINATION ${KORUTL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/korutlConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/korutlConfig.cmake
  ${PROJECT_BINARY_DIR}/korutlConfigVersion.cmake DESTINATION ${KORUTL_CMAKE_DIR})

configure_file(cmake/korutl.pc.in ${PROJECT_BINARY_DIR}/korutl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/korutl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
