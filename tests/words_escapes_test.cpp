// Word splitting and the two percent-escape forms.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "korutl.h"

namespace {

std::string word(const char *text, char sep, int32_t index, uint32_t *count = nullptr) {
  char buf[64];
  std::memset(buf, 'Z', sizeof buf);
  const uint32_t n = KORVOStrGetWord(text, buf, sep, index);
  if (count != nullptr) *count = n;
  EXPECT_EQ(std::strlen(buf), n);
  return buf;
}

std::string restored(std::string text) {
  text.push_back('\0');
  EXPECT_EQ(KORVOStrRestoreSpecialChars(text.data()), 0);
  return text.c_str();
}

TEST(Words, CountTreatsSeparatorRunsAsOneGap) {
  EXPECT_EQ(KORVOStrGetWordCount("  a  b  ", ' '), 2);
  EXPECT_EQ(KORVOStrGetWordCount("", ' '), 0);
  EXPECT_EQ(KORVOStrGetWordCount(",,,", ','), 0);
  EXPECT_EQ(KORVOStrGetWordCount(nullptr, ','), 0);
  EXPECT_EQ(KORVOStrGetWordCount("a,,b", ','), 2);
}

TEST(Words, ExtractionSeesEveryFieldButALeadingSeparator) {
  struct Case {
    const char *text;
    int32_t index;
    const char *want;
  };
  const Case cases[] = {
      {"a,,b", 0, "a"}, {"a,,b", 1, ""}, {"a,,b", 2, "b"},  {"a,,b", 3, ""}, {",a", 0, "a"},
      {",,a", 0, ""},   {",,a", 1, "a"}, {"abc", 0, "abc"}, {"", 0, ""},     {"a,b,", 2, ""},
  };
  for (const Case &c : cases)
    EXPECT_EQ(word(c.text, ',', c.index), c.want) << c.text << " " << c.index;
}

TEST(Words, RefusedArgumentsWriteNothing) {
  char buf[4] = "xyz";
  EXPECT_EQ(KORVOStrGetWord(nullptr, buf, ',', 0), 0u);
  EXPECT_EQ(KORVOStrGetWord("a", buf, ',', -1), 0u);
  EXPECT_STREQ(buf, "xyz");
  EXPECT_EQ(KORVOStrGetWord("a", nullptr, ',', 0), 0u);
}

TEST(Escapes, StoreEscapesOnlyBackslashAndSpace) {
  EXPECT_EQ(KORVOStrStoreSpecialChars("a b\\c", nullptr), 2);
  char out[32];
  EXPECT_EQ(KORVOStrStoreSpecialChars("a b\\c", out), 2);
  EXPECT_STREQ(out, "a%20b%5Cc");
  EXPECT_EQ(KORVOStrStoreSpecialChars("50%", out), 0);
  EXPECT_STREQ(out, "50%");
  EXPECT_EQ(KORVOStrStoreSpecialChars("a%41", out), 0);
  EXPECT_STREQ(out, "a%41");
}

TEST(Escapes, RestoreBothForms) {
  struct Case {
    const char *in, *want;
  };
  const Case cases[] = {
      {"a%20b%5Cc", "a b\\c"},
      {"100%", "100%"},
      {"x%4", "x%4"},
      {"ab%zzcd", "ab"},  // non-digits count as 0: a zero byte ends the text
      {"%u0041", "A"},
      {"%u00e9", "\xC3\xA9"},
      {"%u00E9", "\xC3\xA9"},
      {"%U0041", ""},     // upper-case U is a byte escape of 'U','0'
      {"%25u0041", "A"},  // byte pass makes the Unicode escape
      {"a%41", "aA"},
      {"x%u0000y", "xy"},
      {"%u20AC", "\xE2\x82\xAC"},                    // three-byte form fits in the six characters
      {"%uD800%uDC00", "\xED\xA0\x80\xED\xB0\x80"},  // never paired
      {"%u004", "%u004"},
      {"%u", "%u"},
  };
  for (const Case &c : cases) EXPECT_EQ(restored(c.in), c.want) << c.in;
}

TEST(Escapes, RestoreKeepsADoubleZeroTerminator) {
  char text[] = "a%20b\0\0X";
  EXPECT_EQ(KORVOStrRestoreSpecialChars1(text), 0);
  EXPECT_EQ(std::memcmp(text, "a b\0\0", 5), 0);
  char multi[] = "p%20q\0r\0";  // a list entry followed by the next entry
  KORVOStrRestoreSpecialChars1(multi);
  EXPECT_EQ(std::memcmp(multi, "p q\0r", 5), 0);
}

TEST(Escapes, StoreThenRestoreRoundTrips) {
  for (const char *text : {"", "plain", "a b", "\\\\ \\", "C:\\Program Files\\x"}) {
    char out[64];
    KORVOStrStoreSpecialChars(text, out);
    EXPECT_EQ(restored(out), text);
  }
}

}  // namespace
