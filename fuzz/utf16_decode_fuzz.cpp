// The two UTF-16 decoders on arbitrary units, lone and reversed surrogates
// included: converting in pieces through a small target (the first byte
// chooses its size) must give exactly what one call into a large target
// gives; UTF-16 -> UTF-8 -> UCS-4 must agree with UTF-16 -> UCS-4; and
// UCS-4 -> UTF-16 must give the units back, since the decoders are lenient
// and lose nothing.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz/converted_in_pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size == 0) return 0;
  const size_t small = 4 + data[0] % 5;  // room for any one character
  std::vector<uint16_t> units((size - 1) / 2);
  if (!units.empty()) std::memcpy(units.data(), data + 1, units.size() * 2);
  const size_t n = units.size();

  int32_t r8, r8_small, r32, r32_small, back_result, via_result;
  size_t c8, c8_small, c32, c32_small, back_consumed, via_consumed;
  const auto u8 = converted_in_pieces(KORVOConvertUTF16toUTF8, units.data(), n, n * 3 + 1, r8, c8);
  const auto u8_small =
      converted_in_pieces(KORVOConvertUTF16toUTF8, units.data(), n, small, r8_small, c8_small);
  const auto u32 = converted_in_pieces(KORVOConvertUTF16toUCS4, units.data(), n, n + 1, r32, c32);
  const auto u32_small =
      converted_in_pieces(KORVOConvertUTF16toUCS4, units.data(), n, small, r32_small, c32_small);
  if (u8 != u8_small || r8 != r8_small || c8 != c8_small) std::abort();
  if (u32 != u32_small || r32 != r32_small || c32 != c32_small) std::abort();
  if (r8 != CONV_OK || r32 != CONV_OK || c8 != n || c32 != n) std::abort();

  const auto via_utf8 = converted_in_pieces(KORVOConvertUTF8toUCS4, u8.data(), u8.size(),
                                            u8.size() + 1, via_result, via_consumed);
  if (via_result != CONV_OK || via_utf8 != u32) std::abort();
  const auto back = converted_in_pieces(KORVOConvertUCS4toUTF16, u32.data(), u32.size(), small,
                                        back_result, back_consumed);
  if (back_result != CONV_OK || back != units) std::abort();
  return 0;
}
