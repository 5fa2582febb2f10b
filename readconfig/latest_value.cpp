// The latest-value search: the key path of the highest version of a
// product that holds a value, unless the product is set to strict
// versions.
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/settings.h"
#include "siblings/rsv/rsv.h"

namespace cfg = korutl::cfg;

namespace {

// "Use_Strict_Version" of the product, a number of at most three
// characters; a longer text is no valid setting and counts as unset.
bool strict_version(const char *product) {
  const std::string section = std::string("Products\\") + product;
  char value[korutl::setting_buffer_size];
  KORVOGetSetting("Halcyra", section.c_str(), "Use_Strict_Version", "", value);
  if (std::strlen(value) > 3) return false;
  return static_cast<uint8_t>(std::atoi(value)) != 0;
}

}  // namespace

extern "C" {

KORUTL_API char *KORVOCfgGetProductVersionLatestValue(const char *product, const char *subkey,
                                                       const char *valueName) {
  if (product == nullptr || *product == '\0') product = "Default";
  if (valueName == nullptr || *valueName == '\0') valueName = "Default";
  const bool use_subkey = subkey != nullptr && *subkey != '\0';
  auto *path = static_cast<char *>(std::malloc(cfg::latest_path_size));
  if (path == nullptr) return nullptr;
  uint16_t count = 0;
  char **versions = strict_version(product) ? nullptr : KORVOCfgGetProductVersions(product, &count);
  bool found = false;
  for (uint16_t i = 0; i < count && !found; ++i) {
    const bool fits =
        use_subkey
            ? cfg::compose(path, cfg::latest_path_size, cfg::version_subkey, product, versions[i],
                           subkey)
            : cfg::compose(path, cfg::latest_path_size, cfg::version_key, product, versions[i]);
    if (!fits) break;  // refused: the search ends without a result
    found = rsv_get_value(path, valueName, nullptr, nullptr, cfg::plugcfg_module, __LINE__) == RSV_OK;
  }
  KORVOCfgFreeProductVersions(versions);
  if (!found) {
    std::free(path);
    return nullptr;
  }
  return path;
}

}  // extern "C"
