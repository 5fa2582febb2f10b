// korutl lang register|unregister|list: the language libraries registered
// for a product version.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tools/cfg_tree.h"
#include "tools/commands.h"
#include "tools/reg_values.h"
#include "tools/store_trace.h"

namespace korutl_tool {

namespace {

constexpr const char *M = "tools/lang";

struct LangArgs {
  std::string product;
  std::string version;
  std::string language;
  std::string file;
};

// Prints "language=file" for every registration of the version.
void list_languages(const LangArgs &a) {
  const std::string key = kProducts + "\\" + a.product + "\\Versions\\" + a.version + "\\Languages";
  const StoreTrace trace;
  std::vector<std::string> names;
  if (list_names(key, korutl::NameKind::value, names, M) != RSV_OK)
    return trace.fail_lookup("languages of " + a.product + " " + a.version);
  for (const std::string &name : names) {
    char *file = KORVOCfgGetValue(key.c_str(), name.c_str());
    std::printf("%s=%s\n", name.c_str(), file != nullptr ? file : "");
    std::free(file);
  }
}

void add_lang_command(CLI::App &app) {
  auto *lang = app.add_subcommand("lang", "Language library registrations");
  lang->require_subcommand(1);
  static LangArgs a;

  auto *reg = lang->add_subcommand("register", "Register FILE as LANGUAGE of PRODUCT VERSION");
  reg->add_option("PRODUCT", a.product, "Product (\"\" for Default)")->required();
  reg->add_option("VERSION", a.version, "Version (\"\" for Default)")->required();
  reg->add_option("LANGUAGE", a.language, "Language, such as German or de-DE")->required();
  reg->add_option("FILE", a.file, "Library file, such as hal_de.dll")->required();
  reg->callback([] {
    const StoreTrace trace;
    trace.check_change(KORVOCfgRegisterLanguageFile(a.product.c_str(), a.version.c_str(),
                                                    a.language.c_str(), a.file.c_str()),
                       "register " + a.file);
  });

  auto *unreg = lang->add_subcommand("unregister", "Remove every language of PRODUCT VERSION");
  unreg->add_option("PRODUCT", a.product, "Product")->required();
  unreg->add_option("VERSION", a.version, "Version")->required();
  unreg->callback([] {
    const StoreTrace trace;
    trace.check_change(KORVOCfgDeRegisterLanguageFile(a.product.c_str(), a.version.c_str()),
                       "unregister the languages of " + a.product + " " + a.version);
  });

  auto *list = lang->add_subcommand("list", "Print LANGUAGE=FILE for PRODUCT VERSION");
  list->add_option("PRODUCT", a.product, "Product")->required();
  list->add_option("VERSION", a.version, "Version")->required();
  list->callback([] { list_languages(a); });
}

}  // namespace

KORUTL_TOOL_COMMAND("lang", add_lang_command);

}  // namespace korutl_tool
