// KORVOSaferCrypt: one buffer, SAFER in CBC mode with a zero vector, zero
// padding and a trailing encrypted length block. Everything lives on the
// call's stack, so calls share nothing and may run on any thread.
#include <cstdint>
#include <cstring>

#include "crypt/safer_block.h"
#include "crypt/safer_wide.h"
#include "korutl.h"
#include "strings/key_digit.h"

namespace {

namespace safer = korutl::safer;

constexpr uint32_t kMaxInput = 8192;  // inputs of this size or more are refused
constexpr uint32_t kMaxOutput = kMaxInput + safer::kBlockSize;

struct ModeInfo {
  bool decrypt;
  bool strengthened;
  int short_key_rounds;  // rounds for a key text of at most 8 characters
};

// Modes 0-7 are sums of the KORVO_SAFER_* flags; the K schedule always
// gives a short key 6 rounds, so the 6-round flag changes only SK modes.
ModeInfo mode_info(int32_t mode) {
  if (mode < 0 || mode > 7) return {false, false, 6};
  const bool strengthened = (mode & KORVO_SAFER_SK) != 0;
  const bool six = !strengthened || (mode & KORVO_SAFER_SHORT_KEY_6_ROUNDS) != 0;
  return {(mode & KORVO_SAFER_DECRYPT) != 0, strengthened, six ? 6 : 8};
}

// Reads the key text as a base-95 number modulo 2^128 into 16 bytes, least
// significant first (half 1 = bytes 0-7, half 2 = bytes 8-15). Returns the
// number of characters read, or -1 when a character is not a key digit.
// The number is kept in four 32-bit limbs while reading, so a character
// costs four multiplications.
int read_key_text(const char *text, uint8_t number[16]) {
  uint32_t limbs[4] = {};  // least significant first
  int count = 0;
  for (;; ++count) {
    const auto code = static_cast<unsigned char>(text[count]);
    if (code == 0) break;
    const int digit = korutl::key_digit(code);
    if (digit < 0) return -1;
    uint64_t carry = static_cast<uint64_t>(digit);
    for (uint32_t &limb : limbs) {
      carry += uint64_t{limb} * korutl::kKeyDigitBase;
      limb = static_cast<uint32_t>(carry);
      carry >>= 32;
    }
  }
  for (int b = 0; b < 16; ++b) number[b] = static_cast<uint8_t>(limbs[b / 4] >> (8 * (b % 4)));
  return count;
}

inline void xor_block(uint8_t *dst, const uint8_t *src) {
  for (int j = 0; j < safer::kBlockSize; ++j) dst[j] ^= src[j];
}

// CBC over the zero-padded input, then the length block. `out` holds
// 8 * ceil(n / 8) + 8 bytes.
uint32_t encrypt_buffer(const uint8_t *in, uint32_t n, const safer::Schedule schedule,
                        uint8_t *out) {
  uint8_t chain[safer::kBlockSize] = {};
  uint32_t written = 0;
  for (uint32_t pos = 0; pos < n; pos += safer::kBlockSize) {
    uint8_t block[safer::kBlockSize] = {};
    const uint32_t take = n - pos < 8 ? n - pos : 8;
    std::memcpy(block, in + pos, take);
    xor_block(block, chain);
    safer::encrypt_block(block, schedule);
    std::memcpy(chain, block, sizeof block);
    std::memcpy(out + written, block, sizeof block);
    written += safer::kBlockSize;
  }
  uint64_t bits = static_cast<uint64_t>(n) * 8;
  uint8_t block[safer::kBlockSize];
  for (int j = 0; j < safer::kBlockSize; ++j, bits >>= 8)
    block[j] = static_cast<uint8_t>(bits & 0xFF);
  xor_block(block, chain);
  safer::encrypt_block(block, schedule);
  std::memcpy(out + written, block, sizeof block);
  return written + safer::kBlockSize;
}

// Decrypts the length block (the last of the n bytes) and checks it.
// Returns false when the ciphertext is malformed; `*length` is the
// plaintext length otherwise.
bool read_length(const uint8_t *in, uint32_t n, const safer::Schedule schedule, uint32_t *length) {
  if (n == 0 || n % safer::kBlockSize != 0) return false;
  uint8_t length_block[safer::kBlockSize];
  std::memcpy(length_block, in + n - safer::kBlockSize, sizeof length_block);
  safer::decrypt_block(length_block, schedule);
  if (n > safer::kBlockSize) xor_block(length_block, in + n - 2 * safer::kBlockSize);
  if ((length_block[0] & 7) != 0) return false;
  // Bytes 7 down to 1 form bits 8 and up of the bit count; the count must
  // stay below 2^35, so that number is at most 0x7FFFFFF.
  uint64_t high = 0;
  for (int j = 7; j >= 1; --j) high = (high << 8) | length_block[j];
  if (high > 0x7FFFFFFu) return false;
  const auto bytes = static_cast<uint32_t>(((high << 8) | length_block[0]) >> 3);
  if (n == safer::kBlockSize) {
    if (bytes != 0) return false;
  } else if (!(n - 16 < bytes && bytes <= n - 8)) {
    return false;
  }
  *length = bytes;
  return true;
}

// Decrypts the first `length` plaintext bytes into `plain`, which does not
// overlap `in`; each block is chained to the ciphertext block before it
// (the zero vector for the first). Runs of 16 whole blocks go through
// the wide decryption.
void decrypt_buffer(const uint8_t *in, uint32_t length, const safer::Schedule schedule,
                    uint8_t *plain) {
  constexpr uint32_t kWide = safer::kWideBlocks * safer::kBlockSize;
  uint32_t pos = 0;
  for (; length - pos >= kWide; pos += kWide) {
    safer::decrypt_wide(in + pos, plain + pos, schedule);
    for (uint32_t b = pos == 0 ? safer::kBlockSize : 0; b < kWide; b += safer::kBlockSize)
      xor_block(plain + pos + b, in + pos + b - safer::kBlockSize);
  }
  for (; pos < length; pos += safer::kBlockSize) {
    uint8_t block[safer::kBlockSize];
    std::memcpy(block, in + pos, sizeof block);
    safer::decrypt_block(block, schedule);
    if (pos != 0) xor_block(block, in + pos - safer::kBlockSize);
    const uint32_t take = length - pos < 8 ? length - pos : 8;
    std::memcpy(plain + pos, block, take);
  }
}

// True when the `a_bytes` bytes at `a` and the `b_bytes` bytes at `b`
// share none.
bool apart(const void *a, size_t a_bytes, const void *b, size_t b_bytes) {
  const auto x = reinterpret_cast<uintptr_t>(a), y = reinterpret_cast<uintptr_t>(b);
  return x + a_bytes <= y || y + b_bytes <= x;
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOSaferCrypt(int32_t mode, const uint8_t *input, uint32_t input_length,
                                   uint8_t *output, uint32_t *output_length, const char *key_text) {
  if (input_length >= kMaxInput) return 0;
  if ((input == nullptr && input_length != 0) || output == nullptr || output_length == nullptr ||
      key_text == nullptr) {
    return 0;
  }
  uint8_t number[16];
  const int key_chars = read_key_text(key_text, number);
  if (key_chars < 0) return 0;

  const ModeInfo info = mode_info(mode);
  const bool long_key = key_chars >= 9;
  const uint8_t *key_a = number;
  const uint8_t *key_b = long_key ? number + 8 : number;
  safer::Schedule schedule;
  safer::expand_key(key_a, key_b, long_key ? 10 : info.short_key_rounds, info.strengthened,
                    schedule);

  // Blocks are written straight to `output` unless it overlaps `input`;
  // then they go through a work area (decryption reads each ciphertext
  // block again after the one before has been written).
  uint32_t result_length = 0;
  if (info.decrypt) {
    if (!read_length(input, input_length, schedule, &result_length)) return 0;
    if (apart(input, input_length, output, result_length)) {
      decrypt_buffer(input, result_length, schedule, output);
    } else {
      uint8_t work[kMaxOutput];
      decrypt_buffer(input, result_length, schedule, work);
      if (result_length != 0) std::memcpy(output, work, result_length);
    }
  } else {
    const uint32_t sealed_length = (input_length + 7) / 8 * 8 + safer::kBlockSize;
    if (apart(input, input_length, output, sealed_length)) {
      result_length = encrypt_buffer(input, input_length, schedule, output);
    } else {
      uint8_t work[kMaxOutput];
      result_length = encrypt_buffer(input, input_length, schedule, work);
      std::memcpy(output, work, result_length);
    }
  }
  *output_length = result_length;
  return 1;
}

}  // extern "C"
