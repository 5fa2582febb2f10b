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
      case 5:
        v = (v + *s++) << 6;
        [[fallthrough]];
      case 4:
        v = (v + *s++) << 6;
        [[fallthrough]];
      case 3:
        v = (v + *s++) << 6;
        [[fallthrough]];
      case 2:
        v = (v + *s++) << 6;
        [[fallthrough]];
      case 1:
        v = (v + *s++) << 6;
        [[fallthrough]];
      default:
        v += *s++;
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
    const int n = v < 0x80        ? 1
                  : v < 0x800     ? 2
                  : v < 0x10000   ? 3
                  : v < 0x200000  ? 4
                  : v < 0x4000000 ? 5
                                  : 6;
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

// Bulk stages: long conversions run here first, with the sequence length
// chosen by arithmetic rather than by branches, because on mixed text the
// length changes unpredictably from one character to the next and each
// mispredicted branch costs more than the arithmetic. The only branches
// left per character are the bounds below, which are nearly always taken.
//
// To avoid branching on the length when storing, a stage stores every
// character in its widest form and counts only its real length, so it may
// store a few units beyond what it counts. It stops while the source still
// holds complete characters and the target still has room for them, so the
// general frame that follows always writes over those units: nothing is
// left changed past the final target position.

// No bulk stage: the general frame does all the work.
struct NoBulk {
  template <typename From, typename To>
  static void run(const From *&, const From *, To *&, To *) {}
};

// Emitters of one decoded value for the UTF-8 bulk stage; they store two
// units (UTF-16) or one (UCS-4) and return the count.
struct Utf16Emit {
  using Unit = uint16_t;
  static constexpr ptrdiff_t kStored = 2;
  static ptrdiff_t emit(Unit *t, uint32_t v) {
    const uint32_t above_bmp = v - 0x10000;
    const bool pair = above_bmp <= kMaxUtf16 - 0x10000;
    const uint32_t single = v <= kMaxBmp ? v : kReplacement;
    t[0] = static_cast<Unit>(pair ? kHighFirst + (above_bmp >> 10) : single);
    t[1] = static_cast<Unit>(kLowFirst + (above_bmp & 0x3FF));
    return 1 + pair;
  }
};

struct Ucs4Emit {
  using Unit = uint32_t;
  static constexpr ptrdiff_t kStored = 1;
  static ptrdiff_t emit(Unit *t, uint32_t v) {
    t[0] = v > kMaxUcs4 ? kReplacement : v;
    return 1;
  }
};

// UTF-8 to UTF-16 or UCS-4. Sixteen source bytes are kept back, so the
// eight-byte loads stay inside the source and the character after the stage
// is complete; ten target units are kept free, enough for an eight-unit
// ASCII block and for that next character, which covers the unit stored
// ahead.
template <typename Emit, typename Writer>
struct BulkFromUtf8 {
  static void run(const uint8_t *&s, const uint8_t *end, typename Emit::Unit *&t,
                  typename Emit::Unit *t_end) {
    constexpr ptrdiff_t kSourceKept = 16, kTargetKept = 8 + Emit::kStored;
    while (end - s >= kSourceKept && t_end - t >= kTargetKept) {
      uint64_t word;
      std::memcpy(&word, s, sizeof word);
      if ((word & 0x8080808080808080ull) == 0) {
        for (int i = 0; i < 8; ++i) t[i] = s[i];
        s += 8;
        t += 8;
        continue;
      }
      const int k = trailing_bytes(s[0]);
      if (k > 3) {  // five- and six-byte forms: rare, and beyond UTF-16
        uint32_t v = 0;
        Utf8Reader::read(s, end, v);
        Writer::write(t, t_end, v);
        continue;
      }
      // The same sum-and-shift as the general reader, for all four lengths
      // at once; the length then picks one.
      const uint32_t b0 = s[0], b1 = s[1], b2 = s[2], b3 = s[3];
      const uint32_t sums[4] = {b0, (b0 << 6) + b1 - kDecodeOffset[1],
                                (b0 << 12) + (b1 << 6) + b2 - kDecodeOffset[2],
                                (b0 << 18) + (b1 << 12) + (b2 << 6) + b3 - kDecodeOffset[3]};
      t += Emit::emit(t, sums[k]);
      s += k + 1;
    }
  }
};

// UTF-16 to UTF-8: each character is stored as four bytes. Eight units are
// kept back, so the eight-unit ASCII block and the two-unit lookahead stay
// inside the source, and at least three units follow a character stored by
// the stage; sixteen bytes are kept free, so those units
// fit and their output (three bytes or more) covers the bytes stored ahead.
struct BulkUtf16ToUtf8 {
  static void run(const uint16_t *&s, const uint16_t *end, uint8_t *&t, uint8_t *t_end) {
    constexpr ptrdiff_t kSourceKept = 8, kTargetKept = 16;
    while (end - s >= kSourceKept && t_end - t >= kTargetKept) {
      uint64_t words[2];
      std::memcpy(words, s, sizeof words);
      if (((words[0] | words[1]) & 0xFF80FF80FF80FF80ull) == 0) {
        for (int i = 0; i < 8; ++i) t[i] = static_cast<uint8_t>(s[i]);
        s += 8;
        t += 8;
        continue;
      }
      const uint32_t first = s[0], next = s[1];
      const int pair = static_cast<int>(is_high(first)) & static_cast<int>(is_low(next));
      const uint32_t v = pair ? join(first, next) : first;
      s += 1 + pair;
      const ptrdiff_t n = 1 + (v >= 0x80) + (v >= 0x800) + (v >= 0x10000);
      const uint32_t lo = 0x80 | (v & 0x3F), mid = 0x80 | ((v >> 6) & 0x3F),
                     hi = 0x80 | ((v >> 12) & 0x3F);
      const uint32_t forms[4] = {v, (0xC0 | (v >> 6)) | lo << 8,
                                 (0xE0 | (v >> 12)) | mid << 8 | lo << 16,
                                 (0xF0 | (v >> 18)) | hi << 8 | mid << 16 | lo << 24};
      const uint32_t bytes = forms[n - 1];
      for (int i = 0; i < 4; ++i) t[i] = static_cast<uint8_t>(bytes >> (8 * i));
      t += n;
    }
  }
};

template <typename Reader, typename Writer, bool kAsciiFastPath, typename Bulk = NoBulk>
int32_t convert(const typename Reader::Unit **source_start, const typename Reader::Unit *source_end,
                typename Writer::Unit **target_start, typename Writer::Unit *target_end) {
  const auto *s = *source_start;
  auto *t = *target_start;
  Bulk::run(s, source_end, t, target_end);
  int32_t result = CONV_OK;
  while (s < source_end) {
    if constexpr (kAsciiFastPath) {
      // Mixed text has short ASCII runs: after the block copy, one unit
      // more is taken here so the general path starts only at non-ASCII.
      if (*s < 0x80 && t < target_end) {
        copy_ascii_run(s, source_end, t, target_end);
        if (s < source_end && *s < 0x80 && t < target_end)
          *t++ = static_cast<typename Writer::Unit>(*s++);
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
  return convert<PairJoining<uint16_t>, Utf8Writer, true, BulkUtf16ToUtf8>(sourceStart, sourceEnd,
                                                                           targetStart, targetEnd);
}

KORUTL_API int32_t KORVOConvertUTF8toUTF16(const uint8_t **sourceStart, const uint8_t *sourceEnd,
                                           uint16_t **targetStart, uint16_t *targetEnd) {
  return convert<Utf8Reader, Utf16Writer, true, BulkFromUtf8<Utf16Emit, Utf16Writer>>(
      sourceStart, sourceEnd, targetStart, targetEnd);
}

KORUTL_API int32_t KORVOConvertUCS4toUTF8(const uint32_t **sourceStart, const uint32_t *sourceEnd,
                                          uint8_t **targetStart, uint8_t *targetEnd) {
  return convert<PairJoining<uint32_t>, Utf8Writer, false>(sourceStart, sourceEnd, targetStart,
                                                           targetEnd);
}

KORUTL_API int32_t KORVOConvertUTF8toUCS4(const uint8_t **sourceStart, const uint8_t *sourceEnd,
                                          uint32_t **targetStart, uint32_t *targetEnd) {
  return convert<Utf8Reader, Ucs4Writer, true, BulkFromUtf8<Ucs4Emit, Ucs4Writer>>(
      sourceStart, sourceEnd, targetStart, targetEnd);
}

}  // extern "C"
