// korutl match [-i] PATTERN TEXT...: wildcard matching; exit 0 when every
// text matches.
#include <cstdio>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

void add_match_command(CLI::App &app) {
  auto *cmd = app.add_subcommand("match", "Match texts against a pattern with * and ?");
  static bool ignore_case = false;
  static std::string pattern;
  static std::vector<std::string> texts;
  cmd->add_flag("-i,--ignore-case", ignore_case, "Compare letters without case");
  cmd->add_option("PATTERN", pattern, "Pattern")->required();
  cmd->add_option("TEXT", texts, "Texts to match")->required();
  cmd->callback([] {
    for (const std::string &text : texts) {
      const bool match = KORVOStrMatchesPattern(text.c_str(), pattern.c_str(), ignore_case ? 1 : 0);
      std::printf("%s\t%s\n", match ? "match" : "no-match", text.c_str());
      if (!match) exit_code = 1;
    }
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("match", add_match_command);

}  // namespace korutl_tool
