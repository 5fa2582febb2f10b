#include "tools/reg_values.h"

#include <strings.h>
#include <functional>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <new>

#include "siblings/rsv/rsv.h"

namespace korutl_tool {

namespace {

struct TypeName {
  const char *name;
  uint32_t code;
};
constexpr TypeName kTypeNames[] = {
    {"REG_SZ", RSV_REG_SZ},
    {"REG_EXPAND_SZ", RSV_REG_EXPAND_SZ},
    {"REG_MULTI_SZ", RSV_REG_MULTI_SZ},
    {"REG_DWORD", RSV_REG_DWORD},
    {"REG_QWORD", RSV_REG_QWORD},
    {"REG_BINARY", RSV_REG_BINARY},
    {"REG_NONE", RSV_REG_NONE},
};

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// A whole number in decimal or 0x hex, at most `max`.
bool parse_number(std::string_view text, uint64_t max, uint64_t &out) {
  unsigned base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  if (text.empty()) return false;
  out = 0;
  for (const char c : text) {
    const int d = hex_digit(c);
    if (d < 0 || static_cast<unsigned>(d) >= base) return false;
    if (out > (max - static_cast<unsigned>(d)) / base) return false;
    out = out * base + static_cast<unsigned>(d);
  }
  return true;
}

void append_little_endian(std::string &bytes, uint64_t n, size_t width) {
  for (size_t i = 0; i < width; ++i) bytes.push_back(static_cast<char>((n >> (8 * i)) & 0xFFu));
}

uint64_t little_endian(const std::string &bytes) {
  uint64_t n = 0;
  for (size_t i = bytes.size(); i-- > 0;) n = (n << 8) | static_cast<unsigned char>(bytes[i]);
  return n;
}

std::string hex_of(const std::string &bytes) {
  static const char digits[] = "0123456789ABCDEF";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto b = static_cast<unsigned char>(c);
    hex += digits[b >> 4];
    hex += digits[b & 0xFu];
  }
  return hex;
}

// A number type whose bytes have the type's width.
bool is_number(uint32_t type, const std::string &bytes) {
  return (type == RSV_REG_DWORD && bytes.size() == 4) ||
         (type == RSV_REG_QWORD && bytes.size() == 8);
}

bool is_text(uint32_t type) { return type == RSV_REG_SZ || type == RSV_REG_EXPAND_SZ; }

std::string text_of(const std::string &bytes) { return bytes.substr(0, bytes.find('\0')); }

}  // namespace

std::optional<uint32_t> reg_type_code(std::string_view name) {
  for (const TypeName &t : kTypeNames)
    if (name.size() == std::strlen(t.name) && strncasecmp(name.data(), t.name, name.size()) == 0)
      return t.code;
  return std::nullopt;
}

std::string reg_type_name(uint32_t code) {
  for (const TypeName &t : kTypeNames)
    if (t.code == code) return t.name;
  return "REG_UNKNOWN(" + std::to_string(code) + ")";
}

std::string reg_type_names() {
  std::string names;
  for (const TypeName &t : kTypeNames) names += (names.empty() ? "" : ", ") + std::string(t.name);
  return names;
}

std::string reg_parse_data(uint32_t type, const std::optional<std::string> &text,
                           std::string_view separator, std::string &bytes) {
  bytes.clear();
  const std::string data = text.value_or("");
  switch (type) {
    case RSV_REG_DWORD:
    case RSV_REG_QWORD: {
      const bool dword = type == RSV_REG_DWORD;
      uint64_t n = 0;
      if (text && !parse_number(data, dword ? UINT32_MAX : UINT64_MAX, n))
        return "\"" + data + "\" is not a whole number from 0 to " +
               (dword ? "4294967295 (0xffffffff)" : "18446744073709551615 (0xffffffffffffffff)");
      append_little_endian(bytes, n, dword ? 4 : 8);
      return "";
    }
    case RSV_REG_MULTI_SZ: {
      if (separator.empty()) return "the separator of REG_MULTI_SZ items is empty";
      if (!data.empty()) {
        for (size_t start = 0;;) {
          const size_t end = data.find(separator, start);
          const std::string_view item =
              std::string_view(data).substr(start, end == std::string::npos ? end : end - start);
          if (item.empty()) return "a REG_MULTI_SZ item is empty";
          bytes.append(item).push_back('\0');
          if (end == std::string::npos) break;
          start = end + separator.size();
        }
      }
      bytes.push_back('\0');
      return "";
    }
    case RSV_REG_BINARY:
    case RSV_REG_NONE:
      if (data.size() % 2 != 0) return "binary data needs two hex digits a byte";
      for (size_t i = 0; i < data.size(); i += 2) {
        const int hi = hex_digit(data[i]), lo = hex_digit(data[i + 1]);
        if (hi < 0 || lo < 0) return "\"" + data + "\" is not hex digits";
        bytes.push_back(static_cast<char>(hi * 16 + lo));
      }
      return "";
    default:
      bytes = data;
      bytes.push_back('\0');
      return "";
  }
}

std::vector<std::string> reg_multi_sz_items(const std::string &bytes) {
  std::string_view rest = bytes;
  // The list ends in an empty item: "a\0b\0\0", or "\0" for no items.
  if (rest.size() >= 2 && rest.substr(rest.size() - 2) == std::string_view("\0\0", 2))
    rest.remove_suffix(2);
  else if (!rest.empty() && rest.back() == '\0')
    rest.remove_suffix(1);
  std::vector<std::string> items;
  if (rest.empty()) return items;
  for (size_t start = 0;;) {
    const size_t end = rest.find('\0', start);
    items.emplace_back(rest.substr(start, end == std::string_view::npos ? end : end - start));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return items;
}

std::string reg_show_value(uint32_t type, const std::string &bytes, std::string_view separator) {
  if (is_number(type, bytes)) {
    char buf[24];
    std::snprintf(buf, sizeof buf, "0x%" PRIx64, little_endian(bytes));
    return buf;
  }
  if (is_text(type)) return text_of(bytes);
  if (type == RSV_REG_MULTI_SZ) {
    std::string text;
    const auto items = reg_multi_sz_items(bytes);
    for (size_t i = 0; i < items.size(); ++i) {
      if (i > 0) text.append(separator);
      text += items[i];
    }
    return text;
  }
  return hex_of(bytes);
}

void reg_json_data(JsonWriter &json, uint32_t type, const std::string &bytes) {
  if (is_number(type, bytes)) {
    json.number(little_endian(bytes));
  } else if (is_text(type)) {
    json.string(text_of(bytes));
  } else if (type == RSV_REG_MULTI_SZ) {
    json.begin_array();
    for (const std::string &item : reg_multi_sz_items(bytes)) json.string(item);
    json.end_array();
  } else {
    json.string(hex_of(bytes));
  }
}

uint16_t reg_read_value(const std::string &key, const std::string &name, RegValue &value) {
  // The value may grow between asking its size and reading it.
  for (;;) {
    uint32_t size = 0;
    if (const uint16_t rc = rsv_get_value_ex(key.c_str(), name.c_str(), &value.type, nullptr, &size,
                                             kRegModule, __LINE__);
        rc != RSV_OK)
      return rc;
    value.bytes.assign(size, '\0');
    const uint16_t rc = rsv_get_value_ex(key.c_str(), name.c_str(), &value.type, value.bytes.data(),
                                         &size, kRegModule, __LINE__);
    if (rc == RSV_E_BUFFER_SMALL) continue;
    value.bytes.resize(size);
    return rc;
  }
}

uint16_t reg_probe_value(const std::string &key, const std::string &name) {
  uint32_t size = 0;
  return rsv_get_value_ex(key.c_str(), name.c_str(), nullptr, nullptr, &size, kRegModule, __LINE__);
}

namespace {

struct NameSink {
  std::vector<std::string> *names;
  bool out_of_memory = false;
};

int32_t take_name(const char *name, void *context) {
  auto *sink = static_cast<NameSink *>(context);
  try {
    sink->names->emplace_back(name);
    return 0;
  } catch (const std::bad_alloc &) {
    sink->out_of_memory = true;  // a listing cut short must not pass for the whole
    return 1;
  }
}

}  // namespace

uint16_t collect_names(std::vector<std::string> &names,
                       const std::function<uint16_t(rsv_name_func, void *)> &list) {
  names.clear();
  NameSink sink{&names};
  const uint16_t rc = list(take_name, &sink);
  if (rc == RSV_OK && sink.out_of_memory) {
    names.clear();
    return RSV_E_STORE;
  }
  return rc;
}

uint16_t list_names(const std::string &key, korutl::NameKind kind, std::vector<std::string> &names,
                    const char *module) {
  return collect_names(names, [&](rsv_name_func take, void *context) {
    return rsv_list_names(key.c_str(),
                          kind == korutl::NameKind::value ? RSV_LIST_VALUES : RSV_LIST_SUBKEYS,
                          take, context, module, __LINE__);
  });
}

std::vector<std::string> reg_value_names(const std::string &key) {
  std::vector<std::string> names;
  list_names(key, korutl::NameKind::value, names);
  return names;
}

std::vector<std::string> reg_subkey_names(const std::string &key) {
  std::vector<std::string> names;
  list_names(key, korutl::NameKind::subkey, names);
  return names;
}

}  // namespace korutl_tool
