// Script-literal quoting and unquoting, and trimming. A missing text is the
// script literal "null" in both directions.
#include <cstdlib>
#include <cstring>

#include "korutl.h"

namespace {

constexpr char kNull[] = "null";  // 5 bytes with its terminator

char *null_literal(char *buffer) {
  if (buffer == nullptr) buffer = static_cast<char *>(std::malloc(sizeof kNull));
  if (buffer != nullptr) std::memcpy(buffer, kNull, sizeof kNull);
  return buffer;
}

// Two bytes when the character is written with a backslash before it.
const char *escape_of(char c, char quote) {
  if (c == quote) return nullptr;  // handled by the caller: depends on quote
  switch (c) {
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    default:
      return nullptr;
  }
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOStrTrim(char *text) {
  if (text == nullptr) return -1;
  size_t end = std::strlen(text);
  while (end > 0 && text[end - 1] == ' ') text[--end] = '\0';
  size_t start = 0;
  while (text[start] == ' ') ++start;
  if (start > 0) std::memmove(text, text + start, end - start + 1);
  return 0;
}

KORUTL_API char *KORVOStrGetQuotedString(const char *text, char *buffer, uint32_t size,
                                         char quote) {
  if (buffer != nullptr && size < (text == nullptr ? sizeof kNull : 3)) return nullptr;
  if (text == nullptr) return null_literal(buffer);
  size_t room = size;
  if (buffer == nullptr) {
    room = 2 * std::strlen(text) + 4;
    buffer = static_cast<char *>(std::malloc(room));
    if (buffer == nullptr) return null_literal(nullptr);
  }
  // Each character takes at most two bytes; stopping at room - 3 leaves
  // space for one escaped character, the closing quote and the terminator.
  size_t w = 0;
  buffer[w++] = quote;
  for (const char *p = text; *p != '\0' && w < room - 3; ++p) {
    const char *escape = escape_of(*p, quote);
    if (*p == quote) {
      buffer[w++] = '\\';
      buffer[w++] = quote;
    } else if (escape != nullptr) {
      buffer[w++] = escape[0];
      buffer[w++] = escape[1];
    } else {
      buffer[w++] = *p;
    }
  }
  buffer[w++] = quote;
  buffer[w] = '\0';
  return buffer;
}

KORUTL_API char *KORVOStrGetQuotedJSString(const char *text, char *buffer, uint32_t size) {
  return KORVOStrGetQuotedString(text, buffer, size, '\'');
}

KORUTL_API char *KORVOStrGetQuotedParm(const char *text, char *buffer, uint32_t size) {
  return KORVOStrGetQuotedString(text, buffer, size, '"');
}

KORUTL_API char *KORVOStrGetUnquotedJSString(const char *text, char *buffer) {
  if (text == nullptr || std::strcmp(text, kNull) == 0) return nullptr;
  const char quote = text[0];
  if (quote != '"' && quote != '\'') return nullptr;
  if (buffer == nullptr) {
    buffer = static_cast<char *>(std::malloc(std::strlen(text) + 1));
    if (buffer == nullptr) return nullptr;
  }
  char *w = buffer;
  for (const char *p = text + 1; *p != '\0' && *p != quote; ++p) {
    if (*p == '\\') {
      if (*++p == '\0') break;
      *w++ = *p == 'n' ? '\n' : *p;
    } else {
      *w++ = *p;
    }
  }
  *w = '\0';
  return buffer;
}

}  // extern "C"
