// Percent escapes of object-identifier parts: backslash and space are
// written as "%5C" and "%20"; restoring reads any "%XY" byte escape and the
// "%uWXYZ" form that carries one UTF-16 code unit. Restoring only ever
// shortens the text, so it works in place.
#include <cstring>

#include "korutl.h"

namespace {

bool needs_escape(char c) { return c == '\\' || c == ' '; }

uint32_t hex_digits_value(const char *digits, int count) {
  uint32_t v = 0;
  for (int i = 0; i < count; ++i) v = v * 16 + KORVOGetValueOfHexDigit(digits[i]);
  return v;
}

// Rewrites "%XY" byte escapes in place. With `keep_second_zero`, the byte
// after the old terminator follows the new one, so a double-zero-terminated
// text stays so.
void restore_byte_escapes(char *text, bool keep_second_zero) {
  if (std::strchr(text, '%') == nullptr) return;
  const char *r = text;
  char *w = text;
  while (*r != '\0') {
    if (r[0] == '%' && r[1] != '\0' && r[1] != 'u' && r[2] != '\0') {
      *w++ = static_cast<char>(hex_digits_value(r + 1, 2));
      r += 3;
    } else {
      *w++ = *r++;
    }
  }
  *w = '\0';
  if (keep_second_zero) w[1] = r[1];
}

int32_t restore(char *text, bool keep_second_zero) {
  if (text == nullptr) return 0;
  restore_byte_escapes(text, keep_second_zero);
  return KORVOStrRestoreEscapedUnicodeChars(text);
}

bool has_four_chars(const char *p) {
  return p[0] != '\0' && p[1] != '\0' && p[2] != '\0' && p[3] != '\0';
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOStrStoreSpecialChars(const char *text, char *escaped) {
  if (text == nullptr) return 0;
  int32_t count = 0;
  for (const char *p = text; *p != '\0'; ++p) count += needs_escape(*p) ? 1 : 0;
  if (escaped == nullptr) return count;
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (const char *p = text; *p != '\0'; ++p) {
    if (needs_escape(*p)) {
      const auto code = static_cast<unsigned char>(*p);
      *escaped++ = '%';
      *escaped++ = kHex[code >> 4];
      *escaped++ = kHex[code & 0xF];
    } else {
      *escaped++ = *p;
    }
  }
  *escaped = '\0';
  return count;
}

KORUTL_API int32_t KORVOStrRestoreSpecialChars(char *text) { return restore(text, false); }

KORUTL_API int32_t KORVOStrRestoreSpecialChars1(char *text) { return restore(text, true); }

KORUTL_API int32_t KORVOStrRestoreEscapedUnicodeChars(char *text) {
  if (text == nullptr || std::strchr(text, '%') == nullptr) return 0;
  const char *r = text;
  char *w = text;
  while (*r != '\0') {
    if (r[0] == '%' && r[1] == 'u' && has_four_chars(r + 2)) {
      const uint16_t unit = static_cast<uint16_t>(hex_digits_value(r + 2, 4));
      // One unit gives at most three UTF-8 bytes, fewer than the six
      // characters of the escape, so writing in place never overtakes `r`.
      uint8_t utf8[3];
      const uint16_t *src = &unit;
      uint8_t *dst = utf8;
      KORVOConvertUTF16toUTF8(&src, &unit + 1, &dst, utf8 + sizeof utf8);
      for (const uint8_t *b = utf8; b < dst && *b != 0; ++b) *w++ = static_cast<char>(*b);
      r += 6;
    } else {
      *w++ = *r++;
    }
  }
  *w = '\0';
  return 0;
}

}  // extern "C"
