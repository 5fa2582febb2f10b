// UTF-7 decoding of arbitrary bytes, and UCS-2 -> UTF-7 -> UCS-2 round trips
// of arbitrary units with both flag settings. Targets are sized to the
// worst case, so a full target means a fault.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<uint16_t> units(size + 1);
  const uint8_t *src = data;
  uint16_t *dst = units.data();
  const int32_t r = KORVOConvertUTF7toUCS2(&src, data + size, &dst, units.data() + units.size());
  if (r != CONV_OK && r != CONV_SOURCE_ILLEGAL) std::abort();
  if (src != data + size) std::abort();

  std::vector<uint16_t> in(size / 2);
  if (!in.empty()) std::memcpy(in.data(), data, in.size() * 2);
  for (int flags = 0; flags < 4; ++flags) {
    std::vector<uint8_t> text(in.size() * 5 + 1);
    const uint16_t *usrc = in.data();
    uint8_t *tdst = text.data();
    if (KORVOConvertUCS2toUTF7(&usrc, in.data() + in.size(), &tdst, text.data() + text.size(),
                               flags & 1, flags & 2) != CONV_OK) {
      std::abort();
    }
    std::vector<uint16_t> back(in.size() + 1);
    const uint8_t *tsrc = text.data();
    uint16_t *bdst = back.data();
    if (KORVOConvertUTF7toUCS2(&tsrc, tdst, &bdst, back.data() + back.size()) != CONV_OK)
      std::abort();
    if (static_cast<size_t>(bdst - back.data()) != in.size()) std::abort();
    if (!in.empty() && std::memcmp(back.data(), in.data(), in.size() * 2) != 0) std::abort();
  }
  return 0;
}
