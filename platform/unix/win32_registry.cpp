// The Win32 registry functions on the registry service (libkorrsv), which
// holds the process's one store. A key handle is the key's full path with
// the access it was opened for; the tree is reached afresh on each call, so
// a handle never goes stale.
#include <cstring>
#include <new>
#include <string>

#include "platform/win32.h"
#include "siblings/rsv/rsv.h"
#include "utl/no_throw.h"

struct korutl_hkey {
  std::string path;
  REGSAM access;
};

namespace {

constexpr const char *root_name = "HKEY_LOCAL_MACHINE";

// The full path of hKey, or false for a handle that is not one of ours.
bool path_of(HKEY hKey, std::string &path) {
  if (hKey == HKEY_LOCAL_MACHINE) {
    path = root_name;
    return true;
  }
  if (hKey == nullptr) return false;
  path = hKey->path;
  return true;
}

// The Win32 result for a registry service status.
LONG error_of(uint16_t status) {
  switch (status) {
    case RSV_OK:
      return ERROR_SUCCESS;
    case RSV_E_NO_KEY:
    case RSV_E_NO_VALUE:
      return ERROR_FILE_NOT_FOUND;
    case RSV_E_BAD_ARGUMENT:
    case RSV_E_TOO_LONG:
      return ERROR_INVALID_PARAMETER;
    case RSV_E_BUFFER_SMALL:
      return ERROR_MORE_DATA;
    default:
      return ERROR_REGISTRY_IO_FAILED;
  }
}

// The Win32 calls trace nothing, so the service is asked for no trace line.
constexpr const char *untraced = nullptr;

// Joins hKey's path and lpSubKey (null or "" names hKey itself).
LONG sub_path(HKEY hKey, LPCSTR lpSubKey, std::string &path) {
  if (!path_of(hKey, path)) return ERROR_INVALID_HANDLE;
  if (lpSubKey != nullptr && *lpSubKey != '\0') path.append("\\").append(lpSubKey);
  return ERROR_SUCCESS;
}

LONG hand_out(std::string path, REGSAM access, PHKEY phkResult) {
  auto *key = new (std::nothrow) korutl_hkey{std::move(path), access};
  if (key == nullptr) return ERROR_OUTOFMEMORY;
  *phkResult = key;
  return ERROR_SUCCESS;
}

// Like the system's, these functions report a lack of memory as a result.
template <typename Body>
LONG reporting_no_memory(Body &&body) {
  return korutl::without_exceptions(body, [] { return LONG{ERROR_OUTOFMEMORY}; });
}

}  // namespace

LONG RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult) {
  return reporting_no_memory([&]() -> LONG {
    if (phkResult == nullptr) return ERROR_INVALID_PARAMETER;
    std::string path;
    if (const LONG rc = sub_path(hKey, lpSubKey, path); rc != ERROR_SUCCESS) return rc;
    if (const LONG rc = error_of(rsv_query_key(path.c_str(), nullptr, nullptr, untraced, 0));
        rc != ERROR_SUCCESS)
      return rc;
    return hand_out(std::move(path), samDesired, phkResult);
  });
}

LONG RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                      LPBYTE lpData, LPDWORD lpcbData) {
  return reporting_no_memory([&]() -> LONG {
    if (lpReserved != nullptr || (lpData != nullptr && lpcbData == nullptr))
      return ERROR_INVALID_PARAMETER;
    std::string path;
    if (!path_of(hKey, path)) return ERROR_INVALID_HANDLE;
    // One read: the service fills the caller's buffer or tells the size.
    uint32_t size = lpcbData != nullptr && lpData != nullptr ? *lpcbData : 0;
    const uint16_t rc = rsv_get_value_ex(path.c_str(), lpValueName != nullptr ? lpValueName : "",
                                         lpType, lpData, &size, untraced, 0);
    if (rc == RSV_OK || rc == RSV_E_BUFFER_SMALL) {
      if (lpcbData != nullptr) *lpcbData = size;
    }
    return error_of(rc);
  });
}

LONG RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR, DWORD, REGSAM samDesired,
                     LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition) {
  return reporting_no_memory([&]() -> LONG {
    if (Reserved != 0 || phkResult == nullptr) return ERROR_INVALID_PARAMETER;
    std::string path;
    if (const LONG rc = sub_path(hKey, lpSubKey, path); rc != ERROR_SUCCESS) return rc;
    uint8_t created = 0;
    if (const LONG rc = error_of(rsv_create_key_ex(path.c_str(), &created, untraced, 0));
        rc != ERROR_SUCCESS)
      return rc;
    if (lpdwDisposition != nullptr)
      *lpdwDisposition = created != 0 ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return hand_out(std::move(path), samDesired, phkResult);
  });
}

LONG RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE *lpData,
                    DWORD cbData) {
  return reporting_no_memory([&]() -> LONG {
    if (Reserved != 0 || (lpData == nullptr && cbData > 0)) return ERROR_INVALID_PARAMETER;
    if (hKey == HKEY_LOCAL_MACHINE) return ERROR_ACCESS_DENIED;  // no values on the root
    std::string path;
    if (!path_of(hKey, path)) return ERROR_INVALID_HANDLE;
    if ((hKey->access & KEY_SET_VALUE) == 0) return ERROR_ACCESS_DENIED;
    return error_of(rsv_set_value_ex(path.c_str(), lpValueName != nullptr ? lpValueName : "",
                                     dwType, lpData, lpData != nullptr ? cbData : 0, untraced, 0));
  });
}

LONG RegCloseKey(HKEY hKey) {
  if (hKey == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
  if (hKey == nullptr) return ERROR_INVALID_HANDLE;
  delete hKey;
  return ERROR_SUCCESS;
}
