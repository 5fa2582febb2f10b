// Conversions between UCS-4, UTF-16 and the six-byte UTF-8 form. All six
// share one frame (read a character, check room, write it) built from a
// reader of the source form and a writer of the target form. They are
// deliberately lenient: nothing but a UTF-8 sequence cut by the source end
// stops them, so callers can stream text through them in chunks.
#include <bit>
#include <cstring>

#include "korutl.h"
#include "unicode/utf16_block.h"
#include "unicode/utf8_block.h"

namespace {

namespace unicode = korutl::unicode;

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
// mispredicted branch costs more than the arithmetic.
//
// To avoid branching on the length when storing, a stage stores every
// character in its widest form and every ASCII run as a whole block, and
// counts only the real length, so it may store a few units beyond what it
// counts. It stops while the source still
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
  static ptrdiff_t emit(Unit *t, uint32_t v) {
    t[0] = v > kMaxUcs4 ? kReplacement : v;
    return 1;
  }
};

// UTF-8 to UTF-16 or UCS-4, a window of 48 source bytes at a time, with
// positions taken from the window's class masks, which stay in registers,
// so that finding the next character never waits for a load. Each ASCII
// run is stored as 16 bytes widened from its first byte (a longer run
// takes several), and each other character in its widest form.
//
// In a window whose sequences are all well formed (every first byte of a
// multi-byte form followed by exactly its trailing bytes, 10xxxxxx, and no
// other such bytes) the characters start at the bytes that are not
// trailing ones, so the steps go straight from one first byte to the
// next. Any other window is walked character by character as the general
// reader would, with the lengths read from the masks.
//
// Kept back: 160 source bytes and 96 target units. A window reads at most
// 64 bytes from its start, stores at most 64 units, moves the source at
// most 53 bytes and the target at most 52 units, and leaves at most 16
// units stored past its end; so when the stage stops at least 107 source
// bytes (17 complete characters or more, one unit each) and 44 units of
// room remain, and the general frame overwrites what was stored ahead.
template <typename Emit, typename Writer>
struct BulkFromUtf8 {
  using Unit = typename Emit::Unit;
  static constexpr int kWindow = unicode::kUtf8Window, kBlock = unicode::kUtf8Block;
  // Well-formed windows take characters starting up to here, which end
  // inside the window.
  static constexpr int kWellFormedStarts = kWindow - 3;

  // Stores s[from .. from + run) (all ASCII) at t[j ..); returns j + run.
  static ptrdiff_t copy_ascii(const uint8_t *s, int from, int run, Unit *t, ptrdiff_t j) {
    for (;;) {
      unicode::widen_block(s + from, t + j);
      if (run <= kBlock) return j + run;
      from += kBlock;
      j += kBlock;
      run -= kBlock;
    }
  }

  // Decodes the character of `k` trailing bytes (0 to 3) at `s` into t;
  // returns the units it counts.
  static ptrdiff_t decode(const uint8_t *s, int k, Unit *t) {
    // The same sum-and-shift as the general reader, each step taken or
    // not by the length without a branch.
    uint32_t v = s[0];
    v = k >= 1 ? (v << 6) + s[1] : v;
    v = k >= 2 ? (v << 6) + s[2] : v;
    v = k >= 3 ? (v << 6) + s[3] : v;
    return Emit::emit(t, v - kDecodeOffset[k]);
  }

  static int trailing_at(const unicode::Utf8Classes &c, int p) {
    return static_cast<int>(((c.k_low >> p) & 1u) | ((c.k_high >> p) & 1u) << 1);
  }

  static bool well_formed(const unicode::Utf8Classes &c) {
    constexpr uint64_t kInWindow = (uint64_t{1} << kWindow) - 1;
    const uint64_t expected = (c.k_low | c.k_high) << 1 | c.k_high << 2 | (c.k_low & c.k_high) << 3;
    return c.longer == 0 && (expected & kInWindow) == c.trailing;
  }

  static void run(const uint8_t *&s, const uint8_t *end, Unit *&t, Unit *t_end) {
    constexpr ptrdiff_t kSourceKept = 160, kTargetKept = 96;
    while (end - s >= kSourceKept && t_end - t >= kTargetKept) {
      const unicode::Utf8Classes c = unicode::utf8_classes(s);
      if (c.high == 0) {
        for (int i = 0; i < kWindow; i += kBlock) unicode::widen_block(s + i, t + i);
        s += kWindow;
        t += kWindow;
        continue;
      }
      // The window's end ends every ASCII run.
      const uint64_t stop = c.high | uint64_t{1} << kWindow;
      int p = 0;
      ptrdiff_t j = 0;
      bool longer = false;
      if (well_formed(c)) {
        constexpr uint64_t kStarts = (uint64_t{1} << kWellFormedStarts) - 1;
        for (uint64_t firsts = c.high & ~c.trailing & kStarts; firsts != 0; firsts &= firsts - 1) {
          const int q = std::countr_zero(firsts);
          j = copy_ascii(s, p, q - p, t, j);
          const int k = trailing_at(c, q);
          j += decode(s + q, k, t + j);
          p = q + k + 1;
        }
        const int run = std::countr_zero(stop >> p);
        j = copy_ascii(s, p, run, t, j);
        p += run;
      } else {
        for (;;) {
          const int run = std::countr_zero(stop >> p);
          j = copy_ascii(s, p, run, t, j);
          p += run;
          if (p >= kWindow) break;
          if ((c.longer >> p) & 1u) {
            longer = true;
            break;
          }
          const int k = trailing_at(c, p);
          j += decode(s + p, k, t + j);
          p += k + 1;
          if (p >= kWindow) break;
        }
      }
      s += p;
      t += j;
      if (longer) {  // five- and six-byte forms: rare, and beyond UTF-16
        uint32_t v = 0;
        Utf8Reader::read(s, end, v);
        Writer::write(t, t_end, v);
      }
    }
  }
};

// UTF-16 to UTF-8: runs of 16 ASCII units are stored as bytes at once;
// otherwise the forms of eight units are built together and stored one
// after the other, four bytes each, advancing by the bytes that count.
//
// Kept back: 32 source units and 48 target bytes. A step reads at most 16
// units, moves the source at most 16 units and the target at most 32
// bytes, and leaves at most 4 bytes stored past its end; every unit gives
// at least one byte, so the 16 units and 16 bytes of room left when the
// stage stops make the general frame overwrite them.
struct BulkUtf16ToUtf8 {
  static void run(const uint16_t *&s, const uint16_t *end, uint8_t *&t, uint8_t *t_end) {
    constexpr ptrdiff_t kSourceKept = 32, kTargetKept = 48;
    while (end - s >= kSourceKept && t_end - t >= kTargetKept) {
      if (unicode::ascii_run(s)) {
        unicode::narrow_ascii_run(s, t);
        s += unicode::kAsciiRun;
        t += unicode::kAsciiRun;
        continue;
      }
      unicode::Utf8Forms forms;
      s += unicode::utf8_forms(s, forms);
      for (int i = 0; i < unicode::kFormsBlock; ++i) {
        std::memcpy(t, forms.bytes[i], 4);
        t += forms.length[i];
      }
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
