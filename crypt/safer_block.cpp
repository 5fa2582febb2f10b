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

void encrypt_block(uint8_t x[kBlockSize], const Schedule schedule) {
  const int rounds = schedule_rounds(schedule);
  const uint8_t *k = schedule + 1;
  for (int i = 0; i < rounds; ++i, k += 2 * kBlockSize) {
    const uint8_t *l = k + kBlockSize;
    x[0] ^= k[0]; x[1] = add(x[1], k[1]); x[2] = add(x[2], k[2]); x[3] ^= k[3];
    x[4] ^= k[4]; x[5] = add(x[5], k[5]); x[6] = add(x[6], k[6]); x[7] ^= k[7];
    x[0] = add(EXP[x[0]], l[0]); x[1] = LOG[x[1]] ^ l[1];
    x[2] = LOG[x[2]] ^ l[2];     x[3] = add(EXP[x[3]], l[3]);
    x[4] = add(EXP[x[4]], l[4]); x[5] = LOG[x[5]] ^ l[5];
    x[6] = LOG[x[6]] ^ l[6];     x[7] = add(EXP[x[7]], l[7]);
    pht(x[0], x[1]); pht(x[2], x[3]); pht(x[4], x[5]); pht(x[6], x[7]);
    pht(x[0], x[2]); pht(x[4], x[6]); pht(x[1], x[3]); pht(x[5], x[7]);
    pht(x[0], x[4]); pht(x[1], x[5]); pht(x[2], x[6]); pht(x[3], x[7]);
    const uint8_t t = x[1];
    x[1] = x[4]; x[4] = x[2]; x[2] = t;
    const uint8_t u = x[3];
    x[3] = x[5]; x[5] = x[6]; x[6] = u;
  }
  x[0] ^= k[0]; x[1] = add(x[1], k[1]); x[2] = add(x[2], k[2]); x[3] ^= k[3];
  x[4] ^= k[4]; x[5] = add(x[5], k[5]); x[6] = add(x[6], k[6]); x[7] ^= k[7];
}

void decrypt_block(uint8_t x[kBlockSize], const Schedule schedule) {
  const int rounds = schedule_rounds(schedule);
  const uint8_t *k = schedule + 1 + kBlockSize * 2 * rounds;
  x[0] ^= k[0]; x[1] = sub(x[1], k[1]); x[2] = sub(x[2], k[2]); x[3] ^= k[3];
  x[4] ^= k[4]; x[5] = sub(x[5], k[5]); x[6] = sub(x[6], k[6]); x[7] ^= k[7];
  for (int i = rounds; i >= 1; --i) {
    k -= 2 * kBlockSize;
    const uint8_t *l = k + kBlockSize;
    // Undo the permutation: old x1 x2 x4 x3 x6 x5 become x4 x1 x2 x5 x3 x6.
    const uint8_t o1 = x[1], o2 = x[2], o3 = x[3], o4 = x[4], o5 = x[5], o6 = x[6];
    x[4] = o1; x[1] = o2; x[2] = o4; x[5] = o3; x[3] = o6; x[6] = o5;
    ipht(x[0], x[4]); ipht(x[1], x[5]); ipht(x[2], x[6]); ipht(x[3], x[7]);
    ipht(x[0], x[2]); ipht(x[4], x[6]); ipht(x[1], x[3]); ipht(x[5], x[7]);
    ipht(x[0], x[1]); ipht(x[2], x[3]); ipht(x[4], x[5]); ipht(x[6], x[7]);
    x[0] = LOG[sub(x[0], l[0])]; x[1] = EXP[x[1] ^ l[1]];
    x[2] = EXP[x[2] ^ l[2]];     x[3] = LOG[sub(x[3], l[3])];
    x[4] = LOG[sub(x[4], l[4])]; x[5] = EXP[x[5] ^ l[5]];
    x[6] = EXP[x[6] ^ l[6]];     x[7] = LOG[sub(x[7], l[7])];
    x[0] ^= k[0]; x[1] = sub(x[1], k[1]); x[2] = sub(x[2], k[2]); x[3] ^= k[3];
    x[4] ^= k[4]; x[5] = sub(x[5], k[5]); x[6] = sub(x[6], k[6]); x[7] ^= k[7];
  }
}

}  // namespace korutl::safer
