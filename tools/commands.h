// Subcommands of the korutl command. Each add_*_command registers one
// subcommand (with its own --help) on the application. Subcommands only
// call the library's exports and print what comes back; the library holds
// all the logic. Exit codes: 0 found/done, 1 not found or failed, 2 usage.
#ifndef KORUTL_TOOLS_COMMANDS_H
#define KORUTL_TOOLS_COMMANDS_H

#include <CLI/CLI.hpp>

namespace korutl_tool {

// The result a subcommand's callback leaves for main() to return.
inline int exit_code = 0;

void add_version_command(CLI::App &app);
void add_digits_command(CLI::App &app);

}  // namespace korutl_tool

#endif
