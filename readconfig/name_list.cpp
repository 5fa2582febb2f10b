#include "readconfig/name_list.h"

#include <strings.h>

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "readconfig/cfg_paths.h"
#include "siblings/rsv/rsv.h"

namespace korutl::cfg {

uint32_t VersionSortKey(const char *name) {
  if (name == nullptr) return 0;
  uint32_t part[4] = {0, 0, 0, 0};
  int found = 0;
  for (const char *p = name; *p != '\0' && found < 4;) {
    if (!std::isdigit(static_cast<unsigned char>(*p))) {
      ++p;
      continue;
    }
    char *end = nullptr;
    // unsigned long is 64 bits here: clamp as a 32-bit strtoul would.
    const unsigned long run = std::strtoul(p, &end, 10);
    part[found++] = run > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(run);
    p = end;
  }
  return ((part[0] * 100u + part[1]) * 1000u + part[2]) * 1000u + part[3];
}

int CompareVersionsDescending(const void *a, const void *b) {
  const uint32_t ka = VersionSortKey(*static_cast<const char *const *>(a));
  const uint32_t kb = VersionSortKey(*static_cast<const char *const *>(b));
  return ka > kb ? -1 : (ka < kb ? 1 : 0);
}

char **ListSubkeysByVersion(const char *key, uint16_t *count) {
  if (count != nullptr) *count = 0;
  uint16_t subkeys = 0;
  uint16_t values = 0;
  if (rsv_query_key(key, &subkeys, &values, prodcfg_module, __LINE__) != RSV_OK || subkeys == 0)
    return nullptr;
  auto **names = static_cast<char **>(std::malloc(subkeys * (sizeof(char *) + name_slot)));
  if (names == nullptr) {
    if (count != nullptr) *count = subkeys;
    return nullptr;
  }
  char *slots = reinterpret_cast<char *>(names + subkeys);
  for (uint16_t i = 0; i < subkeys; ++i) names[i] = slots + i * name_slot;
  uint16_t written = subkeys;
  // Fewer names than asked for (subkeys removed meanwhile) are sorted as
  // they are; none at all is an empty key, a failure like any other.
  if (rsv_enum_subkeys(key, names, &written, prodcfg_module, __LINE__) != RSV_OK || written == 0) {
    std::free(names);
    return nullptr;
  }
  std::qsort(names, written, sizeof(char *), CompareVersionsDescending);
  if (count != nullptr) *count = written;
  return names;
}

bool ValueNameWasCut(const char *key, char *const *names, uint16_t i) {
  if (std::strlen(names[i]) < value_name_slot - 1) return false;
  for (uint16_t j = 0; j < i; ++j)
    if (strcasecmp(names[j], names[i]) == 0) return true;
  return rsv_get_value(key, names[i], nullptr, nullptr, prodcfg_module, __LINE__) != RSV_OK;
}

}  // namespace korutl::cfg
