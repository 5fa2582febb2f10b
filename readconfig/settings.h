// Internal helpers of the direct settings: text values read and written
// straight through the Win32 registry functions, and the trace function
// the library hands to its sibling libraries.
#ifndef KORUTL_READCONFIG_SETTINGS_H
#define KORUTL_READCONFIG_SETTINGS_H

#include <cstdint>

namespace korutl {

// Both buffers of a direct setting hold 1024 bytes.
constexpr uint32_t setting_buffer_size = 1024;

// Reads `valueName` of HKEY_LOCAL_MACHINE\`subKey` into `out` (1024 bytes),
// taken as a zero-terminated text whatever its type. Returns the size in
// bytes the registry reported, or -1 when the key or value is missing,
// access is refused or the value is over 1024 bytes.
int32_t ReadRegistryString(const char *subKey, const char *valueName, char *out);

// Creates HKEY_LOCAL_MACHINE\`subKey` as needed and sets `valueName` to
// `value` as REG_SZ (terminator included). True when the value was set; a
// created key stays when setting the value fails.
bool WriteRegistryString(const char *subKey, const char *valueName, const char *value);

// Writes `text` to standard error as it is, no line end added.
void TraceToStderr(const char *text);

}  // namespace korutl

#endif
