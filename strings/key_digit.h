// The digits of key texts: the printable ASCII characters ' ' (0) to '~'
// (94), read by byte code. Shared by KORVOChar2Int and the SAFER key-text
// reader, which inlines it rather than calling the export per character.
#ifndef KORUTL_STRINGS_KEY_DIGIT_H
#define KORUTL_STRINGS_KEY_DIGIT_H

namespace korutl {

inline constexpr int kKeyDigitBase = 95;

// The digit value of byte `code`, or -1 when it is no key digit (the zero
// byte included).
constexpr int key_digit(unsigned char code) { return code >= 32 && code <= 126 ? code - 32 : -1; }

}  // namespace korutl

#endif
