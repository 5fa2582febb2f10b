#include "readconfig/name_list.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "siblings/rsv/rsv.h"

namespace korutl::cfg {

// The library hands out the registry service's slots as they come.
static_assert(KORVO_NAME_SLOT == RSV_SUBKEY_SLOT && KORVO_VALUE_NAME_SLOT == RSV_VALUE_SLOT);

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

uint32_t VersionSortKey(const char *name) {
  if (name == nullptr) return 0;
  uint32_t part[4] = {0, 0, 0, 0};
  int found = 0;
  for (const char *p = name; *p != '\0' && found < 4;) {
    if (!is_digit(*p)) {
      ++p;
      continue;
    }
    // Held at 2^32 once past it, which counts as 4294967295.
    uint64_t run = 0;
    for (; is_digit(*p); ++p) run = std::min<uint64_t>(run * 10 + uint64_t(*p - '0'), 1ull << 32);
    part[found++] = static_cast<uint32_t>(std::min<uint64_t>(run, UINT32_MAX));
  }
  return ((part[0] * 100u + part[1]) * 1000u + part[2]) * 1000u + part[3];
}

int CompareVersionsDescending(const void *a, const void *b) {
  const uint32_t ka = VersionSortKey(*static_cast<const char *const *>(a));
  const uint32_t kb = VersionSortKey(*static_cast<const char *const *>(b));
  return ka > kb ? -1 : (ka < kb ? 1 : 0);
}

namespace {

// A name as the service handed it out: its version key, computed once,
// and where its text lies in the collected texts.
struct ListedName {
  uint32_t key;
  uint32_t offset;
  uint16_t length;
};

// The names of a listing, each text followed by its zero; at most 65535
// of them, as a key's count reports at most that many.
struct CollectedNames {
  std::string text;
  std::vector<ListedName> names;
  bool out_of_memory = false;
};

int32_t collect_name(const char *name, void *context) {
  auto &collected = *static_cast<CollectedNames *>(context);
  const size_t length = strnlen(name, KORVO_NAME_SLOT - 1);
  try {
    collected.names.push_back({VersionSortKey(name), static_cast<uint32_t>(collected.text.size()),
                               static_cast<uint16_t>(length)});
    collected.text.append(name, length).push_back('\0');
  } catch (const std::bad_alloc &) {
    collected.out_of_memory = true;
    return 1;
  }
  return collected.names.size() == UINT16_MAX ? 1 : 0;
}

}  // namespace

char **list_subkeys_by_version(const char *key, uint16_t *count) {
  if (count != nullptr) *count = 0;
  // One call of the service: the names of one committed state.
  CollectedNames collected;
  if (rsv_list_names(key, RSV_LIST_SUBKEYS, collect_name, &collected, prodcfg_module, __LINE__) !=
          RSV_OK ||
      collected.out_of_memory || collected.names.empty())
    return nullptr;
  const auto n = static_cast<uint16_t>(collected.names.size());
  auto **names = static_cast<char **>(std::malloc(n * (sizeof(char *) + KORVO_NAME_SLOT)));
  if (names == nullptr) {
    // The count tells how many names the key has.
    if (count != nullptr) *count = n;
    return nullptr;
  }
  // Greatest key first; equal keys keep the service's (name) order, as
  // the C library's merge sort keeps them.
  std::sort(collected.names.begin(), collected.names.end(),
            [](const ListedName &a, const ListedName &b) {
              return a.key != b.key ? a.key > b.key : a.offset < b.offset;
            });
  char *slots = reinterpret_cast<char *>(names + n);
  for (uint16_t i = 0; i < n; ++i) {
    const ListedName &listed = collected.names[i];
    names[i] = slots + size_t{i} * KORVO_NAME_SLOT;
    std::memcpy(names[i], collected.text.data() + listed.offset, size_t{listed.length} + 1);
  }
  if (count != nullptr) *count = n;
  return names;
}

bool value_name_was_cut(const char *key, char *const *names, uint16_t i) {
  if (std::strlen(names[i]) < KORVO_VALUE_NAME_SLOT - 1) return false;
  for (uint16_t j = 0; j < i; ++j)
    if (strcasecmp(names[j], names[i]) == 0) return true;
  return rsv_get_value(key, names[i], nullptr, nullptr, prodcfg_module, __LINE__) != RSV_OK;
}

}  // namespace korutl::cfg
