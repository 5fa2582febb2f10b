// Object identifiers: parsing a backslash-separated text into unescaped
// parts and composing the canonical text back. A record is built completely
// or not at all: any failed allocation releases what was built and gives
// null, so a caller never sees a record whose fields disagree.
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "korutl.h"

namespace {

constexpr char kSeparator = '\\';

void destroy(KORVOObjectId *id) {
  if (id == nullptr) return;
  if (id->parts != nullptr) {
    for (int32_t i = 0; i < id->numberOfParts; ++i) std::free(id->parts[i]);
  }
  std::free(id->parts);
  std::free(id->objectIdString);
  std::free(id);
}

char *copy_text(const char *text, size_t length) {
  auto *copy = static_cast<char *>(std::malloc(length + 1));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

// The canonical text of the parts: each as a backslash and its escaped form.
char *compose(char *const *parts, int32_t count) {
  size_t length = 0;
  for (int32_t i = 0; i < count; ++i) {
    length += 1 + std::strlen(parts[i]) +
              2 * static_cast<size_t>(KORVOStrStoreSpecialChars(parts[i], nullptr));
  }
  auto *text = static_cast<char *>(std::malloc(length + 1));
  if (text == nullptr) return nullptr;
  char *w = text;
  *w = '\0';
  for (int32_t i = 0; i < count; ++i) {
    *w++ = kSeparator;
    KORVOStrStoreSpecialChars(parts[i], w);
    w += std::strlen(w);
  }
  return text;
}

// Parses `text` and appends `further`. Words are maximal runs of
// non-separators, so adjacent backslashes never yield empty parts and no
// word of the text is lost.
KORVOObjectId *create(const char *text, const char *const *further, int32_t further_count) {
  auto *id = static_cast<KORVOObjectId *>(std::calloc(1, sizeof(KORVOObjectId)));
  if (id == nullptr) return nullptr;
  const int32_t words = KORVOStrGetWordCount(text, kSeparator);
  const int32_t total = words + further_count;
  id->parts = static_cast<char **>(std::calloc(static_cast<size_t>(total) + 1, sizeof(char *)));
  if (id->parts == nullptr) {
    destroy(id);
    return nullptr;
  }
  const char *p = text;
  for (int32_t k = 0; k < words; ++k) {
    while (*p == kSeparator) ++p;
    const char *start = p;
    while (*p != '\0' && *p != kSeparator) ++p;
    char *part = copy_text(start, static_cast<size_t>(p - start));
    id->parts[k] = part;
    id->numberOfParts = k + 1;  // counted as soon as owned, for destroy()
    if (part == nullptr) {
      destroy(id);
      return nullptr;
    }
    KORVOStrRestoreSpecialChars(part);
  }
  for (int32_t k = 0; k < further_count; ++k) {
    char *part = copy_text(further[k], std::strlen(further[k]));
    id->parts[words + k] = part;
    id->numberOfParts = words + k + 1;
    if (part == nullptr) {
      destroy(id);
      return nullptr;
    }
  }
  id->numberOfParts = total;
  id->objectIdString = compose(id->parts, total);
  if (id->objectIdString == nullptr) {
    destroy(id);
    return nullptr;
  }
  return id;
}

}  // namespace

extern "C" {

KORUTL_API KORVOObjectId *KORVOStrCreateObjectId(const char *text, ...) {
  if (text == nullptr) return nullptr;
  const char *further[KORVO_OBJECTID_MAX_FURTHER_PARTS];
  int32_t count = 0;
  bool too_many = false;
  va_list args;
  va_start(args, text);
  for (const char *part = va_arg(args, const char *); part != nullptr;
       part = va_arg(args, const char *)) {
    if (count == KORVO_OBJECTID_MAX_FURTHER_PARTS) {
      too_many = true;
      break;
    }
    further[count++] = part;
  }
  va_end(args);
  if (too_many) return nullptr;
  return create(text, further, count);
}

KORUTL_API void KORVOStrDestroyObjectId(KORVOObjectId *id) { destroy(id); }

KORUTL_API KORVOObjectId *KORVOStrCopyObjectId(const KORVOObjectId *id) {
  if (id == nullptr) return nullptr;
  return create(id->objectIdString, nullptr, 0);
}

KORUTL_API uint8_t KORVOStrCompareObjectId(const KORVOObjectId *a, const KORVOObjectId *b) {
  if (a == nullptr || b == nullptr) return 0;
  return std::strcmp(a->objectIdString, b->objectIdString) == 0 ? 1 : 0;
}

KORUTL_API int32_t KORVOStrGetNumberOfParts(const KORVOObjectId *id) {
  return id == nullptr ? -1 : id->numberOfParts;
}

KORUTL_API const char *KORVOStrGetPart(const KORVOObjectId *id, int32_t index) {
  if (id == nullptr || index < 0 || index >= id->numberOfParts) return nullptr;
  return id->parts[index];
}

KORUTL_API const char *KORVOStrGetObjectIdString(const KORVOObjectId *id) {
  return id == nullptr ? nullptr : id->objectIdString;
}

KORUTL_API const char *KORVOStrGetHostFromObjectId(const KORVOObjectId *id) {
  return KORVOStrGetPart(id, 0);
}
KORUTL_API const char *KORVOStrGetProductFromObjectId(const KORVOObjectId *id) {
  return KORVOStrGetPart(id, 1);
}
KORUTL_API const char *KORVOStrGetVersionFromObjectId(const KORVOObjectId *id) {
  return KORVOStrGetPart(id, 2);
}
KORUTL_API const char *KORVOStrGetInstanceFromObjectId(const KORVOObjectId *id) {
  return KORVOStrGetPart(id, 3);
}

KORUTL_API KORVOObjectId *KORVOGetParentObjectId(const KORVOObjectId *id) {
  if (id == nullptr || id->numberOfParts < 1 || id->objectIdString[0] == '\0') return nullptr;
  KORVOObjectId *parent = create(id->objectIdString, nullptr, 0);
  if (parent == nullptr) return nullptr;
  if (parent->numberOfParts < 1) {
    // A text of one empty part parses to no parts: there is no part to drop.
    destroy(parent);
    return nullptr;
  }
  --parent->numberOfParts;
  std::free(parent->parts[parent->numberOfParts]);
  parent->parts[parent->numberOfParts] = nullptr;
  *std::strrchr(parent->objectIdString, kSeparator) = '\0';
  return parent;
}

}  // extern "C"
