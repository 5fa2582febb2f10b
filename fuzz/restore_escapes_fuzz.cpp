// Restoring escapes in place on arbitrary text: the text never grows and
// the byte after the terminator survives in the double-zero form.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<char> text(data, data + size);
  text.push_back('\0');
  const size_t before = std::strlen(text.data());

  std::vector<char> byte_form = text;
  if (KORVOStrRestoreSpecialChars(byte_form.data()) != 0) std::abort();
  if (std::strlen(byte_form.data()) > before) std::abort();

  std::vector<char> unicode_form = text;
  if (KORVOStrRestoreEscapedUnicodeChars(unicode_form.data()) != 0) std::abort();
  if (std::strlen(unicode_form.data()) > before) std::abort();

  // Only the part before the first zero byte is a text; give it a second
  // zero and a marker byte after the terminator. The marker must still be
  // within the old extent (a restored zero byte may end the text early).
  std::vector<char> double_zero(text.begin(), text.begin() + static_cast<long>(before));
  double_zero.push_back('\0');
  double_zero.push_back('\x7F');
  KORVOStrRestoreSpecialChars1(double_zero.data());
  if (std::memchr(double_zero.data(), '\x7F', before + 2) == nullptr) std::abort();
  return 0;
}
