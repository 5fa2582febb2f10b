// Writing a subtree as a .reg file the Windows registry editor reads back:
// each key in pre-order, its values in their order; text as quoted
// strings, DWORDs as dword:, everything else as hex bytes wrapped the way
// the editor wraps them.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "siblings/rsv/regfile.h"
#include "siblings/rsv/regfile_text.h"

namespace korutl::regfile {

namespace {

std::string quote(std::string_view s) {
  std::string out = "\"";
  for (const char c : s) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  return out + "\"";
}

// A text value written as a quoted string must come back byte for byte.
bool plain_text(const store::Value &v) {
  return v.type == store::type_sz && !v.data.empty() && v.data.back() == '\0' &&
         std::memchr(v.data.data(), '\0', v.data.size() - 1) == nullptr &&
         v.data.find_first_of("\r\n") == std::string::npos;
}

void hex_value(const std::string &prefix, const std::string &bytes, std::string &out) {
  std::string line = prefix;
  char buf[4];
  for (size_t i = 0; i < bytes.size(); ++i) {
    std::snprintf(buf, sizeof buf, "%02x", static_cast<uint8_t>(bytes[i]));
    line += buf;
    if (i + 1 < bytes.size()) {
      line += ',';
      if (line.size() > 76) {
        out += line + "\\\n";
        line = "  ";
      }
    }
  }
  out += line + "\n";
}

void value_text(const store::Value &v, std::string &out) {
  const std::string name = v.name.empty() ? "@" : quote(v.name);
  if (plain_text(v)) {
    out += name + "=" + quote(std::string_view(v.data).substr(0, v.data.size() - 1)) + "\n";
    return;
  }
  if (v.type == store::type_dword && v.data.size() == 4) {
    uint32_t d;
    std::memcpy(&d, v.data.data(), 4);
    char buf[16];
    std::snprintf(buf, sizeof buf, "dword:%08x", d);
    out += name + "=" + buf + "\n";
    return;
  }
  std::string bytes = v.data;
  if (v.type == store::type_expand_sz || v.type == store::type_multi_sz) {
    std::string wide;
    if (utf8_to_utf16le(v.data, wide)) bytes = std::move(wide);
  }
  char prefix[24];
  if (v.type == store::type_binary)
    std::snprintf(prefix, sizeof prefix, "hex:");
  else
    std::snprintf(prefix, sizeof prefix, "hex(%x):", v.type);
  hex_value(name + "=" + prefix, bytes, out);
}

store::Status key_text(const std::string &path, std::string &out) {
  std::vector<store::Value> values;
  store::Status st = store::list_values(path, values);
  if (st != store::Status::ok) return st;
  out += "[" + path + "]\n";
  for (const store::Value &v : values) value_text(v, out);
  out += "\n";
  std::vector<std::string> subkeys;
  if ((st = store::list_subkeys(path, subkeys)) != store::Status::ok) return st;
  for (const std::string &sub : subkeys)
    if ((st = key_text(path + "\\" + sub, out)) != store::Status::ok) return st;
  return store::Status::ok;
}

}  // namespace

store::Status write(const std::string &path, std::string &file) {
  std::string text = "Windows Registry Editor Version 5.00\n\n";
  store::Status st = key_text(path, text);
  if (st != store::Status::ok) return st;
  std::string crlf;
  for (const char c : text) {
    if (c == '\n') crlf += '\r';
    crlf += c;
  }
  std::string wide;
  if (!utf8_to_utf16le(crlf, wide)) return store::Status::bad_name;
  file = "\xFF\xFE" + wide;
  return store::Status::ok;
}

}  // namespace korutl::regfile
