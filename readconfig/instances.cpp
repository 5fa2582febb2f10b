// Instances of a product version and the keys of their agents.
#include <cstdlib>
#include <cstring>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/name_list.h"
#include "siblings/rsv/rsv.h"

namespace cfg = korutl::cfg;

namespace {

// A malloc copy of `path` when that key exists, else null.
char *copy_if_key_exists(const char *path) {
  uint16_t subkeys = 0;
  uint16_t values = 0;
  if (rsv_query_key(path, &subkeys, &values, cfg::prodcfg_module, __LINE__) != RSV_OK)
    return nullptr;
  const size_t size = std::strlen(path) + 1;
  auto *copy = static_cast<char *>(std::malloc(size));
  if (copy != nullptr) std::memcpy(copy, path, size);
  return copy;
}

}  // namespace

extern "C" {

KORUTL_API char **KORVOCfgGetVersionInstances(const char *product, const char *version,
                                              uint16_t *count) {
  if (count != nullptr) *count = 0;
  char key[cfg::path_size];
  if (product == nullptr || version == nullptr ||
      !cfg::compose(key, sizeof key, cfg::instances_key, product, version))
    return nullptr;
  return cfg::list_subkeys_by_version(key, count);
}

KORUTL_API char *KORVOCfgLocateAgentKey(const char *product, const char *agent) {
  if (agent == nullptr) return nullptr;
  uint16_t count = 0;
  char **versions = KORVOCfgGetProductVersions(product, &count);
  // A list that could not be allocated still reports its count.
  if (versions == nullptr) return nullptr;
  char *found = nullptr;
  for (uint16_t i = 0; i < count && found == nullptr; ++i) {
    char instances[cfg::path_size];
    if (!cfg::compose(instances, sizeof instances, cfg::instances_key, product, versions[i])) break;
    // Only the first instance in the service's own order is looked at.
    char first[KORVO_NAME_SLOT];
    char *slot = first;
    uint16_t one = 1;
    if (rsv_enum_subkeys(instances, &slot, &one, cfg::prodcfg_module, __LINE__) != RSV_OK ||
        one != 1)
      continue;
    char path[cfg::path_size];
    if (!cfg::compose(path, sizeof path, cfg::agent_below_instances, instances, first, agent))
      break;
    found = copy_if_key_exists(path);
  }
  KORVOCfgFreeProductVersions(versions);
  return found;
}

KORUTL_API char *KORVOCfgLocateAgentKeyEx(const char *product, const char *version,
                                          const char *instance, const char *agent) {
  if (product == nullptr || agent == nullptr) return nullptr;
  if (version == nullptr) return KORVOCfgLocateAgentKey(product, agent);
  char **instances = nullptr;
  if (instance == nullptr) {
    uint16_t count = 0;
    instances = KORVOCfgGetVersionInstances(product, version, &count);
    if (instances == nullptr) return nullptr;
    instance = instances[0];  // the greatest instance key
  }
  char path[cfg::path_size];
  char *found = nullptr;
  if (cfg::compose(path, sizeof path, cfg::agent_key, product, version, instance, agent))
    found = copy_if_key_exists(path);
  KORVOCfgFreeVersionInstances(instances);
  return found;
}

}  // extern "C"
