// Blocks of UTF-8 for the bulk stages of the conversions: the class of
// every byte of a window as one bit a byte, and 16 bytes stored widened.
// With SSE2 (every x86-64, and x86 built for it) the work is done on
// vectors; other targets get the same results byte by byte.
#ifndef KORUTL_UNICODE_UTF8_BLOCK_H
#define KORUTL_UNICODE_UTF8_BLOCK_H

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace korutl::unicode {

inline constexpr int kUtf8Block = 16;   // bytes widened at once
inline constexpr int kUtf8Window = 48;  // bytes classified at once

// Bit i of each mask describes byte s[i]. Read as the first byte of a
// sequence, its trailing byte count k is k_low + 2 * k_high for 0 to 3;
// `longer` marks the first bytes of the five- and six-byte forms.
struct Utf8Classes {
  uint64_t high;      // 0x80 and up: everything but ASCII
  uint64_t k_low;     // 110xxxxx and 11110xxx: k is 1 or 3
  uint64_t k_high;    // 1110xxxx and 11110xxx: k is 2 or 3
  uint64_t longer;    // 11111xxx
  uint64_t trailing;  // 10xxxxxx
};

// The classes of s[0..48).
inline Utf8Classes utf8_classes(const uint8_t *s) {
  uint64_t b7 = 0, b6 = 0, b5 = 0, b4 = 0, b3 = 0;  // bit n of every byte
#if defined(__SSE2__)
  for (int i = 0; i < kUtf8Window; i += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + i));
    // Shifting 16-bit lanes left by n brings bit 7 - n of each byte to
    // bit 7 of the same byte, where movemask reads it.
    const auto bits = [i](__m128i x) {
      return static_cast<uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(x))) << i;
    };
    b7 |= bits(v);
    b6 |= bits(_mm_add_epi8(v, v));
    b5 |= bits(_mm_slli_epi16(v, 2));
    b4 |= bits(_mm_slli_epi16(v, 3));
    b3 |= bits(_mm_slli_epi16(v, 4));
  }
#else
  for (int i = 0; i < kUtf8Window; ++i) {
    b7 |= static_cast<uint64_t>((s[i] >> 7) & 1u) << i;
    b6 |= static_cast<uint64_t>((s[i] >> 6) & 1u) << i;
    b5 |= static_cast<uint64_t>((s[i] >> 5) & 1u) << i;
    b4 |= static_cast<uint64_t>((s[i] >> 4) & 1u) << i;
    b3 |= static_cast<uint64_t>((s[i] >> 3) & 1u) << i;
  }
#endif
  const uint64_t lead = b7 & b6, four_up = lead & b5 & b4;
  return {b7, (lead & ~b5) | (four_up & ~b3), lead & b5 & ~(b4 & b3), four_up & b3, b7 & ~b6};
}

// Stores s[0..16) as 16 units of 16 or 32 bits at t.
inline void widen_block(const uint8_t *s, uint16_t *t) {
#if defined(__SSE2__)
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s));
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t), _mm_unpacklo_epi8(v, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t + 8), _mm_unpackhi_epi8(v, zero));
#else
  for (int i = 0; i < kUtf8Block; ++i) t[i] = s[i];
#endif
}

inline void widen_block(const uint8_t *s, uint32_t *t) {
#if defined(__SSE2__)
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s));
  const __m128i zero = _mm_setzero_si128();
  const __m128i lo = _mm_unpacklo_epi8(v, zero), hi = _mm_unpackhi_epi8(v, zero);
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t), _mm_unpacklo_epi16(lo, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t + 4), _mm_unpackhi_epi16(lo, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t + 8), _mm_unpacklo_epi16(hi, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t + 12), _mm_unpackhi_epi16(hi, zero));
#else
  for (int i = 0; i < kUtf8Block; ++i) t[i] = s[i];
#endif
}

}  // namespace korutl::unicode

#endif
