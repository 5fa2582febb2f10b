// Halcyra's configuration as a tree of products, their versions (in
// version order), instances (greatest first) and agents with their values,
// read through the library's KORVOCfg* calls. Used by `cfg tree` and `demo`.
#ifndef KORUTL_TOOLS_CFG_TREE_H
#define KORUTL_TOOLS_CFG_TREE_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace korutl_tool {

// The names of a name list of the library (versions or instances), which
// is released here; empty for a null list. Call the listing first: the
// count it sets must not be read in the same expression.
std::vector<std::string> take_name_list(char **list, uint16_t count);

// Every name of a key's subkeys (RSV_LIST_SUBKEYS) or values
// (RSV_LIST_VALUES), whole, into `names`; the registry service's status.
uint16_t store_names(const std::string &key, int32_t kind, std::vector<std::string> &names,
                     const char *module);

// The products under "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\Products".
std::vector<std::string> cfg_products();

// Prints `product` (every product when empty) as
//   Orrery
//     version 3
//       instance lab
//         agent Probe
//           Interval (REG_DWORD) = 0xa
// each line after `indent`. False, printing nothing, when there is no such
// product.
bool print_cfg_tree(std::FILE *out, const std::string &product, const std::string &indent = "");

}  // namespace korutl_tool

#endif
