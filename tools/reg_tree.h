// The configuration tree as an indented tree, for a person to read: used by
// `reg tree`, `cfg tree` and `demo`.
#ifndef KORUTL_TOOLS_REG_TREE_H
#define KORUTL_TOOLS_REG_TREE_H

#include <cstdio>
#include <string>

namespace korutl_tool {

struct TreeStyle {
  int max_depth = -1;  // levels of subkeys shown below the key; -1 all
  std::string indent;  // put before every line
};

// Prints `key` (a full path, "HKLM\..." allowed), then each of its values
// as "name (TYPE) = value" and each subkey as "name\", two blanks deeper per
// level; values before subkeys, subkeys in name order. The default value
// shows as "(Default)". Prints nothing for a key that does not exist
// (no_key). A value or listing that cannot be read is named on standard
// error and the tree is incomplete.
enum class TreePrint { whole, no_key, incomplete };
TreePrint print_reg_tree(std::FILE *out, const std::string &key, const TreeStyle &style = {});

// The values of `key` alone, one "name (TYPE) = value" line each after
// `pad`; nothing for a missing key. False, with the unreadable values named
// on standard error, when any could not be read.
bool print_reg_values(std::FILE *out, const std::string &key, const std::string &pad);

}  // namespace korutl_tool

#endif
