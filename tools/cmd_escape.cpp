// korutl escape xml|html|special TEXT and korutl unescape TEXT.
#include <cstdio>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/output.h"

namespace korutl_tool {

namespace {

void add_escape_commands(CLI::App &app) {
  static std::string form, text;
  auto *escape = app.add_subcommand("escape", "Escape TEXT for XML, HTML or an identifier part");
  escape->add_option("FORM", form, "xml, html or special")
      ->required()
      ->check(CLI::IsMember({"xml", "html", "special"}));
  escape->add_option("TEXT", text, "Text to escape")->required();
  escape->callback([] {
    if (form == "special") {
      std::vector<char> out(
          text.size() + 2 * static_cast<size_t>(KORVOStrStoreSpecialChars(text.c_str(), nullptr)) +
          1);
      KORVOStrStoreSpecialChars(text.c_str(), out.data());
      std::printf("%s\n", out.data());
      return;
    }
    char *out = form == "xml" ? KORVOStrGetEscapedXMLString(text.c_str())
                              : KORVOStrGetEscapedHTMLString(text.c_str());
    if (out == nullptr) {
      fail("out of memory");
      return;
    }
    std::printf("%s\n", out);
    KORVOStrFreeEscapedXMLString(out);
  });

  auto *unescape = app.add_subcommand("unescape", "Restore %XY and %uWXYZ escapes in TEXT");
  unescape->add_option("TEXT", text, "Escaped text")->required();
  unescape->callback([] {
    std::string copy = text;
    KORVOStrRestoreSpecialChars(copy.data());
    std::printf("%s\n", copy.c_str());
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("escape", add_escape_commands);

}  // namespace korutl_tool
