// korutl msgfile register|unregister: the event layer's message files of a
// product version.
#include <string>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/store_trace.h"

namespace korutl_tool {

namespace {

void add_msgfile_command(CLI::App &app) {
  auto *msgfile = app.add_subcommand("msgfile", "Message file registrations of the event layer");
  msgfile->require_subcommand(1);
  static std::string product, version, name, file;

  auto *reg = msgfile->add_subcommand("register", "Register FILE under NAME for PRODUCT VERSION");
  reg->add_option("PRODUCT", product, "Product (\"\" for Default)")->required();
  reg->add_option("VERSION", version, "Version (\"\" for Default)")->required();
  reg->add_option("NAME", name, "The registrant's name for the file")->required();
  reg->add_option("FILE", file, "Message file")->required();
  reg->callback([] {
    const StoreTrace trace;
    trace.check_change(
        KORVOCfgRegisterMessageFile(product.c_str(), version.c_str(), name.c_str(), file.c_str()),
        "register " + file);
  });

  auto *unreg =
      msgfile->add_subcommand("unregister", "Remove every message file of PRODUCT VERSION");
  unreg->add_option("PRODUCT", product, "Product")->required();
  unreg->add_option("VERSION", version, "Version")->required();
  unreg->callback([] {
    const StoreTrace trace;
    trace.check_change(KORVOCfgDeRegisterMessageFile(product.c_str(), version.c_str()),
                       "unregister the message files of " + product + " " + version);
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("msgfile", add_msgfile_command);

}  // namespace korutl_tool
