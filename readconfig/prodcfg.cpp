// Product versions and configuration values: the version listing in
// descending version order and the reading of values of any key, of a
// product, of a product version and of an agent.
#include <cstdlib>
#include <cstring>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/name_list.h"
#include "siblings/rsv/rsv.h"

namespace cfg = korutl::cfg;

extern "C" {

KORUTL_API char **KORVOCfgGetProductVersions(const char *product, uint16_t *count) {
  if (count != nullptr) *count = 0;
  char key[cfg::path_size];
  if (product == nullptr || !cfg::compose(key, sizeof key, cfg::versions_key, product))
    return nullptr;
  return cfg::list_subkeys_by_version(key, count);
}

KORUTL_API void KORVOCfgFreeProductVersions(char **list) { std::free(list); }

// Instance lists are the same kind of block.
KORUTL_API void KORVOCfgFreeVersionInstances(char **list) { KORVOCfgFreeProductVersions(list); }

KORUTL_API char *KORVOCfgGetValue(const char *keyPath, const char *valueName) {
  // The size first, then the text, so that the result has its exact size.
  uint16_t length = 0;
  if (rsv_get_value(keyPath, valueName, nullptr, &length, cfg::prodcfg_module, __LINE__) != RSV_OK)
    return nullptr;
  // The service never reports 65535 or more, so the capacity still fits.
  uint16_t capacity = static_cast<uint16_t>(length + 1);
  auto *text = static_cast<char *>(std::malloc(capacity));
  if (text == nullptr) return nullptr;
  if (rsv_get_value(keyPath, valueName, text, &capacity, cfg::prodcfg_module, __LINE__) != RSV_OK) {
    std::free(text);  // grown or removed since the size was asked
    return nullptr;
  }
  return text;
}

KORUTL_API char *KORVOCfgGetProductConfig(const char *product, const char *valueName) {
  char key[cfg::path_size];
  if (product == nullptr || !cfg::compose(key, sizeof key, cfg::product_key, product))
    return nullptr;
  return KORVOCfgGetValue(key, valueName);
}

KORUTL_API char *KORVOCfgGetProductVersionConfig(const char *product, const char *version,
                                                 const char *valueName) {
  char key[cfg::path_size];
  if (product == nullptr || version == nullptr ||
      !cfg::compose(key, sizeof key, cfg::version_key, product, version))
    return nullptr;
  return KORVOCfgGetValue(key, valueName);
}

KORUTL_API char *KORVOCfgGetAgentConfig(const char *agentKey, const char *valueName) {
  if (agentKey == nullptr) return nullptr;
  const size_t length = strnlen(agentKey, cfg::path_size);
  if (length == cfg::path_size) return nullptr;  // no agent key is that long
  if (char *own = KORVOCfgGetValue(agentKey, valueName)) return own;
  // Agent, "Agents", instance and "Instances" off the end leave the
  // version key, whose value stands for all its agents.
  char key[cfg::path_size];
  std::memcpy(key, agentKey, length + 1);
  for (int level = 0; level < 4; ++level) {
    char *cut = std::strrchr(key, '\\');
    if (cut == nullptr) return nullptr;
    *cut = '\0';
  }
  return KORVOCfgGetValue(key, valueName);
}

}  // extern "C"
