// SAFER decryption of 16 blocks side by side, for CBC decryption, whose
// blocks do not depend on each other. Byte j of all 16 blocks sits in one
// SSE2 vector, so every XOR, addition and transform step of a round is one
// instruction for all 16 blocks; only the exponent and logarithm lookups
// go byte by byte. The vector form is built for x86-64 only (it moves
// 64-bit words between vector and general registers); elsewhere the 16
// blocks are decrypted one after the other.
#ifndef KORUTL_CRYPT_SAFER_WIDE_H
#define KORUTL_CRYPT_SAFER_WIDE_H

#include <array>
#include <cstdint>

#include "crypt/safer_block.h"

#if defined(__SSE2__) && defined(__x86_64__)
#define KORUTL_SAFER_WIDE 1
#include <emmintrin.h>
#endif

namespace korutl::safer {

inline constexpr int kWideBlocks = 16;

#if defined(KORUTL_SAFER_WIDE)

namespace detail {

inline __m128i spread(uint8_t byte) { return _mm_set1_epi8(static_cast<char>(byte)); }

inline void ipht_wide(__m128i &p, __m128i &q) {
  p = _mm_sub_epi8(p, q);
  q = _mm_sub_epi8(q, p);
}

// Replaces every byte of `lane` with its entry in `table`. The bytes
// travel through two 64-bit registers: through memory, the vector load
// after 16 byte stores would wait for all of them to reach the cache.
inline __m128i look_up(__m128i lane, const std::array<uint8_t, 256> &table) {
  const auto lo = static_cast<uint64_t>(_mm_cvtsi128_si64(lane));
  const auto hi = static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(lane, lane)));
  uint64_t new_lo = 0, new_hi = 0;
  for (int i = 0; i < 64; i += 8) {
    new_lo |= uint64_t{table[(lo >> i) & 0xFF]} << i;
    new_hi |= uint64_t{table[(hi >> i) & 0xFF]} << i;
  }
  return _mm_unpacklo_epi64(_mm_cvtsi64_si128(static_cast<int64_t>(new_lo)),
                            _mm_cvtsi64_si128(static_cast<int64_t>(new_hi)));
}

}  // namespace detail

// Decrypts the 16 blocks in[0..128) into out[0..128), each on its own
// (the CBC chaining is the caller's). `in` and `out` may be the same.
inline void decrypt_wide(const uint8_t *in, uint8_t *out, const Schedule schedule) {
  using detail::ipht_wide;
  using detail::look_up;
  using detail::spread;
  alignas(16) uint8_t lanes[kBlockSize][kWideBlocks];
  for (int b = 0; b < kWideBlocks; ++b) {
    for (int j = 0; j < kBlockSize; ++j) lanes[j][b] = in[kBlockSize * b + j];
  }
  const int rounds = detail::schedule_rounds(schedule);
  const uint8_t *k = schedule + 1 + kBlockSize * 2 * rounds;
  __m128i x[kBlockSize];
  for (int j = 0; j < kBlockSize; ++j) {
    const __m128i v = _mm_load_si128(reinterpret_cast<const __m128i *>(lanes[j]));
    const bool xored = j == 0 || j == 3 || j == 4 || j == 7;
    x[j] = xored ? _mm_xor_si128(v, spread(k[j])) : _mm_sub_epi8(v, spread(k[j]));
  }
  for (int i = rounds; i >= 1; --i) {
    k -= 2 * kBlockSize;
    const uint8_t *l = k + kBlockSize;
    // Undo the permutation: old x1 x2 x4 x3 x6 x5 become x4 x1 x2 x5 x3 x6.
    __m128i y0 = x[0], y1 = x[2], y2 = x[4], y3 = x[6], y4 = x[1], y5 = x[3], y6 = x[5], y7 = x[7];
    ipht_wide(y0, y4);
    ipht_wide(y1, y5);
    ipht_wide(y2, y6);
    ipht_wide(y3, y7);
    ipht_wide(y0, y2);
    ipht_wide(y4, y6);
    ipht_wide(y1, y3);
    ipht_wide(y5, y7);
    ipht_wide(y0, y1);
    ipht_wide(y2, y3);
    ipht_wide(y4, y5);
    ipht_wide(y6, y7);
    x[0] = _mm_xor_si128(look_up(_mm_sub_epi8(y0, spread(l[0])), detail::LOG), spread(k[0]));
    x[1] = _mm_sub_epi8(look_up(_mm_xor_si128(y1, spread(l[1])), detail::EXP), spread(k[1]));
    x[2] = _mm_sub_epi8(look_up(_mm_xor_si128(y2, spread(l[2])), detail::EXP), spread(k[2]));
    x[3] = _mm_xor_si128(look_up(_mm_sub_epi8(y3, spread(l[3])), detail::LOG), spread(k[3]));
    x[4] = _mm_xor_si128(look_up(_mm_sub_epi8(y4, spread(l[4])), detail::LOG), spread(k[4]));
    x[5] = _mm_sub_epi8(look_up(_mm_xor_si128(y5, spread(l[5])), detail::EXP), spread(k[5]));
    x[6] = _mm_sub_epi8(look_up(_mm_xor_si128(y6, spread(l[6])), detail::EXP), spread(k[6]));
    x[7] = _mm_xor_si128(look_up(_mm_sub_epi8(y7, spread(l[7])), detail::LOG), spread(k[7]));
  }
  for (int j = 0; j < kBlockSize; ++j) {
    _mm_store_si128(reinterpret_cast<__m128i *>(lanes[j]), x[j]);
  }
  for (int b = 0; b < kWideBlocks; ++b) {
    for (int j = 0; j < kBlockSize; ++j) out[kBlockSize * b + j] = lanes[j][b];
  }
}

#else

inline void decrypt_wide(const uint8_t *in, uint8_t *out, const Schedule schedule) {
  for (int b = 0; b < kWideBlocks; ++b) {
    uint8_t block[kBlockSize];
    for (int j = 0; j < kBlockSize; ++j) block[j] = in[kBlockSize * b + j];
    decrypt_block(block, schedule);
    for (int j = 0; j < kBlockSize; ++j) out[kBlockSize * b + j] = block[j];
  }
}

#endif

}  // namespace korutl::safer

#endif
