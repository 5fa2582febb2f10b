// SAFER decryption of arbitrary bytes under arbitrary key texts and modes.
// A failed call must leave output and length untouched; a successful one
// must give a plaintext that encrypts and decrypts back to itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  // Byte 0: one of the decrypting modes 1, 3, 5, 7; byte 1: key text
  // length; then the key text, then the ciphertext.
  const int32_t mode = (data[0] % 4) * 2 + 1;
  const size_t key_len = data[1] % 40 < size - 2 ? data[1] % 40 : size - 2;
  const std::string key(reinterpret_cast<const char *>(data + 2),
                        key_len);  // may hold zeros: text ends there
  const uint8_t *in = data + 2 + key_len;
  const auto n = static_cast<uint32_t>(size - 2 - key_len);

  static uint8_t out[8300];
  std::memset(out, 0xA5, sizeof out);
  uint32_t len = 0x12345678;
  const int32_t ok = KORVOSaferCrypt(mode, in, n, out, &len, key.c_str());
  if (ok == 0) {
    if (len != 0x12345678) std::abort();
    for (uint8_t b : out)
      if (b != 0xA5) std::abort();
    return 0;
  }
  if (n < 8 || len > n - 8) std::abort();
  for (size_t i = len; i < sizeof out; ++i)
    if (out[i] != 0xA5) std::abort();

  static uint8_t again[8300];
  uint32_t again_len = 0;
  if (KORVOSaferCrypt(mode - 1, out, len, again, &again_len, key.c_str()) != 1) std::abort();
  static uint8_t back[8300];
  uint32_t back_len = 0;
  if (KORVOSaferCrypt(mode, again, again_len, back, &back_len, key.c_str()) != 1) std::abort();
  if (back_len != len || std::memcmp(back, out, len) != 0) std::abort();
  return 0;
}
