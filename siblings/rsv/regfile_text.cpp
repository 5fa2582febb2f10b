#include "siblings/rsv/regfile_text.h"

#include <cstdint>

namespace korutl::regfile {

namespace {

void put_utf8(uint32_t c, std::string &out) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

void put_utf16(uint32_t u, std::string &out) {
  out += static_cast<char>(u & 0xFF);
  out += static_cast<char>(u >> 8);
}

}  // namespace

bool utf16le_to_utf8(std::string_view in, std::string &out) {
  out.clear();
  if (in.size() % 2 != 0) return false;
  // One little-endian UTF-16 unit at `at`.
  const auto unit = [&in](size_t at) -> uint32_t {
    return static_cast<uint32_t>(static_cast<uint8_t>(in[at])) |
           static_cast<uint32_t>(static_cast<uint8_t>(in[at + 1])) << 8;
  };
  for (size_t i = 0; i < in.size(); i += 2) {
    uint32_t c = unit(i);
    if (c >= 0xDC00 && c < 0xE000) return false;
    if (c >= 0xD800 && c < 0xDC00) {
      if (i + 3 >= in.size()) return false;
      const uint32_t low = unit(i + 2);
      if (low < 0xDC00 || low >= 0xE000) return false;
      c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
      i += 2;
    }
    put_utf8(c, out);
  }
  return true;
}

bool utf8_to_utf16le(std::string_view in, std::string &out) {
  out.clear();
  for (size_t i = 0; i < in.size();) {
    const uint8_t b = static_cast<uint8_t>(in[i]);
    const int extra = b < 0x80         ? 0
                      : (b >> 5) == 6  ? 1
                      : (b >> 4) == 14 ? 2
                      : (b >> 3) == 30 ? 3
                                       : -1;
    if (extra < 0 || in.size() - i <= static_cast<size_t>(extra)) return false;
    uint32_t c = extra == 0 ? b : static_cast<uint32_t>(b & (0x3F >> extra));
    for (int k = 1; k <= extra; ++k) {
      const uint8_t t = static_cast<uint8_t>(in[i + static_cast<size_t>(k)]);
      if ((t & 0xC0) != 0x80) return false;
      c = (c << 6) | (t & 0x3F);
    }
    static constexpr uint32_t min_of[] = {0, 0x80, 0x800, 0x10000};
    if (c < min_of[extra] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return false;
    if (c >= 0x10000) {
      put_utf16(0xD800 + ((c - 0x10000) >> 10), out);
      put_utf16(0xDC00 + ((c - 0x10000) & 0x3FF), out);
    } else {
      put_utf16(c, out);
    }
    i += static_cast<size_t>(extra) + 1;
  }
  return true;
}

}  // namespace korutl::regfile
