// Registration of language libraries and event-layer message files: one
// value per file in a subkey of the product version, removed all at once.
#include <cstdint>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "siblings/rsv/rsv.h"

namespace {

namespace cfg = korutl::cfg;
constexpr const char *kModule = cfg::plugcfg_module;

const char *or_default(const char *name) {
  return name == nullptr || *name == '\0' ? "Default" : name;
}

// The version's `subkey` ("Languages" or "EventLayerMessages").
bool files_key(char (&path)[cfg::path_size], const char *subkey, const char *product,
               const char *version) {
  return cfg::compose(path, sizeof path, cfg::version_subkey, or_default(product),
                      or_default(version), subkey);
}

uint8_t register_file(const char *subkey, const char *product, const char *version,
                      const char *valueName, const char *fileName) {
  char path[cfg::path_size];
  if (fileName == nullptr || !files_key(path, subkey, product, version)) return 1;
  const uint16_t status = rsv_query_key(path, nullptr, nullptr, kModule, __LINE__);
  if (status == RSV_E_NO_KEY) {
    if (rsv_create_key(path, kModule, __LINE__) != RSV_OK) return 1;
  } else if (status != RSV_OK) {
    return 1;
  }
  return rsv_set_value(path, or_default(valueName), fileName, kModule, __LINE__) == RSV_OK ? 0 : 1;
}

// `absent` is the result when the key cannot be queried: what "nothing to
// remove" means differs between the two kinds of file.
uint8_t deregister_files(const char *subkey, const char *product, const char *version,
                         uint8_t (*absent)(uint16_t status)) {
  char path[cfg::path_size];
  if (!files_key(path, subkey, product, version)) return 1;
  const uint16_t status = rsv_query_key(path, nullptr, nullptr, kModule, __LINE__);
  if (status != RSV_OK) return absent(status);
  return rsv_delete_key(path, kModule, __LINE__) == RSV_OK ? 0 : 1;
}

}  // namespace

extern "C" {

KORUTL_API uint8_t KORVOCfgRegisterLanguageFile(const char *product, const char *version,
                                                const char *language, const char *fileName) {
  return register_file("Languages", product, version, language, fileName);
}

KORUTL_API uint8_t KORVOCfgDeRegisterLanguageFile(const char *product, const char *version) {
  return deregister_files("Languages", product, version, [](uint16_t status) -> uint8_t {
    return status == RSV_E_NO_KEY ? 0 : 1;
  });
}

KORUTL_API uint8_t KORVOCfgRegisterMessageFile(const char *product, const char *version,
                                               const char *valueName, const char *fileName) {
  return register_file("EventLayerMessages", product, version, valueName, fileName);
}

KORUTL_API uint8_t KORVOCfgDeRegisterMessageFile(const char *product, const char *version) {
  return deregister_files("EventLayerMessages", product, version,
                          [](uint16_t) -> uint8_t { return 0; });
}

}  // extern "C"
