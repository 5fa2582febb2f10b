// The two UTF-8 decoders on arbitrary bytes: converting in pieces through a
// small target (the first byte chooses its size) must give exactly what one
// call into a large target gives, and both decoders must stop at the same
// byte with the same result.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fuzz/converted_in_pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0) return 0;
  const size_t small = 2 + data[0] % 7;  // room for any one character
  ++data;
  --size;
  int32_t r16, r16_small, r32, r32_small;
  size_t c16, c16_small, c32, c32_small;
  const auto u16 = converted_in_pieces(KORVOConvertUTF8toUTF16, data, size, size * 2 + 2, r16, c16);
  const auto u16_small =
      converted_in_pieces(KORVOConvertUTF8toUTF16, data, size, small, r16_small, c16_small);
  const auto u32 = converted_in_pieces(KORVOConvertUTF8toUCS4, data, size, size + 1, r32, c32);
  const auto u32_small =
      converted_in_pieces(KORVOConvertUTF8toUCS4, data, size, small, r32_small, c32_small);
  if (u16 != u16_small || r16 != r16_small || c16 != c16_small) std::abort();
  if (u32 != u32_small || r32 != r32_small || c32 != c32_small) std::abort();
  if (r16 != r32 || c16 != c32) std::abort();
  if (r16 != CONV_OK && r16 != CONV_SOURCE_EXHAUSTED) std::abort();
  for (const uint32_t v : u32) {
    if (v > 0x7FFFFFFF) std::abort();
  }
  return 0;
}
