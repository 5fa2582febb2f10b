// KORVOCSPrepareBinaryBuffer: binary buffers to text and back, as upper-case
// hexadecimal or as Base64 of a one-byte length followed by the payload.
#include <cstring>

#include "korutl.h"

namespace {

constexpr int32_t kMaxPrefixedPayload = 255;
// Mode -1 decodes into a work area of 2,052 bytes: 683 groups of four
// characters (plus up to three ignored ones) and the terminating zero fill it.
constexpr int32_t kPrefixedArea = 2052;
constexpr int32_t kMaxPrefixedText = (kPrefixedArea - 1) / 3 * 4 + 3;

void set_empty(char *output, uint32_t *output_length) {
  output[0] = 0;
  *output_length = 0;
}

void bytes_to_hex(const uint8_t *in, int32_t n, char *out, uint32_t *out_length) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (int32_t i = 0; i < n; ++i) {
    out[2 * i] = kDigits[in[i] >> 4];
    out[2 * i + 1] = kDigits[in[i] & 15];
  }
  out[2 * n] = 0;
  *out_length = static_cast<uint32_t>(2 * n);
}

// An odd last digit pairs with the end of the text, which reads as 0.
void hex_to_bytes(const char *in, int32_t n, uint8_t *out, uint32_t *out_length) {
  int32_t count = 0;
  for (int32_t i = 0; i < n; i += 2) {
    const uint8_t low = i + 1 < n ? KORVOGetValueOfHexDigit(in[i + 1]) : 0;
    out[count++] = static_cast<uint8_t>(16 * KORVOGetValueOfHexDigit(in[i]) + low);
  }
  out[count] = 0;
  *out_length = static_cast<uint32_t>(count);
}

void bytes_to_prefixed(const uint8_t *in, int32_t n, char *out, uint32_t *out_length) {
  set_empty(out, out_length);
  if (n > kMaxPrefixedPayload) return;
  uint8_t area[kMaxPrefixedPayload + 1];
  area[0] = static_cast<uint8_t>(n);
  if (n > 0) std::memcpy(area + 1, in, static_cast<size_t>(n));
  *out_length = static_cast<uint32_t>(KORVOBase64Crypt(KORVO_BASE64_ENCODE, area, out, n + 1));
}

void prefixed_to_bytes(const char *in, int32_t n, uint8_t *out, uint32_t *out_length) {
  set_empty(reinterpret_cast<char *>(out), out_length);
  if (n > kMaxPrefixedText) return;
  uint8_t area[kPrefixedArea];
  const int32_t decoded = KORVOBase64Crypt(KORVO_BASE64_DECODE, in, area, n);
  if (decoded < 1) return;
  const int32_t payload = area[0];
  if (decoded < payload + 1) return;
  std::memcpy(out, area + 1, static_cast<size_t>(payload));
  out[payload] = 0;
  *out_length = static_cast<uint32_t>(payload);
}

}  // namespace

extern "C" {

KORUTL_API void KORVOCSPrepareBinaryBuffer(int32_t mode, const void *input, int32_t input_length,
                                           void *output, uint32_t *output_length) {
  if (mode != KORVO_BINARY_TO_HEX && mode != KORVO_HEX_TO_BINARY &&
      mode != KORVO_BINARY_TO_BASE64 && mode != KORVO_BASE64_TO_BINARY)
    return;
  if (output == nullptr || output_length == nullptr) return;
  char *out_text = static_cast<char *>(output);
  if (input_length < 0 || (input == nullptr && input_length != 0)) {
    set_empty(out_text, output_length);
    return;
  }
  const auto *in_bytes = static_cast<const uint8_t *>(input);
  const auto *in_text = static_cast<const char *>(input);
  auto *out_bytes = static_cast<uint8_t *>(output);
  switch (mode) {
    case KORVO_BINARY_TO_HEX:
      bytes_to_hex(in_bytes, input_length, out_text, output_length);
      break;
    case KORVO_HEX_TO_BINARY:
      hex_to_bytes(in_text, input_length, out_bytes, output_length);
      break;
    case KORVO_BINARY_TO_BASE64:
      bytes_to_prefixed(in_bytes, input_length, out_text, output_length);
      break;
    default:  // KORVO_BASE64_TO_BINARY
      prefixed_to_bytes(in_text, input_length, out_bytes, output_length);
      break;
  }
}

}  // extern "C"
