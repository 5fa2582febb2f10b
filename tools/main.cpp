// korutl: the library's services from a shell.
#include <cstring>
#include <map>
#include <string>

#include "tools/commands.h"
#include "tools/output.h"
#include "utl/version.h"

namespace korutl_tool {

namespace {
// A function-local map: registrations run during static initialisation of
// the other files, in no fixed order.
std::map<std::string, CommandAdder> &registry() {
  static std::map<std::string, CommandAdder> commands;
  return commands;
}

// The subcommand line a usage error points to: "korutl cfg get".
std::string command_path(const CLI::App *app) {
  std::string path;
  for (; app != nullptr; app = app->get_parent())
    path = app->get_name() + (path.empty() ? "" : " " + path);
  return path;
}

// The deepest subcommand given on the command line.
const CLI::App *last_parsed(const CLI::App &app) {
  for (const CLI::App *sub : app.get_subcommands())
    if (sub->parsed()) return last_parsed(*sub);
  return &app;
}
}  // namespace

bool register_command(const char *name, CommandAdder adder) {
  registry().emplace(name, adder);
  return true;
}

void add_all_commands(CLI::App &app) {
  for (const auto &[name, adder] : registry()) adder(app);
}

}  // namespace korutl_tool

int main(int argc, char **argv) {
  using namespace korutl_tool;
  CLI::App app{"korutl - the Halcyra utility library from the command line", "korutl"};
  app.require_subcommand(1);
  app.set_version_flag("--version", "korutl " KORUTL_FULL_VERSION_TEXT);
  // Every subcommand with its options in one text, for the manual page.
  app.set_help_all_flag("--help-all", "Print the help of every subcommand and exit");
  add_all_commands(app);
  // CLI11 would report a misspelt subcommand as a missing one.
  if (argc > 1 && argv[1][0] != '-' &&
      app.get_subcommands([&](const CLI::App *sub) { return sub->check_name(argv[1]); }).empty()) {
    fail(std::string("unknown subcommand '") + argv[1] + "' (korutl --help lists them)",
         exit_usage);
    return exit_usage;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &e) {
    return app.exit(e);  // --help, --help-all, --version: printed, nothing done
  } catch (const CLI::ParseError &e) {
    fail(std::string(e.what()) + " (see " + command_path(last_parsed(app)) + " --help)",
         exit_usage);
    return exit_usage;
  }
  return exit_code;
}
