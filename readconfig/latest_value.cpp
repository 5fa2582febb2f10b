// The latest-value search: the key path of the highest version of a
// product that holds a value, unless the product is set to strict
// versions.
#include <cstdlib>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/strict_version.h"
#include "siblings/rsv/rsv.h"

namespace cfg = korutl::cfg;

extern "C" {

KORUTL_API char *KORVOCfgGetProductVersionLatestValue(const char *product, const char *subkey,
                                                      const char *valueName) {
  if (product == nullptr || *product == '\0') product = "Default";
  if (valueName == nullptr || *valueName == '\0') valueName = "Default";
  const bool use_subkey = subkey != nullptr && *subkey != '\0';
  auto *path = static_cast<char *>(std::malloc(cfg::latest_path_size));
  if (path == nullptr) return nullptr;
  uint16_t count = 0;
  char **versions =
      cfg::strict_version(product) ? nullptr : KORVOCfgGetProductVersions(product, &count);
  bool found = false;
  // A list that could not be allocated still reports its count.
  for (uint16_t i = 0; versions != nullptr && i < count && !found; ++i) {
    const bool fits = use_subkey ? cfg::compose(path, cfg::latest_path_size, cfg::version_subkey,
                                                product, versions[i], subkey)
                                 : cfg::compose(path, cfg::latest_path_size, cfg::version_key,
                                                product, versions[i]);
    if (!fits) break;  // refused: the search ends without a result
    found =
        rsv_get_value(path, valueName, nullptr, nullptr, cfg::plugcfg_module, __LINE__) == RSV_OK;
  }
  KORVOCfgFreeProductVersions(versions);
  if (!found) {
    std::free(path);
    return nullptr;
  }
  return path;
}

}  // extern "C"
