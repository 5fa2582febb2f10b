// korutl digits: the digit values of each character of a text.
#include <cstdio>
#include <string>

#include "korutl.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

void add_digits_command(CLI::App &app) {
  auto *cmd = app.add_subcommand(
      "digits", "Print each character's hexadecimal value, Hex2Int code and base-95 key digit");
  static std::string text;
  cmd->add_option("TEXT", text, "Characters to read")->required();
  cmd->callback([] {
    std::printf("char  hex  hex2int  base95\n");
    for (const char c : text) {
      std::printf("%-4c  %3u  %7d  %6d\n", c, unsigned{KORVOGetValueOfHexDigit(c)}, KORVOHex2Int(c),
                  KORVOChar2Int(c));
    }
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("digits", add_digits_command);

}  // namespace korutl_tool
