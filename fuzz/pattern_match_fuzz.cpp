// The wildcard matcher against a plain backtracking reference on short
// texts and patterns (the reference is exponential; the matcher is not).
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "korutl.h"

namespace {

unsigned char fold(unsigned char c, bool ignore_case) {
  return ignore_case && c < 128 && std::isupper(c) ? static_cast<unsigned char>(std::tolower(c))
                                                   : c;
}

bool reference(const char *t, const char *p, bool ignore_case) {
  for (; *p != '\0'; ++p) {
    if (*p == '*') {
      for (const char *from = t;; ++from) {
        if (reference(from, p + 1, ignore_case)) return true;
        if (*from == '\0') return false;
      }
    }
    if (*t == '\0') return false;
    if (*p != '?' && fold(static_cast<unsigned char>(*p), ignore_case) !=
                         fold(static_cast<unsigned char>(*t), ignore_case)) {
      return false;
    }
    ++t;
  }
  return *t == '\0';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1 || size > 40) return 0;
  const bool ignore_case = data[0] & 1;
  const std::string rest(reinterpret_cast<const char *>(data + 1), size - 1);
  const size_t split = rest.find('\0');
  if (split == std::string::npos) return 0;
  const std::string pattern = rest.substr(0, split);
  const std::string text = rest.substr(split + 1);
  if (text.find('\0') != std::string::npos) return 0;
  // Keeps the exponential reference quick.
  if (std::count(pattern.begin(), pattern.end(), '*') > 5) return 0;
  const bool want = reference(text.c_str(), pattern.c_str(), ignore_case);
  const bool got =
      KORVOStrMatchesPattern(text.c_str(), pattern.c_str(), ignore_case ? 0x11 : 0x100) != 0;
  if (want != got) std::abort();
  return 0;
}
