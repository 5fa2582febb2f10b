# Cross build for 32-bit Windows with MinGW-w64 (Debian: g++-mingw-w64-i686).
set(KORUTL_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
