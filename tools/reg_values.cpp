#include "tools/reg_values.h"

#include <strings.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "siblings/rsv/rsv.h"

namespace korutl_tool {

uint16_t list_names(const std::string &key, korutl::NameKind kind, std::vector<std::string> &names,
                    const char *module) {
  const size_t slot = korutl::name_slot_size(kind);
  std::vector<char> slots;
  std::vector<char *> ptrs;
  uint16_t count = 0;
  const uint16_t rc = korutl::enumerate_names(
      key.c_str(), kind,
      [&](uint16_t n) {
        slots.resize(size_t{n} * slot);
        for (uint16_t i = 0; i < n; ++i) ptrs.push_back(slots.data() + i * slot);
        return ptrs.data();
      },
      count, module, __LINE__);
  names.assign(ptrs.begin(), ptrs.begin() + count);
  return rc;
}

const std::map<std::string, uint32_t> &reg_type_codes() {
  static const std::map<std::string, uint32_t> codes = {{"REG_SZ", RSV_REG_SZ},
                                                        {"REG_EXPAND_SZ", RSV_REG_EXPAND_SZ},
                                                        {"REG_BINARY", RSV_REG_BINARY},
                                                        {"REG_DWORD", RSV_REG_DWORD},
                                                        {"REG_MULTI_SZ", RSV_REG_MULTI_SZ},
                                                        {"REG_QWORD", RSV_REG_QWORD}};
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
    case RSV_REG_DWORD:
      if (bytes.size() != 4) break;
      uint32_t d;
      std::memcpy(&d, bytes.data(), 4);
      std::snprintf(buf, sizeof buf, "0x%" PRIx32, d);
      return buf;
    case RSV_REG_QWORD:
      if (bytes.size() != 8) break;
      uint64_t q;
      std::memcpy(&q, bytes.data(), 8);
      std::snprintf(buf, sizeof buf, "0x%" PRIx64, q);
      return buf;
    case RSV_REG_SZ:
    case RSV_REG_EXPAND_SZ:
      return std::string(bytes.c_str(), strnlen(bytes.data(), bytes.size()));
    case RSV_REG_MULTI_SZ: {
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
  for (const char c : bytes) {
    std::snprintf(buf, sizeof buf, "%02X", static_cast<unsigned char>(c));
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
