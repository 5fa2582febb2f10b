// SAFER K and SK block cipher on single 8-byte blocks: tables, key schedule,
// block encryption and decryption. Internal to the library; the buffer
// functions build CBC and the ciphertext format on top of it.
#ifndef KORUTL_CRYPT_SAFER_BLOCK_H
#define KORUTL_CRYPT_SAFER_BLOCK_H

#include <array>
#include <cstdint>

namespace korutl::safer {

inline constexpr int kMaxRounds = 13;
inline constexpr int kBlockSize = 8;
// One count byte, then 2r + 1 subkeys of 8 bytes for at most 13 rounds.
inline constexpr int kScheduleSize = 1 + kBlockSize * (2 * kMaxRounds + 1);

using Block = uint8_t[kBlockSize];
using Schedule = uint8_t[kScheduleSize];

// Builds the schedule from key A (rotated into Ka) and key B (Kb, also the
// first subkey). More than 13 rounds are cut to 13.
void expand_key(const uint8_t key_a[kBlockSize], const uint8_t key_b[kBlockSize], int rounds,
                bool strengthened, Schedule schedule);

namespace detail {

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

inline constexpr Tables kTables = make_tables();
inline constexpr const auto &EXP = kTables.exp;
inline constexpr const auto &LOG = kTables.log;

constexpr uint8_t rotl(uint8_t x, int n) { return static_cast<uint8_t>((x << n) | (x >> (8 - n))); }

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

inline int schedule_rounds(const Schedule schedule) {
  return schedule[0] > kMaxRounds ? kMaxRounds : schedule[0];
}

}  // namespace detail

// Encrypt or decrypt one block in place with a schedule from expand_key.
// Inline, so that the buffer loops keep the block in registers.
// The block is worked on in locals: through a byte pointer every store
// could alias the schedule and the tables, forcing reloads.
inline void encrypt_block(uint8_t block[kBlockSize], const Schedule schedule) {
  const int rounds = detail::schedule_rounds(schedule);
  const uint8_t *k = schedule + 1;
  uint8_t x0 = block[0], x1 = block[1], x2 = block[2], x3 = block[3];
  uint8_t x4 = block[4], x5 = block[5], x6 = block[6], x7 = block[7];
  for (int i = 0; i < rounds; ++i, k += 2 * kBlockSize) {
    const uint8_t *l = k + kBlockSize;
    x0 ^= k[0];
    x1 = detail::add(x1, k[1]);
    x2 = detail::add(x2, k[2]);
    x3 ^= k[3];
    x4 ^= k[4];
    x5 = detail::add(x5, k[5]);
    x6 = detail::add(x6, k[6]);
    x7 ^= k[7];
    x0 = detail::add(detail::EXP[x0], l[0]);
    x1 = detail::LOG[x1] ^ l[1];
    x2 = detail::LOG[x2] ^ l[2];
    x3 = detail::add(detail::EXP[x3], l[3]);
    x4 = detail::add(detail::EXP[x4], l[4]);
    x5 = detail::LOG[x5] ^ l[5];
    x6 = detail::LOG[x6] ^ l[6];
    x7 = detail::add(detail::EXP[x7], l[7]);
    detail::pht(x0, x1);
    detail::pht(x2, x3);
    detail::pht(x4, x5);
    detail::pht(x6, x7);
    detail::pht(x0, x2);
    detail::pht(x4, x6);
    detail::pht(x1, x3);
    detail::pht(x5, x7);
    detail::pht(x0, x4);
    detail::pht(x1, x5);
    detail::pht(x2, x6);
    detail::pht(x3, x7);
    // New x1..x6 are the old x4, x1, x5, x2, x6, x3.
    const uint8_t t = x1;
    x1 = x4;
    x4 = x2;
    x2 = t;
    const uint8_t u = x3;
    x3 = x5;
    x5 = x6;
    x6 = u;
  }
  block[0] = x0 ^ k[0];
  block[1] = detail::add(x1, k[1]);
  block[2] = detail::add(x2, k[2]);
  block[3] = x3 ^ k[3];
  block[4] = x4 ^ k[4];
  block[5] = detail::add(x5, k[5]);
  block[6] = detail::add(x6, k[6]);
  block[7] = x7 ^ k[7];
}

inline void decrypt_block(uint8_t block[kBlockSize], const Schedule schedule) {
  const int rounds = detail::schedule_rounds(schedule);
  const uint8_t *k = schedule + 1 + kBlockSize * 2 * rounds;
  uint8_t x0 = block[0] ^ k[0], x1 = detail::sub(block[1], k[1]), x2 = detail::sub(block[2], k[2]),
          x3 = block[3] ^ k[3];
  uint8_t x4 = block[4] ^ k[4], x5 = detail::sub(block[5], k[5]), x6 = detail::sub(block[6], k[6]),
          x7 = block[7] ^ k[7];
  for (int i = rounds; i >= 1; --i) {
    k -= 2 * kBlockSize;
    const uint8_t *l = k + kBlockSize;
    // Undo the permutation: old x1 x2 x4 x3 x6 x5 become x4 x1 x2 x5 x3 x6.
    const uint8_t o1 = x1, o2 = x2, o3 = x3, o4 = x4, o5 = x5, o6 = x6;
    x4 = o1;
    x1 = o2;
    x2 = o4;
    x5 = o3;
    x3 = o6;
    x6 = o5;
    detail::ipht(x0, x4);
    detail::ipht(x1, x5);
    detail::ipht(x2, x6);
    detail::ipht(x3, x7);
    detail::ipht(x0, x2);
    detail::ipht(x4, x6);
    detail::ipht(x1, x3);
    detail::ipht(x5, x7);
    detail::ipht(x0, x1);
    detail::ipht(x2, x3);
    detail::ipht(x4, x5);
    detail::ipht(x6, x7);
    x0 = detail::LOG[detail::sub(x0, l[0])];
    x1 = detail::EXP[x1 ^ l[1]];
    x2 = detail::EXP[x2 ^ l[2]];
    x3 = detail::LOG[detail::sub(x3, l[3])];
    x4 = detail::LOG[detail::sub(x4, l[4])];
    x5 = detail::EXP[x5 ^ l[5]];
    x6 = detail::EXP[x6 ^ l[6]];
    x7 = detail::LOG[detail::sub(x7, l[7])];
    x0 ^= k[0];
    x1 = detail::sub(x1, k[1]);
    x2 = detail::sub(x2, k[2]);
    x3 ^= k[3];
    x4 ^= k[4];
    x5 = detail::sub(x5, k[5]);
    x6 = detail::sub(x6, k[6]);
    x7 ^= k[7];
  }
  block[0] = x0;
  block[1] = x1;
  block[2] = x2;
  block[3] = x3;
  block[4] = x4;
  block[5] = x5;
  block[6] = x6;
  block[7] = x7;
}

}  // namespace korutl::safer

#endif
