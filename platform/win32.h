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
// The registry functions read and write the configuration store, the same
// tree libkorrsv.so serves, under the root HKEY_LOCAL_MACHINE only. Data
// written through them keeps its bytes and type as given.

struct korutl_hkey;
using HKEY = korutl_hkey *;
using PHKEY = HKEY *;
using LPDWORD = DWORD *;
using LPBYTE = BYTE *;
using REGSAM = DWORD;
using LPSECURITY_ATTRIBUTES = void *;

#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<uintptr_t>(0x80000002u)))

#define ERROR_SUCCESS 0L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_OUTOFMEMORY 14L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_MORE_DATA 234L
#define ERROR_BADDB 1009L
#define ERROR_REGISTRY_IO_FAILED 1016L

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_OPTION_NON_VOLATILE 0x0
#define REG_CREATED_NEW_KEY 0x1
#define REG_OPENED_EXISTING_KEY 0x2

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11

// Opens an existing key below hKey (HKEY_LOCAL_MACHINE or an open key);
// ERROR_FILE_NOT_FOUND when it is missing. The access mask is recorded:
// a key opened without KEY_SET_VALUE refuses RegSetValueExA.
LONG RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                   PHKEY phkResult);
// Reads a value; lpcbData is the capacity in, the size out. Too small a
// buffer gives ERROR_MORE_DATA with the needed size.
LONG RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                      LPBYTE lpData, LPDWORD lpcbData);
// Opens or creates the key and its missing parents.
LONG RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR lpClass, DWORD dwOptions,
                     REGSAM samDesired, LPSECURITY_ATTRIBUTES lpSecurityAttributes,
                     PHKEY phkResult, LPDWORD lpdwDisposition);
LONG RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType,
                    const BYTE *lpData, DWORD cbData);
LONG RegCloseKey(HKEY hKey);

// ---- Memory and error box (platform/win32_memory.cpp) ---------------------

// ---- Critical sections (platform/win32_sync.cpp) --------------------------

#endif  // !_WIN32
#endif  // KORUTL_PLATFORM_WIN32_H
