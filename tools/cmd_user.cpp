// korutl user check OID USER | user restricted PRODUCT: the user
// authorisation questions. Exit 0 for yes, 1 for no.
#include <cstdio>
#include <string>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/store_trace.h"

namespace korutl_tool {

namespace {

// The library answers no also when the store cannot be read: that is
// reported as the failure it is, not as an answer.
void answer(bool yes, const char *yes_text, const char *no_text, const StoreTrace &trace) {
  if (const std::string why = trace.store_failure(); !yes && !why.empty()) return fail(why);
  std::printf("%s\n", yes ? yes_text : no_text);
  exit_code = yes ? 0 : 1;
}

void add_user_command(CLI::App &app) {
  auto *user = app.add_subcommand("user", "User authorisation");
  user->require_subcommand(1);
  static std::string object_id, name, product;

  auto *check = user->add_subcommand("check", "Is USER authorised for the product of OID?");
  check->add_option("OID", object_id, "Object identifier, such as \\localhost\\Orrery\\2.10")
      ->required();
  check->add_option("USER", name, "User name; domain\\user is looked up as domain/user")
      ->required();
  check->callback([] {
    const StoreTrace trace;
    KORVOObjectId *id = KORVOStrCreateObjectId(object_id.c_str(), nullptr);
    answer(KORVOCfgCheckAuthorization(name.c_str(), id) == 1, "authorised", "not authorised",
           trace);
    KORVOStrDestroyObjectId(id);
  });

  auto *restricted = user->add_subcommand("restricted", "Does PRODUCT admit listed users only?");
  restricted->add_option("PRODUCT", product, "Product")->required();
  restricted->callback([] {
    const StoreTrace trace;
    answer(KORVOCfgAuthorizationToBeChecked(product.c_str()) == 1, "restricted", "open", trace);
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("user", add_user_command);

}  // namespace korutl_tool
