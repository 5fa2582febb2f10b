#include "tools/reg_values.h"

#include <strings.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "siblings/rsv/rsv.h"

namespace korutl_tool {

namespace {

// Value names come in slots of 33 bytes, subkey names in slots of 256.
std::vector<std::string> names_of(const std::string &key, bool values) {
  uint16_t subkeys = 0, value_count = 0;
  if (rsv_query_key(key.c_str(), &subkeys, &value_count, kRegModule, __LINE__) != RSV_OK) return {};
  uint16_t count = values ? value_count : subkeys;
  const size_t slot = values ? 33 : 256;
  std::vector<char> slots(size_t{count} * slot + 1);
  std::vector<char *> ptrs;
  for (uint16_t i = 0; i < count; ++i) ptrs.push_back(slots.data() + i * slot);
  const uint16_t rc =
      values ? rsv_enum_values(key.c_str(), ptrs.data(), &count, kRegModule, __LINE__)
             : rsv_enum_subkeys(key.c_str(), ptrs.data(), &count, kRegModule, __LINE__);
  if (rc != RSV_OK) return {};
  return {ptrs.begin(), ptrs.begin() + count};
}

}  // namespace

const std::map<std::string, uint32_t> &reg_type_codes() {
  static const std::map<std::string, uint32_t> codes = {{"REG_SZ", 1},       {"REG_EXPAND_SZ", 2},
                                                        {"REG_BINARY", 3},   {"REG_DWORD", 4},
                                                        {"REG_MULTI_SZ", 7}, {"REG_QWORD", 11}};
  return codes;
}

std::string reg_type_name(uint32_t code) {
  for (const auto &[name, c] : reg_type_codes())
    if (c == code) return name;
  return "REG_NONE";
}

std::string reg_full_key(const std::string &key) {
  if (key.size() >= 4 && strncasecmp(key.c_str(), "HKLM", 4) == 0 &&
      (key.size() == 4 || key[4] == '\\'))
    return "HKEY_LOCAL_MACHINE" + key.substr(4);
  return key;
}

std::string reg_show_value(uint32_t type, const std::string &bytes) {
  char buf[32];
  switch (type) {
    case 4:
      if (bytes.size() != 4) break;
      uint32_t d;
      std::memcpy(&d, bytes.data(), 4);
      std::snprintf(buf, sizeof buf, "0x%" PRIx32, d);
      return buf;
    case 11:
      if (bytes.size() != 8) break;
      uint64_t q;
      std::memcpy(&q, bytes.data(), 8);
      std::snprintf(buf, sizeof buf, "0x%" PRIx64, q);
      return buf;
    case 1:
    case 2:
      return std::string(bytes.c_str(), strnlen(bytes.data(), bytes.size()));
    case 7: {
      std::string text;
      for (size_t start = 0; start < bytes.size() && bytes[start] != '\0';) {
        const size_t len = strnlen(bytes.data() + start, bytes.size() - start);
        if (!text.empty()) text += "\\0";
        text.append(bytes, start, len);
        start += len + 1;
      }
      return text;
    }
    default:
      break;
  }
  std::string hex;
  for (unsigned char c : bytes) {
    std::snprintf(buf, sizeof buf, "%02X", c);
    hex += buf;
  }
  return hex;
}

std::optional<RegValue> reg_read_value(const std::string &key, const std::string &name) {
  RegValue v;
  uint32_t size = 0;
  if (rsv_get_value_ex(key.c_str(), name.c_str(), &v.type, nullptr, &size, kRegModule, __LINE__) !=
      RSV_OK)
    return std::nullopt;
  v.bytes.assign(size, '\0');
  if (rsv_get_value_ex(key.c_str(), name.c_str(), &v.type, v.bytes.data(), &size, kRegModule,
                       __LINE__) != RSV_OK)
    return std::nullopt;
  v.bytes.resize(size);
  return v;
}

std::vector<std::string> reg_value_names(const std::string &key) { return names_of(key, true); }

std::vector<std::string> reg_subkey_names(const std::string &key) { return names_of(key, false); }

}  // namespace korutl_tool
