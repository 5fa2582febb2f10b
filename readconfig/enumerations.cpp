// Enumerations of the values of a key, handed one by one to a caller's
// callback, and the names of a component's environment variables.
#include <cstdlib>
#include <optional>

#include "korutl.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/name_list.h"
#include "siblings/rsv/rsv.h"
#include "utl/rsv_names.h"

namespace cfg = korutl::cfg;

namespace {

// Data of one value as the enumeration reads it; longer values are skipped.
constexpr uint16_t data_size = 1536;

void free_slots(char **names, uint16_t count) {
  for (uint16_t i = 0; i < count; ++i) std::free(names[i]);
  std::free(names);
}

}  // namespace

extern "C" {

KORUTL_API void KORVOCfgEnumerate(const char *keyPath, KORVOCfgEnumCallback callback) {
  if (callback == nullptr) return;
  // Names and data are read in one snapshot, so the callback sees one
  // committed state of the key; it runs after the snapshot ends, free to
  // write to the store.
  struct Entry {
    char name[KORVO_VALUE_NAME_SLOT];
    char data[data_size];
    bool readable;
  };
  char **names = nullptr;
  Entry *entries = nullptr;
  uint16_t written = 0;
  auto snapshot = std::make_optional<korutl::RsvSnapshot>(cfg::prodcfg_module, __LINE__);
  const uint16_t rc = korutl::enumerate_names(
      keyPath, korutl::NameKind::value,
      [&](uint16_t n) -> char ** {
        names = static_cast<char **>(std::malloc(n * sizeof(char *)));
        entries = static_cast<Entry *>(std::malloc(n * sizeof(Entry)));
        if (names == nullptr || entries == nullptr) return nullptr;
        for (uint16_t i = 0; i < n; ++i) names[i] = entries[i].name;
        return names;
      },
      written, cfg::prodcfg_module, __LINE__);
  for (uint16_t i = 0; rc == RSV_OK && i < written; ++i) {
    uint16_t length = data_size;
    // A cut name is not a name of this key.
    entries[i].readable = !cfg::value_name_was_cut(keyPath, names, i) &&
                          rsv_get_value(keyPath, names[i], entries[i].data, &length,
                                        cfg::prodcfg_module, __LINE__) == RSV_OK;
  }
  snapshot.reset();
  for (uint16_t i = 0; rc == RSV_OK && i < written; ++i)
    if (entries[i].readable) callback(entries[i].name, entries[i].data);
  std::free(entries);
  std::free(names);
}

KORUTL_API void KORVOCfgEnumerateMilPlugIn(KORVOCfgEnumCallback callback) {
  KORVOCfgEnumerate(cfg::plugin_key, callback);
}

KORUTL_API void KORVOCfgEnumerateSnmpTrapDest(KORVOCfgEnumCallback callback) {
  KORVOCfgEnumerate(cfg::trap_dest_key, callback);
}

KORUTL_API char **KORVOCfgGetEnvironmentVars(const char *component, uint16_t *count) {
  if (count == nullptr) return nullptr;
  *count = 0;
  char key[cfg::path_size];
  if (component == nullptr || *component == '\0' ||
      !cfg::compose(key, sizeof key, cfg::environment_key, component))
    return nullptr;
  const korutl::RsvSnapshot snapshot(cfg::prodcfg_module, __LINE__);  // names and their checks
  char **names = nullptr;
  uint16_t values = 0;  // the slots laid out
  uint16_t written = 0;
  const uint16_t rc = korutl::enumerate_names(
      key, korutl::NameKind::value,
      [&names, &values](uint16_t n) -> char ** {
        values = n;
        names = static_cast<char **>(std::malloc(n * sizeof(char *)));
        for (uint16_t i = 0; names != nullptr && i < n; ++i) {
          names[i] = static_cast<char *>(std::malloc(KORVO_VALUE_NAME_SLOT));
          if (names[i] == nullptr) {
            free_slots(names, i);
            names = nullptr;
          }
        }
        return names;
      },
      written, cfg::prodcfg_module, __LINE__);
  if (names == nullptr) return nullptr;
  bool complete = rc == RSV_OK && written > 0;
  // A cut name is the name of no variable: the list is refused whole.
  for (uint16_t i = 0; complete && i < written; ++i)
    complete = !cfg::value_name_was_cut(key, names, i);
  if (!complete) {
    free_slots(names, values);
    return nullptr;
  }
  // Slots beyond the names written (values removed meanwhile) go now: the
  // caller releases as many as the count tells.
  for (uint16_t i = written; i < values; ++i) std::free(names[i]);
  *count = written;
  return names;
}

KORUTL_API void KORVOCfgFreeEnvironmentVars(char **vars, uint16_t count) {
  if (vars != nullptr) free_slots(vars, count);
}

}  // extern "C"
