// Reading .reg files. The file is decoded to UTF-8 first, then read one
// logical line at a time (a line ending in a backslash continues).
#include <cctype>
#include <cstdint>
#include <cstdlib>

#include "platform/store_rules.h"
#include "siblings/rsv/regfile.h"
#include "siblings/rsv/regfile_text.h"

namespace korutl::regfile {

namespace {

constexpr std::string_view header_line = "Windows Registry Editor Version 5.00";

struct Line {
  std::string text;
  size_t number;  // where the logical line starts
};

bool decode(std::string_view file, std::string &text) {
  if (file.size() >= 2 && static_cast<uint8_t>(file[0]) == 0xFF &&
      static_cast<uint8_t>(file[1]) == 0xFE)
    return utf16le_to_utf8(file.substr(2), text);
  if (file.size() >= 3 && file.substr(0, 3) == "\xEF\xBB\xBF") file.remove_prefix(3);
  text.assign(file);
  return true;
}

std::vector<Line> logical_lines(const std::string &text) {
  std::vector<Line> lines;
  size_t number = 0;
  bool continuing = false;
  for (size_t start = 0; start <= text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string_view raw(text.data() + start, end - start);
    if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);
    ++number;
    if (continuing) {
      while (!raw.empty() && (raw.front() == ' ' || raw.front() == '\t')) raw.remove_prefix(1);
      lines.back().text.append(raw);
    } else {
      lines.push_back({std::string(raw), number});
    }
    std::string &t = lines.back().text;
    continuing = !t.empty() && t.back() == '\\' && t.front() != '[' && t.front() != ';';
    if (continuing) t.pop_back();
    start = end + 1;
  }
  return lines;
}

// Reads a quoted string at `pos` (just past the opening quote) with its
// \\ and \" escapes; leaves `pos` past the closing quote.
bool quoted(const std::string &s, size_t &pos, std::string &out) {
  out.clear();
  while (pos < s.size()) {
    const char c = s[pos++];
    if (c == '"') return true;
    if (c == '\\') {
      if (pos >= s.size() || (s[pos] != '\\' && s[pos] != '"')) return false;
      out += s[pos++];
    } else {
      out += c;
    }
  }
  return false;
}

bool hex_bytes(std::string_view s, std::string &out) {
  out.clear();
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
  while (!s.empty()) {
    size_t i = 0;
    while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    if (i + 2 > s.size() || !std::isxdigit(static_cast<unsigned char>(s[i])) ||
        !std::isxdigit(static_cast<unsigned char>(s[i + 1])))
      return false;
    out += static_cast<char>(std::strtoul(std::string(s.substr(i, 2)).c_str(), nullptr, 16));
    i += 2;
    while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    if (i == s.size()) return true;
    if (s[i] != ',') return false;
    s.remove_prefix(i + 1);
    if (s.find_first_not_of(" \t") == std::string_view::npos) return false;
  }
  return true;
}

// The data after "=": a quoted text, dword:, hex: or hex(N):.
bool value_data(const std::string &s, size_t pos, store::Value &v) {
  if (pos < s.size() && s[pos] == '"') {
    ++pos;
    if (!quoted(s, pos, v.data) || s.find_first_not_of(" \t", pos) != std::string::npos)
      return false;
    v.type = store::type_sz;
    v.data.push_back('\0');
    return true;
  }
  const std::string_view rest(s.data() + pos, s.size() - pos);
  if (rest.substr(0, 6) == "dword:") {
    const std::string digits(rest.substr(6));
    if (digits.size() != 8 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
      return false;
    const uint32_t d = static_cast<uint32_t>(std::strtoul(digits.c_str(), nullptr, 16));
    v.type = store::type_dword;
    v.data.assign(reinterpret_cast<const char *>(&d), 4);
    return true;
  }
  size_t colon;
  if (rest.substr(0, 4) == "hex:") {
    v.type = store::type_binary;
    colon = 3;
  } else if (rest.substr(0, 4) == "hex(" && (colon = rest.find("):")) != std::string_view::npos &&
             colon > 4 && colon <= 12) {
    const std::string code(rest.substr(4, colon - 4));
    if (code.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return false;
    v.type = static_cast<uint32_t>(std::strtoul(code.c_str(), nullptr, 16));
    ++colon;
  } else {
    return false;
  }
  std::string bytes;
  if (!hex_bytes(rest.substr(colon + 1), bytes)) return false;
  // The editor writes these text types as UTF-16LE; they are kept as UTF-8.
  if (v.type == store::type_expand_sz || v.type == store::type_multi_sz)
    return utf16le_to_utf8(bytes, v.data);
  v.data = std::move(bytes);
  return true;
}

bool value_line(const std::string &s, store::KeyRecord &key) {
  size_t pos = 0;
  std::string name;
  if (s[0] == '@') {
    pos = 1;
  } else {
    pos = 1;
    if (!quoted(s, pos, name)) return false;
  }
  while (pos < s.size() && s[pos] == ' ') ++pos;
  if (pos >= s.size() || s[pos++] != '=') return false;
  while (pos < s.size() && s[pos] == ' ') ++pos;
  if (s.substr(pos) == "-") {
    key.removed_values.push_back(std::move(name));
    return true;
  }
  store::Value v;
  v.name = std::move(name);
  if (!value_data(s, pos, v)) return false;
  key.values.push_back(std::move(v));
  return true;
}

bool key_line(const std::string &s, std::vector<store::KeyRecord> &records) {
  const size_t close = s.rfind(']');
  if (close == std::string::npos || s.find_first_not_of(" \t", close + 1) != std::string::npos)
    return false;
  store::KeyRecord r;
  r.remove = s.size() > 1 && s[1] == '-';
  r.path = s.substr(r.remove ? 2 : 1, close - (r.remove ? 2 : 1));
  std::vector<std::string_view> parts;
  if (!store::split_key_path(r.path, parts)) return false;
  records.push_back(std::move(r));
  return true;
}

}  // namespace

bool parse(std::string_view file, std::vector<store::KeyRecord> &records, size_t &bad_line) {
  records.clear();
  bad_line = 1;
  std::string text;
  if (!decode(file, text)) return false;
  bool seen_header = false;
  for (const Line &line : logical_lines(text)) {
    const std::string &s = line.text;
    bad_line = line.number;
    if (s.find_first_not_of(" \t") == std::string::npos || s[0] == ';') continue;
    if (!seen_header) {
      if (s != header_line) return false;
      seen_header = true;
    } else if (s[0] == '[') {
      if (!key_line(s, records)) return false;
    } else if (s[0] == '"' || s[0] == '@') {
      if (records.empty() || records.back().remove || !value_line(s, records.back())) return false;
    } else {
      return false;
    }
  }
  if (!seen_header) return false;
  bad_line = 0;
  return true;
}

}  // namespace korutl::regfile
