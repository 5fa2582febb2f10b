// Which users a product admits: a product that has a "Users" key lists its
// authorised users there, one subkey each.
#include <cstdint>
#include <cstring>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "siblings/rsv/rsv.h"

namespace {

namespace cfg = korutl::cfg;
constexpr const char *kModule = cfg::prodcfg_module;

bool key_exists(const char *path, int line) {
  uint16_t subkeys = 0;
  uint16_t values = 0;
  return rsv_query_key(path, &subkeys, &values, kModule, line) == RSV_OK;
}

}  // namespace

extern "C" {

KORUTL_API uint8_t KORVOCfgAuthorizationToBeChecked(const char *product) {
  char path[cfg::path_size];
  if (product == nullptr || !cfg::compose(path, sizeof path, cfg::users_key, product)) return 0;
  return key_exists(path, __LINE__) ? 1 : 0;
}

KORUTL_API uint8_t KORVOCfgCheckAuthorization(const char *userName, const KORVOObjectId *objectId) {
  const char *product = KORVOStrGetProductFromObjectId(objectId);
  if (userName == nullptr || product == nullptr) return 0;
  // A domain user domain\name is stored as one key, domain/name.
  char user[256];
  const size_t len = strnlen(userName, sizeof user - 1);
  std::memcpy(user, userName, len);
  user[len] = '\0';
  for (char *c = user; *c != '\0'; ++c)
    if (*c == '\\') *c = '/';
  char path[cfg::path_size];
  if (!cfg::compose(path, sizeof path, cfg::user_key, product, user)) return 0;
  return key_exists(path, __LINE__) ? 1 : 0;
}

}  // extern "C"
