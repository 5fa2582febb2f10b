// Wildcard matching with "*" and "?". Instead of retrying the rest of the
// pattern at every position for every asterisk (exponential in the number
// of asterisks), it remembers only the last asterisk seen: a later asterisk
// can absorb anything an earlier one would, so when a literal mismatches it
// suffices to let the last asterisk swallow one more character. The answers
// are those of full backtracking; the cost is at most text x pattern steps.
#include <cctype>

#include "korutl.h"

namespace {

// Codes 128 to 255 have no class in the runtime's tables and compare
// exactly; the rest follow the current locale's upper-case class.
unsigned char fold(unsigned char c) {
  if (c < 128 && std::isupper(c)) return static_cast<unsigned char>(std::tolower(c));
  return c;
}

bool same(char a, char b, bool ignore_case) {
  const auto x = static_cast<unsigned char>(a), y = static_cast<unsigned char>(b);
  return ignore_case ? fold(x) == fold(y) : x == y;
}

}  // namespace

extern "C" {

KORUTL_API uint8_t KORVOStrMatchesPattern(const char *text, const char *pattern,
                                          int32_t ignoreCase) {
  if (text == nullptr || pattern == nullptr) return 0;
  const bool ignore_case = (ignoreCase & 0xFF) != 0;
  const char *t = text, *p = pattern;
  const char *star = nullptr;       // pattern position after the last asterisk
  const char *star_text = nullptr;  // text position that asterisk resumes from
  while (*t != '\0') {
    if (*p == '*') {
      star = ++p;
      star_text = t;
    } else if (*p != '\0' && (*p == '?' || same(*p, *t, ignore_case))) {
      ++p;
      ++t;
    } else if (star != nullptr) {
      p = star;
      t = ++star_text;
    } else {
      return 0;
    }
  }
  while (*p == '*') ++p;
  return *p == '\0' ? 1 : 0;
}

}  // extern "C"
