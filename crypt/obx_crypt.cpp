// KORVOObxCrypt: the keyed XOR scrambler. Its own inverse; it hides text
// from a casual look and is no encryption.
#include "korutl.h"

extern "C" {

KORUTL_API void KORVOObxCrypt(int32_t direction, const uint8_t *key, int32_t key_length,
                              uint8_t *buffer, int32_t buffer_length) {
  (void)direction;  // scrambling and unscrambling are the same operation
  if (buffer == nullptr || buffer_length <= 0) return;
  unsigned k = 0;
  if (key != nullptr) {
    for (int32_t i = 1; i <= key_length; ++i) k += static_cast<unsigned>(i) * key[i - 1];
  }
  k &= 0xFF;
  // k(n + 1) = k(n) + 7 (n + 1): the step grows by 7 with every byte.
  for (int32_t n = 0; n < buffer_length; ++n) {
    buffer[n] ^= static_cast<uint8_t>(k);
    k = (k + 7u * static_cast<unsigned>(n + 1)) & 0xFF;
  }
}

}  // extern "C"
