// Product versions and configuration values: the version listing in
// descending version order and the reading of values of any key, of a
// product, of a product version and of an agent.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/name_list.h"
#include "siblings/rsv/rsv.h"

namespace cfg = korutl::cfg;

namespace {

// The service hands out texts of at most 65534 characters; with the zero
// they fit an area of 65535 bytes. Each thread that reads values keeps one,
// made on its first read (tried again while memory lacks) and freed when
// the thread ends, so that a read is one call of the service, and never
// one traced as failing for a short buffer.
constexpr uint16_t value_area_size = UINT16_MAX;

char *value_area() {
  thread_local std::unique_ptr<char[]> area;
  if (!area) area.reset(new (std::nothrow) char[value_area_size]);
  return area.get();
}

}  // namespace

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
  // One read into the thread's area, which holds any text the service hands
  // out, then a block of the text's exact size.
  char *area = value_area();
  if (area == nullptr) return nullptr;
  uint16_t length = value_area_size;
  if (rsv_get_value(keyPath, valueName, area, &length, cfg::prodcfg_module, __LINE__) != RSV_OK)
    return nullptr;
  auto *text = static_cast<char *>(std::malloc(size_t{length} + 1));
  if (text != nullptr) std::memcpy(text, area, size_t{length} + 1);
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
