// korutl: the library's services from a shell.
#include <CLI/CLI.hpp>

#include "tools/commands.h"

int main(int argc, char **argv) {
  CLI::App app{"korutl - the Halcyra utility library from the command line"};
  app.require_subcommand(1);
  korutl_tool::add_version_command(app);
  korutl_tool::add_digits_command(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &e) {
    // --help is a ParseError with code 0; every real usage error exits 2.
    const int code = app.exit(e);
    return code == 0 ? 0 : 2;
  }
  return korutl_tool::exit_code;
}
