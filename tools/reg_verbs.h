// The verbs of `korutl reg`. cmd_reg.cpp makes the `reg` subcommand and
// calls every verb adder from one table; a new verb is an adder in a
// reg_*.cpp file and one line in that table. Each verb file keeps its
// helpers in a namespace of its own, not an anonymous one: the command is
// built as one unity source, where the names of other files' anonymous
// namespaces would hide the shared ones (fail, for one).
//
// Every verb takes the switches of Windows' reg command beside its long
// options: /x for -x or --x, in any letter case, and /? for --help. An
// argument that begins with - or / and is not a switch of the verb is a
// usage error (exit status 2), never a key or value name.
#ifndef KORUTL_TOOLS_REG_VERBS_H
#define KORUTL_TOOLS_REG_VERBS_H

#include <functional>
#include <string>

#include "tools/commands.h"

namespace korutl_tool {

// Options of `reg` itself that every verb uses, filled by the parser
// before any verb runs, bound in add_reg_command (cmd_reg.cpp) and given
// before the verb on the command line.
struct RegGlobals {
  std::string host;  // --host: whose tree on a shared store ("" the process's own)
};

using RegVerbAdder = void (*)(CLI::App &reg, const RegGlobals &globals);

// query and tree (reg_query.cpp).
void add_reg_reading_verbs(CLI::App &reg, const RegGlobals &globals);
// add and delete (reg_change.cpp).
void add_reg_changing_verbs(CLI::App &reg, const RegGlobals &globals);
// copy and compare (reg_copy.cpp).
void add_reg_two_key_verbs(CLI::App &reg, const RegGlobals &globals);
// export and import (reg_files.cpp).
void add_reg_file_verbs(CLI::App &reg, const RegGlobals &globals);
// hosts (reg_hosts.cpp).
void add_reg_host_verbs(CLI::App &reg, const RegGlobals &globals);

// Makes the registry service work on the tree of `host` (rsv_set_host); a
// bad name, or another host on a store file, is reported with exit status 1.
bool use_host(const std::string &host);

// Makes the verb `name` below `reg` with the switch forms above; `footer`
// ends its --help.
CLI::App *add_reg_verb(CLI::App &reg, const char *name, const std::string &description,
                       const std::string &footer = "");

// Adds a key argument: it must begin with a root key the store knows
// (reg_keys.h) and is stored in its full form. `required` as CLI11 has it.
CLI::Option *add_key_argument(CLI::App *verb, const char *name, std::string &key,
                              const std::string &description, bool required = true);

// Adds -v,--value NAME: a value name that begins with - or / is refused as
// a mistyped switch.
CLI::Option *add_value_option(CLI::App *verb, std::string &name, const std::string &description);

// Runs `body` as the verb's action, with the registry service's failure
// reasons watched (reg_report.h) and on the tree of --host when given;
// exit status as `body` left it.
void on_run(CLI::App *verb, std::function<void()> body);

}  // namespace korutl_tool

#endif
