// KORVOBase64Crypt: standard Base64 with padding and no line breaks. The
// tables are constants, so they are ready before the first call and safe to
// read from any thread. Decoding is lenient on purpose: stored texts of the
// product family are read back as they are, every character outside the
// alphabet (the pad included) counting as 0.
#include <array>
#include <bit>
#include <cstring>

#include "korutl.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<uint8_t, 256> make_decode_table() {
  std::array<uint8_t, 256> t{};
  for (uint8_t v = 0; v < 64; ++v) t[static_cast<unsigned char>(kAlphabet[v])] = v;
  return t;
}

// The two characters of every 12-bit value, in memory order: one lookup
// per half group and one 4-byte store per group.
constexpr std::array<uint16_t, 4096> make_pair_table() {
  std::array<uint16_t, 4096> t{};
  for (unsigned v = 0; v < 4096; ++v) {
    const auto first = static_cast<uint8_t>(kAlphabet[v >> 6]);
    const auto second = static_cast<uint8_t>(kAlphabet[v & 63]);
    t[v] = std::endian::native == std::endian::little ? static_cast<uint16_t>(first | second << 8)
                                                      : static_cast<uint16_t>(first << 8 | second);
  }
  return t;
}

constexpr std::array<uint16_t, 4096> kPairs = make_pair_table();

// Indexed by the full byte, so codes 128 to 255 read as 0 like any other
// character outside the alphabet.
constexpr std::array<uint8_t, 256> kDecode = make_decode_table();

int32_t encode(const uint8_t *in, int32_t n, char *out) {
  const int32_t groups = (n + 2) / 3;
  out[4 * groups] = '\0';
  char *o = out;
  int32_t i = 0;
  for (; i + 3 <= n; i += 3) {
    const unsigned v = (unsigned{in[i]} << 16) | (unsigned{in[i + 1]} << 8) | in[i + 2];
    const uint16_t pairs[2] = {kPairs[v >> 12], kPairs[v & 4095]};
    std::memcpy(o, pairs, 4);
    o += 4;
  }
  if (i < n) {
    const bool two = i + 1 < n;
    const unsigned v = (unsigned{in[i]} << 16) | (two ? unsigned{in[i + 1]} << 8 : 0u);
    *o++ = kAlphabet[v >> 18];
    *o++ = kAlphabet[(v >> 12) & 63];
    *o++ = two ? kAlphabet[(v >> 6) & 63] : '=';
    *o++ = '=';
  }
  return 4 * groups;
}

int32_t decode(const unsigned char *in, int32_t n, uint8_t *out) {
  const int32_t groups = n / 4;
  out[3 * groups] = 0;
  for (int32_t g = 0; g < groups; ++g, in += 4, out += 3) {
    const unsigned v = (unsigned{kDecode[in[0]]} << 18) | (unsigned{kDecode[in[1]]} << 12) |
                       (unsigned{kDecode[in[2]]} << 6) | kDecode[in[3]];
    out[0] = static_cast<uint8_t>(v >> 16);
    out[1] = static_cast<uint8_t>(v >> 8);
    out[2] = static_cast<uint8_t>(v);
  }
  return 3 * groups;
}

}  // namespace

extern "C" {

KORUTL_API int32_t KORVOBase64Crypt(int32_t direction, const void *input, void *output,
                                    int32_t input_length) {
  if (input_length <= 0 || input == nullptr || output == nullptr) return 0;
  if (direction == KORVO_BASE64_ENCODE)
    return encode(static_cast<const uint8_t *>(input), input_length, static_cast<char *>(output));
  return decode(static_cast<const unsigned char *>(input), input_length,
                static_cast<uint8_t *>(output));
}

}  // extern "C"
