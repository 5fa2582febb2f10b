// korutl: the library's services from a shell.
#include <algorithm>
#include <map>
#include <string>

#include "tools/commands.h"

namespace korutl_tool {

namespace {
// A function-local map: registrations run during static initialisation of
// the other files, in no fixed order.
std::map<std::string, CommandAdder> &registry() {
  static std::map<std::string, CommandAdder> commands;
  return commands;
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
  CLI::App app{"korutl - the Halcyra utility library from the command line"};
  app.require_subcommand(1);
  korutl_tool::add_all_commands(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &e) {
    // --help is a ParseError with code 0; every real usage error exits 2.
    const int code = app.exit(e);
    return code == 0 ? 0 : 2;
  }
  return korutl_tool::exit_code;
}
