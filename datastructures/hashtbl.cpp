// The string-keyed hash table: open addressing, downward linear probing,
// load kept at or below one half. The slot count is a power of two so the
// home slot is a mask of the hash.
//
// The slot array is followed, in the same block, by one tag byte a slot,
// kept privately: 0 for an empty slot, otherwise the top byte of the key's
// hash (1 when that is 0). A probe walks the tags, which are dense, and
// reads a slot's record and key only when the tag matches, so it rejects
// nearly every wrong slot, and stops at an empty one, without a cache miss.
#include <cstdlib>
#include <cstring>

#include "korutl.h"

namespace {

constexpr uint32_t kFirstSize = 64;
constexpr uint32_t kLargestSize = 1u << 31;  // doubling past this wraps

uint32_t hash_of(const char *key) {
  uint32_t h = 0;
  for (const auto *p = reinterpret_cast<const unsigned char *>(key); *p != 0; ++p) h = h * 33 + *p;
  return h;
}

const char *key_of(const void *record) { return *static_cast<const char *const *>(record); }

uint8_t tag_of(uint32_t h) {
  const auto tag = static_cast<uint8_t>(h >> 24);
  return tag == 0 ? 1 : tag;
}

uint8_t *tags_of(void **slots, uint32_t size) { return reinterpret_cast<uint8_t *>(slots + size); }

// A zeroed slot array of `size` slots and their tags; null when memory
// runs out.
void **new_slots(uint32_t size) {
  return static_cast<void **>(std::calloc(size, sizeof(void *) + 1));
}

// Index of the first empty slot of the probe sequence of hash `h`.
uint32_t free_slot(const uint8_t *tags, uint32_t size, uint32_t h) {
  uint32_t i = h & (size - 1);
  while (tags[i] != 0) i = (i - 1) & (size - 1);
  return i;
}

bool grow(KORVOHashTbl *table) {
  if (table->size >= kLargestSize) return false;
  const uint32_t size = table->size * 2;
  void **slots = new_slots(size);
  if (slots == nullptr) return false;
  uint8_t *tags = tags_of(slots, size);
  for (uint32_t i = 0; i < table->size; ++i) {
    if (void *record = table->slots[i]) {
      const uint32_t h = hash_of(key_of(record));
      const uint32_t to = free_slot(tags, size, h);
      slots[to] = record;
      tags[to] = tag_of(h);
    }
  }
  std::free(table->slots);
  table->slots = slots;
  table->size = size;
  table->limit = size / 2;
  return true;
}

}  // namespace

extern "C" {

KORUTL_API void KORVOHashTblInit(KORVOHashTbl *table) {
  if (table != nullptr) *table = KORVOHashTbl{nullptr, 0, 0, 0};
}

KORUTL_API void *KORVOHashTblLookup(KORVOHashTbl *table, const char *key, uint32_t create_size) {
  if (table == nullptr || key == nullptr) return nullptr;
  const uint32_t h = hash_of(key);
  // A record too small for its key field (0 among them) is never created.
  const bool may_create = create_size >= sizeof(char *);
  const uint8_t tag = tag_of(h);
  uint32_t insert_at;
  if (table->size == 0) {
    if (!may_create) return nullptr;
    void **slots = new_slots(kFirstSize);
    if (slots == nullptr) return nullptr;
    table->slots = slots;
    table->size = kFirstSize;
    table->limit = kFirstSize / 2;
    insert_at = h & (kFirstSize - 1);
  } else {
    const uint32_t mask = table->size - 1;
    const uint8_t *tags = tags_of(table->slots, table->size);
    uint32_t i = h & mask;
    for (; tags[i] != 0; i = (i - 1) & mask) {
      if (tags[i] == tag && std::strcmp(key_of(table->slots[i]), key) == 0) return table->slots[i];
    }
    if (!may_create) return nullptr;
    insert_at = i;
    if (table->count == table->limit) {
      if (!grow(table)) return nullptr;
      insert_at = free_slot(tags_of(table->slots, table->size), table->size, h);
    }
  }
  void *record = std::calloc(1, create_size);
  if (record == nullptr) return nullptr;
  *static_cast<const char **>(record) = key;
  table->slots[insert_at] = record;
  tags_of(table->slots, table->size)[insert_at] = tag;
  ++table->count;
  return record;
}

KORUTL_API void KORVOHashTblDestroy(KORVOHashTbl *table) {
  if (table == nullptr || table->slots == nullptr) return;
  for (uint32_t i = 0; i < table->size; ++i) std::free(table->slots[i]);
  std::free(table->slots);
}

KORUTL_API void KORVOHashTblIterInit(KORVOHashTblIter *iter, KORVOHashTbl *table) {
  if (iter == nullptr || table == nullptr) return;
  iter->cur = table->slots;
  iter->end = table->slots == nullptr ? nullptr : table->slots + table->size;
}

KORUTL_API void *KORVOHashTblIterNext(KORVOHashTblIter *iter) {
  if (iter == nullptr) return nullptr;
  while (iter->cur != iter->end) {
    if (void *record = *iter->cur++) return record;
  }
  return nullptr;
}

}  // extern "C"
