// The configuration tree read key by key and shown as an indented tree for
// a person or as JSON for a program: used by `reg query`, `reg tree`,
// `cfg tree` and `demo`.
#ifndef KORUTL_TOOLS_REG_TREE_H
#define KORUTL_TOOLS_REG_TREE_H

#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/output.h"
#include "tools/reg_values.h"

namespace korutl_tool {

// What was read of one key.
struct KeyContents {
  std::vector<std::pair<std::string, RegValue>> values;  // name, value; in the order set
  std::vector<std::string> subkeys;                      // names, in name order
};

// Reads the values of `key` (every one, or only the value named `only`
// when given: absent, it is simply not there) and, when `subkeys`, the
// names of its subkeys. Anything that cannot be read, a missing key among
// them, is reported with one "korutl: " line each and exit status 1, and
// left out; the result is then false.
bool read_key(const std::string &key, const std::optional<std::string> &only, bool subkeys,
              KeyContents &contents);

struct TreeStyle {
  int max_depth = -1;  // levels of subkeys shown below the key; -1 all
  std::string indent;  // put before every line
};

// Prints `key` (a full path, "HKLM\..." allowed), then each of its values
// as "name (TYPE) = value" and each subkey as "name\", two blanks deeper per
// level; values before subkeys, subkeys in name order. The default value
// shows as "(Default)". Prints nothing for a key that does not exist
// (no_key). A key, value or listing that cannot be read is reported as by
// read_key and the tree is incomplete.
enum class TreePrint { whole, no_key, incomplete };
TreePrint print_reg_tree(std::FILE *out, const std::string &key, const TreeStyle &style = {});

// The values of `key` alone, one "name (TYPE) = value" line each after
// `pad`; nothing for a missing key. False, with what could not be read
// reported as by read_key, when anything could not be read.
bool print_reg_values(std::FILE *out, const std::string &key, const std::string &pad);

// Writes `key` (full path) as a JSON key object:
//   {"key": PATH, "values": [VALUE...], "subkeys": [KEY OBJECT...]}
//   VALUE: {"name": NAME ("" the default value), "type": "REG_SZ",
//           "data": as reg_json_data writes it}
// Subkeys are listed `max_depth` levels below the key (-1 all); a subkey
// at the last level is listed as {"key": PATH} alone. With `only`, each
// key's values hold just that value where it exists. `values` (may be
// null) receives the number of values written. Writes nothing for a key
// that does not exist (no_key); unreadable parts as print_reg_tree.
TreePrint write_reg_tree_json(JsonWriter &json, const std::string &key, int max_depth,
                              const std::optional<std::string> &only = std::nullopt,
                              size_t *values = nullptr);

// The name a value is shown by: "(Default)" for the default value.
std::string shown_value_name(const std::string &name);

}  // namespace korutl_tool

#endif
