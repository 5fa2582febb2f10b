# Run by CPack once it has made the Debian packages (CPACK_POST_BUILD_SCRIPTS,
# see cmake/KorutlPackage.cmake), for what CPack 3.25, Debian 12's, gets
# wrong or cannot do. Each package it changes is unpacked and packed again
# with dpkg-deb:
# - a -dbgsym package lists its files in md5sums by their path in CPack's
#   staging folder, so its sums are made again from its own files;
# - a -dbgsym package has no /usr/share/doc folder: as Debian's own do, it
#   gets /usr/share/doc/NAME-dbgsym, a link to its package's folder (the
#   copyright file and changelog it shares);
# - CPack gives a package with libraries postinst and postrm scripts that
#   only call ldconfig; a package that activates the ldconfig trigger (as
#   libkorutl2 does) needs no scripts, so those go.
find_program(KORUTL_DPKG_DEB dpkg-deb REQUIRED)

function(korutl_deb_field deb field out)
  execute_process(COMMAND ${KORUTL_DPKG_DEB} -f ${deb} ${field}
    OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${out} "${value}" PARENT_SCOPE)
endfunction()

# CPack's own maintainer script for a package with libraries.
set(KORUTL_CPACK_LDCONFIG_SCRIPT "#!/bin/sh\n\nset -e\n\nif [ \"\$1\" = \"configure\" ]; then\n\tldconfig\nfi\n")
set(KORUTL_CPACK_LDCONFIG_POSTRM "#!/bin/sh\n\nset -e\n\nif [ \"\$1\" = \"remove\" ]; then\n\tldconfig\nfi\n")

foreach(deb IN LISTS CPACK_PACKAGE_FILES)
  if(NOT deb MATCHES "\\.d?deb$")
    continue()
  endif()
  get_filename_component(name ${deb} NAME)
  set(root ${CPACK_TOPLEVEL_DIRECTORY}/finish/${name})
  file(REMOVE_RECURSE ${root})
  file(MAKE_DIRECTORY ${CPACK_TOPLEVEL_DIRECTORY}/finish)
  execute_process(COMMAND ${KORUTL_DPKG_DEB} -R ${deb} ${root} COMMAND_ERROR_IS_FATAL ANY)
  korutl_deb_field(${deb} Package package)
  set(changed FALSE)

  if(package MATCHES "^(.+)-dbgsym$")
    set(parent ${CMAKE_MATCH_1})
    file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${root} ${root}/*)
    list(FILTER files EXCLUDE REGEX "^DEBIAN/")
    list(SORT files)
    set(sums "")
    foreach(f IN LISTS files)
      file(MD5 ${root}/${f} sum)
      string(APPEND sums "${sum}  ${f}\n")
    endforeach()
    file(WRITE ${root}/DEBIAN/md5sums "${sums}")
    file(MAKE_DIRECTORY ${root}/usr/share/doc)
    file(CREATE_LINK ${parent} ${root}/usr/share/doc/${package} SYMBOLIC)
    set(changed TRUE)
  endif()

  set(triggers ${root}/DEBIAN/triggers)
  if(EXISTS ${triggers})
    file(READ ${triggers} text)
    if(text MATCHES "(^|\n)activate-noawait ldconfig\n")
      foreach(script postinst postrm)
        if(EXISTS ${root}/DEBIAN/${script})
          file(READ ${root}/DEBIAN/${script} content)
          string(REGEX REPLACE "\n+" "\n" content "${content}")
          string(REGEX REPLACE "\n+" "\n" cpack_postinst "${KORUTL_CPACK_LDCONFIG_SCRIPT}")
          string(REGEX REPLACE "\n+" "\n" cpack_postrm "${KORUTL_CPACK_LDCONFIG_POSTRM}")
          if(content STREQUAL cpack_postinst OR content STREQUAL cpack_postrm)
            file(REMOVE ${root}/DEBIAN/${script})
            set(changed TRUE)
          else()
            message(WARNING "${name}: ${script} is not CPack's ldconfig call; left as it is")
          endif()
        endif()
      endforeach()
    endif()
  endif()

  if(changed)
    execute_process(COMMAND ${KORUTL_DPKG_DEB} --root-owner-group -Zgzip -b ${root} ${deb}
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE ${root})
endforeach()
