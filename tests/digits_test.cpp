// Digit values over all 256 byte codes, checked against an independent
// classification of each code.
#include <gtest/gtest.h>

#include <cctype>

#include "korutl.h"

namespace {

struct Expected {
  int32_t hex2int;
  int32_t char2int;
  uint8_t hexdigit;
};

Expected expected_for(int code) {
  Expected e{KORVO_DIGIT_INVALID, KORVO_DIGIT_INVALID, 0};
  if (code >= 32 && code <= 126) e.char2int = code - 32;
  if (code >= '0' && code <= '9') e.hex2int = e.hexdigit = static_cast<uint8_t>(code - '0');
  if (code >= 'a' && code <= 'f') e.hex2int = e.hexdigit = static_cast<uint8_t>(code - 'a' + 10);
  if (code >= 'A' && code <= 'F') e.hex2int = e.hexdigit = static_cast<uint8_t>(code - 'A' + 10);
  if (code == ':') e.hex2int = KORVO_DIGIT_COLON;
  if (code == 0) e.hex2int = e.char2int = KORVO_DIGIT_END;
  return e;
}

TEST(Digits, EveryByteCode) {
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    const Expected e = expected_for(code);
    EXPECT_EQ(KORVOHex2Int(c), e.hex2int) << "code " << code;
    EXPECT_EQ(KORVOChar2Int(c), e.char2int) << "code " << code;
    EXPECT_EQ(KORVOGetValueOfHexDigit(c), e.hexdigit) << "code " << code;
  }
}

// The edge cases that key-text and escape readers depend on, spelt out.
TEST(Digits, NamedCases) {
  struct Case {
    int code;
    int32_t hex2int, char2int;
    unsigned hexdigit;
  };
  const Case cases[] = {
      {':', 96, 26, 0},  {'g', 97, 71, 0}, {0, 95, 95, 0},    {' ', 97, 0, 0},
      {'~', 97, 94, 0},  {127, 97, 97, 0}, {'\t', 97, 97, 0}, {'c', 12, 67, 12},
      {'C', 12, 35, 12}, {'0', 0, 16, 0},  {'9', 9, 25, 9},   {'f', 15, 70, 15},
      {'F', 15, 38, 15}, {128, 97, 97, 0}, {0xE9, 97, 97, 0}, {255, 97, 97, 0},
  };
  for (const Case &k : cases) {
    const char c = static_cast<char>(k.code);
    EXPECT_EQ(KORVOHex2Int(c), k.hex2int) << "code " << k.code;
    EXPECT_EQ(KORVOChar2Int(c), k.char2int) << "code " << k.code;
    EXPECT_EQ(KORVOGetValueOfHexDigit(c), k.hexdigit) << "code " << k.code;
  }
}

}  // namespace
