#include "siblings/rsv/regfile_text.h"

#include <cstdint>

namespace korutl::regfile {

namespace {

bool is_surrogate(uint32_t c) { return c >= 0xD800 && c < 0xE000; }

// The length of the UTF-8 sequence at `i` and its code point `c`, or 0 when
// the bytes there do not form one. Surrogates decode here; callers decide.
size_t utf8_sequence(std::string_view s, size_t i, uint32_t &c) {
  const uint8_t b = static_cast<uint8_t>(s[i]);
  const size_t extra = b < 0x80         ? 0
                       : (b >> 5) == 6  ? 1
                       : (b >> 4) == 14 ? 2
                       : (b >> 3) == 30 ? 3
                                        : 4;
  if (extra == 4 || s.size() - i <= extra) return 0;
  c = extra == 0 ? b : static_cast<uint32_t>(b & (0x3F >> extra));
  for (size_t k = 1; k <= extra; ++k) {
    const uint8_t t = static_cast<uint8_t>(s[i + k]);
    if ((t & 0xC0) != 0x80) return 0;
    c = (c << 6) | (t & 0x3Fu);
  }
  static constexpr uint32_t min_of[] = {0, 0x80, 0x800, 0x10000};
  if (c < min_of[extra] || c > 0x10FFFF) return 0;
  return extra + 1;
}

void put_unit(uint32_t c, std::u16string &out) {
  if (c >= 0x10000) {
    out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  } else {
    out += static_cast<char16_t>(c);
  }
}

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

}  // namespace

void append_units(std::string_view bytes, bool name, std::u16string &out) {
  for (size_t i = 0; i < bytes.size();) {
    const unsigned char b = static_cast<unsigned char>(bytes[i]);
    if (b < 0x80) {
      out += name && (b == '\0' || b == '\n' || b == '\r') ? escaped_byte(b) : char16_t{b};
      ++i;
      continue;
    }
    uint32_t c = 0;
    const size_t n = utf8_sequence(bytes, i, c);
    if (n == 0 || is_surrogate(c)) {
      out += escaped_byte(b);
      ++i;
    } else {
      put_unit(c, out);
      i += n;
    }
  }
}

bool append_bytes(std::u16string_view units, std::string &out) {
  for (size_t i = 0; i < units.size(); ++i) {
    const uint32_t u = units[i];
    if (u >= 0xD800 && u < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
        units[i + 1] < 0xE000) {
      put_utf8(0x10000 + ((u - 0xD800) << 10) + (units[++i] - 0xDC00u), out);
    } else if (u >= 0xDC00 && u <= 0xDCFF) {
      out += static_cast<char>(u - 0xDC00);
    } else if (is_surrogate(u)) {
      return false;
    } else {
      put_utf8(u, out);
    }
  }
  return true;
}

void line_units(std::string_view line, bool utf8, std::u16string &out) {
  out.clear();
  for (size_t i = 0; i < line.size();) {
    const unsigned char b = static_cast<unsigned char>(line[i]);
    uint32_t c = 0;
    const size_t n = b < 0x80 || !utf8 ? 0 : utf8_sequence(line, i, c);
    if (b < 0x80) {
      out += char16_t{b};
      ++i;
    } else if (n == 0 || (is_surrogate(c) && (c < 0xDC00 || c > 0xDCFF))) {
      out += escaped_byte(b);
      ++i;
    } else {
      put_unit(c, out);  // a lone U+DC00..U+DCFF stays the byte it stands for
      i += n;
    }
  }
}

}  // namespace korutl::regfile
