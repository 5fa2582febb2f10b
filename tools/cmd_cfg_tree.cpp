// korutl cfg tree [PRODUCT]: products, versions, instances and agents as an
// indented tree (see cfg_tree.h). Registered after `cfg` itself, whose
// subcommand it becomes.
#include <cstdio>
#include <string>

#include "tools/cfg_tree.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/reg_values.h"

namespace korutl_tool {

namespace {

void add_cfg_tree_command(CLI::App &app) {
  static std::string product;
  auto *cfg = app.get_subcommand("cfg");
  auto *tree =
      cfg->add_subcommand("tree", "Print products, versions, instances and agents as a tree");
  tree->add_option("PRODUCT", product, "Only this product");
  tree->callback([] {
    const ReadSnapshot snapshot;
    if (!print_cfg_tree(stdout, product)) fail("product " + product + " not found");
  });
}

}  // namespace

// "cfg tree" sorts after "cfg": the parent exists when this runs.
KORUTL_TOOL_COMMAND("cfg tree", add_cfg_tree_command);

}  // namespace korutl_tool
