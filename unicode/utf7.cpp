// UCS-2 <-> UTF-7 (RFC 2152). The character tables are compile-time
// constants, so both directions are ready before the first call and may run
// on any number of threads. Each call starts outside a Base64 run: a
// conversion that ran out of room is repeated from the start, not resumed.
#include <array>
#include <cstdint>

#include "korutl.h"

namespace {

constexpr char kDirect[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:?";
constexpr char kOptional[] = "!\"#$%&*;<=>@[]^_`{|}";
constexpr char kSpace[] = " \t\r\n";
constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Tables {
  std::array<int16_t, 128> inverse{};
  std::array<bool, 128> must_encode_strict{};    // only direct and space characters pass
  std::array<bool, 128> must_encode_optional{};  // optional direct characters pass too
};

// The tables' index of a 7-bit character.
constexpr size_t index(char c) { return static_cast<unsigned char>(c); }

constexpr Tables make_tables() {
  Tables t;
  for (size_t i = 0; i < 128; ++i) {
    t.inverse[i] = -1;
    t.must_encode_strict[i] = t.must_encode_optional[i] = true;
  }
  for (const char *p = kDirect; *p != 0; ++p)
    t.must_encode_strict[index(*p)] = t.must_encode_optional[index(*p)] = false;
  for (const char *p = kSpace; *p != 0; ++p)
    t.must_encode_strict[index(*p)] = t.must_encode_optional[index(*p)] = false;
  for (const char *p = kOptional; *p != 0; ++p) t.must_encode_optional[index(*p)] = false;
  for (int16_t v = 0; v < 64; ++v) t.inverse[index(kBase64[v])] = v;
  return t;
}

constexpr Tables kTables = make_tables();

bool is_base64_char(unsigned c) { return c < 128 && kTables.inverse[c] >= 0; }

// Bits are kept at the top of a 32-bit buffer; `count` says how many.
struct BitBuffer {
  uint32_t bits = 0;
  int count = 0;
};

// Writes whole 6-bit groups while there is room. False when groups remain
// but the target is full.
bool flush_sextets(BitBuffer &b, uint8_t *&target, uint8_t *target_end) {
  while (b.count >= 6) {
    if (target >= target_end) return false;
    *target++ = static_cast<uint8_t>(kBase64[b.bits >> 26]);
    b.bits <<= 6;
    b.count -= 6;
  }
  return true;
}

int32_t encode(const uint16_t *&source, const uint16_t *source_end, uint8_t *&target,
               uint8_t *target_end, bool optional_direct, bool explicit_close) {
  const auto &must_encode =
      optional_direct ? kTables.must_encode_optional : kTables.must_encode_strict;
  bool in_run = false;
  BitBuffer buf;
  for (;;) {
    const bool at_end = source >= source_end;
    const unsigned c = at_end ? 0 : *source++;
    if (!at_end && (c >= 0x80 || must_encode[c])) {
      if (!in_run) {
        if (target >= target_end) return CONV_TARGET_EXHAUSTED;
        *target++ = '+';
        if (c == '+') {
          if (target >= target_end) return CONV_TARGET_EXHAUSTED;
          *target++ = '-';
          continue;
        }
        in_run = true;
      }
      buf.bits |= static_cast<uint32_t>(c) << (16 - buf.count);
      buf.count += 16;
      if (!flush_sextets(buf, target, target_end)) return CONV_TARGET_EXHAUSTED;
      continue;
    }
    if (in_run) {
      // Pad the last group with zero bits and close the run; the '-' is
      // needed when the next character would otherwise read as Base64.
      buf.count = (buf.count + 5) / 6 * 6;
      if (!flush_sextets(buf, target, target_end)) return CONV_TARGET_EXHAUSTED;
      if (explicit_close || (!at_end && (is_base64_char(c) || c == '-'))) {
        if (target >= target_end) return CONV_TARGET_EXHAUSTED;
        *target++ = '-';
      }
      in_run = false;
      buf = {};
    }
    if (at_end) return CONV_OK;
    if (target >= target_end) return CONV_TARGET_EXHAUSTED;
    *target++ = static_cast<uint8_t>(c);
  }
}

int32_t decode(const uint8_t *&source, const uint8_t *source_end, uint16_t *&target,
               uint16_t *target_end) {
  int32_t result = CONV_OK;
  bool in_run = false;
  bool just_shifted = false;
  bool produced = false;
  BitBuffer buf;
  for (;;) {
    bool at_end = source >= source_end;
    // A byte from 0x80 up is read as negative: no 7-bit character.
    int c = at_end ? 0 : static_cast<int8_t>(*source++);
    bool run_ended = false;
    if (in_run) {
      if (!at_end && c >= 0 && kTables.inverse[static_cast<size_t>(c)] >= 0) {
        buf.bits |= static_cast<uint32_t>(kTables.inverse[static_cast<size_t>(c)])
                    << (26 - buf.count);
        buf.count += 6;
        just_shifted = false;
      } else {
        in_run = false;
        run_ended = true;
        const bool hyphen = !at_end && c == '-';
        if (hyphen) {
          at_end = source >= source_end;
          c = at_end ? 0 : static_cast<int8_t>(*source++);
        }
        if (hyphen && just_shifted) {
          if (target >= target_end) return CONV_TARGET_EXHAUSTED;
          *target++ = '+';
        } else if (!produced) {
          result = CONV_SOURCE_ILLEGAL;
        }
      }
    }
    while (buf.count >= 16) {
      if (target >= target_end) return CONV_TARGET_EXHAUSTED;
      *target++ = static_cast<uint16_t>(buf.bits >> 16);
      buf.bits <<= 16;
      buf.count -= 16;
      produced = true;
    }
    if (run_ended) {
      if (buf.bits != 0) result = CONV_SOURCE_ILLEGAL;
      buf = {};
    }
    if (in_run) continue;
    if (at_end) return result;
    if (c == '+') {
      in_run = just_shifted = true;
      produced = false;
      continue;
    }
    if (c < 0) result = CONV_SOURCE_ILLEGAL;
    if (target >= target_end) return CONV_TARGET_EXHAUSTED;
    *target++ = static_cast<uint16_t>(static_cast<int16_t>(c));
  }
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOConvertUCS2toUTF7(const uint16_t **source_start, const uint16_t *source_end,
                                          uint8_t **target_start, uint8_t *target_end,
                                          int32_t optional_direct, int32_t explicit_close) {
  if (source_start == nullptr || target_start == nullptr || *source_start == nullptr ||
      *target_start == nullptr || source_end == nullptr || target_end == nullptr) {
    return CONV_OK;
  }
  const uint16_t *source = *source_start;
  uint8_t *target = *target_start;
  const int32_t result =
      encode(source, source_end, target, target_end, optional_direct != 0, explicit_close != 0);
  *source_start = source;
  *target_start = target;
  return result;
}

KORUTL_API int32_t KORVOConvertUTF7toUCS2(const uint8_t **source_start, const uint8_t *source_end,
                                          uint16_t **target_start, uint16_t *target_end) {
  if (source_start == nullptr || target_start == nullptr || *source_start == nullptr ||
      *target_start == nullptr || source_end == nullptr || target_end == nullptr) {
    return CONV_OK;
  }
  const uint8_t *source = *source_start;
  uint16_t *target = *target_start;
  const int32_t result = decode(source, source_end, target, target_end);
  *source_start = source;
  *target_start = target;
  return result;
}

}  // extern "C"
