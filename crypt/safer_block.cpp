// SAFER key schedule. The exponent and logarithm tables are compile-time
// constants (crypt/safer_block.h): every call sees the same values without
// building them, and nothing is shared that could change.
#include "crypt/safer_block.h"

namespace korutl::safer {

using detail::add;
using detail::EXP;
using detail::rotl;

void expand_key(const uint8_t key_a[kBlockSize], const uint8_t key_b[kBlockSize], int rounds,
                bool strengthened, Schedule schedule) {
  if (rounds > kMaxRounds) rounds = kMaxRounds;
  if (rounds < 0) rounds = 0;
  uint8_t ka[kBlockSize + 1];
  uint8_t kb[kBlockSize + 1];
  ka[kBlockSize] = kb[kBlockSize] = 0;
  for (int j = 0; j < kBlockSize; ++j) {
    ka[j] = rotl(key_a[j], 5);
    kb[j] = key_b[j];
    ka[kBlockSize] ^= ka[j];
    kb[kBlockSize] ^= kb[j];
  }
  uint8_t *out = schedule;
  *out++ = static_cast<uint8_t>(rounds);
  for (int j = 0; j < kBlockSize; ++j) *out++ = kb[j];
  for (int i = 1; i <= rounds; ++i) {
    for (int j = 0; j <= kBlockSize; ++j) {
      ka[j] = rotl(ka[j], 6);
      kb[j] = rotl(kb[j], 6);
    }
    for (int j = 0; j < kBlockSize; ++j) {
      const uint8_t a = strengthened ? ka[(j + 2 * i - 1) % 9] : ka[j];
      *out++ = add(a, EXP[EXP[(18 * i + j + 1) & 0xFF]]);
    }
    for (int j = 0; j < kBlockSize; ++j) {
      const uint8_t b = strengthened ? kb[(j + 2 * i) % 9] : kb[j];
      *out++ = add(b, EXP[EXP[(18 * i + j + 10) & 0xFF]]);
    }
  }
}

}  // namespace korutl::safer
