// Unquoting arbitrary text into a caller buffer of exactly the documented
// size, and into an allocated one: both give the same text, and quoting a
// result and unquoting it again gives the result back.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  const char *c_text = text.c_str();
  std::vector<char> buffer(std::strlen(c_text) + (std::strlen(c_text) == 0 ? 1 : 0));
  const char *in_buffer = KORVOStrGetUnquotedJSString(c_text, buffer.data());
  char *allocated = KORVOStrGetUnquotedJSString(c_text, nullptr);
  if ((in_buffer == nullptr) != (allocated == nullptr)) std::abort();
  if (allocated == nullptr) return 0;
  if (std::strcmp(in_buffer, allocated) != 0) std::abort();
  char *quoted = KORVOStrGetQuotedJSString(allocated, nullptr, 0);
  char *back = KORVOStrGetUnquotedJSString(quoted, nullptr);
  // A carriage return is quoted as backslash-r, which reads back as 'r'.
  if (std::strchr(allocated, '\r') == nullptr &&
      (back == nullptr || std::strcmp(back, allocated) != 0)) {
    std::abort();
  }
  std::free(back);
  std::free(quoted);
  std::free(allocated);
  return 0;
}
