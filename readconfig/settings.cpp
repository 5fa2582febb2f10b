// The direct settings under HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel, the fixed
// readers built on them, the registry mode and localised file paths.
#include "readconfig/settings.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "korutl.h"
#include "utl/no_throw.h"

namespace {

// "SOFTWARE\Vantrel\<product>\<section>", or false when it would not fit
// the 1024-byte path buffer (1023 characters).
bool setting_key(const char *product, const char *section,
                 char (&path)[korutl::setting_buffer_size]) {
  const int n = std::snprintf(path, sizeof path, "SOFTWARE\\Vantrel\\%s\\%s", product, section);
  return n >= 0 && static_cast<size_t>(n) < sizeof path;
}

// Copies text into the caller's 1024-byte buffer, cut to fit.
void copy_out(char *out, const char *text) {
  const size_t len = strnlen(text, korutl::setting_buffer_size - 1);
  std::memcpy(out, text, len);
  out[len] = '\0';
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOGetSetting(const char *product, const char *section, const char *valueName,
                                   const char *defaultValue, char *outValue) {
  if (outValue == nullptr) return 1;
  const char *fallback = defaultValue != nullptr ? defaultValue : "";
  char path[korutl::setting_buffer_size];
  char value[korutl::setting_buffer_size];
  if (product == nullptr || section == nullptr || valueName == nullptr ||
      !setting_key(product, section, path) ||
      korutl::ReadRegistryString(path, valueName, value) <= 0) {
    copy_out(outValue, fallback);
  } else {
    copy_out(outValue, value);
  }
  return 1;
}

KORUTL_API int32_t KORVOSaveSetting(const char *product, const char *section, const char *valueName,
                                    const char *value) {
  char path[korutl::setting_buffer_size];
  if (product == nullptr || section == nullptr || valueName == nullptr || value == nullptr ||
      !setting_key(product, section, path) || std::strlen(value) >= korutl::setting_buffer_size)
    return 0;
  return korutl::WriteRegistryString(path, valueName, value) ? 1 : 0;
}

KORUTL_API char *KORVOGetInstallPath(char *out) {
  if (out == nullptr) return nullptr;
  out[0] = '\0';
  KORVOGetSetting("Halcyra", "Global", "Install_Path", "", out);
  return out;
}

KORUTL_API char *KORVOGetHostListPath(char *out) {
  if (out == nullptr) return nullptr;
  out[0] = '\0';
  KORVOGetSetting("Halcyra", "MILayer", "Hostlist_Path", "", out);
  return out;
}

KORUTL_API int32_t KORVOGetRegMode(char *outName) {
  if (outName != nullptr) outName[0] = '\0';
  return 1;
}

KORUTL_API char *KORVOMakeLocalizedPath(char *out, const char *basePath, uint8_t baseHasSeparator,
                                        const char *language, const char *fileName) {
  if (out == nullptr || basePath == nullptr || fileName == nullptr) return nullptr;
  // Composed apart first, since a part may lie in `out` itself.
  return korutl::without_exceptions(
      [&] {
        std::string path = basePath;
        if (baseHasSeparator == 0) path += '\\';
        if (language != nullptr) path.append("localized\\").append(language).append("\\");
        path += fileName;
        std::memcpy(out, path.c_str(), path.size() + 1);
        return out;
      },
      [] { return static_cast<char *>(nullptr); });
}

}  // extern "C"
