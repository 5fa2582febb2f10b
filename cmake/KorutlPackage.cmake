# Debian packages with CPack (`cpack -G DEB` in the build folder):
#   libkorutl2     the five shared libraries
#   libkorutl-dev  header, korutl.pc, CMake package, unversioned links
#   korutl-tools   the korutl command, its manual page and sample data
# Installed under /usr. Dependencies on system libraries come from
# dpkg-shlibdeps; those between the three packages are stated here, as
# dpkg-shlibdeps cannot see libraries of a package not yet installed.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korutl)
set(CPACK_PACKAGE_VENDOR "Vantrel")
# The Maintainer field: whoever publishes the packages sets it
# (-DKORUTL_PACKAGE_CONTACT="Name <address>").
set(KORUTL_PACKAGE_CONTACT "korutl developers <korutl@localhost>" CACHE STRING
    "Maintainer of the Debian packages")
set(CPACK_PACKAGE_CONTACT "${KORUTL_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL libs dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The package's own libraries, so that dpkg-shlibdeps can read the command.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${KORUTL_BUILD_LIBDIR})
set(KORUTL_DEB_VERSION "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(CPACK_DEBIAN_LIBS_PACKAGE_NAME libkorutl2)
set(CPACK_DEBIAN_LIBS_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBS_DESCRIPTION "Halcyra utility library
 The shared libraries libkorutl.so.2 and its four sibling libraries
 (registry service, spin locks, OS services, code-page conversion).")
# A shlibs file (and the ldconfig trigger), so that packages built against
# libkorutl2 depend on it; only libkorutl2 holds libraries.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkorutl-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libkorutl2 (= ${KORUTL_DEB_VERSION})")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Halcyra utility library - development files
 The C header korutl.h, the pkg-config file korutl.pc, the CMake package
 (find_package(korutl)) and the unversioned library links.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME korutl-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libkorutl2 (= ${KORUTL_DEB_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Halcyra utility library - the korutl command
 korutl calls the library from a shell: the configuration store, localised
 messages, object identifiers, buffer protection and encodings. With its
 manual page, a sample configuration tree and sample language libraries;
 `korutl demo` shows the library at work.")

include(CPack)
