// Blocks of UTF-16 for the bulk stage of the UTF-16 to UTF-8 conversion:
// whether sixteen units are ASCII, those units stored as bytes, and the
// UTF-8 forms of eight units at once. With SSE2 (every x86-64, and x86
// built for it) the work is done on vectors; other targets get the same
// results unit by unit.
#ifndef KORUTL_UNICODE_UTF16_BLOCK_H
#define KORUTL_UNICODE_UTF16_BLOCK_H

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace korutl::unicode {

inline constexpr int kAsciiRun = 16;  // units tested and stored at once as ASCII
inline constexpr int kFormsBlock = 8;

// True when s[0..16) are all below 0x80.
inline bool ascii_run(const uint16_t *s) {
#if defined(__SSE2__)
  const __m128i v = _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(s)),
                                 _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + 8)));
  const __m128i above = _mm_and_si128(v, _mm_set1_epi16(-0x80));
  return _mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) == 0xFFFF;
#else
  unsigned any = 0;
  for (int i = 0; i < kAsciiRun; ++i) any |= s[i];
  return any < 0x80;
#endif
}

// Stores s[0..16), all ASCII, as bytes at t.
inline void narrow_ascii_run(const uint16_t *s, uint8_t *t) {
#if defined(__SSE2__)
  const __m128i bytes = _mm_packus_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(s)),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + 8)));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(t), bytes);
#else
  for (int i = 0; i < kAsciiRun; ++i) t[i] = static_cast<uint8_t>(s[i]);
#endif
}

// The UTF-8 of eight units: `bytes[i]` holds the form of the character
// that starts at s[i] and `length[i]` how many of its bytes count. A high
// surrogate followed by a low one forms one four-byte character; the low
// half then has length 0. Other surrogates are three-byte characters.
// Reads s[0..9) (the ninth unit only to see whether the eighth starts a
// pair; if it does, that character is left out: length 0, and the result
// is 7). Returns the units the counted bytes stand for, 7 or 8.
struct Utf8Forms {
  uint8_t bytes[kFormsBlock][4];
  uint8_t length[kFormsBlock];
};

#if defined(__SSE2__)
inline int utf8_forms(const uint16_t *s, Utf8Forms &out) {
  const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s));
  const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i *>(s + 1));  // next units
  const __m128i zero = _mm_setzero_si128();
  const auto k = [](int x) { return _mm_set1_epi16(static_cast<int16_t>(x)); };
  const auto select = [](__m128i mask, __m128i yes, __m128i no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
  };
  const __m128i ascii = _mm_cmpeq_epi16(_mm_and_si128(v, k(0xFF80)), zero);
  const __m128i two = _mm_cmpeq_epi16(_mm_and_si128(v, k(0xF800)), zero);
  const __m128i pair = _mm_and_si128(_mm_cmpeq_epi16(_mm_and_si128(v, k(0xFC00)), k(0xD800)),
                                     _mm_cmpeq_epi16(_mm_and_si128(w, k(0xFC00)), k(0xDC00)));
  const __m128i low_half = _mm_slli_si128(pair, 2);  // unit i - 1 starts a pair

  // Each lane's form as two 16-bit halves: `first` holds bytes 0 and 1,
  // `last` bytes 2 and 3.
  const __m128i cont_lo = _mm_or_si128(k(0x80), _mm_and_si128(v, k(0x3F)));
  const __m128i cont_mid = _mm_or_si128(k(0x80), _mm_and_si128(_mm_srli_epi16(v, 6), k(0x3F)));
  const __m128i two_first =
      _mm_or_si128(_mm_or_si128(k(0xC0), _mm_srli_epi16(v, 6)), _mm_slli_epi16(cont_lo, 8));
  const __m128i three_first =
      _mm_or_si128(_mm_or_si128(k(0xE0), _mm_srli_epi16(v, 12)), _mm_slli_epi16(cont_mid, 8));
  // A pair's value minus 0x10000, shifted right by 10, plus 0x40: the
  // value's bits 10 and up.
  const __m128i top = _mm_add_epi16(_mm_and_si128(v, k(0x3FF)), k(0x40));
  const __m128i four_first = _mm_or_si128(
      _mm_or_si128(k(0xF0), _mm_srli_epi16(top, 8)),
      _mm_slli_epi16(_mm_or_si128(k(0x80), _mm_and_si128(_mm_srli_epi16(top, 2), k(0x3F))), 8));
  const __m128i four_last =
      _mm_or_si128(_mm_or_si128(_mm_or_si128(k(0x80), _mm_slli_epi16(_mm_and_si128(top, k(3)), 4)),
                                _mm_and_si128(_mm_srli_epi16(w, 6), k(0xF))),
                   _mm_slli_epi16(_mm_or_si128(k(0x80), _mm_and_si128(w, k(0x3F))), 8));
  const __m128i first =
      select(ascii, v, select(two, two_first, select(pair, four_first, three_first)));
  const __m128i last = select(pair, four_last, cont_lo);

  // 3, one more for a pair, one less below 0x800 and one less again for
  // ASCII (the masks are -1); none for the low half of a pair.
  const __m128i length = _mm_andnot_si128(
      low_half, _mm_add_epi16(_mm_add_epi16(_mm_sub_epi16(k(3), pair), two), ascii));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(out.bytes[0]), _mm_unpacklo_epi16(first, last));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(out.bytes[4]), _mm_unpackhi_epi16(first, last));
  _mm_storel_epi64(reinterpret_cast<__m128i *>(out.length), _mm_packus_epi16(length, length));
  if ((_mm_movemask_epi8(pair) & 0x8000) != 0) {
    out.length[kFormsBlock - 1] = 0;
    return kFormsBlock - 1;
  }
  return kFormsBlock;
}
#else
inline int utf8_forms(const uint16_t *s, Utf8Forms &out) {
  bool low_half = false;
  for (int i = 0; i < kFormsBlock; ++i) {
    uint32_t v = s[i];
    const uint32_t next = s[i + 1];
    const bool pair = !low_half && v >= 0xD800 && v <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF;
    if (pair) v = ((v - 0xD800) << 10) + (next - 0xDC00) + 0x10000;
    const int n = low_half ? 0 : 1 + (v >= 0x80) + (v >= 0x800) + (v >= 0x10000);
    uint8_t *b = out.bytes[i];
    if (n <= 1) {
      b[0] = static_cast<uint8_t>(v);
    } else {
      for (int j = n - 1; j > 0; --j, v >>= 6) b[j] = static_cast<uint8_t>(0x80 | (v & 0x3F));
      b[0] = static_cast<uint8_t>((0xF00u >> n) | v);
    }
    out.length[i] = static_cast<uint8_t>(n);
    low_half = pair;
  }
  if (out.length[kFormsBlock - 1] == 4) {
    out.length[kFormsBlock - 1] = 0;
    return kFormsBlock - 1;
  }
  return kFormsBlock;
}
#endif

}  // namespace korutl::unicode

#endif
