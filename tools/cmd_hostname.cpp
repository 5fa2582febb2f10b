// korutl hostname NAME...: checks host names; exit 0 when all are valid.
#include <cstdio>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

void add_hostname_command(CLI::App &app) {
  auto *cmd = app.add_subcommand("hostname", "Check host names");
  static std::vector<std::string> names;
  cmd->add_option("NAME", names, "Host names")->required();
  cmd->callback([] {
    for (const std::string &name : names) {
      const bool valid = KORVOIsValidHostName(name.c_str());
      std::printf("%s\t%s\n", valid ? "valid" : "invalid", name.c_str());
      if (!valid) exit_code = 1;
    }
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("hostname", add_hostname_command);

}  // namespace korutl_tool
