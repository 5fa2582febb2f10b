// KORVOCSCryptBuffer / KORVOCSDecryptBuffer: protect or restore a buffer by
// method number (1 XOR scrambler, 2 SAFER, anything else a plain copy).
#include <cstring>

#include "korutl.h"

namespace {

// The scrambler path works in a fixed area of this size; longer input is
// refused rather than overflowing it.
constexpr uint32_t kScrambleArea = 2048;

// Copies like strncpy: up to `n` bytes, stopping at a zero byte, and fills
// the rest of the `n` bytes with zeros.
void copy_to_first_zero(uint8_t *dst, const uint8_t *src, uint32_t n) {
  uint32_t i = 0;
  for (; i < n && src[i] != 0; ++i) dst[i] = src[i];
  if (i < n) std::memset(dst + i, 0, n - i);
}

void set_empty(uint8_t *output, uint32_t *output_length) {
  output[0] = 0;
  *output_length = 0;
}

void protect_or_restore(bool protect, int32_t method, const uint8_t *input, uint32_t input_length,
                        uint8_t *output, uint32_t *output_length, const char *key) {
  if (output == nullptr || output_length == nullptr) return;
  if (input == nullptr && input_length != 0) {
    set_empty(output, output_length);
    return;
  }
  if (method == KORVO_CRYPT_SCRAMBLE) {
    if (input_length > kScrambleArea || key == nullptr) {
      set_empty(output, output_length);
      return;
    }
    uint8_t area[kScrambleArea];
    copy_to_first_zero(area, input, input_length);
    KORVOObxCrypt(protect ? KORVO_OBX_SCRAMBLE : KORVO_OBX_UNSCRAMBLE,
                  reinterpret_cast<const uint8_t *>(key), static_cast<int32_t>(std::strlen(key)),
                  area, static_cast<int32_t>(input_length));
    copy_to_first_zero(output, area, input_length);
    output[input_length] = 0;
    *output_length = input_length;
  } else if (method == KORVO_CRYPT_SAFER) {
    if (KORVOSaferCrypt(
            KORVO_CRYPT_SAFER_MODE | (protect ? KORVO_SAFER_ENCRYPT : KORVO_SAFER_DECRYPT), input,
            input_length, output, output_length, key) == 0) {
      set_empty(output, output_length);
    }
  } else {
    copy_to_first_zero(output, input, input_length);
    *output_length = input_length;
  }
}

}  // namespace

extern "C" {

KORUTL_API void KORVOCSCryptBuffer(int32_t method, const uint8_t *input, uint32_t input_length,
                                   uint8_t *output, uint32_t *output_length, const char *key) {
  protect_or_restore(true, method, input, input_length, output, output_length, key);
}

KORUTL_API void KORVOCSDecryptBuffer(int32_t method, const uint8_t *input, uint32_t input_length,
                                     uint8_t *output, uint32_t *output_length, const char *key) {
  protect_or_restore(false, method, input, input_length, output, output_length, key);
}

}  // extern "C"
