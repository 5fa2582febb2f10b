// Demo steps on the store: the sample tree imported, then shown as a tree.
#include <string>

#include "siblings/rsv/rsv.h"
#include "tools/reg_tree.h"
#include "tools/reg_values.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

void import_sample(Context &c) {
  if (!c.report.expect(!c.sample.empty(),
                       "the sample tree halcyra-sample.reg was not found (use --sample)"))
    return;
  uint32_t bad_line = 0;
  const uint16_t rc = rsv_import_file(c.sample.c_str(), &bad_line, "tools/demo", __LINE__);
  c.report.call("rsv_import_file(" + quoted(c.sample.c_str()) + ")",
                rc == RSV_OK
                    ? "RSV_OK"
                    : "status " + std::to_string(rc) + ", line " + std::to_string(bad_line));
  if (!c.report.expect(rc == RSV_OK, "the sample tree did not import")) return;
  const auto products = reg_subkey_names(kProducts);
  std::string names;
  for (const std::string &p : products) names += (names.empty() ? "" : ", ") + p;
  c.report.call("rsv_enum_subkeys(\"HKLM\\...\\Halcyra\\Products\")", names);
  c.report.expect(products.size() >= 2, "the sample has at least two products");
}

void show_tree(Context &c) {
  const std::string key = kProducts + "\\Halcyra";
  c.report.line("korutl reg tree 'HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra':");
  const bool found = c.report.quiet() ? !reg_subkey_names(key).empty()
                                      : print_reg_tree(c.report.out(), key,
                                                       TreeStyle{-1, "      "}) == TreePrint::whole;
  c.report.expect(found, "the Halcyra product key is in the store");
}

}  // namespace

KORUTL_DEMO_STEP(10, "Import the sample configuration tree", import_sample);
KORUTL_DEMO_STEP(20, "The configuration tree of one product, as `korutl reg tree` shows it",
                 show_tree);

}  // namespace korutl_tool::demo
