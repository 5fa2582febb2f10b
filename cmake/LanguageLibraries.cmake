# Language libraries and gettext catalogues made from message catalogues
# ("key = text" files, see cmake/catalogue_convert.cmake).

set(KORUTL_CATALOGUE_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/catalogue_convert.cmake)

# korutl_add_language_library(NAME CATALOGUE ENTRY OUTPUT_DIR): a loadable
# library NAME.so in OUTPUT_DIR exporting ENTRY (GetStringResource or
# get_resource), with the texts of CATALOGUE. The target is lang_NAME and
# joins the umbrella target korutl_language_libraries.
function(korutl_add_language_library name catalogue entry output_dir)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.c)
  add_custom_command(OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DCATALOGUE=${catalogue} -DOUTPUT=${source} -DFORM=c
            -DENTRY=${entry} -P ${KORUTL_CATALOGUE_SCRIPT}
    DEPENDS ${catalogue} ${KORUTL_CATALOGUE_SCRIPT}
    COMMENT "Language library source from ${name} catalogue" VERBATIM)
  add_library(lang_${name} MODULE ${source})
  korutl_target_defaults(lang_${name})
  # NAME.dll on Windows, where registrations name it directly.
  if(NOT WIN32)
    set_target_properties(lang_${name} PROPERTIES SUFFIX ".so")
  endif()
  set_target_properties(lang_${name} PROPERTIES
    PREFIX "" OUTPUT_NAME ${name} C_STANDARD 99 C_EXTENSIONS OFF
    LIBRARY_OUTPUT_DIRECTORY ${output_dir})
  if(NOT TARGET korutl_language_libraries)
    add_custom_target(korutl_language_libraries)
  endif()
  add_dependencies(korutl_language_libraries lang_${name})
endfunction()

# korutl_add_gettext_catalogue(OUTPUT_MO CATALOGUE): the same texts as a
# compiled gettext catalogue (msgid = key, msgstr = text), made with msgfmt.
# Returns nothing; list OUTPUT_MO among a target's sources or dependencies.
function(korutl_add_gettext_catalogue mo catalogue)
  find_program(KORUTL_MSGFMT msgfmt REQUIRED)
  get_filename_component(stem ${mo} NAME_WE)
  set(po ${CMAKE_CURRENT_BINARY_DIR}/${stem}.po)
  get_filename_component(mo_dir ${mo} DIRECTORY)
  add_custom_command(OUTPUT ${mo}
    COMMAND ${CMAKE_COMMAND} -DCATALOGUE=${catalogue} -DOUTPUT=${po} -DFORM=po
            -P ${KORUTL_CATALOGUE_SCRIPT}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${mo_dir}
    COMMAND ${KORUTL_MSGFMT} -o ${mo} ${po}
    DEPENDS ${catalogue} ${KORUTL_CATALOGUE_SCRIPT}
    COMMENT "gettext catalogue from ${stem}" VERBATIM)
endfunction()
