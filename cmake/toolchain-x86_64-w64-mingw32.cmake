# Cross build for 64-bit Windows with MinGW-w64 (Debian: g++-mingw-w64-x86-64).
set(KORUTL_MINGW_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake)
