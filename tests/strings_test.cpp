// The string utilities by known answers and limits: digit values, trimming,
// quoting, host names, words, percent escapes and object identifiers. What
// the fuzz targets check on any input (the wildcard matcher against a
// reference, unquoting into either buffer and back, escapes never growing,
// identifiers reparsing) is not repeated, nor what the allocation sweep
// checks of escaping and composing (internal/allocation_failure_test.cpp).
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>

#include "korutl.h"

namespace {

std::string take(char *allocated) {
  std::string s = allocated == nullptr ? "<null>" : allocated;
  std::free(allocated);
  return s;
}

struct Destroy {
  void operator()(KORVOObjectId *id) const { KORVOStrDestroyObjectId(id); }
};
using Id = std::unique_ptr<KORVOObjectId, Destroy>;

// The parts, each followed by '|'.
std::string parts(const KORVOObjectId *id) {
  std::string out;
  for (int32_t i = 0; i < KORVOStrGetNumberOfParts(id); ++i)
    out += std::string(KORVOStrGetPart(id, i)) + "|";
  return out;
}

// The edge cases that key-text and escape readers depend on.
TEST(Strings, DigitsTrimAndHostNames) {
  // Code, then the values of KORVOHex2Int, KORVOChar2Int and KORVOGetValueOfHexDigit.
  const int cases[][4] = {{':', 96, 26, 0},  {'g', 97, 71, 0}, {0, 95, 95, 0},    {' ', 97, 0, 0},
                          {'~', 97, 94, 0},  {127, 97, 97, 0}, {'C', 12, 35, 12}, {'0', 0, 16, 0},
                          {'f', 15, 70, 15}, {0xE9, 97, 97, 0}};
  for (const auto &[code, hex2int, char2int, hexdigit] : cases) {
    const char c = static_cast<char>(code);
    EXPECT_EQ(KORVOHex2Int(c), hex2int) << "code " << code;
    EXPECT_EQ(KORVOChar2Int(c), char2int) << "code " << code;
    EXPECT_EQ(KORVOGetValueOfHexDigit(c), hexdigit) << "code " << code;
  }
  for (const auto &[in, out] :
       {std::pair{"  a b  ", "a b"}, {"\tx\t", "\tx\t"}}) {  // only spaces go
    std::string text = in;
    EXPECT_EQ(KORVOStrTrim(text.data()), 0);
    EXPECT_STREQ(text.c_str(), out);
  }
  EXPECT_EQ(KORVOStrTrim(nullptr), -1);
  for (const char *valid : {"a-1.b2.", "1.2.3.4", "x--y"})
    EXPECT_EQ(KORVOIsValidHostName(valid), 1) << valid;
  for (const char *invalid :
       {"-a", "a-.b", "a..b", ".a", "a_b", "", "h\xE9", static_cast<const char *>(nullptr)})
    EXPECT_EQ(KORVOIsValidHostName(invalid), 0) << invalid;
}

TEST(Strings, QuotingMarkupAndPatternsRefuseWhatWouldNotFit) {
  EXPECT_EQ(take(KORVOStrGetQuotedParm("a\nb\rc\\\"'", nullptr, 0)), "\"a\\nb\\rc\\\\\\\"'\"");
  const char *unquotes[][2] = {{"\"it's\"", "it's"}, {"'a\\rb'", "arb"}, {"'ab'cd", "ab"},
                               {"'abc", "abc"},      {"'a\\'b'", "a'b"}, {"'ab\\", "ab"}};
  for (const auto &[in, out] : unquotes)
    EXPECT_EQ(take(KORVOStrGetUnquotedJSString(in, nullptr)), out) << in;
  for (const char *refused : {"null", "abc", ""})
    EXPECT_EQ(KORVOStrGetUnquotedJSString(refused, nullptr), nullptr) << refused;
  EXPECT_EQ(take(KORVOStrGetEscapedHTMLString("a<b>&\"'c")), "a&lt;b&gt;&amp;&quot;'c");
  EXPECT_EQ(take(KORVOStrGetEscapedXMLString("&amp;'")), "&amp;amp;&apos;");
  EXPECT_EQ(KORVOStrGetEscapedXMLString(nullptr), nullptr);
  EXPECT_EQ(KORVOStrMatchesPattern(nullptr, "*", 0), 0);
  EXPECT_EQ(KORVOStrMatchesPattern("a", nullptr, 0), 0);
  char buf[9];
  std::memset(buf, 'Z', sizeof buf);
  EXPECT_EQ(KORVOStrGetQuotedJSString("abcdefgh", buf, 8), buf);
  EXPECT_EQ(std::memcmp(buf, "'abcd'\0Z", 8), 0);
  EXPECT_EQ(KORVOStrGetQuotedJSString("abc'efgh", buf, 8), buf);
  EXPECT_EQ(std::memcmp(buf, "'abc\\''\0Z", 9), 0);
  EXPECT_STREQ(KORVOStrGetQuotedJSString("abc", buf, 3), "''");
  EXPECT_STREQ(KORVOStrGetQuotedJSString(nullptr, buf, 5), "null");
  // Too small to hold even the quotes or the null literal: refused.
  EXPECT_EQ(KORVOStrGetQuotedJSString("abc", buf, 2), nullptr);
  EXPECT_EQ(KORVOStrGetQuotedJSString(nullptr, buf, 4), nullptr);
}

TEST(Strings, WordsAndEscapes) {
  // Extraction sees every field, the empty ones too, but a leading separator.
  EXPECT_EQ(KORVOStrGetWordCount("  a  b  ", ' '), 2);
  EXPECT_EQ(KORVOStrGetWordCount("a,,b", ','), 2);
  EXPECT_EQ(KORVOStrGetWordCount(nullptr, ','), 0);
  const std::tuple<const char *, int32_t, const char *> words[] = {
      {"a,,b", 1, ""}, {"a,,b", 2, "b"}, {"a,,b", 3, ""},
      {",a", 0, "a"},  {",,a", 0, ""},   {"a,b,", 2, ""}};
  for (const auto &[text, index, want] : words) {
    char word[8] = "ZZZZZZZ";
    EXPECT_EQ(KORVOStrGetWord(text, word, ',', index), std::strlen(want));
    EXPECT_STREQ(word, want) << text << " " << index;
  }
  char kept[4] = "xyz";
  EXPECT_EQ(KORVOStrGetWord(nullptr, kept, ',', 0), 0u);
  EXPECT_EQ(KORVOStrGetWord("a", kept, ',', -1), 0u);
  EXPECT_STREQ(kept, "xyz");
  EXPECT_EQ(KORVOStrGetWord("a", nullptr, ',', 0), 0u);
  char out[32];
  EXPECT_EQ(KORVOStrStoreSpecialChars("a b\\c", nullptr), 2);
  EXPECT_EQ(KORVOStrStoreSpecialChars("C:\\a b%41", out), 2);
  EXPECT_STREQ(out, "C:%5Ca%20b%41");
  // Non-digits count as 0 (a zero byte ends the text); "%U" is a byte
  // escape; the byte pass may make a Unicode escape; three-byte forms fit
  // in the six characters; surrogates are never paired.
  const char *escapes[][2] = {{"a%20b%5Cc", "a b\\c"},
                              {"x%4", "x%4"},
                              {"ab%zzcd", "ab"},
                              {"%u00E9", "\xC3\xA9"},
                              {"%U0041", ""},
                              {"%25u0041", "A"},
                              {"%u20AC", "\xE2\x82\xAC"},
                              {"%uD800%uDC00", "\xED\xA0\x80\xED\xB0\x80"},
                              {"%u004", "%u004"}};
  for (const auto &[in, want] : escapes) {
    std::string text = in;
    EXPECT_EQ(KORVOStrRestoreSpecialChars(text.data()), 0);
    EXPECT_STREQ(text.c_str(), want) << in;
  }
  // The double-zero form: a list of entries, restored as one.
  char multi[] = "p%20q\0r\0";
  EXPECT_EQ(KORVOStrRestoreSpecialChars1(multi), 0);
  EXPECT_EQ(std::memcmp(multi, "p q\0r", 5), 0);
}

TEST(Strings, ObjectIdentifiers) {
  // Text, parts, canonical text: no empty part and no word lost.
  const char *ids[][3] = {
      {"localhost\\Halcyra\\2.2.1.3\\", "localhost|Halcyra|2.2.1.3|",
       "\\localhost\\Halcyra\\2.2.1.3"},
      {"\\", "", ""},
      {"\\a\\\\b%41\\c", "a|bA|c|", "\\a\\bA\\c"},
      {"\\a%20b\\c%5Cd", "a b|c\\d|", "\\a%20b\\c%5Cd"},
      {"\\%u00e9t%u00e9", "\xC3\xA9t\xC3\xA9|", "\\\xC3\xA9t\xC3\xA9"},
  };
  for (const auto &[text, want, canonical] : ids) {
    const Id id(KORVOStrCreateObjectId(text, nullptr));
    EXPECT_EQ(parts(id.get()), want) << text;
    EXPECT_STREQ(KORVOStrGetObjectIdString(id.get()), canonical) << text;
  }
  const Id id(KORVOStrCreateObjectId("\\localhost\\Halcyra", "2.2.1.3", "inst one", nullptr));
  EXPECT_STREQ(KORVOStrGetHostFromObjectId(id.get()), "localhost");
  EXPECT_STREQ(KORVOStrGetProductFromObjectId(id.get()), "Halcyra");
  EXPECT_STREQ(KORVOStrGetVersionFromObjectId(id.get()), "2.2.1.3");
  EXPECT_STREQ(KORVOStrGetInstanceFromObjectId(id.get()), "inst one");
  EXPECT_EQ(KORVOStrGetPart(id.get(), 4), nullptr);
  EXPECT_EQ(KORVOStrGetPart(id.get(), -1), nullptr);
  // Further parts are taken as given, up to a hundred of them.
#define P10 "p", "p", "p", "p", "p", "p", "p", "p", "p", "p"
  const Id hundred(
      KORVOStrCreateObjectId("\\h", P10, P10, P10, P10, P10, P10, P10, P10, P10, P10, nullptr));
  EXPECT_EQ(KORVOStrGetNumberOfParts(hundred.get()), 101);
  EXPECT_FALSE(Id(KORVOStrCreateObjectId("\\h", P10, P10, P10, P10, P10, P10, P10, P10, P10, P10,
                                         "p", nullptr)));
#undef P10
  const Id root(KORVOGetParentObjectId(Id(KORVOStrCreateObjectId("\\localhost", nullptr)).get()));
  EXPECT_EQ(KORVOStrGetNumberOfParts(root.get()), 0);
  EXPECT_EQ(KORVOGetParentObjectId(root.get()), nullptr);
  const Id empty_part(KORVOStrCreateObjectId("", "", nullptr));
  EXPECT_STREQ(KORVOStrGetObjectIdString(empty_part.get()), "\\");
  EXPECT_EQ(KORVOGetParentObjectId(empty_part.get()), nullptr);
  const Id a(KORVOStrCreateObjectId("\\A", nullptr)), b(KORVOStrCreateObjectId("\\a", nullptr));
  EXPECT_EQ(KORVOStrCompareObjectId(a.get(), b.get()), 0) << "case matters";
  EXPECT_EQ(KORVOStrCompareObjectId(a.get(), nullptr), 0);
  EXPECT_EQ(KORVOStrCreateObjectId(nullptr, nullptr), nullptr);
  EXPECT_EQ(KORVOStrCopyObjectId(nullptr), nullptr);
  EXPECT_EQ(KORVOStrGetNumberOfParts(nullptr), -1);
  EXPECT_EQ(KORVOStrGetPart(nullptr, 0), nullptr);
  EXPECT_EQ(KORVOStrGetObjectIdString(nullptr), nullptr);
  KORVOStrDestroyObjectId(nullptr);
}

}  // namespace
