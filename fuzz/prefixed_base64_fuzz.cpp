// Mode -1 of KORVOCSPrepareBinaryBuffer (length-prefixed Base64 to bytes) on
// arbitrary text: at most 255 bytes and a terminator, or the empty result.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<uint8_t> out(256);
  uint32_t len = 0x12345678;
  KORVOCSPrepareBinaryBuffer(-1, data, static_cast<int32_t>(size), out.data(), &len);
  if (len > 255 || out[len] != 0) std::abort();
  if (len > 0) {
    // Whatever came out encodes again into a text that gives it back.
    std::vector<char> text(345);
    uint32_t text_len = 0;
    KORVOCSPrepareBinaryBuffer(1, out.data(), static_cast<int32_t>(len), text.data(), &text_len);
    std::vector<uint8_t> back(256);
    uint32_t back_len = 0;
    KORVOCSPrepareBinaryBuffer(-1, text.data(), static_cast<int32_t>(text_len), back.data(),
                               &back_len);
    if (back_len != len) std::abort();
    for (uint32_t i = 0; i < len; ++i)
      if (back[i] != out[i]) std::abort();
  }
  return 0;
}
