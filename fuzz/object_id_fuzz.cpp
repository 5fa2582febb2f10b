// Parsing and composing object identifiers: the record is consistent, its
// canonical text parses back to the same parts whenever no part holds a
// percent sign (which is never escaped, so it is read again) or is empty,
// and then the parent has one part less.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"

namespace {

bool same_parts(const KORVOObjectId *a, const KORVOObjectId *b) {
  if (KORVOStrGetNumberOfParts(a) != KORVOStrGetNumberOfParts(b)) return false;
  for (int32_t i = 0; i < KORVOStrGetNumberOfParts(a); ++i) {
    if (std::strcmp(KORVOStrGetPart(a, i), KORVOStrGetPart(b, i)) != 0) return false;
  }
  return true;
}

bool reparses_exactly(const KORVOObjectId *id) {
  for (int32_t i = 0; i < KORVOStrGetNumberOfParts(id); ++i) {
    const char *part = KORVOStrGetPart(id, i);
    if (part[0] == '\0' || std::strchr(part, '%') != nullptr) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  // Up to the first zero byte is the text; the rest is one further part.
  const std::string all(reinterpret_cast<const char *>(data), size);
  const std::string text = all.substr(0, all.find('\0'));
  const bool has_further = text.size() < all.size();
  const std::string further = has_further ? all.substr(text.size() + 1) : std::string();
  KORVOObjectId *id = has_further ? KORVOStrCreateObjectId(text.c_str(), further.c_str(), nullptr)
                                  : KORVOStrCreateObjectId(text.c_str(), nullptr);
  if (id == nullptr) std::abort();
  if (has_further &&
      std::strcmp(KORVOStrGetPart(id, id->numberOfParts - 1), further.c_str()) != 0) {
    std::abort();
  }
  KORVOObjectId *copy = KORVOStrCopyObjectId(id);
  if (copy == nullptr) std::abort();
  if (reparses_exactly(id) && !same_parts(id, copy)) std::abort();
  if (reparses_exactly(id) && KORVOStrCompareObjectId(id, copy) != 1) std::abort();
  KORVOObjectId *parent = KORVOGetParentObjectId(copy);
  if (reparses_exactly(copy) && copy->numberOfParts > 0 &&
      (parent == nullptr || parent->numberOfParts != copy->numberOfParts - 1)) {
    std::abort();
  }
  KORVOStrDestroyObjectId(parent);
  KORVOStrDestroyObjectId(copy);
  KORVOStrDestroyObjectId(id);
  return 0;
}
