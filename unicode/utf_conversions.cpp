// Conversions between UCS-4, UTF-16 and the six-byte UTF-8 form. All six
// share one frame (read a character, check room, write it) built from a
// reader of the source form and a writer of the target form. They are
// deliberately lenient: nothing but a UTF-8 sequence cut by the source end
// stops them, so callers can stream text through them in chunks.
#include <cstring>

#include "korutl.h"

namespace {

constexpr uint32_t kReplacement = 0xFFFD;
constexpr uint32_t kMaxBmp = 0xFFFF;
constexpr uint32_t kMaxUtf16 = 0x10FFFF;
constexpr uint32_t kMaxUcs4 = 0x7FFFFFFF;
constexpr uint32_t kHighFirst = 0xD800, kHighLast = 0xDBFF;
constexpr uint32_t kLowFirst = 0xDC00, kLowLast = 0xDFFF;

constexpr bool is_high(uint32_t v) { return v >= kHighFirst && v <= kHighLast; }
constexpr bool is_low(uint32_t v) { return v >= kLowFirst && v <= kLowLast; }
constexpr uint32_t join(uint32_t high, uint32_t low) {
  return (high - kHighFirst) * 0x400 + (low - kLowFirst) + 0x10000;
}

// Trailing bytes of a UTF-8 sequence by its first byte. Bytes 0x80 to 0xBF
// stand alone: a stray continuation byte is a value of its own.
constexpr int trailing_bytes_of(unsigned first) {
  if (first < 0xC0) return 0;
  if (first < 0xE0) return 1;
  if (first < 0xF0) return 2;
  if (first < 0xF8) return 3;
  if (first < 0xFC) return 4;
  return 5;
}

struct TrailingTable {
  uint8_t count[256];
  constexpr TrailingTable() : count{} {
    for (unsigned b = 0; b < 256; ++b) count[b] = static_cast<uint8_t>(trailing_bytes_of(b));
  }
};
constexpr TrailingTable kTrailing;

constexpr int trailing_bytes(uint8_t first) { return kTrailing.count[first]; }

// What the marker bits of each sequence length add up to once the bytes
// have been summed with shifts; subtracting it leaves the value.
constexpr uint32_t kDecodeOffset[6] = {0x00000000u, 0x00003080u, 0x000E2080u,
                                       0x03C82080u, 0xFA082080u, 0x82082080u};
constexpr uint8_t kFirstByteMark[7] = {0x00, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};

enum class Read { ok, incomplete };

// Readers: take one character at `*s` (s < end), set `value`, advance `*s`.
struct Ucs4Plain {
  using Unit = uint32_t;
  static Read read(const Unit *&s, const Unit *, uint32_t &value) {
    value = *s++;
    return Read::ok;
  }
};

// UTF-16 and the UCS-4 source of the UTF-8 encoder join surrogate pairs.
template <typename U>
struct PairJoining {
  using Unit = U;
  static Read read(const Unit *&s, const Unit *end, uint32_t &value) {
    value = *s++;
    if (is_high(value) && s < end && is_low(*s)) value = join(value, *s++);
    return Read::ok;
  }
};

struct Utf8Reader {
  using Unit = uint8_t;
  static Read read(const Unit *&s, const Unit *end, uint32_t &value) {
    const int k = trailing_bytes(*s);
    if (end - s <= k) return Read::incomplete;
    // Unrolled by length: the sum-and-shift of each byte, as in a loop,
    // without a loop whose count the branch predictor cannot guess.
    uint32_t v = 0;
    switch (k) {
      case 5: v = (v + *s++) << 6; [[fallthrough]];
      case 4: v = (v + *s++) << 6; [[fallthrough]];
      case 3: v = (v + *s++) << 6; [[fallthrough]];
      case 2: v = (v + *s++) << 6; [[fallthrough]];
      case 1: v = (v + *s++) << 6; [[fallthrough]];
      default: v += *s++;
    }
    value = v - kDecodeOffset[k];
    return Read::ok;
  }
};

// Writers: write `value` at `*t` if it fits before `end`; false when not.
struct Utf16Writer {
  using Unit = uint16_t;
  static bool write(Unit *&t, Unit *end, uint32_t v) {
    if (v > kMaxUtf16) v = kReplacement;
    if (v <= kMaxBmp) {
      if (t >= end) return false;
      *t++ = static_cast<Unit>(v);
      return true;
    }
    if (end - t < 2) return false;
    v -= 0x10000;
    *t++ = static_cast<Unit>(kHighFirst + (v >> 10));
    *t++ = static_cast<Unit>(kLowFirst + (v & 0x3FF));
    return true;
  }
};

struct Ucs4Writer {
  using Unit = uint32_t;
  static bool write(Unit *&t, Unit *end, uint32_t v) {
    if (t >= end) return false;
    *t++ = v > kMaxUcs4 ? kReplacement : v;
    return true;
  }
};

struct Utf8Writer {
  using Unit = uint8_t;
  static bool write(Unit *&t, Unit *end, uint32_t v) {
    if (v > kMaxUcs4) v = kReplacement;
    const int n = v < 0x80 ? 1 : v < 0x800 ? 2 : v < 0x10000 ? 3 : v < 0x200000 ? 4 : v < 0x4000000 ? 5 : 6;
    if (end - t < n) return false;
    for (int i = n - 1; i > 0; --i) {
      t[i] = static_cast<Unit>(0x80 | (v & 0x3F));
      v >>= 6;
    }
    t[0] = static_cast<Unit>(kFirstByteMark[n] | v);
    t += n;
    return true;
  }
};

// Copies the leading run of ASCII units as they are, eight at a time while
// both areas have room: ASCII is most text, and its units map one to one in
// every form, so the general frame is needed only from the first non-ASCII
// unit on.
template <typename From, typename To>
void copy_ascii_run(const From *&s, const From *s_end, To *&t, To *t_end) {
  constexpr size_t kBlock = 8;
  while (static_cast<size_t>(s_end - s) >= kBlock && static_cast<size_t>(t_end - t) >= kBlock) {
    if constexpr (sizeof(From) == 1) {
      uint64_t word;
      std::memcpy(&word, s, kBlock);
      if (word & 0x8080808080808080ull) return;
    } else {
      From any = 0;
      for (size_t i = 0; i < kBlock; ++i) any |= s[i];
      if (any >= 0x80) return;
    }
    for (size_t i = 0; i < kBlock; ++i) t[i] = static_cast<To>(s[i]);
    s += kBlock;
    t += kBlock;
  }
}

template <typename Reader, typename Writer, bool kAsciiFastPath>
int32_t convert(const typename Reader::Unit **source_start, const typename Reader::Unit *source_end,
                typename Writer::Unit **target_start, typename Writer::Unit *target_end) {
  const auto *s = *source_start;
  auto *t = *target_start;
  int32_t result = CONV_OK;
  while (s < source_end) {
    if constexpr (kAsciiFastPath) {
      // Mixed text has short ASCII runs: after the block copy, one unit
      // more is taken here so the general path starts only at non-ASCII.
      if (*s < 0x80 && t < target_end) {
        copy_ascii_run(s, source_end, t, target_end);
        if (s < source_end && *s < 0x80 && t < target_end) *t++ = static_cast<typename Writer::Unit>(*s++);
        continue;
      }
    }
    const auto *char_start = s;
    uint32_t value;
    if (Reader::read(s, source_end, value) == Read::incomplete) {
      result = CONV_SOURCE_EXHAUSTED;
      break;
    }
    if (!Writer::write(t, target_end, value)) {
      s = char_start;
      result = CONV_TARGET_EXHAUSTED;
      break;
    }
  }
  *source_start = s;
  *target_start = t;
  return result;
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOConvertUCS4toUTF16(const uint32_t **sourceStart, const uint32_t *sourceEnd,
                                           uint16_t **targetStart, uint16_t *targetEnd) {
  return convert<Ucs4Plain, Utf16Writer, false>(sourceStart, sourceEnd, targetStart, targetEnd);
}

KORUTL_API int32_t KORVOConvertUTF16toUCS4(const uint16_t **sourceStart, const uint16_t *sourceEnd,
                                           uint32_t **targetStart, uint32_t *targetEnd) {
  return convert<PairJoining<uint16_t>, Ucs4Writer, false>(sourceStart, sourceEnd, targetStart,
                                                           targetEnd);
}

KORUTL_API int32_t KORVOConvertUTF16toUTF8(const uint16_t **sourceStart, const uint16_t *sourceEnd,
                                           uint8_t **targetStart, uint8_t *targetEnd) {
  return convert<PairJoining<uint16_t>, Utf8Writer, true>(sourceStart, sourceEnd, targetStart,
                                                          targetEnd);
}

KORUTL_API int32_t KORVOConvertUTF8toUTF16(const uint8_t **sourceStart, const uint8_t *sourceEnd,
                                           uint16_t **targetStart, uint16_t *targetEnd) {
  return convert<Utf8Reader, Utf16Writer, true>(sourceStart, sourceEnd, targetStart, targetEnd);
}

KORUTL_API int32_t KORVOConvertUCS4toUTF8(const uint32_t **sourceStart, const uint32_t *sourceEnd,
                                          uint8_t **targetStart, uint8_t *targetEnd) {
  return convert<PairJoining<uint32_t>, Utf8Writer, false>(sourceStart, sourceEnd, targetStart,
                                                           targetEnd);
}

KORUTL_API int32_t KORVOConvertUTF8toUCS4(const uint8_t **sourceStart, const uint8_t *sourceEnd,
                                          uint32_t **targetStart, uint32_t *targetEnd) {
  return convert<Utf8Reader, Ucs4Writer, true>(sourceStart, sourceEnd, targetStart, targetEnd);
}

}  // extern "C"
