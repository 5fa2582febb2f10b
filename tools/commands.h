// Subcommands of the korutl command. Each cmd_*.cpp registers its
// subcommands at start-up with KORUTL_TOOL_COMMAND, so adding a subcommand
// touches no other file. Subcommands call the exports of the library and
// of the registry service (reg, lang, demo) and print what comes back; the
// libraries hold all the logic.
// Exit codes: 0 found/done, 1 not found or failed, 2 usage error.
#ifndef KORUTL_TOOLS_COMMANDS_H
#define KORUTL_TOOLS_COMMANDS_H

#include <CLI/CLI.hpp>

namespace korutl_tool {

// The result a subcommand's callback leaves for main() to return.
inline int exit_code = 0;

using CommandAdder = void (*)(CLI::App &app);

// Registers an adder; main() calls every adder in name order.
bool register_command(const char *name, CommandAdder adder);

// Calls every registered adder on `app`.
void add_all_commands(CLI::App &app);

}  // namespace korutl_tool

#define KORUTL_TOOL_COMMAND(name, adder)                         \
  [[maybe_unused]] static const bool korutl_registered_##adder = \
      ::korutl_tool::register_command(name, adder)

#endif
