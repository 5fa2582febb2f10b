// The Win32 registry functions on the configuration store. A key handle is
// the key's full path with the access it was opened for; the store itself
// is reached afresh on each call, so a handle never goes stale.
#include <cstring>
#include <new>
#include <string>

#include "platform/store.h"
#include "platform/win32.h"
#include "utl/no_throw.h"

namespace store = korutl::store;

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

LONG error_of(store::Status st) {
  switch (st) {
    case store::Status::ok:
      return ERROR_SUCCESS;
    case store::Status::no_key:
    case store::Status::no_value:
      return ERROR_FILE_NOT_FOUND;
    case store::Status::bad_name:
    case store::Status::too_large:
      return ERROR_INVALID_PARAMETER;
    case store::Status::store_error:
      break;
  }
  return ERROR_REGISTRY_IO_FAILED;
}

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
    if (const LONG rc = error_of(store::query_key(path, nullptr, nullptr)); rc != ERROR_SUCCESS)
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
    store::Value value;
    const store::Status st =
        store::get_value(path, lpValueName != nullptr ? lpValueName : "", value);
    if (st != store::Status::ok) return error_of(st);
    if (lpType != nullptr) *lpType = value.type;
    if (lpcbData == nullptr) return ERROR_SUCCESS;
    const DWORD size = static_cast<DWORD>(value.data.size());
    if (lpData != nullptr && size > *lpcbData) {
      *lpcbData = size;
      return ERROR_MORE_DATA;
    }
    if (lpData != nullptr && size > 0) std::memcpy(lpData, value.data.data(), size);
    *lpcbData = size;
    return ERROR_SUCCESS;
  });
}

LONG RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR, DWORD, REGSAM samDesired,
                     LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition) {
  return reporting_no_memory([&]() -> LONG {
    if (Reserved != 0 || phkResult == nullptr) return ERROR_INVALID_PARAMETER;
    std::string path;
    if (const LONG rc = sub_path(hKey, lpSubKey, path); rc != ERROR_SUCCESS) return rc;
    bool created = false;
    if (const LONG rc = error_of(store::create_key(path, &created)); rc != ERROR_SUCCESS) return rc;
    if (lpdwDisposition != nullptr)
      *lpdwDisposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
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
    const std::string_view data(reinterpret_cast<const char *>(lpData),
                                lpData != nullptr ? cbData : 0);
    return error_of(
        store::set_value(path, lpValueName != nullptr ? lpValueName : "", dwType, data));
  });
}

LONG RegCloseKey(HKEY hKey) {
  if (hKey == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
  if (hKey == nullptr) return ERROR_INVALID_HANDLE;
  delete hKey;
  return ERROR_SUCCESS;
}
