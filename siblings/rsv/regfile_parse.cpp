// Reading .reg files. The file is read in chunks, one physical line at a
// time turned into UTF-16 units (regfile_text.h), joined into logical lines
// (a line ending in a backslash continues) and parsed; names and data are
// turned back into bytes field by field, so an escaped byte never reads as
// the file's own punctuation.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

#include "platform/store_rules.h"
#include "siblings/rsv/regfile.h"
#include "siblings/rsv/regfile_text.h"

namespace korutl::regfile {

namespace {

constexpr std::u16string_view header_5 = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view header_4 = u"REGEDIT4";

// Fills a buffer with up to `capacity` bytes; 0 at the end, -1 on an error.
using ReadChunk = std::function<long(char *buffer, size_t capacity)>;

// Physical lines of a file, as units, without their line ends.
class LineReader {
 public:
  explicit LineReader(ReadChunk read) : read_(std::move(read)) {}

  // False at the end of the file or on a failure (failure() tells which).
  bool next(std::u16string &line) {
    if (done_) return false;
    if (!started_ && !start()) return false;
    line.clear();
    bytes_.clear();
    while (true) {
      if (at_ == end_ && !fill()) {
        done_ = true;
        if (failure_ != Parsed::ok) return false;
        if (wide_ && !bytes_.empty()) return fail(Parsed::malformed);  // half a unit
        break;
      }
      if (wide_) {
        if (!bytes_.empty()) {
          bytes_ += buffer_[at_++];
          const char16_t u = unit(bytes_.data());
          bytes_.clear();
          if (u == u'\n') break;
          line += u;
        } else if (end_ - at_ >= 2) {
          const char16_t u = unit(buffer_ + at_);
          at_ += 2;
          if (u == u'\n') break;
          line += u;
        } else {
          bytes_ += buffer_[at_++];
        }
      } else {
        const void *lf = std::memchr(buffer_ + at_, '\n', end_ - at_);
        const size_t stop =
            lf != nullptr ? static_cast<size_t>(static_cast<const char *>(lf) - buffer_) : end_;
        bytes_.append(buffer_ + at_, stop - at_);
        at_ = stop;
        if (lf != nullptr) {
          ++at_;
          break;
        }
      }
    }
    if (!wide_) line_units(bytes_, utf8_, line);
    if (!line.empty() && line.back() == u'\r') line.pop_back();
    ++number_;
    return true;
  }

  size_t number() const { return number_; }
  Parsed failure() const { return failure_; }
  // An 8-bit file (REGEDIT4): every byte stays a byte, from the line last
  // read (`last`, read ahead) on.
  void eight_bit(std::u16string &last) {
    utf8_ = false;
    if (wide_ || number_ == 0) return;
    line_units(bytes_, false, last);
    if (!last.empty() && last.back() == u'\r') last.pop_back();
  }

 private:
  static char16_t unit(const char *p) {
    return static_cast<char16_t>(static_cast<uint8_t>(p[0]) | static_cast<uint8_t>(p[1]) << 8);
  }

  bool fail(Parsed why) {
    failure_ = why;
    done_ = true;
    return false;
  }

  bool fill() {
    const long n = read_(buffer_, sizeof buffer_);
    if (n < 0) return fail(Parsed::unreadable);
    total_ += static_cast<size_t>(n);
    if (total_ > max_file_size) return fail(Parsed::too_large);
    at_ = 0;
    end_ = static_cast<size_t>(n);
    return n > 0;
  }

  // Reads the byte-order mark, if any, and with it the file's encoding.
  bool start() {
    started_ = true;
    while (end_ < 3) {
      const long n = read_(buffer_ + end_, 3 - end_);
      if (n < 0) return fail(Parsed::unreadable);
      if (n == 0) break;
      end_ += static_cast<size_t>(n);
    }
    total_ = end_;
    if (end_ >= 2 && static_cast<uint8_t>(buffer_[0]) == 0xFF &&
        static_cast<uint8_t>(buffer_[1]) == 0xFE) {
      wide_ = true;
      at_ = 2;
    } else if (end_ == 3 && std::memcmp(buffer_, "\xEF\xBB\xBF", 3) == 0) {
      at_ = 3;
    }
    return true;
  }

  ReadChunk read_;
  char buffer_[1 << 16];
  size_t at_ = 0, end_ = 0, total_ = 0, number_ = 0;
  std::string bytes_;  // a line's bytes, or half a unit
  bool started_ = false, done_ = false, wide_ = false, utf8_ = true;
  Parsed failure_ = Parsed::ok;
};

bool blank(std::u16string_view s) {
  return s.find_first_not_of(u" \t") == std::u16string_view::npos;
}

// Reads a quoted string at `pos` (just past the opening quote) with its
// \\ and \" escapes; leaves `pos` past the closing quote.
bool quoted(std::u16string_view s, size_t &pos, std::string &out) {
  out.clear();
  std::u16string text;
  while (pos < s.size()) {
    const char16_t c = s[pos++];
    if (c == u'"') return append_bytes(text, out);
    if (c == u'\\') {
      if (pos >= s.size() || (s[pos] != u'\\' && s[pos] != u'"')) return false;
      text += s[pos++];
    } else {
      text += c;
    }
  }
  return false;
}

int hex_digit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// A run of hexadecimal digits, at most `max_digits`, as a number.
bool hex_number(std::u16string_view s, size_t max_digits, uint32_t &n) {
  if (s.empty() || s.size() > max_digits) return false;
  n = 0;
  for (const char16_t c : s) {
    const int d = hex_digit(c);
    if (d < 0) return false;
    n = n << 4 | static_cast<uint32_t>(d);
  }
  return true;
}

bool space(char16_t c) { return c == u' ' || c == u'\t'; }

// "xx,xx,..." with blanks around the bytes; empty is no bytes.
bool hex_bytes(std::u16string_view s, std::string &out) {
  out.clear();
  size_t i = 0;
  while (i < s.size() && space(s[i])) ++i;
  if (i == s.size()) return true;
  while (true) {
    while (i < s.size() && space(s[i])) ++i;
    if (i + 2 > s.size() || hex_digit(s[i]) < 0 || hex_digit(s[i + 1]) < 0) return false;
    out += static_cast<char>(hex_digit(s[i]) << 4 | hex_digit(s[i + 1]));
    i += 2;
    while (i < s.size() && space(s[i])) ++i;
    if (i == s.size()) return true;
    if (s[i++] != u',') return false;
  }
}

bool text_type(uint32_t type) {
  return type == store::type_sz || type == store::type_expand_sz || type == store::type_multi_sz;
}

// The data after "=": a quoted text, dword:, hex: or hex(N):. In a version
// 5.00 file (`wide_text`) the hex forms of text types are UTF-16LE.
bool value_data(std::u16string_view s, bool wide_text, store::Value &v) {
  if (!s.empty() && s[0] == u'"') {
    size_t pos = 1;
    if (!quoted(s, pos, v.data) || !blank(s.substr(pos))) return false;
    v.type = store::type_sz;
    v.data.push_back('\0');
    return true;
  }
  if (s.substr(0, 6) == u"dword:") {
    uint32_t d = 0;
    if (s.size() != 14 || !hex_number(s.substr(6), 8, d)) return false;
    v.type = store::type_dword;
    for (int k = 0; k < 4; ++k) v.data += static_cast<char>(d >> (8 * k) & 0xFF);
    return true;
  }
  size_t data_at;
  if (s.substr(0, 4) == u"hex:") {
    v.type = store::type_binary;
    data_at = 4;
  } else {
    const size_t close = s.find(u"):");
    if (s.substr(0, 4) != u"hex(" || close == std::u16string_view::npos ||
        !hex_number(s.substr(4, close - 4), 8, v.type))
      return false;
    data_at = close + 2;
  }
  std::string bytes;
  if (!hex_bytes(s.substr(data_at), bytes)) return false;
  if (!wide_text || !text_type(v.type)) {
    v.data = std::move(bytes);
    return true;
  }
  if (bytes.size() % 2 != 0) return false;
  std::u16string units(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i)
    units[i] = static_cast<char16_t>(static_cast<uint8_t>(bytes[2 * i]) |
                                     static_cast<uint8_t>(bytes[2 * i + 1]) << 8);
  v.data.clear();
  return append_bytes(units, v.data);
}

bool value_line(std::u16string_view s, bool wide_text, store::KeyRecord &key) {
  size_t pos = 1;
  std::string name;
  if (s[0] != u'@' && !quoted(s, pos, name)) return false;
  while (pos < s.size() && space(s[pos])) ++pos;
  if (pos >= s.size() || s[pos++] != u'=') return false;
  while (pos < s.size() && space(s[pos])) ++pos;
  const std::u16string_view data = s.substr(pos);
  if (data.find_first_not_of(u" \t", 1) == std::u16string_view::npos && !data.empty() &&
      data[0] == u'-') {
    key.removed_values.push_back(std::move(name));
    return true;
  }
  store::Value v;
  v.name = std::move(name);
  if (!value_data(data, wide_text, v)) return false;
  key.values.push_back(std::move(v));
  return true;
}

bool key_line(std::u16string_view s, std::vector<store::KeyRecord> &records) {
  const size_t close = s.rfind(u']');
  if (close == std::u16string_view::npos || !blank(s.substr(close + 1))) return false;
  store::KeyRecord r;
  r.remove = s.size() > 1 && s[1] == u'-';
  const size_t start = r.remove ? 2 : 1;
  if (close < start || !append_bytes(s.substr(start, close - start), r.path)) return false;
  std::vector<std::string_view> parts;
  if (!store::split_key_path(r.path, parts)) return false;
  if (r.remove && store::check_key_removal(r.path) != store::Status::ok) return false;
  if (!records.empty()) {
    // Only the key whose values are being read may have room to spare.
    records.back().values.shrink_to_fit();
    records.back().removed_values.shrink_to_fit();
  }
  records.push_back(std::move(r));
  return true;
}

Parsed parse_lines(LineReader &reader, std::vector<store::KeyRecord> &records, size_t &bad_line) {
  records.clear();
  bad_line = 0;
  bool seen_header = false, wide_text = true;
  std::u16string s, next;
  bool have_next = reader.next(next);
  while (have_next) {
    // One logical line: a line ending in a backslash (not a key or
    // comment line) continues on the next, whose leading blanks go.
    s.swap(next);
    const size_t number = reader.number();
    while (!s.empty() && s.back() == u'\\' && s.front() != u'[' && s.front() != u';') {
      s.pop_back();
      if (!reader.next(next)) break;
      const size_t lead = next.find_first_not_of(u" \t");
      if (lead != std::u16string::npos) s.append(next, lead);
    }
    if (reader.failure() != Parsed::ok) break;
    have_next = reader.next(next);
    if (blank(s) || s[0] == u';') continue;
    bad_line = number;
    if (!seen_header) {
      if (s == header_4) {
        if (have_next) reader.eight_bit(next);
        wide_text = false;
      } else if (s != header_5) {
        return Parsed::malformed;
      }
      seen_header = true;
    } else if (s[0] == u'[') {
      if (!key_line(s, records)) return Parsed::malformed;
    } else if (s[0] == u'"' || s[0] == u'@') {
      if (records.empty() || records.back().remove || !value_line(s, wide_text, records.back()))
        return Parsed::malformed;
    } else {
      return Parsed::malformed;
    }
  }
  if (reader.failure() != Parsed::ok) {
    bad_line = reader.failure() == Parsed::malformed ? reader.number() + 1 : 0;
    return reader.failure();
  }
  if (!seen_header) {
    bad_line = 1;
    return Parsed::malformed;
  }
  bad_line = 0;
  return Parsed::ok;
}

}  // namespace

Parsed parse(std::string_view file, std::vector<store::KeyRecord> &records, size_t &bad_line) {
  LineReader reader([&file](char *buffer, size_t capacity) -> long {
    const size_t n = std::min(capacity, file.size());
    std::memcpy(buffer, file.data(), n);
    file.remove_prefix(n);
    return static_cast<long>(n);
  });
  return parse_lines(reader, records, bad_line);
}

Parsed parse(std::FILE *in, std::vector<store::KeyRecord> &records, size_t &bad_line) {
  LineReader reader([in](char *buffer, size_t capacity) -> long {
    const size_t n = std::fread(buffer, 1, capacity, in);
    return n == 0 && std::ferror(in) ? -1 : static_cast<long>(n);
  });
  return parse_lines(reader, records, bad_line);
}

Parsed read_file(const char *file, std::vector<store::KeyRecord> &records, size_t &bad_line) {
  records.clear();
  bad_line = 0;
  const std::unique_ptr<std::FILE, int (*)(std::FILE *)> in(std::fopen(file, "rb"), std::fclose);
  if (in == nullptr) return Parsed::unreadable;
  // A regular file says its size: one too large is refused unread.
  std::error_code ec;
  if (std::filesystem::is_regular_file(file, ec) &&
      std::filesystem::file_size(file, ec) > max_file_size && !ec)
    return Parsed::too_large;
  const Parsed p = parse(in.get(), records, bad_line);
  if (p != Parsed::ok) records.clear();
  return p;
}

}  // namespace korutl::regfile
