# Windows builds (MinGW-w64 cross builds from Linux): DLL naming, one output
# folder for every DLL and program so that they find each other, the module
# definition file of korutl.dll, its version resource and entry point, and
# Wine as the emulator that runs the tests.
enable_language(RC)

# korutl.dll, korrsv.dll, ... as the family names them; import libraries
# keep MinGW's libNAME.dll.a.
set(CMAKE_SHARED_LIBRARY_PREFIX "")
set(CMAKE_SHARED_MODULE_PREFIX "")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# Tests run under Wine, headless and in a prefix of this build folder only.
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  find_program(KORUTL_WINE wine)
  if(KORUTL_WINE)
    set(KORUTL_WINEPREFIX ${PROJECT_BINARY_DIR}/wineprefix)
    set(CMAKE_CROSSCOMPILING_EMULATOR env -u DISPLAY -u WAYLAND_DISPLAY WINEDEBUG=-all
        WINEPREFIX=${KORUTL_WINEPREFIX} HOME=${PROJECT_BINARY_DIR}
        WINEDLLOVERRIDES=mscoree,mshtml= ${KORUTL_WINE})
    # Create the prefix once now, not from two test discoveries at once.
    if(NOT EXISTS ${KORUTL_WINEPREFIX}/system.reg)
      execute_process(COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} wineboot -i
        OUTPUT_QUIET ERROR_QUIET TIMEOUT 120)
    endif()
  endif()
endif()

# The module definition file of korutl.dll, made from the export list of
# the Linux version script: one list of exports for both platforms. The
# .def names every export undecorated, which also keeps 32-bit names free
# of calling-convention decoration.
function(korutl_def_from_map map def library)
  file(STRINGS ${map} lines)
  set(content "LIBRARY ${library}\nEXPORTS\n")
  set(in_global FALSE)
  foreach(line IN LISTS lines)
    if(line MATCHES "^[ \t]*global:")
      set(in_global TRUE)
    elseif(line MATCHES "^[ \t]*local:")
      set(in_global FALSE)
    elseif(in_global)
      string(REGEX REPLACE "/\\*.*\\*/" "" line "${line}")
      # Names end in ';', several may share a line.
      string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*" names "${line}")
      foreach(name IN LISTS names)
        string(APPEND content "  ${name}\n")
      endforeach()
    endif()
  endforeach()
  file(CONFIGURE OUTPUT ${def} CONTENT "${content}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${map})
endfunction()

# korutl.dll: its exports from the .def, the version resource and the entry
# point; the .def is installed beside the import library.
function(korutl_windows_dll target map)
  set(def ${PROJECT_BINARY_DIR}/${target}.def)
  korutl_def_from_map(${map} ${def} ${target}.dll)
  target_sources(${target} PRIVATE ${def} ${PROJECT_SOURCE_DIR}/utl/win/korutl.rc
    ${PROJECT_SOURCE_DIR}/platform/win/dll_main.cpp)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})  # dll_main.cpp's seam
  target_link_options(${target} PRIVATE "LINKER:--kill-at")
  install(FILES ${def} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()
