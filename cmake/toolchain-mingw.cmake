# Shared part of the MinGW-w64 toolchain files: the caller sets
# KORUTL_MINGW_TRIPLE (x86_64-w64-mingw32 or i686-w64-mingw32). The -posix
# compilers give std::thread and std::mutex; everything the compiler's
# runtime brings is linked statically, so the DLLs need nothing beside them.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${KORUTL_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KORUTL_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KORUTL_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${KORUTL_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++ -static")
endforeach()
