// Digit values of single characters. Each works on the byte code, so the
// codes 128 to 255 are invalid digits whether `char` is signed or not.
#include "korutl.h"
#include "strings/key_digit.h"

namespace {

constexpr int hex_value(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOHex2Int(char c) {
  const auto code = static_cast<unsigned char>(c);
  if (const int v = hex_value(code); v >= 0) return v;
  if (code == 0) return KORVO_DIGIT_END;
  if (code == ':') return KORVO_DIGIT_COLON;
  return KORVO_DIGIT_INVALID;
}

KORUTL_API int32_t KORVOChar2Int(char c) {
  const auto code = static_cast<unsigned char>(c);
  if (code == 0) return KORVO_DIGIT_END;
  if (const int v = korutl::key_digit(code); v >= 0) return v;
  return KORVO_DIGIT_INVALID;
}

KORUTL_API uint8_t KORVOGetValueOfHexDigit(char c) {
  const int v = hex_value(static_cast<unsigned char>(c));
  return static_cast<uint8_t>(v < 0 ? 0 : v);
}

}  // extern "C"
