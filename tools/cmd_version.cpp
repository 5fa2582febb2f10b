// korutl version [--json]: the library's identification.
#include <cstdio>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/output.h"

namespace korutl_tool {

namespace {

void add_version_command(CLI::App &app) {
  static bool as_json = false;
  auto *cmd = app.add_subcommand("version",
                                 "Print the library's name, full version, release and file name");
  cmd->add_flag("--json", as_json, "Print one JSON document (see the manual page)");
  cmd->callback([] {
    char full[8];
    KORVOUtlGetLibFullVersion(full);
    if (!as_json) {
      std::printf("name=%s\nversion=%s\nrelease=%u\nfile=%s\n", KORVOUtlGetLibName(), full,
                  unsigned{KORVOUtlGetLibRelease()}, KORVOUtlGetLibFileName());
      return;
    }
    JsonWriter w;
    w.begin_object().key("name").string(KORVOUtlGetLibName()).key("version").string(full);
    w.key("release").number(KORVOUtlGetLibRelease()).key("file").string(KORVOUtlGetLibFileName());
    w.end_object().finish();
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("version", add_version_command);

}  // namespace korutl_tool
