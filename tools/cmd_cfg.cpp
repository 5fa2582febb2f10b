// korutl cfg: the configuration tree through the library's KORVOCfg*
// exports -- version and instance lists, values, the latest-value search,
// agent keys, enumerations and environment variable names. Lists print one
// name per line, values name=value; exit 0 when something was found, 1
// when not, 2 on usage errors.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

// The positional arguments of the one subcommand that runs.
std::vector<std::string> words;

// The optional middle argument: present when all `max` words were given.
const char *optional(size_t index, size_t max) {
  return words.size() == max ? words[index].c_str() : nullptr;
}

void print_list(char **list, uint16_t count) {
  for (uint16_t i = 0; i < count; ++i) std::printf("%s\n", list[i]);
  exit_code = list != nullptr ? 0 : 1;
  KORVOCfgFreeProductVersions(list);
}

// A text result: printed as name=value, or alone when name is null.
void print_text(char *text, const char *name) {
  if (text != nullptr) {
    if (name != nullptr)
      std::printf("%s=%s\n", name, text);
    else
      std::printf("%s\n", text);
  }
  exit_code = text != nullptr ? 0 : 1;
  std::free(text);
}

int32_t print_value(const char *name, const char *data) {
  std::printf("%s=%s\n", name, data);
  exit_code = 0;
  return 0;
}

// Runs one enumeration: found when it printed at least one value.
void enumerate(void (*walk)(KORVOCfgEnumCallback)) {
  exit_code = 1;
  walk(print_value);
}

CLI::App *add(CLI::App &cfg, const char *name, const char *help, const char *usage, size_t min,
              size_t max) {
  auto *cmd = cfg.add_subcommand(name, help);
  if (max > 0)
    cmd->add_option(usage, words)
        ->expected(static_cast<int>(min), static_cast<int>(max))
        ->required();
  return cmd;
}

void add_cfg_command(CLI::App &app) {
  auto *cfg =
      app.add_subcommand("cfg", "The configuration tree: versions, values, agents, enumerations");
  cfg->require_subcommand(1);

  add(*cfg, "versions", "List a product's versions, greatest first", "PRODUCT", 1, 1)->callback([] {
    uint16_t count = 0;
    char **list = KORVOCfgGetProductVersions(words[0].c_str(), &count);
    print_list(list, count);
  });
  add(*cfg, "instances", "List a version's instances, greatest first", "PRODUCT VERSION", 2, 2)
      ->callback([] {
        uint16_t count = 0;
        char **list = KORVOCfgGetVersionInstances(words[0].c_str(), words[1].c_str(), &count);
        print_list(list, count);
      });
  add(*cfg, "get", "Print a value of a product, or of a product version", "PRODUCT [VERSION] NAME",
      2, 3)
      ->callback([] {
        const char *product = words[0].c_str();
        const char *name = words.back().c_str();
        const char *version = optional(1, 3);
        print_text(version != nullptr ? KORVOCfgGetProductVersionConfig(product, version, name)
                                      : KORVOCfgGetProductConfig(product, name),
                   name);
      });
  add(*cfg, "latest", "Print the key of the greatest version (or its SUBKEY) holding value NAME",
      "PRODUCT [SUBKEY] NAME", 2, 3)
      ->callback([] {
        print_text(KORVOCfgGetProductVersionLatestValue(words[0].c_str(), optional(1, 3),
                                                        words.back().c_str()),
                   nullptr);
      });
  add(*cfg, "agent-key", "Print an agent's key: searched, or of VERSION (and INSTANCE)",
      "PRODUCT AGENT [VERSION [INSTANCE]]", 2, 4)
      ->callback([] {
        const size_t n = words.size();
        print_text(KORVOCfgLocateAgentKeyEx(words[0].c_str(), n > 2 ? words[2].c_str() : nullptr,
                                            n > 3 ? words[3].c_str() : nullptr, words[1].c_str()),
                   nullptr);
      });
  add(*cfg, "agent-get", "Print an agent's value, else its version's", "AGENTKEY NAME", 2, 2)
      ->callback([] {
        print_text(KORVOCfgGetAgentConfig(words[0].c_str(), words[1].c_str()), words[1].c_str());
      });
  add(*cfg, "enum", "Print every value of a key as name=value", "KEYPATH", 1, 1)->callback([] {
    exit_code = 1;
    KORVOCfgEnumerate(words[0].c_str(), print_value);
  });
  add(*cfg, "plugins", "Print the management layer's plug-ins as name=value", "", 0, 0)
      ->callback([] { enumerate(KORVOCfgEnumerateMilPlugIn); });
  add(*cfg, "traps", "Print the SNMP trap destinations as name=value", "", 0, 0)->callback([] {
    enumerate(KORVOCfgEnumerateSnmpTrapDest);
  });
  add(*cfg, "env", "List the environment variable names of a component", "COMPONENT", 1, 1)
      ->callback([] {
        uint16_t count = 0;
        char **vars = KORVOCfgGetEnvironmentVars(words[0].c_str(), &count);
        for (uint16_t i = 0; i < count; ++i) std::printf("%s\n", vars[i]);
        exit_code = vars != nullptr ? 0 : 1;
        KORVOCfgFreeEnvironmentVars(vars, count);
      });
}

}  // namespace

KORUTL_TOOL_COMMAND("cfg", add_cfg_command);

}  // namespace korutl_tool
