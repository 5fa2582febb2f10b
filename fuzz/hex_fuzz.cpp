// Hexadecimal decoding of arbitrary text; encoding of arbitrary bytes
// decodes back to them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const auto n = static_cast<int32_t>(size);
  std::vector<uint8_t> bytes((size + 1) / 2 + 1);
  uint32_t len = 0;
  KORVOCSPrepareBinaryBuffer(-2, data, n, bytes.data(), &len);
  if (len != (size + 1) / 2) std::abort();

  std::vector<char> text(size * 2 + 1);
  KORVOCSPrepareBinaryBuffer(2, data, n, text.data(), &len);
  if (len != size * 2) std::abort();
  std::vector<uint8_t> back(size + 1);
  KORVOCSPrepareBinaryBuffer(-2, text.data(), static_cast<int32_t>(len), back.data(), &len);
  if (len != size || std::memcmp(back.data(), data, size) != 0) std::abort();
  return 0;
}
