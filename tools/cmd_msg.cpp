// korutl msg [--lang LANG] [--oid OID] KEY...: localised message texts from
// the language libraries registered in the configuration tree.
#include <cstdio>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"

namespace korutl_tool {

namespace {

void add_msg_command(CLI::App &app) {
  auto *msg = app.add_subcommand("msg", "Print the localised text of each KEY, one per line");
  static std::string language;
  static std::string object_id;
  static std::vector<std::string> keys;
  static bool trace = false;
  msg->add_option("--lang,-l", language, "Language (default: Halcyra's Global\\Language)");
  msg->add_option("--oid,-o", object_id,
                  "Object identifier naming product and version (default: Halcyra's own)");
  msg->add_flag("--trace", trace, "Show why libraries and keys were not found (standard error)");
  msg->add_option("KEY", keys, "Message keys, such as HAL_SERVICE_STARTED")->required();
  msg->callback([] {
    if (trace) KORVOInitRegistry();
    KORVOStack *cache = nullptr;
    if (!object_id.empty()) KORVOInitI18n(&cache);
    for (const std::string &key : keys) {
      const char *text = object_id.empty() ? KORVOLoadI18NString(language.c_str(), key.c_str())
                                           : KORVOLoadI18NStringEx(cache, object_id.c_str(),
                                                                   language.c_str(), key.c_str());
      if (text == nullptr) {
        std::fprintf(stderr, "korutl: no text for %s\n", key.c_str());
        exit_code = 1;
      } else {
        std::printf("%s\n", text);
      }
    }
    // Texts belong to the loaded libraries: print before ending the caches.
    std::fflush(stdout);
    KORVOFiniteI18n(&cache);
    KORVOFiniteI18NStrings();
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("msg", add_msg_command);

}  // namespace korutl_tool
