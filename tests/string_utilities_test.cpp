// Trimming, quoting, unquoting, markup escaping, wildcard and host-name checks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"

namespace {

std::string trimmed(std::string text) {
  EXPECT_EQ(KORVOStrTrim(text.data()), 0);
  return text.c_str();
}

std::string take(char *allocated) {
  std::string s = allocated == nullptr ? "<null>" : allocated;
  std::free(allocated);
  return s;
}

TEST(Trim, OnlySpacesGo) {
  EXPECT_EQ(trimmed("  a b  "), "a b");
  EXPECT_EQ(trimmed("    "), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("\tx\t"), "\tx\t");
  EXPECT_EQ(KORVOStrTrim(nullptr), -1);
}

TEST(Quoting, Allocated) {
  EXPECT_EQ(take(KORVOStrGetQuotedJSString("it's", nullptr, 0)), "'it\\'s'");
  EXPECT_EQ(take(KORVOStrGetQuotedParm("it's", nullptr, 0)), "\"it's\"");
  EXPECT_EQ(take(KORVOStrGetQuotedParm("a\nb\rc\\\"", nullptr, 0)), "\"a\\nb\\rc\\\\\\\"\"");
  EXPECT_EQ(take(KORVOStrGetQuotedJSString(nullptr, nullptr, 0)), "null");
  EXPECT_EQ(take(KORVOStrGetQuotedString("\n\n\n", nullptr, 0, '|')), "|\\n\\n\\n|");
}

TEST(Quoting, CallerBufferCutsButAlwaysCloses) {
  char buf[9];
  std::memset(buf, 'Z', sizeof buf);
  EXPECT_EQ(KORVOStrGetQuotedJSString("abcdefgh", buf, 8), buf);
  EXPECT_EQ(std::memcmp(buf, "'abcd'\0", 7), 0);
  EXPECT_EQ(buf[7], 'Z');
  EXPECT_EQ(KORVOStrGetQuotedJSString("abc'efgh", buf, 8), buf);
  EXPECT_EQ(std::memcmp(buf, "'abc\\''\0", 8), 0);
  EXPECT_EQ(buf[8], 'Z');
  char small[5];
  EXPECT_STREQ(KORVOStrGetQuotedJSString("abc", small, 3), "''");
  EXPECT_STREQ(KORVOStrGetQuotedJSString(nullptr, small, 5), "null");
  // Too small to hold even the quotes or the null literal: refused.
  EXPECT_EQ(KORVOStrGetQuotedJSString("abc", small, 2), nullptr);
  EXPECT_EQ(KORVOStrGetQuotedJSString(nullptr, small, 4), nullptr);
}

TEST(Unquoting, Cases) {
  struct Case {
    const char *in, *want;
  };
  const Case cases[] = {
      {"\"it's\"", "it's"}, {"'a\\rb'", "arb"}, {"'a\\nb'", "a\nb"},  {"'ab'cd", "ab"},
      {"'abc", "abc"},      {"'a\\'b'", "a'b"}, {"'a\\\\b'", "a\\b"}, {"'ab\\", "ab"},
      {"''", ""},           {"\"a'b\"", "a'b"},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(take(KORVOStrGetUnquotedJSString(c.in, nullptr)), c.want) << c.in;
    std::string buf(std::strlen(c.in), 'Z');
    EXPECT_STREQ(KORVOStrGetUnquotedJSString(c.in, buf.data()), c.want) << c.in;
  }
  for (const char *refused : {"null", "abc", ""}) {
    EXPECT_EQ(KORVOStrGetUnquotedJSString(refused, nullptr), nullptr) << refused;
  }
  EXPECT_EQ(KORVOStrGetUnquotedJSString(nullptr, nullptr), nullptr);
}

TEST(Markup, XmlAndHtml) {
  EXPECT_EQ(take(KORVOStrGetEscapedXMLString("a<b>&\"'c")), "a&lt;b&gt;&amp;&quot;&apos;c");
  EXPECT_EQ(take(KORVOStrGetEscapedHTMLString("a<b>&\"'c")), "a&lt;b&gt;&amp;&quot;'c");
  EXPECT_EQ(take(KORVOStrGetEscapedXMLString("&amp;\xE9")), "&amp;amp;\xE9");
  EXPECT_EQ(take(KORVOStrGetEscapedHTMLString("")), "");
  EXPECT_EQ(KORVOStrGetEscapedXMLString(nullptr), nullptr);
  KORVOStrFreeEscapedXMLString(nullptr);
  KORVOStrFreeEscapedHTMLString(KORVOStrGetEscapedHTMLString("x"));
}

TEST(Pattern, Matches) {
  struct Case {
    const char *text, *pattern;
    int32_t ignore_case;
    uint8_t want;
  };
  const Case cases[] = {
      {"ab", "a*b", 0, 1},
      {"axxb", "a*b", 0, 1},
      {"axxbc", "a*b", 0, 0},
      {"", "?", 0, 0},
      {"", "", 0, 1},
      {"x", "", 0, 0},
      {"", "*", 0, 1},
      {"anything", "*", 0, 1},
      {"ABC", "a?c", 1, 1},
      {"ABC", "a?c", 0, 0},
      {"ABC", "a?c", 256, 0},
      {"abc", "A?C", 0x101, 1},
      {"ababc", "*abc", 0, 1},
      {"aXbXc", "a*b*c", 0, 1},
      {"abcab", "*ab", 0, 1},
      {"abcab", "*ab?", 0, 0},
      {"mississippi", "m*iss*ppi", 0, 1},
      {"\xC9", "\xE9", 1, 0},
      {"\xE9", "\xE9", 1, 1},
      {"host-01.example.org", "host-??.example.*", 0, 1},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(KORVOStrMatchesPattern(c.text, c.pattern, c.ignore_case), c.want)
        << c.text << " ~ " << c.pattern;
  }
  EXPECT_EQ(KORVOStrMatchesPattern(nullptr, "*", 0), 0);
  EXPECT_EQ(KORVOStrMatchesPattern("a", nullptr, 0), 0);
}

TEST(HostName, Checks) {
  for (const char *valid : {"a-1.b2.", "1.2.3.4", "localhost", "A", "x--y"}) {
    EXPECT_EQ(KORVOIsValidHostName(valid), 1) << valid;
  }
  for (const char *invalid : {"-a", "a-", "a-.b", "a..b", ".a", "a_b", "", "a b", "h\xE9", "."}) {
    EXPECT_EQ(KORVOIsValidHostName(invalid), 0) << invalid;
  }
  EXPECT_EQ(KORVOIsValidHostName(nullptr), 0);
}

TEST(Print, ReturnsCharactersWritten) {
  testing::internal::CaptureStdout();
  const int32_t n = KORVOprintf("%s-%d", "ab", 42);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "ab-42");
  EXPECT_EQ(n, 5);
}

}  // namespace
