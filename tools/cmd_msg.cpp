// korutl msg [--lang LANG] [--oid OID] [--json] KEY...: localised message
// texts from the language libraries registered in the configuration tree.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/install_data.h"
#include "tools/output.h"

namespace korutl_tool {

namespace {

struct MsgOptions {
  std::string language;
  std::string object_id;
  std::vector<std::string> keys;
  bool trace = false;
  bool json = false;
};

// A locale name of the environment, or "" for none ("C" and "POSIX" name
// no language).
std::string locale_name(const char *value) {
  if (value == nullptr) return "";
  const std::string name = value;
  return name == "C" || name == "POSIX" || name.rfind("C.", 0) == 0 ? "" : name;
}

// The language asked for: --lang; else the first entry of LANGUAGE (a
// colon-separated list; the rest is not tried, as the library answers
// every language, falling back by itself); else the first of LC_ALL,
// LC_MESSAGES and LANG that is set. Names are handed over as the user has
// them: the library reads "de_DE.UTF-8" as "de-DE-UTF-8", then "de-DE",
// then "de", as registrations are named. "" leaves the choice to the
// library (Halcyra's Global\Language, then the locale).
std::string requested_language(const std::string &given) {
  if (!given.empty()) return given;
  if (const char *list = std::getenv("LANGUAGE")) {
    const std::string first =
        locale_name(std::string(list).substr(0, std::strcspn(list, ":")).c_str());
    if (!first.empty()) return first;
  }
  for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char *value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return locale_name(value);
  }
  return "";
}

void run(const MsgOptions &opt) {
  if (opt.trace) KORVOInitRegistry();
  use_installed_language_libraries();
  const std::string language = requested_language(opt.language);
  KORVOStack *cache = nullptr;
  if (!opt.object_id.empty()) KORVOInitI18n(&cache);
  // When no library serves a request, the library answers with its text for
  // "_RC_LANG_NOT_FOUND" in the requested language.
  const char *none = KORVOLoadI18NString(language.c_str(), "_RC_LANG_NOT_FOUND");
  JsonWriter w;
  if (opt.json) w.begin_object().key("language").string(language).key("messages").begin_array();
  for (const std::string &key : opt.keys) {
    const char *text = opt.object_id.empty() ? KORVOLoadI18NString(language.c_str(), key.c_str())
                                             : KORVOLoadI18NStringEx(cache, opt.object_id.c_str(),
                                                                     language.c_str(), key.c_str());
    const bool served = text != nullptr && (key == "_RC_LANG_NOT_FOUND" || none == nullptr ||
                                            std::strcmp(text, none) != 0);
    if (opt.json) {
      w.begin_object().key("key").string(key).key("text");
      if (served)
        w.string(text);
      else
        w.null();
      w.end_object();
    } else if (served) {
      std::printf("%s\n", text);
    }
    if (text == nullptr)
      fail("no text for " + key);
    else if (!served)
      fail("no language library serves " + key + ": " + text);
  }
  if (opt.json) w.end_array().end_object().finish();
  // Texts belong to the loaded libraries: print before ending the caches.
  std::fflush(stdout);
  KORVOFiniteI18n(&cache);
  KORVOFiniteI18NStrings();
}

void add_msg_command(CLI::App &app) {
  auto *msg = app.add_subcommand("msg", "Print the localised text of each KEY, one per line");
  static MsgOptions opt;
  msg->add_option("--lang,-l", opt.language,
                  "Language or locale name, such as German, de or de_DE.UTF-8 (default: "
                  "LANGUAGE, LC_ALL, LC_MESSAGES or LANG, else Halcyra's Global\\Language)");
  msg->add_option("--oid,-o", opt.object_id,
                  "Object identifier naming product and version (default: Halcyra's own)");
  msg->add_flag("--trace", opt.trace,
                "Show why libraries and keys were not found (standard error)");
  msg->add_flag("--json", opt.json, "Print one JSON document (see the manual page)");
  msg->add_option("KEY", opt.keys, "Message keys, such as HAL_SERVICE_STARTED")->required();
  msg->callback([] { run(opt); });
}

}  // namespace

KORUTL_TOOL_COMMAND("msg", add_msg_command);

}  // namespace korutl_tool
