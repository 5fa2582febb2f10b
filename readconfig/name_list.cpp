#include "readconfig/name_list.h"

#include <strings.h>

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "siblings/rsv/rsv.h"
#include "utl/rsv_names.h"

namespace korutl::cfg {

// The library hands out the registry service's slots as they come.
static_assert(KORVO_NAME_SLOT == RSV_SUBKEY_SLOT && KORVO_VALUE_NAME_SLOT == RSV_VALUE_SLOT);

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

char **list_subkeys_by_version(const char *key, uint16_t *count) {
  char **names = nullptr;
  uint16_t written = 0;
  const uint16_t rc = enumerate_names(
      key, NameKind::subkey,
      [&names](uint16_t n) {
        names = static_cast<char **>(std::malloc(n * (sizeof(char *) + KORVO_NAME_SLOT)));
        if (names == nullptr) return names;
        char *slots = reinterpret_cast<char *>(names + n);
        for (uint16_t i = 0; i < n; ++i) names[i] = slots + i * KORVO_NAME_SLOT;
        return names;
      },
      written, prodcfg_module, __LINE__);
  // When the block could not be had, the count tells how many names the
  // key reported.
  if (count != nullptr) *count = names == nullptr ? written : 0;
  // Fewer names than asked for (subkeys removed meanwhile) are sorted as
  // they are; none at all is an empty key, a failure like any other.
  if (rc != RSV_OK || written == 0) {
    std::free(names);
    return nullptr;
  }
  std::qsort(names, written, sizeof(char *), CompareVersionsDescending);
  if (count != nullptr) *count = written;
  return names;
}

bool value_name_was_cut(const char *key, char *const *names, uint16_t i) {
  if (std::strlen(names[i]) < KORVO_VALUE_NAME_SLOT - 1) return false;
  for (uint16_t j = 0; j < i; ++j)
    if (strcasecmp(names[j], names[i]) == 0) return true;
  return rsv_get_value(key, names[i], nullptr, nullptr, prodcfg_module, __LINE__) != RSV_OK;
}

}  // namespace korutl::cfg
