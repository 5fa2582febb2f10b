// SAFER K and SK block cipher on single 8-byte blocks: tables, key schedule,
// block encryption and decryption. Internal to the library; the buffer
// functions build CBC and the ciphertext format on top of it.
#ifndef KORUTL_CRYPT_SAFER_BLOCK_H
#define KORUTL_CRYPT_SAFER_BLOCK_H

#include <array>
#include <cstdint>
#include <cstring>

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
#if defined(__GNUC__)
  // Keeps the compiler from rewriting q - p as 2q - p, which needs copies
  // of both bytes and in the decryption loop costs many instructions.
  __asm__("" : "+r"(p));
#endif
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

namespace detail {

// One decryption round on the state bytes x0..x7 with the round's
// subkeys k (XOR/add) and k + 8 (exponent/logarithm). The permutation is
// undone by naming, not by moving bytes: afterwards byte i of the new
// state is in the variable passed in place i of (x0 x2 x4 x6 x1 x3 x5 x7),
// so three rounds bring every byte back to its variable.
inline void decrypt_round(uint8_t &x0, uint8_t &x1, uint8_t &x2, uint8_t &x3, uint8_t &x4,
                          uint8_t &x5, uint8_t &x6, uint8_t &x7, const uint8_t *k) {
  const uint8_t *l = k + kBlockSize;
  // Old x1 x2 x4 x3 x6 x5 are the new x4 x1 x2 x5 x3 x6.
  uint8_t &y0 = x0, &y1 = x2, &y2 = x4, &y3 = x6, &y4 = x1, &y5 = x3, &y6 = x5, &y7 = x7;
  ipht(y0, y4);
  ipht(y1, y5);
  ipht(y2, y6);
  ipht(y3, y7);
  ipht(y0, y2);
  ipht(y4, y6);
  ipht(y1, y3);
  ipht(y5, y7);
  ipht(y0, y1);
  ipht(y2, y3);
  ipht(y4, y5);
  ipht(y6, y7);
  y0 = LOG[sub(y0, l[0])] ^ k[0];
  y1 = sub(EXP[y1 ^ l[1]], k[1]);
  y2 = sub(EXP[y2 ^ l[2]], k[2]);
  y3 = LOG[sub(y3, l[3])] ^ k[3];
  y4 = LOG[sub(y4, l[4])] ^ k[4];
  y5 = sub(EXP[y5 ^ l[5]], k[5]);
  y6 = sub(EXP[y6 ^ l[6]], k[6]);
  y7 = LOG[sub(y7, l[7])] ^ k[7];
}

}  // namespace detail

inline void decrypt_block(uint8_t block[kBlockSize], const Schedule schedule) {
  const int rounds = detail::schedule_rounds(schedule);
  const uint8_t *k = schedule + 1 + kBlockSize * 2 * rounds;
  uint8_t a = block[0] ^ k[0], b = detail::sub(block[1], k[1]), c = detail::sub(block[2], k[2]),
          d = block[3] ^ k[3];
  uint8_t e = block[4] ^ k[4], f = detail::sub(block[5], k[5]), g = detail::sub(block[6], k[6]),
          h = block[7] ^ k[7];
  constexpr int kStride = 2 * kBlockSize;
  int i = rounds;
  for (; i >= 3; i -= 3) {
    k -= 3 * kStride;
    detail::decrypt_round(a, b, c, d, e, f, g, h, k + 2 * kStride);
    detail::decrypt_round(a, c, e, g, b, d, f, h, k + kStride);
    detail::decrypt_round(a, e, b, f, c, g, d, h, k);
  }
  // One or two rounds left; the state then lies in the variables in the
  // order those rounds leave it.
  uint8_t out[kBlockSize] = {a, b, c, d, e, f, g, h};
  if (i >= 1) {
    detail::decrypt_round(a, b, c, d, e, f, g, h, k - kStride);
    const uint8_t once[kBlockSize] = {a, c, e, g, b, d, f, h};
    std::memcpy(out, once, sizeof out);
  }
  if (i == 2) {
    detail::decrypt_round(a, c, e, g, b, d, f, h, k - 2 * kStride);
    const uint8_t twice[kBlockSize] = {a, e, b, f, c, g, d, h};
    std::memcpy(out, twice, sizeof out);
  }
  std::memcpy(block, out, kBlockSize);
}

}  // namespace korutl::safer

#endif
