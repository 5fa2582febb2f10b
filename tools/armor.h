// Text forms of binary data for the korutl command, on the library's
// Base64 and hexadecimal services. Shared by `encode` and `crypt --armor`.
#ifndef KORUTL_TOOLS_ARMOR_H
#define KORUTL_TOOLS_ARMOR_H

#include <climits>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korutl.h"

namespace korutl_tool {

using Bytes = std::vector<uint8_t>;

inline std::optional<std::string> base64_encode(const Bytes &in) {
  if (in.size() > static_cast<size_t>(INT32_MAX) / 4 * 3 - 3) return std::nullopt;
  std::string out((in.size() + 2) / 3 * 4 + 1, '\0');
  out.resize(static_cast<size_t>(KORVOBase64Crypt(KORVO_BASE64_ENCODE, in.data(), out.data(),
                                                  static_cast<int32_t>(in.size()))));
  return out;
}

// The library decodes each pad character as a zero byte that it counts;
// those bytes are not part of the data, so they are dropped here.
inline std::optional<Bytes> base64_decode(const Bytes &text) {
  if (text.size() > static_cast<size_t>(INT32_MAX)) return std::nullopt;
  Bytes out(text.size() / 4 * 3 + 1);
  out.resize(static_cast<size_t>(KORVOBase64Crypt(KORVO_BASE64_DECODE, text.data(), out.data(),
                                                  static_cast<int32_t>(text.size()))));
  const size_t whole = text.size() / 4 * 4;
  size_t pads = 0;
  while (pads < 2 && pads < whole && text[whole - 1 - pads] == '=') ++pads;
  out.resize(out.size() - pads);
  return out;
}

inline std::optional<std::string> hex_encode(const Bytes &in) {
  if (in.size() > static_cast<size_t>(INT32_MAX) / 2) return std::nullopt;
  std::string out(in.size() * 2 + 1, '\0');
  uint32_t len = 0;
  KORVOCSPrepareBinaryBuffer(KORVO_BINARY_TO_HEX, in.data(), static_cast<int32_t>(in.size()),
                             out.data(), &len);
  out.resize(len);
  return out;
}

inline std::optional<Bytes> hex_decode(const Bytes &text) {
  if (text.size() > static_cast<size_t>(INT32_MAX)) return std::nullopt;
  Bytes out((text.size() + 1) / 2 + 1);
  uint32_t len = 0;
  KORVOCSPrepareBinaryBuffer(KORVO_HEX_TO_BINARY, text.data(), static_cast<int32_t>(text.size()),
                             out.data(), &len);
  out.resize(len);
  return out;
}

}  // namespace korutl_tool

#endif
