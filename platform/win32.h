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

#include <pthread.h>

#include "siblings/rsv/rsv.h"

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

// ---- Registry (platform/unix/win32_registry.cpp) --------------------------
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

// The registry service numbers value types as Windows does.
#define REG_NONE RSV_REG_NONE
#define REG_SZ RSV_REG_SZ
#define REG_EXPAND_SZ RSV_REG_EXPAND_SZ
#define REG_BINARY RSV_REG_BINARY
#define REG_DWORD RSV_REG_DWORD
#define REG_MULTI_SZ RSV_REG_MULTI_SZ
#define REG_QWORD RSV_REG_QWORD

// Opens an existing key below hKey (HKEY_LOCAL_MACHINE or an open key);
// ERROR_FILE_NOT_FOUND when it is missing. The access mask is recorded:
// a key opened without KEY_SET_VALUE refuses RegSetValueExA.
LONG RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, PHKEY phkResult);
// Reads a value; lpcbData is the capacity in, the size out. Too small a
// buffer gives ERROR_MORE_DATA with the needed size.
LONG RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                      LPBYTE lpData, LPDWORD lpcbData);
// Opens or creates the key and its missing parents.
LONG RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR lpClass, DWORD dwOptions,
                     REGSAM samDesired, LPSECURITY_ATTRIBUTES lpSecurityAttributes, PHKEY phkResult,
                     LPDWORD lpdwDisposition);
LONG RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE *lpData,
                    DWORD cbData);
LONG RegCloseKey(HKEY hKey);

// ---- Memory and error box (platform/unix/win32_memory.cpp) ----------------

struct SYSTEM_INFO {
  WORD wProcessorArchitecture;
  WORD wReserved;
  DWORD dwPageSize;
  LPVOID lpMinimumApplicationAddress;
  LPVOID lpMaximumApplicationAddress;
  DWORD_PTR dwActiveProcessorMask;
  DWORD dwNumberOfProcessors;
  DWORD dwProcessorType;
  DWORD dwAllocationGranularity;
  WORD wProcessorLevel;
  WORD wProcessorRevision;
};
using LPSYSTEM_INFO = SYSTEM_INFO *;

struct MEMORY_BASIC_INFORMATION {
  LPVOID BaseAddress;
  LPVOID AllocationBase;
  DWORD AllocationProtect;
  SIZE_T RegionSize;
  DWORD State;
  DWORD Protect;
  DWORD Type;
};
using PMEMORY_BASIC_INFORMATION = MEMORY_BASIC_INFORMATION *;

constexpr DWORD MEM_COMMIT = 0x1000;
constexpr DWORD MEM_RESERVE = 0x2000;
constexpr DWORD MEM_DECOMMIT = 0x4000;
constexpr DWORD MEM_RELEASE = 0x8000;
constexpr DWORD MEM_FREE = 0x10000;
constexpr DWORD MEM_PRIVATE = 0x20000;
constexpr DWORD PAGE_NOACCESS = 0x01;
constexpr DWORD PAGE_READONLY = 0x02;
constexpr DWORD PAGE_READWRITE = 0x04;
constexpr UINT MB_OK = 0x0;
constexpr UINT MB_YESNO = 0x4;
constexpr int IDOK = 1;
constexpr int IDYES = 6;
constexpr int IDNO = 7;

void GetSystemInfo(LPSYSTEM_INFO info);

// Address space comes from large reserved arenas, carved front to back and
// never handed out twice, so released ranges merge into one PROT_NONE
// mapping with their neighbours and a program with many short-lived regions
// stays far below the kernel's mapping limit. Only a null address is
// supported (the system chooses); MEM_RESERVE alone gives reserved pages.
LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocation_type, DWORD protect);
// Pages of one region only; PAGE_NOACCESS, PAGE_READONLY, PAGE_READWRITE.
BOOL VirtualProtect(LPVOID address, SIZE_T size, DWORD new_protect, DWORD *old_protect);
// Answers from the seam's own region table and never reads the memory
// asked about, so any address (unmapped, on the stack, freed) is safe.
SIZE_T VirtualQuery(LPCVOID address, PMEMORY_BASIC_INFORMATION info, SIZE_T length);
// MEM_DECOMMIT of pages of one region, or MEM_RELEASE (size 0) of a whole
// region. Either way the addresses stay reserved and every access faults.
BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD free_type);

// Writes caption and text to standard error. The answer comes from
// KORVO_MESSAGEBOX_ANSWER ("yes" or "no"); when that is unset or holds
// anything else, a terminal on standard input is asked, and without one the
// answer is no.
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
// Raises SIGTRAP.
void DebugBreak();

// ---- Critical sections (platform/unix/win32_sync.cpp) ---------------------

// Recursive, as a Windows critical section is: the owning thread may enter
// again and must leave as often.
struct CRITICAL_SECTION {
  pthread_mutex_t mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION *;

void InitializeCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);

#endif  // !_WIN32
#endif  // KORUTL_PLATFORM_WIN32_H
