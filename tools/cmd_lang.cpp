// korutl lang register|unregister|list: the language libraries registered
// for a product version.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tools/commands.h"

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
  const std::string key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\" + a.product +
                          "\\Versions\\" + a.version + "\\Languages";
  uint16_t count = 0;
  if (rsv_query_key(key.c_str(), nullptr, &count, M, __LINE__) != RSV_OK) {
    std::fprintf(stderr, "korutl: no languages registered for %s %s\n", a.product.c_str(),
                 a.version.c_str());
    exit_code = 1;
    return;
  }
  std::vector<std::vector<char>> slots(count, std::vector<char>(33));
  std::vector<char *> names;
  for (auto &slot : slots) names.push_back(slot.data());
  if (count > 0 && rsv_enum_values(key.c_str(), names.data(), &count, M, __LINE__) != RSV_OK) {
    exit_code = 1;
    return;
  }
  for (uint16_t i = 0; i < count; ++i) {
    char *file = KORVOCfgGetValue(key.c_str(), names[i]);
    std::printf("%s=%s\n", names[i], file != nullptr ? file : "");
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
    exit_code = KORVOCfgRegisterLanguageFile(a.product.c_str(), a.version.c_str(),
                                             a.language.c_str(), a.file.c_str());
  });

  auto *unreg = lang->add_subcommand("unregister", "Remove every language of PRODUCT VERSION");
  unreg->add_option("PRODUCT", a.product, "Product")->required();
  unreg->add_option("VERSION", a.version, "Version")->required();
  unreg->callback(
      [] { exit_code = KORVOCfgDeRegisterLanguageFile(a.product.c_str(), a.version.c_str()); });

  auto *list = lang->add_subcommand("list", "Print LANGUAGE=FILE for PRODUCT VERSION");
  list->add_option("PRODUCT", a.product, "Product")->required();
  list->add_option("VERSION", a.version, "Version")->required();
  list->callback([] { list_languages(a); });
}

}  // namespace

KORUTL_TOOL_COMMAND("lang", add_lang_command);

}  // namespace korutl_tool
