#include <cstdio>
#include <cstring>

#include "platform/win32.h"
#include "readconfig/settings.h"

namespace korutl {

int32_t ReadRegistryString(const char *subKey, const char *valueName, char *out) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, subKey, 0, KEY_READ, &key) != ERROR_SUCCESS) return -1;
  char data[setting_buffer_size];
  DWORD size = sizeof data;
  const LONG rc =
      RegQueryValueExA(key, valueName, nullptr, nullptr, reinterpret_cast<LPBYTE>(data), &size);
  RegCloseKey(key);
  if (rc != ERROR_SUCCESS) return -1;
  // Data need not end in a zero (binary or a writer that left it off): the
  // text stops at the first zero or at the end of what was read, and a full
  // buffer without a zero would not leave room for one.
  const size_t len = strnlen(data, size);
  if (len == sizeof data) return -1;
  std::memcpy(out, data, len);
  out[len] = '\0';
  return static_cast<int32_t>(size);
}

bool WriteRegistryString(const char *subKey, const char *valueName, const char *value) {
  HKEY key = nullptr;
  char no_class[] = "";
  if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, subKey, 0, no_class, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                      nullptr, &key, nullptr) != ERROR_SUCCESS)
    return false;
  const LONG rc = RegSetValueExA(key, valueName, 0, REG_SZ, reinterpret_cast<const BYTE *>(value),
                                 static_cast<DWORD>(std::strlen(value) + 1));
  RegCloseKey(key);
  return rc == ERROR_SUCCESS;
}

void TraceToStderr(const char *text) { std::fprintf(stderr, "%s", text); }

}  // namespace korutl
