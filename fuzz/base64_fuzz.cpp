// Base64 decoding of arbitrary text, and encoding of arbitrary bytes
// decoding back to them. Buffers are sized exactly, so ASan catches any
// write past what the header promises.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const auto n = static_cast<int32_t>(size);
  std::vector<uint8_t> decoded(size / 4 * 3 + 1);
  const int32_t count = KORVOBase64Crypt(0, data, decoded.data(), n);
  if (count != n / 4 * 3) std::abort();

  if (size == 0) return 0;
  std::vector<char> text((size + 2) / 3 * 4 + 1);
  const int32_t chars = KORVOBase64Crypt(1, data, text.data(), n);
  if (chars != static_cast<int32_t>(text.size()) - 1 || text[static_cast<size_t>(chars)] != 0)
    std::abort();
  std::vector<uint8_t> back(static_cast<size_t>(chars) / 4 * 3 + 1);
  if (KORVOBase64Crypt(0, text.data(), back.data(), chars) < n) std::abort();
  if (std::memcmp(back.data(), data, size) != 0) std::abort();
  return 0;
}
