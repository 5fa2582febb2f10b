// korutl reg: query, add, delete, export, import and show as a tree keys and values of the
// configuration store, with the verbs and switches of Windows' reg command (/v, /ve, /t, /d, /f)
// and long options (--value, --default-value, --type, --data,
// --force). Keys may start with HKLM as a short form of HKEY_LOCAL_MACHINE.

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/commands.h"
#include "tools/reg_tree.h"
#include "tools/reg_values.h"

namespace korutl_tool {

namespace {

struct RegArgs {
  std::string verb;
  std::string key;
  std::optional<std::string> value;  // "" for the default value
  std::string type = "REG_SZ";
  std::string data;
  std::string file;  // export: the file written; import: the file read
  int depth = -1;    // tree: subkey levels shown, -1 all
};

// tree [KEY] [--depth N]: KEY defaults to the family's root key.
bool parse_tree(const std::vector<std::string> &args, RegArgs &out) {
  out.verb = args[0];
  out.key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel";
  bool have_key = false;
  for (size_t i = 1; i < args.size(); ++i) {
    if (args[i] == "--depth") {
      if (i + 1 >= args.size()) return false;
      char *end = nullptr;
      const long depth = std::strtol(args[++i].c_str(), &end, 10);
      if (args[i].empty() || *end != '\0' || depth < 0 || depth > 512) return false;
      out.depth = static_cast<int>(depth);
    } else if (!have_key) {
      out.key = reg_full_key(args[i]);
      have_key = true;
    } else {
      return false;
    }
  }
  return true;
}

// Reads the verb's arguments; false on a usage error.
bool parse_reg_arguments(const std::vector<std::string> &args, RegArgs &out) {
  if (!args.empty() && args[0] == "tree") return parse_tree(args, out);
  if (args.size() < 2) return false;
  out.verb = args[0];
  if (out.verb == "import") {
    out.file = args[1];
    return args.size() == 2;
  }
  out.key = reg_full_key(args[1]);
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
bool value_bytes_of(uint32_t type, const std::string &data, std::string &bytes) {
  char *end = nullptr;
  switch (type) {
    case RSV_REG_DWORD: {
      const unsigned long long v = std::strtoull(data.c_str(), &end, 0);
      if (data.empty() || *end != '\0' || v > UINT32_MAX) return false;
      const uint32_t d = static_cast<uint32_t>(v);
      bytes.assign(reinterpret_cast<const char *>(&d), 4);  // little-endian host
      return true;
    }
    case RSV_REG_QWORD: {
      const unsigned long long q = std::strtoull(data.c_str(), &end, 0);
      if (data.empty() || *end != '\0') return false;
      bytes.assign(reinterpret_cast<const char *>(&q), 8);
      return true;
    }
    case RSV_REG_BINARY:
      if (data.size() % 2 != 0) return false;
      bytes.clear();
      for (size_t i = 0; i < data.size(); i += 2) {
        const std::string pair = data.substr(i, 2);
        const unsigned long b = std::strtoul(pair.c_str(), &end, 16);
        if (*end != '\0' || !std::isxdigit(static_cast<unsigned char>(pair[0]))) return false;
        bytes += static_cast<char>(b);
      }
      return true;
    case RSV_REG_MULTI_SZ: {
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

bool print_value(const std::string &key, const std::string &name) {
  const auto value = reg_read_value(key, name);
  if (!value) return false;
  std::printf("    %s    %s    %s\n", name.empty() ? "(Default)" : name.c_str(),
              reg_type_name(value->type).c_str(),
              reg_show_value(value->type, value->bytes).c_str());
  return true;
}

int reg_query(const RegArgs &a) {
  const ReadSnapshot snapshot;
  uint32_t probe_size = 0;
  if (rsv_query_key(a.key.c_str(), nullptr, nullptr, kRegModule, __LINE__) != RSV_OK) {
    std::fprintf(stderr,
                 "ERROR: The system was unable to find the specified registry key or value.\n");
    return 1;
  }
  if (a.value && rsv_get_value_ex(a.key.c_str(), a.value->c_str(), nullptr, nullptr, &probe_size,
                                  kRegModule, __LINE__) != RSV_OK) {
    std::fprintf(stderr,
                 "ERROR: The system was unable to find the specified registry key or value.\n");
    return 1;
  }
  std::printf("\n%s\n", a.key.c_str());
  if (a.value) return print_value(a.key, *a.value) ? 0 : 1;
  for (const std::string &name : reg_value_names(a.key)) print_value(a.key, name);
  std::printf("\n");
  for (const std::string &sub : reg_subkey_names(a.key))
    std::printf("%s\\%s\n", a.key.c_str(), sub.c_str());
  return 0;
}

int reg_add(const RegArgs &a) {
  uint32_t type = 0;
  if (auto it = reg_type_codes().find(a.type); it != reg_type_codes().end()) type = it->second;
  std::string bytes;
  if (type == 0 || (a.value && !value_bytes_of(type, a.data, bytes))) {
    std::fprintf(stderr, "ERROR: Invalid type or data.\n");
    return 2;
  }
  if (rsv_create_key(a.key.c_str(), kRegModule, __LINE__) != RSV_OK ||
      (a.value &&
       rsv_set_value_ex(a.key.c_str(), a.value->c_str(), type, bytes.data(),
                        static_cast<uint32_t>(bytes.size()), kRegModule, __LINE__) != RSV_OK)) {
    std::fprintf(stderr, "ERROR: The operation could not be completed.\n");
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

int reg_delete(const RegArgs &a) {
  const uint16_t rc = a.value
                          ? rsv_delete_value(a.key.c_str(), a.value->c_str(), kRegModule, __LINE__)
                          : rsv_delete_key(a.key.c_str(), kRegModule, __LINE__);
  if (rc != RSV_OK) {
    std::fprintf(stderr,
                 "ERROR: The system was unable to find the specified registry key or value.\n");
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

int reg_export(const RegArgs &a) {
  if (rsv_export_file(a.key.c_str(), a.file.c_str(), kRegModule, __LINE__) != RSV_OK) {
    std::fprintf(stderr, "ERROR: The key cannot be exported to %s.\n", a.file.c_str());
    return 1;
  }
  std::printf("The operation completed successfully.\n");
  return 0;
}

int reg_tree(const RegArgs &a) {
  const ReadSnapshot snapshot;
  switch (print_reg_tree(stdout, a.key, TreeStyle{a.depth, ""})) {
    case TreePrint::whole:
      return 0;
    case TreePrint::no_key:
      std::fprintf(stderr,
                   "ERROR: The system was unable to find the specified registry key or value.\n");
      return 1;
    case TreePrint::incomplete:
      break;
  }
  return 1;
}

int reg_import(const RegArgs &a) {
  uint32_t bad_line = 0;
  if (rsv_import_file(a.file.c_str(), &bad_line, kRegModule, __LINE__) != RSV_OK) {
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
      "reg",
      "Registry keys and values: reg query|add|delete KEY [/v NAME | /ve] [/t TYPE] [/d DATA] "
      "[/f], reg export KEY FILE, reg import FILE, reg tree [KEY] [--depth N]");
  cmd->prefix_command();
  cmd->callback([cmd] {
    RegArgs a;
    if (!parse_reg_arguments(cmd->remaining(), a)) {
      std::fprintf(stderr,
                   "ERROR: Invalid syntax. Usage: korutl reg query|add|delete KEY [options]\n");
      exit_code = 2;
      return;
    }
    if (a.verb == "query")
      exit_code = reg_query(a);
    else if (a.verb == "add")
      exit_code = reg_add(a);
    else if (a.verb == "delete")
      exit_code = reg_delete(a);
    else if (a.verb == "export")
      exit_code = reg_export(a);
    else if (a.verb == "import")
      exit_code = reg_import(a);
    else if (a.verb == "tree")
      exit_code = reg_tree(a);
    else {
      std::fprintf(stderr, "ERROR: Unknown verb %s.\n", a.verb.c_str());
      exit_code = 2;
    }
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("reg", add_reg_command);

}  // namespace korutl_tool
