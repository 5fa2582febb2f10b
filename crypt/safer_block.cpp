// SAFER K-64/K-128 and SK-64/SK-128. The exponent and logarithm tables are
// compile-time constants: every call sees the same values without building
// them, and nothing is shared that could change.
#include "crypt/safer_block.h"

#include <array>

namespace korutl::safer {

namespace {

struct Tables {
  std::array<uint8_t, 256> exp{};
  std::array<uint8_t, 256> log{};
};

// EXP[i] = 45^i mod 257, where the one value 256 (i = 128) is stored as 0;
// LOG is its inverse, so LOG[0] = 128.
constexpr Tables make_tables() {
  Tables t;
  unsigned v = 1;
  for (unsigned i = 0; i < 256; ++i) {
    t.exp[i] = static_cast<uint8_t>(v & 0xFF);
    t.log[v & 0xFF] = static_cast<uint8_t>(i);
    v = (v * 45) % 257;
  }
  return t;
}

constexpr Tables kTables = make_tables();
constexpr const auto &EXP = kTables.exp;
constexpr const auto &LOG = kTables.log;

constexpr uint8_t rotl(uint8_t x, int n) {
  return static_cast<uint8_t>((x << n) | (x >> (8 - n)));
}

inline uint8_t add(uint8_t a, uint8_t b) { return static_cast<uint8_t>(a + b); }
inline uint8_t sub(uint8_t a, uint8_t b) { return static_cast<uint8_t>(a - b); }

inline void pht(uint8_t &p, uint8_t &q) {
  q = add(q, p);
  p = add(p, q);
}

inline void ipht(uint8_t &p, uint8_t &q) {
  p = sub(p, q);
  q = sub(q, p);
}

int schedule_rounds(const Schedule schedule) {
  return schedule[0] > kMaxRounds ? kMaxRounds : schedule[0];
}

}  // namespace

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

// The block is worked on in locals: through a byte pointer every store
// could alias the schedule and the tables, forcing reloads.
void encrypt_block(uint8_t block[kBlockSize], const Schedule schedule) {
  const int rounds = schedule_rounds(schedule);
  const uint8_t *k = schedule + 1;
  uint8_t x0 = block[0], x1 = block[1], x2 = block[2], x3 = block[3];
  uint8_t x4 = block[4], x5 = block[5], x6 = block[6], x7 = block[7];
  for (int i = 0; i < rounds; ++i, k += 2 * kBlockSize) {
    const uint8_t *l = k + kBlockSize;
    x0 ^= k[0]; x1 = add(x1, k[1]); x2 = add(x2, k[2]); x3 ^= k[3];
    x4 ^= k[4]; x5 = add(x5, k[5]); x6 = add(x6, k[6]); x7 ^= k[7];
    x0 = add(EXP[x0], l[0]); x1 = LOG[x1] ^ l[1];
    x2 = LOG[x2] ^ l[2];     x3 = add(EXP[x3], l[3]);
    x4 = add(EXP[x4], l[4]); x5 = LOG[x5] ^ l[5];
    x6 = LOG[x6] ^ l[6];     x7 = add(EXP[x7], l[7]);
    pht(x0, x1); pht(x2, x3); pht(x4, x5); pht(x6, x7);
    pht(x0, x2); pht(x4, x6); pht(x1, x3); pht(x5, x7);
    pht(x0, x4); pht(x1, x5); pht(x2, x6); pht(x3, x7);
    // New x1..x6 are the old x4, x1, x5, x2, x6, x3.
    const uint8_t t = x1;
    x1 = x4; x4 = x2; x2 = t;
    const uint8_t u = x3;
    x3 = x5; x5 = x6; x6 = u;
  }
  block[0] = x0 ^ k[0]; block[1] = add(x1, k[1]); block[2] = add(x2, k[2]); block[3] = x3 ^ k[3];
  block[4] = x4 ^ k[4]; block[5] = add(x5, k[5]); block[6] = add(x6, k[6]); block[7] = x7 ^ k[7];
}

void decrypt_block(uint8_t block[kBlockSize], const Schedule schedule) {
  const int rounds = schedule_rounds(schedule);
  const uint8_t *k = schedule + 1 + kBlockSize * 2 * rounds;
  uint8_t x0 = block[0] ^ k[0], x1 = sub(block[1], k[1]), x2 = sub(block[2], k[2]), x3 = block[3] ^ k[3];
  uint8_t x4 = block[4] ^ k[4], x5 = sub(block[5], k[5]), x6 = sub(block[6], k[6]), x7 = block[7] ^ k[7];
  for (int i = rounds; i >= 1; --i) {
    k -= 2 * kBlockSize;
    const uint8_t *l = k + kBlockSize;
    // Undo the permutation: old x1 x2 x4 x3 x6 x5 become x4 x1 x2 x5 x3 x6.
    const uint8_t o1 = x1, o2 = x2, o3 = x3, o4 = x4, o5 = x5, o6 = x6;
    x4 = o1; x1 = o2; x2 = o4; x5 = o3; x3 = o6; x6 = o5;
    ipht(x0, x4); ipht(x1, x5); ipht(x2, x6); ipht(x3, x7);
    ipht(x0, x2); ipht(x4, x6); ipht(x1, x3); ipht(x5, x7);
    ipht(x0, x1); ipht(x2, x3); ipht(x4, x5); ipht(x6, x7);
    x0 = LOG[sub(x0, l[0])]; x1 = EXP[x1 ^ l[1]];
    x2 = EXP[x2 ^ l[2]];     x3 = LOG[sub(x3, l[3])];
    x4 = LOG[sub(x4, l[4])]; x5 = EXP[x5 ^ l[5]];
    x6 = EXP[x6 ^ l[6]];     x7 = LOG[sub(x7, l[7])];
    x0 ^= k[0]; x1 = sub(x1, k[1]); x2 = sub(x2, k[2]); x3 ^= k[3];
    x4 ^= k[4]; x5 = sub(x5, k[5]); x6 = sub(x6, k[6]); x7 ^= k[7];
  }
  block[0] = x0; block[1] = x1; block[2] = x2; block[3] = x3;
  block[4] = x4; block[5] = x5; block[6] = x6; block[7] = x7;
}

}  // namespace korutl::safer
