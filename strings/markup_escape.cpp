// XML and HTML escaping: one counting pass, one allocation, one copy.
#include <cstdlib>
#include <cstring>

#include "korutl.h"

namespace {

const char *entity_of(char c, bool escape_apostrophe) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return escape_apostrophe ? "&apos;" : nullptr;
    default:
      return nullptr;
  }
}

char *escape_markup(const char *text, bool escape_apostrophe) {
  if (text == nullptr) return nullptr;
  size_t length = 0;
  for (const char *p = text; *p != '\0'; ++p) {
    const char *entity = entity_of(*p, escape_apostrophe);
    length += entity != nullptr ? std::strlen(entity) : 1;
  }
  auto *out = static_cast<char *>(std::malloc(length + 1));
  if (out == nullptr) return nullptr;
  char *w = out;
  for (const char *p = text; *p != '\0'; ++p) {
    if (const char *entity = entity_of(*p, escape_apostrophe); entity != nullptr) {
      const size_t n = std::strlen(entity);
      std::memcpy(w, entity, n);
      w += n;
    } else {
      *w++ = *p;
    }
  }
  *w = '\0';
  return out;
}

}  // namespace

extern "C" {

KORUTL_API char *KORVOStrGetEscapedXMLString(const char *text) { return escape_markup(text, true); }

KORUTL_API char *KORVOStrGetEscapedHTMLString(const char *text) {
  return escape_markup(text, false);
}

KORUTL_API void KORVOStrFreeEscapedXMLString(char *text) { std::free(text); }

KORUTL_API void KORVOStrFreeEscapedHTMLString(char *text) { std::free(text); }

}  // extern "C"
