// The library's one seam to the operating system: the few Win32 functions
// its code calls. On Windows this header is <windows.h>; on Linux the
// functions are implemented by this folder (hidden symbols, never exported).
// Nothing outside platform/ and siblings/ talks to the operating system in
// a way that differs between the two.
#ifndef KORUTL_PLATFORM_WIN32_H
#define KORUTL_PLATFORM_WIN32_H

#if defined(_WIN32)
#include <windows.h>
#else

#include <cstddef>
#include <cstdint>

// Win32 base types with their Windows widths.
using BOOL = int;
using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using LONG = int32_t;
using LPVOID = void *;
using LPCVOID = const void *;
using LPSTR = char *;
using LPCSTR = const char *;
using SIZE_T = size_t;
using DWORD_PTR = uintptr_t;
using HWND = void *;
using UINT = unsigned int;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

// ---- Registry (platform/win32_registry.cpp) -------------------------------

// ---- Memory and error box (platform/win32_memory.cpp) ---------------------

// ---- Critical sections (platform/win32_sync.cpp) --------------------------

#endif  // !_WIN32
#endif  // KORUTL_PLATFORM_WIN32_H
