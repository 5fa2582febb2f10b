// Whole texts through the library's Unicode conversions, for subcommands:
// UTF-8 <-> UTF-16 units (which are the UCS-2 units of the UTF-7 side) and
// UCS-2 <-> UTF-7. Shared by `utf7` and `demo`.
#ifndef KORUTL_TOOLS_UNICODE_TEXT_H
#define KORUTL_TOOLS_UNICODE_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korutl.h"

namespace korutl_tool {

using Units = std::vector<uint16_t>;

// Nothing when the text ends inside a UTF-8 sequence.
inline std::optional<Units> utf8_to_utf16(const std::string &text) {
  Units units(text.size());  // one unit per byte at the most
  const auto *from = reinterpret_cast<const uint8_t *>(text.data());
  uint16_t *to = units.data();
  if (KORVOConvertUTF8toUTF16(&from, from + text.size(), &to, units.data() + units.size()) !=
      CONV_OK)
    return std::nullopt;
  units.resize(static_cast<size_t>(to - units.data()));
  return units;
}

// Lone surrogates have no UTF-8 form: they become U+FFFD first.
inline std::optional<std::string> utf16_to_utf8(Units units) {
  for (size_t i = 0; i < units.size(); ++i) {
    const bool high = units[i] >= 0xD800 && units[i] <= 0xDBFF;
    const bool low = units[i] >= 0xDC00 && units[i] <= 0xDFFF;
    if (high && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF)
      ++i;
    else if (high || low)
      units[i] = 0xFFFD;
  }
  std::string text(units.size() * 3, '\0');  // a pair takes four bytes for two units
  const uint16_t *from = units.data();
  auto *to = reinterpret_cast<uint8_t *>(text.data());
  if (KORVOConvertUTF16toUTF8(&from, units.data() + units.size(), &to,
                              reinterpret_cast<uint8_t *>(text.data()) + text.size()) != CONV_OK)
    return std::nullopt;
  text.resize(static_cast<size_t>(to - reinterpret_cast<uint8_t *>(text.data())));
  return text;
}

inline std::optional<std::string> ucs2_to_utf7(const Units &units, bool optional_direct,
                                               bool close) {
  std::string out(units.size() * 5 + 1, '\0');  // "+xyz-" per unit at the most
  const uint16_t *src = units.data();
  auto *dst = reinterpret_cast<uint8_t *>(out.data());
  if (KORVOConvertUCS2toUTF7(&src, units.data() + units.size(), &dst,
                             reinterpret_cast<uint8_t *>(out.data()) + out.size(), optional_direct,
                             close) != CONV_OK)
    return std::nullopt;
  out.resize(static_cast<size_t>(dst - reinterpret_cast<uint8_t *>(out.data())));
  return out;
}

// The units decoded as far as possible and the conversion result
// (CONV_SOURCE_ILLEGAL for malformed UTF-7).
struct Utf7Decoded {
  Units units;
  int32_t result = CONV_OK;
};
inline Utf7Decoded utf7_to_ucs2(const std::string &text) {
  Utf7Decoded d;
  d.units.resize(text.size() + 1);
  const auto *src = reinterpret_cast<const uint8_t *>(text.data());
  uint16_t *dst = d.units.data();
  d.result = KORVOConvertUTF7toUCS2(&src, src + text.size(), &dst, d.units.data() + d.units.size());
  d.units.resize(static_cast<size_t>(dst - d.units.data()));
  return d;
}

}  // namespace korutl_tool

#endif
