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

uint32_t combine(const uint32_t (&part)[4]) {
  return ((part[0] * 100u + part[1]) * 1000u + part[2]) * 1000u + part[3];
}

}  // namespace

uint32_t VersionSortKey(const char *name) {
  uint32_t part[4] = {0, 0, 0, 0};
  if (name == nullptr) return 0;
  const auto *p = reinterpret_cast<const unsigned char *>(name);
  for (uint32_t &found : part) {
    unsigned digit;
    while ((digit = *p - unsigned{'0'}) > 9) {
      if (*p == '\0') return combine(part);
      ++p;
    }
    // Stops growing once past 32 bits, which counts as 4294967295.
    uint64_t run = digit;
    while ((digit = *++p - unsigned{'0'}) <= 9)
      if (run <= UINT32_MAX) run = run * 10 + digit;
    found = run > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(run);
  }
  return combine(part);
}

int CompareVersionsDescending(const void *a, const void *b) {
  const uint32_t ka = VersionSortKey(*static_cast<const char *const *>(a));
  const uint32_t kb = VersionSortKey(*static_cast<const char *const *>(b));
  return ka > kb ? -1 : (ka < kb ? 1 : 0);
}

namespace {

// The names of a listing, each text followed by its zero, and for each its
// place in the version order: the complement of its key (computed once)
// above the offset of its text, so that ascending order is greatest key
// first and, among equal keys, the service's (name) order, as the C
// library's merge sort keeps it. At most 65535 names, as a key's count
// reports at most that many.
struct CollectedNames {
  std::string text;
  std::vector<uint64_t> order;
  bool out_of_memory = false;
};

int32_t collect_name(const char *name, void *context) {
  auto &collected = *static_cast<CollectedNames *>(context);
  const size_t length = strnlen(name, KORVO_NAME_SLOT - 1);
  try {
    collected.order.push_back(uint64_t{~VersionSortKey(name)} << 32 | collected.text.size());
    collected.text.append(name, length).push_back('\0');
  } catch (const std::bad_alloc &) {
    collected.out_of_memory = true;
    return 1;
  }
  return collected.order.size() == UINT16_MAX ? 1 : 0;
}

}  // namespace

char **list_subkeys_by_version(const char *key, uint16_t *count) {
  if (count != nullptr) *count = 0;
  // One call of the service: the names of one committed state.
  CollectedNames collected;
  if (rsv_list_names(key, RSV_LIST_SUBKEYS, collect_name, &collected, prodcfg_module, __LINE__) !=
          RSV_OK ||
      collected.out_of_memory || collected.order.empty())
    return nullptr;
  const auto n = static_cast<uint16_t>(collected.order.size());
  auto **names = static_cast<char **>(std::malloc(n * (sizeof(char *) + KORVO_NAME_SLOT)));
  if (names == nullptr) {
    // The count tells how many names the key has.
    if (count != nullptr) *count = n;
    return nullptr;
  }
  std::sort(collected.order.begin(), collected.order.end());
  char *slots = reinterpret_cast<char *>(names + n);
  for (uint16_t i = 0; i < n; ++i) {
    const char *name = collected.text.data() + (collected.order[i] & UINT32_MAX);
    names[i] = slots + size_t{i} * KORVO_NAME_SLOT;
    std::memcpy(names[i], name, std::strlen(name) + 1);
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
