// Listing the names below a registry key through the registry service,
// which hands them out in caller slots: ask the key for its count, lay out
// that many slots, enumerate into them. The library's name lists and the
// korutl command both list this way; only where the slots live differs.
#ifndef KORUTL_UTL_RSV_NAMES_H
#define KORUTL_UTL_RSV_NAMES_H

#include <cstddef>
#include <cstdint>

#include "siblings/rsv/rsv.h"

namespace korutl {

// Reads through the registry service between construction and destruction
// see one committed state of the tree (rsv_begin_snapshot), for listings
// made of several reads. A write of this thread inside it fails.
class RsvSnapshot {
 public:
  RsvSnapshot(const char *module, int32_t line)
      : module_(module), line_(line), begun_(rsv_begin_snapshot(module, line) == RSV_OK) {}
  ~RsvSnapshot() {
    if (begun_) rsv_end_snapshot(module_, line_);
  }
  RsvSnapshot(const RsvSnapshot &) = delete;
  RsvSnapshot &operator=(const RsvSnapshot &) = delete;

 private:
  const char *module_;
  int32_t line_;
  bool begun_;
};

enum class NameKind { subkey, value };

// Bytes of one slot of that kind of name.
constexpr size_t name_slot_size(NameKind kind) {
  return kind == NameKind::value ? RSV_VALUE_SLOT : RSV_SUBKEY_SLOT;
}

// Asks how many names of `kind` the key has and, when there are any, calls
// lay_out(n), which provides n slots of name_slot_size(kind) bytes each and
// gives back the array of their addresses, or null when it cannot. Returns
// the service's status; `count` receives the number of names written
// (fewer than n when names went meanwhile), 0 on a failure of the service.
// When lay_out gave null the result is RSV_E_STORE and `count` is n, the
// number of slots that could not be had.
template <typename LayOut>
uint16_t enumerate_names(const char *key, NameKind kind, LayOut &&lay_out, uint16_t &count,
                         const char *module, int32_t line) {
  count = 0;
  // The count and the names from one committed state: a name added between
  // the two reads would otherwise find no slot.
  const RsvSnapshot snapshot(module, line);
  uint16_t subkeys = 0, values = 0;
  if (const uint16_t rc = rsv_query_key(key, &subkeys, &values, module, line); rc != RSV_OK)
    return rc;
  const uint16_t wanted = kind == NameKind::value ? values : subkeys;
  if (wanted == 0) return RSV_OK;
  char **slots = lay_out(wanted);
  if (slots == nullptr) {
    count = wanted;
    return RSV_E_STORE;
  }
  uint16_t written = wanted;
  const uint16_t rc = kind == NameKind::value
                          ? rsv_enum_values(key, slots, &written, module, line)
                          : rsv_enum_subkeys(key, slots, &written, module, line);
  if (rc == RSV_OK) count = written;
  return rc;
}

}  // namespace korutl

#endif
