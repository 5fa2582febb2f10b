// korutl cfg: the configuration tree through the library's KORVOCfg*
// exports -- version and instance lists, values, the latest-value search,
// agent keys, enumerations and environment variable names. Lists print one
// name per line, values name=value, or with --json one JSON document (the
// schema is in the manual page). Exit 0 when something was found, 1 when
// not (the reason on standard error: not found, or why the store failed),
// 2 on usage errors.
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tools/cfg_tree.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/reg_keys.h"
#include "tools/reg_values.h"
#include "tools/store_trace.h"

namespace korutl_tool {

namespace {

constexpr const char *kCfgModule = "tools/cfg";

// The positional arguments and switches of the one subcommand that runs.
std::vector<std::string> words;
bool cfg_json = false;

// The optional middle argument: present when all `max` words were given.
const char *optional(size_t index, size_t max) {
  return words.size() == max ? words[index].c_str() : nullptr;
}

// Takes a text the library allocated; nothing when it gave null.
std::optional<std::string> take_text(char *text) {
  if (text == nullptr) return std::nullopt;
  std::string s(text);
  std::free(text);
  return s;
}

// One value as shown: the type is known where the command read the value
// itself, and is left out where the library hands out only its text.
struct Shown {
  std::string name;
  std::optional<std::string> type;
  std::string data;
  std::optional<RegValue> raw;  // with the type: JSON data as `reg query` writes it
};

Shown typed(const std::string &name, const RegValue &v) {
  return {name, reg_type_name(v.type), reg_show_value(v.type, v.bytes), v};
}

void print_names(const char *label, const std::vector<std::string> &names) {
  if (!cfg_json) {
    for (const std::string &name : names) std::printf("%s\n", name.c_str());
    return;
  }
  JsonWriter w;
  w.begin_object().key(label).begin_array();
  for (const std::string &name : names) w.string(name);
  w.end_array().end_object().finish();
}

void write_value(JsonWriter &w, const Shown &v) {
  w.begin_object().key("name").string(v.name);
  if (v.type) w.key("type").string(*v.type);
  w.key("data");
  if (v.raw)
    reg_json_data(w, v.raw->type, v.raw->bytes);
  else
    w.string(v.data);
  w.end_object();
}

void print_values(const std::vector<Shown> &values) {
  if (!cfg_json) {
    for (const Shown &v : values) std::printf("%s=%s\n", v.name.c_str(), v.data.c_str());
    return;
  }
  JsonWriter w;
  w.begin_object().key("values").begin_array();
  for (const Shown &v : values) write_value(w, v);
  w.end_array().end_object().finish();
}

void print_value(const Shown &v) {
  if (!cfg_json) {
    std::printf("%s=%s\n", v.name.c_str(), v.data.c_str());
    return;
  }
  JsonWriter w;
  write_value(w, v);
  w.finish();
}

void print_key(const std::string &key) {
  if (!cfg_json) {
    std::printf("%s\n", key.c_str());
    return;
  }
  JsonWriter w;
  w.begin_object().key("key").string(key).end_object().finish();
}

// A version or instance list of the library, released here.
void list(const char *label, const std::string &what, char **names, uint16_t count,
          const StoreTrace &trace) {
  if (names == nullptr) return trace.fail_lookup(what);
  std::vector<std::string> out(names, names + count);
  KORVOCfgFreeProductVersions(names);
  print_names(label, out);
}

// The key an agent's value comes from: the agent key itself, else the
// version key above it, four levels up (as KORVOCfgGetAgentConfig reads).
std::optional<RegValue> read_value(const std::string &key, const std::string &name) {
  RegValue v;
  if (reg_read_value(key, name, v) != RSV_OK) return std::nullopt;
  return v;
}

std::optional<RegValue> agent_value(std::string key, const std::string &name) {
  if (auto own = read_value(key, name)) return own;
  for (int level = 0; level < 4; ++level) {
    const size_t cut = key.rfind('\\');
    if (cut == std::string::npos) return std::nullopt;
    key.resize(cut);
  }
  return read_value(key, name);
}

// Every value of a key, each name whole. A value that cannot be read is
// named on standard error and makes the status 1; the others still print.
void enumerate_key(const std::string &key) {
  const ReadSnapshot snapshot;
  const StoreTrace trace;
  std::vector<std::string> names;
  if (list_names(key, korutl::NameKind::value, names, kCfgModule) != RSV_OK)
    return trace.fail_lookup("key " + key);
  std::vector<Shown> values;
  for (const std::string &name : names) {
    if (auto v = read_value(key, name)) {
      values.push_back(typed(name, *v));
    } else {
      const std::string why = trace.store_failure();
      fail("cannot read value \"" + name + "\" of " + key + (why.empty() ? "" : ": " + why));
    }
  }
  print_values(values);
}

// Collects the name=value pairs of a library enumeration.
std::vector<Shown> collected;
int32_t collect(const char *name, const char *data) {
  collected.push_back({name, std::nullopt, data, std::nullopt});
  return 0;
}

void enumerate(void (*walk)(KORVOCfgEnumCallback), const char *what) {
  const StoreTrace trace;
  collected.clear();
  walk(collect);
  if (collected.empty()) return trace.fail_lookup(what);
  print_values(collected);
}

CLI::App *add(CLI::App &cfg, const char *name, const char *help, const char *usage, size_t min,
              size_t max) {
  auto *cmd = cfg.add_subcommand(name, help);
  if (max > 0)
    cmd->add_option(usage, words)
        ->expected(static_cast<int>(min), static_cast<int>(max))
        ->required();
  cmd->add_flag("--json", cfg_json, "Print one JSON document (see the manual page)");
  return cmd;
}

void add_cfg_command(CLI::App &app) {
  auto *cfg =
      app.add_subcommand("cfg", "The configuration tree: versions, values, agents, enumerations");
  cfg->require_subcommand(1);

  add(*cfg, "versions", "List a product's versions, greatest first", "PRODUCT", 1, 1)->callback([] {
    const StoreTrace trace;
    uint16_t count = 0;
    char **names = KORVOCfgGetProductVersions(words[0].c_str(), &count);
    list("versions", "product " + words[0], names, count, trace);
  });
  add(*cfg, "instances", "List a version's instances, greatest first", "PRODUCT VERSION", 2, 2)
      ->callback([] {
        const StoreTrace trace;
        uint16_t count = 0;
        char **names = KORVOCfgGetVersionInstances(words[0].c_str(), words[1].c_str(), &count);
        list("instances", "instances of " + words[0] + " " + words[1], names, count, trace);
      });
  add(*cfg, "get", "Print a value of a product, or of a product version", "PRODUCT [VERSION] NAME",
      2, 3)
      ->callback([] {
        const StoreTrace trace;
        const char *product = words[0].c_str();
        const std::string &name = words.back();
        const char *version = optional(1, 3);
        const auto text = take_text(
            version != nullptr ? KORVOCfgGetProductVersionConfig(product, version, name.c_str())
                               : KORVOCfgGetProductConfig(product, name.c_str()));
        if (!text) return trace.fail_lookup("value " + name);
        print_value({name, std::nullopt, *text, std::nullopt});
      });
  add(*cfg, "latest", "Print the key of the greatest version (or its SUBKEY) holding value NAME",
      "PRODUCT [SUBKEY] NAME", 2, 3)
      ->callback([] {
        const StoreTrace trace;
        const auto key = take_text(KORVOCfgGetProductVersionLatestValue(
            words[0].c_str(), optional(1, 3), words.back().c_str()));
        if (!key) return trace.fail_lookup("a version holding " + words.back());
        print_key(*key);
      });
  add(*cfg, "agent-key", "Print an agent's key: searched, or of VERSION (and INSTANCE)",
      "PRODUCT AGENT [VERSION [INSTANCE]]", 2, 4)
      ->callback([] {
        const StoreTrace trace;
        const size_t n = words.size();
        const auto key = take_text(
            KORVOCfgLocateAgentKeyEx(words[0].c_str(), n > 2 ? words[2].c_str() : nullptr,
                                     n > 3 ? words[3].c_str() : nullptr, words[1].c_str()));
        if (!key) return trace.fail_lookup("agent " + words[1]);
        print_key(*key);
      });
  add(*cfg, "agent-get", "Print an agent's value, else its version's", "AGENTKEY NAME", 2, 2)
      ->callback([] {
        const StoreTrace trace;
        const std::string agent_key = reg_full_key(words[0]), &name = words[1];
        const auto text = take_text(KORVOCfgGetAgentConfig(agent_key.c_str(), name.c_str()));
        if (!text) return trace.fail_lookup("value " + name);
        // The library hands out the value's bytes as text; its type and
        // whole data come from the key that holds it.
        const auto v = agent_value(agent_key, name);
        print_value(v ? typed(name, *v) : Shown{name, std::nullopt, *text, std::nullopt});
      });
  add(*cfg, "enum", "Print every value of a key as name=value", "KEYPATH", 1, 1)->callback([] {
    enumerate_key(reg_full_key(words[0]));
  });
  add(*cfg, "plugins", "Print the management layer's plug-ins as name=value", "", 0, 0)
      ->callback([] { enumerate(KORVOCfgEnumerateMilPlugIn, "plug-ins"); });
  add(*cfg, "traps", "Print the SNMP trap destinations as name=value", "", 0, 0)->callback([] {
    enumerate(KORVOCfgEnumerateSnmpTrapDest, "trap destinations");
  });
  add(*cfg, "env", "List the environment variable names of a component", "COMPONENT", 1, 1)
      ->callback([] {
        const StoreTrace trace;
        uint16_t count = 0;
        char **vars = KORVOCfgGetEnvironmentVars(words[0].c_str(), &count);
        if (vars == nullptr) return trace.fail_lookup("environment of " + words[0]);
        const std::vector<std::string> names(vars, vars + count);
        KORVOCfgFreeEnvironmentVars(vars, count);
        print_names("variables", names);
      });
}

}  // namespace

KORUTL_TOOL_COMMAND("cfg", add_cfg_command);

}  // namespace korutl_tool
