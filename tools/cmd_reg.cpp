// korutl reg: query, add, delete, export and import keys and values of the configuration
// store, with the verbs and switches of Windows' reg command (/v, /ve, /t,
// /d, /f) and long options (--value, --default-value, --type, --data,
// --force). Keys may start with HKLM as a short form of HKEY_LOCAL_MACHINE.
#include <strings.h>

#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

constexpr const char *M = "tools/reg";

struct RegArgs {
  std::string verb;
  std::string key;
  std::optional<std::string> value;  // "" for the default value
  std::string type = "REG_SZ";
  std::string data;
  std::string file;  // export: the file written; import: the file read
};

const std::map<std::string, uint32_t> type_codes = {
    {"REG_SZ", 1}, {"REG_EXPAND_SZ", 2}, {"REG_BINARY", 3},
    {"REG_DWORD", 4}, {"REG_MULTI_SZ", 7}, {"REG_QWORD", 11}};

std::string type_name(uint32_t code) {
  for (const auto &[name, c] : type_codes)
    if (c == code) return name;
  return "REG_NONE";
}

std::string full_key(const std::string &key) {
  if (key.size() >= 4 && strncasecmp(key.c_str(), "HKLM", 4) == 0 &&
      (key.size() == 4 || key[4] == '\\'))
    return "HKEY_LOCAL_MACHINE" + key.substr(4);
  return key;
}

// Reads the verb's arguments; false on a usage error.
bool parse(const std::vector<std::string> &args, RegArgs &out) {
  if (args.size() < 2) return false;
  out.verb = args[0];
  if (out.verb == "import") {
    out.file = args[1];
    return args.size() == 2;
  }
  out.key = full_key(args[1]);
  size_t first_option = 2;
  if (out.verb == "export") {
    if (args.size() < 3) return false;
    out.file = args[2];
    first_option = 3;
  }
  for (size_t i = first_option; i < args.size(); ++i) {
    const std::string &a = args[i];
    auto next = [&](std::string &dst) {
      if (i + 1 >= args.size()) return false;
      dst = args[++i];
      return true;
    };
    std::string text;
    if (a == "/v" || a == "--value") {
      if (!next(text)) return false;
      out.value = text;
    } else if (a == "/ve" || a == "--default-value") {
      out.value = "";
    } else if (a == "/t" || a == "--type") {
      if (!next(out.type)) return false;
    } else if (a == "/d" || a == "--data") {
      if (!next(out.data)) return false;
    } else if (a != "/f" && a != "--force") {
      return false;
    }
  }
  return true;
}

// The bytes a value of `type` stores for the command-line text `data`.
bool encode(uint32_t type, const std::string &data, std::string &bytes) {
  char *end = nullptr;
  switch (type) {
    case 4: {
      const unsigned long long v = std::strtoull(data.c_str(), &end, 0);
      if (data.empty() || *end != '\0' || v > UINT32_MAX) return false;
      const uint32_t d = static_cast<uint32_t>(v);
      bytes.assign(reinterpret_cast<const char *>(&d), 4);  // little-endian host
      return true;
    }
    case 11: {
      const unsigned long long q = std::strtoull(data.c_str(), &end, 0);
      if (data.empty() || *end != '\0') return false;
      bytes.assign(reinterpret_cast<const char *>(&q), 8);
      return true;
    }
    case 3:
      if (data.size() % 2 != 0) return false;
      bytes.clear();
      for (size_t i = 0; i < data.size(); i += 2) {
        const std::string pair = data.substr(i, 2);
        const unsigned long b = std::strtoul(pair.c_str(), &end, 16);
        if (*end != '\0' || !std::isxdigit(static_cast<unsigned char>(pair[0]))) return false;
        bytes += static_cast<char>(b);
      }
      return true;
    case 7: {
      // Items are separated by a written "\0", as reg.exe takes them.
      bytes.clear();
      size_t start = 0;
      for (size_t pos; (pos = data.find("\\0", start)) != std::string::npos; start = pos + 2)
        bytes.append(data, start, pos - start).push_back('\0');
      bytes.append(data, start).push_back('\0');
      bytes.push_back('\0');
      return true;
    }
    default:
      bytes = data;
      bytes.push_back('\0');
      return true;
  }
}

std::string show(uint32_t type, const std::string &bytes) {
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

bool print_value(const std::string &key, const std::string &name) {
  uint32_t type = 0, size = 0;
  if (rsv_get_value_ex(key.c_str(), name.c_str(), &type, nullptr, &size, M, __LINE__) != RSV_OK)
    return false;
  std::string bytes(size, '\0');
  if (rsv_get_value_ex(key.c_str(), name.c_str(), &type, bytes.data(), &size, M, __LINE__) != RSV_OK)
    return false;
  std::printf("    %s    %s    %s\n", name.empty() ? "(Default)" : name.c_str(),
              type_name(type).c_str(), show(type, bytes).c_str());
  return true;
}

// Names of a key's subkeys (slot 256) or values (slot 33).
std::vector<std::string> names_of(const std::string &key, bool values) {
  uint16_t subkeys = 0, value_count = 0;
  if (rsv_query_key(key.c_str(), &subkeys, &value_count, M, __LINE__) != RSV_OK) return {};
  uint16_t count = values ? value_count : subkeys;
  const size_t slot = values ? 33 : 256;
  std::vector<char> slots(size_t{count} * slot + 1);
  std::vector<char *> ptrs;
  for (uint16_t i = 0; i < count; ++i) ptrs.push_back(slots.data() + i * slot);
  const uint16_t rc = values ? rsv_enum_values(key.c_str(), ptrs.data(), &count, M, __LINE__)
                             : rsv_enum_subkeys(key.c_str(), ptrs.data(), &count, M, __LINE__);
  if (rc != RSV_OK) return {};
  return {ptrs.begin(), ptrs.begin() + count};
}

int query(const RegArgs &a) {
  uint32_t probe_size = 0;
  if (rsv_query_key(a.key.c_str(), nullptr, nullptr, M, __LINE__) != RSV_OK) {
    std::fprintf(stderr, "ERROR: The system was unable to find the specified registry key or value.\n");
    return 1;
  }
  if (a.value && rsv_get_value_ex(a.key.c_str(), a.value->c_str(), nullptr, nullptr, &probe_size,
                                  M, __LINE__) != RSV_OK) {
    std::fprintf(stderr, "ERROR: The system was unable to find the specified registry key or value.\n");
    return 1;
  }
  std::printf("\n%s\n", a.key.c_str());
  if (a.value) return print_value(a.key, *a.value) ? 0 : 1;
  for (const std::string &name : names_of(a.key, true)) print_value(a.key, name);
  std::printf("\n");
  for (const std::string &sub : names_of(a.key, false)) std::printf("%s\\%s\n", a.key.c_str(), sub.c_str());
  return 0;
}

int add(const RegArgs &a) {
  uint32_t type = 0;
  if (auto it = type_codes.find(a.type); it != type_codes.end()) type = it->second;
  std::string bytes;
  if (type == 0 || (a.value && !encode(type, a.data, bytes))) {
    std::fprintf(stderr, "ERROR: Invalid type or data.\n");
    return 2;
  }
  if (rsv_create_key(a.key.c_str(), M, __LINE__) != RSV_OK ||
      (a.value && rsv_set_value_ex(a.key.c_str(), a.value->c_str(), type, bytes.data(),
                                   static_cast<uint32_t>(bytes.size()), M, __LINE__) != RSV_OK)) {
    std::fprintf(stderr, "ERROR: The operation could not be completed.\n");
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

int remove(const RegArgs &a) {
  const uint16_t rc = a.value ? rsv_delete_value(a.key.c_str(), a.value->c_str(), M, __LINE__)
                              : rsv_delete_key(a.key.c_str(), M, __LINE__);
  if (rc != RSV_OK) {
    std::fprintf(stderr, "ERROR: The system was unable to find the specified registry key or value.\n");
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

int export_key(const RegArgs &a) {
  if (rsv_export_file(a.key.c_str(), a.file.c_str(), M, __LINE__) != RSV_OK) {
    std::fprintf(stderr, "ERROR: The key cannot be exported to %s.\n", a.file.c_str());
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

int import_file(const RegArgs &a) {
  uint32_t bad_line = 0;
  if (rsv_import_file(a.file.c_str(), &bad_line, M, __LINE__) != RSV_OK) {
    if (bad_line > 0)
      std::fprintf(stderr, "ERROR: %s:%u: malformed line; nothing was imported.\n", a.file.c_str(),
                   bad_line);
    else
      std::fprintf(stderr, "ERROR: %s cannot be imported.\n", a.file.c_str());
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

void add_reg_command(CLI::App &app) {
  auto *cmd = app.add_subcommand(
      "reg", "Registry keys and values: reg query|add|delete KEY [/v NAME | /ve] [/t TYPE] [/d DATA] "
             "[/f], reg export KEY FILE, reg import FILE");
  cmd->prefix_command();
  cmd->callback([cmd] {
    RegArgs a;
    if (!parse(cmd->remaining(), a)) {
      std::fprintf(stderr, "ERROR: Invalid syntax. Usage: korutl reg query|add|delete KEY [options]\n");
      exit_code = 2;
      return;
    }
    if (a.verb == "query")
      exit_code = query(a);
    else if (a.verb == "add")
      exit_code = add(a);
    else if (a.verb == "delete")
      exit_code = remove(a);
    else if (a.verb == "export")
      exit_code = export_key(a);
    else if (a.verb == "import")
      exit_code = import_file(a);
    else {
      std::fprintf(stderr, "ERROR: Unknown verb %s.\n", a.verb.c_str());
      exit_code = 2;
    }
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("reg", add_reg_command);

}  // namespace korutl_tool
