// The three digit readers must agree with each other on every byte: a byte
// that is a hexadecimal digit for one is the same digit for the others.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    const char c = static_cast<char>(data[i]);
    const int32_t hex = KORVOHex2Int(c);
    const int32_t key = KORVOChar2Int(c);
    const uint8_t lenient = KORVOGetValueOfHexDigit(c);
    if (hex < 16 && hex != lenient) std::abort();
    if (hex >= 16 && lenient != 0) std::abort();
    if (key > KORVO_DIGIT_INVALID || (key == KORVO_DIGIT_END) != (data[i] == 0)) std::abort();
  }
  return 0;
}
