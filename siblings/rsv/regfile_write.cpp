// Writing a subtree as a .reg file the Windows registry editor reads back:
// each key in pre-order, its values in their order, streamed to the file
// as it is read.
#include <cstdint>
#include <cstring>

#include "siblings/rsv/regfile.h"
#include "siblings/rsv/regfile_text.h"

namespace korutl::regfile {

namespace {

// UTF-16LE text to a file through a buffer, counting the line's columns.
class Utf16Out {
 public:
  explicit Utf16Out(std::FILE *file) : file_(file) { bytes_.reserve(flush_at + 8); }
  ~Utf16Out() { flush(); }
  Utf16Out(const Utf16Out &) = delete;
  Utf16Out &operator=(const Utf16Out &) = delete;

  void unit(char16_t u) {
    bytes_ += static_cast<char>(u & 0xFF);
    bytes_ += static_cast<char>(u >> 8);
    ++column_;
    if (bytes_.size() >= flush_at) flush();
  }
  void ascii(std::string_view s) {
    for (const char c : s) unit(static_cast<char16_t>(c));
  }
  void end_line() {
    ascii("\r\n");
    column_ = 0;
  }
  size_t column() const { return column_; }
  bool failed() const { return std::ferror(file_) != 0; }
  void flush() {
    if (!bytes_.empty()) std::fwrite(bytes_.data(), 1, bytes_.size(), file_);
    bytes_.clear();
  }

 private:
  static constexpr size_t flush_at = size_t{1} << 16;
  std::FILE *file_;
  std::string bytes_;
  size_t column_ = 0;
};

// A name in quotes, its backslashes and quotes escaped.
void quoted(std::string_view bytes, bool name, Utf16Out &out) {
  std::u16string units;
  append_units(bytes, name, units);
  out.unit(u'"');
  for (const char16_t u : units) {
    if (u == u'\\' || u == u'"') out.unit(u'\\');
    out.unit(u);
  }
  out.unit(u'"');
}

// REG_SZ the quoted form gives back byte for byte.
bool plain_text(const store::Value &v) {
  return v.type == store::type_sz && !v.data.empty() && v.data.back() == '\0' &&
         std::memchr(v.data.data(), '\0', v.data.size() - 1) == nullptr &&
         v.data.find_first_of("\r\n") == std::string::npos;
}

// hex:... or hex(N):..., wrapped the way the editor wraps it.
void hex_value(uint32_t type, std::string_view bytes, Utf16Out &out) {
  char text[24];
  if (type == store::type_binary)
    std::snprintf(text, sizeof text, "hex:");
  else
    std::snprintf(text, sizeof text, "hex(%x):", type);
  out.ascii(text);
  for (size_t i = 0; i < bytes.size(); ++i) {
    std::snprintf(text, sizeof text, "%02x", static_cast<uint8_t>(bytes[i]));
    out.ascii(text);
    if (i + 1 < bytes.size()) {
      out.unit(u',');
      if (out.column() > 76) {
        out.unit(u'\\');
        out.end_line();
        out.ascii("  ");
      }
    }
  }
}

void value_line(const store::Value &v, Utf16Out &out) {
  if (v.name.empty())
    out.unit(u'@');
  else
    quoted(v.name, true, out);
  out.unit(u'=');
  if (plain_text(v)) {
    quoted(std::string_view(v.data).substr(0, v.data.size() - 1), false, out);
  } else if (v.type == store::type_dword && v.data.size() == 4) {
    uint32_t d = 0;
    for (size_t k = 0; k < 4; ++k)
      d |= static_cast<uint32_t>(static_cast<uint8_t>(v.data[k])) << (8 * k);
    char text[16];
    std::snprintf(text, sizeof text, "dword:%08x", d);
    out.ascii(text);
  } else if (v.type == store::type_sz || v.type == store::type_expand_sz ||
             v.type == store::type_multi_sz) {
    std::u16string units;
    append_units(v.data, false, units);
    std::string wide;
    wide.reserve(units.size() * 2);
    for (const char16_t u : units) {
      wide += static_cast<char>(u & 0xFF);
      wide += static_cast<char>(u >> 8);
    }
    hex_value(v.type, wide, out);
  } else {
    hex_value(v.type, v.data, out);
  }
  out.end_line();
}

store::Status key_text(const std::string &path, Utf16Out &out) {
  std::u16string units;
  append_units(path, true, units);
  if (!units.empty() && units[0] == u'-') units[0] = escaped_byte('-');  // not a deletion
  out.unit(u'[');
  for (const char16_t u : units) out.unit(u);
  out.unit(u']');
  out.end_line();
  store::Status st =
      store::for_each_value(path, [&out](const store::Value &v) { value_line(v, out); });
  if (st != store::Status::ok) return st;
  out.end_line();
  std::vector<std::string> subkeys;
  if ((st = store::list_subkeys(path, subkeys)) != store::Status::ok) return st;
  for (const std::string &sub : subkeys) {
    if (out.failed()) break;
    if ((st = key_text(path + "\\" + sub, out)) != store::Status::ok) return st;
  }
  return store::Status::ok;
}

}  // namespace

store::Status write(const std::string &path, std::FILE *file) {
  Utf16Out out(file);
  out.unit(u'\xFEFF');
  out.ascii("Windows Registry Editor Version 5.00");
  out.end_line();
  out.end_line();
  return key_text(path, out);
}

}  // namespace korutl::regfile
