// Encrypt-then-decrypt round trip for every mode pair and any key text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  // Encrypting modes 0, 2, 4, 6 and, as mode 0, the values outside the
  // table (8, -1, -2); each with the decrypting mode that undoes it.
  static constexpr int32_t kPairs[][2] = {{0, 1}, {2, 3}, {4, 5}, {6, 7}, {8, 1}, {-1, 1}, {-2, 5}};
  const int32_t encrypt_mode = kPairs[data[0] % 7][0];
  const int32_t decrypt_mode = kPairs[data[0] % 7][1];
  const size_t key_len = data[1] % 32 < size - 2 ? data[1] % 32 : size - 2;
  const std::string key(reinterpret_cast<const char *>(data + 2), key_len);
  const uint8_t *in = data + 2 + key_len;
  const size_t n = size - 2 - key_len;
  if (n > 8176) return 0;

  static uint8_t sealed[8200];
  uint32_t sealed_len = 0;
  const int32_t ok =
      KORVOSaferCrypt(encrypt_mode, in, static_cast<uint32_t>(n), sealed, &sealed_len, key.c_str());
  bool key_valid = true;
  for (const char c : key) {
    if (c == 0) break;
    if (static_cast<unsigned char>(c) < 32 || static_cast<unsigned char>(c) > 126)
      key_valid = false;
  }
  if (ok != (key_valid ? 1 : 0)) std::abort();
  if (!ok) return 0;
  if (sealed_len != (n + 7) / 8 * 8 + 8) std::abort();
  static uint8_t back[8200];
  uint32_t back_len = 0;
  if (KORVOSaferCrypt(decrypt_mode, sealed, sealed_len, back, &back_len, key.c_str()) != 1)
    std::abort();
  if (back_len != n || (n > 0 && std::memcmp(back, in, n) != 0)) std::abort();
  return 0;
}
