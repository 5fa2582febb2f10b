// korutl version: the library's identification.
#include <cstdio>

#include "korutl.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

void add_version_command(CLI::App &app) {
  auto *cmd = app.add_subcommand("version",
                                 "Print the library's name, full version, release and file name");
  cmd->callback([] {
    char full[8];
    std::printf("name=%s\nversion=%s\nrelease=%u\nfile=%s\n", KORVOUtlGetLibName(),
                KORVOUtlGetLibFullVersion(full), unsigned{KORVOUtlGetLibRelease()},
                KORVOUtlGetLibFileName());
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("version", add_version_command);

}  // namespace korutl_tool
