#include "tools/output.h"

#include <cstdio>

#include "tools/commands.h"

namespace korutl_tool {

void fail(std::string_view message, ExitStatus status) {
  std::fprintf(stderr, "korutl: %.*s\n", static_cast<int>(message.size()), message.data());
  if (exit_code < status) exit_code = status;
}

namespace {

// The length of the valid UTF-8 sequence at s[i], 0 when there is none
// (overlong forms, surrogates and values past U+10FFFF are not valid).
size_t utf8_sequence(std::string_view s, size_t i) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char b = byte(i);
  if (b < 0x80) return 1;
  size_t n;
  uint32_t cp;
  if (b >= 0xC2 && b <= 0xDF) {
    n = 2, cp = b & 0x1Fu;
  } else if (b >= 0xE0 && b <= 0xEF) {
    n = 3, cp = b & 0x0Fu;
  } else if (b >= 0xF0 && b <= 0xF4) {
    n = 4, cp = b & 0x07u;
  } else {
    return 0;
  }
  if (i + n > s.size()) return 0;
  for (size_t k = 1; k < n; ++k) {
    if ((byte(i + k) & 0xC0u) != 0x80u) return 0;
    cp = (cp << 6) | (byte(i + k) & 0x3Fu);
  }
  if ((n == 3 && cp < 0x800) || (n == 4 && (cp < 0x10000 || cp > 0x10FFFF)) ||
      (cp >= 0xD800 && cp <= 0xDFFF))
    return 0;
  return n;
}

}  // namespace

std::string json_quote(std::string_view bytes) {
  std::string out = "\"";
  char esc[8];
  for (size_t i = 0; i < bytes.size();) {
    const unsigned char c = static_cast<unsigned char>(bytes[i]);
    const size_t n = utf8_sequence(bytes, i);
    if (n == 0) {  // a byte that is not UTF-8
      std::snprintf(esc, sizeof esc, "\\udc%02x", c);
      out += esc;
      ++i;
      continue;
    }
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20 || c == 0x7F) {
      std::snprintf(esc, sizeof esc, "\\u%04x", c);
      out += esc;
    } else {
      out.append(bytes.substr(i, n));
    }
    i += n;
  }
  out += '"';
  return out;
}

void JsonWriter::separate() {
  if (need_comma_) out_ += ',';
  need_comma_ = true;
}

JsonWriter &JsonWriter::begin_object() {
  separate();
  out_ += '{';
  need_comma_ = false;
  return *this;
}

JsonWriter &JsonWriter::end_object() {
  out_ += '}';
  need_comma_ = true;
  return *this;
}

JsonWriter &JsonWriter::begin_array() {
  separate();
  out_ += '[';
  need_comma_ = false;
  return *this;
}

JsonWriter &JsonWriter::end_array() {
  out_ += ']';
  need_comma_ = true;
  return *this;
}

JsonWriter &JsonWriter::key(std::string_view name) {
  separate();
  out_ += json_quote(name);
  out_ += ':';
  need_comma_ = false;  // the value follows without a comma
  return *this;
}

JsonWriter &JsonWriter::string(std::string_view bytes) {
  separate();
  out_ += json_quote(bytes);
  return *this;
}

JsonWriter &JsonWriter::number(uint64_t n) {
  separate();
  out_ += std::to_string(n);
  return *this;
}

JsonWriter &JsonWriter::boolean(bool b) {
  separate();
  out_ += b ? "true" : "false";
  return *this;
}

JsonWriter &JsonWriter::null() {
  separate();
  out_ += "null";
  return *this;
}

void JsonWriter::finish() {
  out_ += '\n';
  std::fwrite(out_.data(), 1, out_.size(), stdout);
  out_.clear();
  need_comma_ = false;
}

}  // namespace korutl_tool
