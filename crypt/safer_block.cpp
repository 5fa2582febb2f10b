// SAFER key schedule. The exponent and logarithm tables are compile-time
// constants (crypt/safer_block.h): every call sees the same values without
// building them, and nothing is shared that could change.
#include <cstring>

#include "crypt/safer_block.h"

namespace korutl::safer {

namespace {

using detail::EXP;
using detail::rotl;

constexpr int kKeyBytes = kBlockSize + 1;  // the key bytes and their parity byte

// The bias added to the subkey bytes of round i (1 to 13): EXP[EXP[18i +
// j + 1]] for the first subkey's bytes j, EXP[EXP[18i + j + 10]] for the
// second's.
struct Biases {
  uint8_t round[kMaxRounds + 1][2 * kBlockSize]{};
};

constexpr Biases make_biases() {
  Biases b;
  for (int i = 1; i <= kMaxRounds; ++i) {
    for (int j = 0; j < kBlockSize; ++j) {
      b.round[i][j] = EXP[EXP[(18 * i + j + 1) & 0xFF]];
      b.round[i][kBlockSize + j] = EXP[EXP[(18 * i + j + 10) & 0xFF]];
    }
  }
  return b;
}

constexpr Biases kBiases = make_biases();

// Eight byte-wise sums modulo 256 at once, without carries between bytes.
inline void add_bytes(uint8_t *out, const uint8_t *a, const uint8_t *b) {
  constexpr uint64_t kHigh = 0x8080808080808080ull;
  uint64_t x, y;
  std::memcpy(&x, a, sizeof x);
  std::memcpy(&y, b, sizeof y);
  const uint64_t sum = ((x & ~kHigh) + (y & ~kHigh)) ^ ((x ^ y) & kHigh);
  std::memcpy(out, &sum, sizeof sum);
}

// Every round turns each key byte left by 6 bits, so after round i a byte
// is its start value turned by 6i mod 8 bits: one of four turns. `turned`
// holds the nine bytes under each turn, twice over, so the nine-byte
// rotation of the strengthened schedule is a window into it.
struct TurnedKey {
  uint8_t by[4][2 * kKeyBytes];
};

void turn_key(const uint8_t key[kKeyBytes], TurnedKey &out) {
  for (int r = 0; r < 4; ++r) {
    for (int j = 0; j < kKeyBytes; ++j) {
      out.by[r][j] = out.by[r][kKeyBytes + j] = r == 0 ? key[j] : rotl(key[j], 2 * r);
    }
  }
}

}  // namespace

void expand_key(const uint8_t key_a[kBlockSize], const uint8_t key_b[kBlockSize], int rounds,
                bool strengthened, Schedule schedule) {
  if (rounds > kMaxRounds) rounds = kMaxRounds;
  if (rounds < 0) rounds = 0;
  uint8_t ka[kKeyBytes];
  uint8_t kb[kKeyBytes];
  ka[kBlockSize] = kb[kBlockSize] = 0;
  for (int j = 0; j < kBlockSize; ++j) {
    ka[j] = rotl(key_a[j], 5);
    kb[j] = key_b[j];
    ka[kBlockSize] ^= ka[j];
    kb[kBlockSize] ^= kb[j];
  }
  TurnedKey turned_a, turned_b;
  turn_key(ka, turned_a);
  turn_key(kb, turned_b);
  schedule[0] = static_cast<uint8_t>(rounds);
  std::memcpy(schedule + 1, kb, kBlockSize);
  uint8_t *out = schedule + 1 + kBlockSize;
  for (int i = 1; i <= rounds; ++i, out += 2 * kBlockSize) {
    const int turn = (6 * i % 8) / 2;
    // The strengthened schedule starts round i at byte 2i - 1 of Ka and
    // byte 2i of Kb (of nine, wrapping); the plain one at byte 0 of both.
    const int from_a = strengthened ? (2 * i - 1) % kKeyBytes : 0;
    const int from_b = strengthened ? 2 * i % kKeyBytes : 0;
    add_bytes(out, turned_a.by[turn] + from_a, kBiases.round[i]);
    add_bytes(out + kBlockSize, turned_b.by[turn] + from_b, kBiases.round[i] + kBlockSize);
  }
}

}  // namespace korutl::safer
