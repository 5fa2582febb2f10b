#include "tools/reg_tree.h"

#include "siblings/rsv/rsv.h"
#include "tools/reg_values.h"

namespace korutl_tool {

namespace {

// A listing that could not be completed is said on standard error: a tree
// that leaves something out must not pass for the whole tree.
bool unreadable(const std::string &what) {
  std::fprintf(stderr, "korutl: cannot read %s\n", what.c_str());
  return false;
}

}  // namespace

bool print_reg_values(std::FILE *out, const std::string &key, const std::string &pad) {
  std::vector<std::string> names;
  if (const uint16_t rc = list_names(key, korutl::NameKind::value, names);
      rc != RSV_OK && rc != RSV_E_NO_KEY)
    return unreadable("the values of " + key);
  bool complete = true;
  for (const std::string &name : names) {
    const auto value = reg_read_value(key, name);
    if (!value) {
      complete = unreadable("the value \"" + name + "\" of " + key);
      continue;
    }
    std::fprintf(out, "%s%s (%s) = %s\n", pad.c_str(), name.empty() ? "(Default)" : name.c_str(),
                 reg_type_name(value->type).c_str(),
                 reg_show_value(value->type, value->bytes).c_str());
  }
  return complete;
}

namespace {

bool print_below(std::FILE *out, const std::string &key, const TreeStyle &style, int depth) {
  const std::string pad = style.indent + std::string(size_t(depth) * 2, ' ');
  bool complete = print_reg_values(out, key, pad);
  if (style.max_depth >= 0 && depth > style.max_depth) return complete;
  std::vector<std::string> subkeys;
  if (const uint16_t rc = list_names(key, korutl::NameKind::subkey, subkeys);
      rc != RSV_OK && rc != RSV_E_NO_KEY)
    complete = unreadable("the subkeys of " + key);
  for (const std::string &sub : subkeys) {
    std::fprintf(out, "%s%s\\\n", pad.c_str(), sub.c_str());
    if (style.max_depth < 0 || depth < style.max_depth)
      complete = print_below(out, key + "\\" + sub, style, depth + 1) && complete;
  }
  return complete;
}

}  // namespace

TreePrint print_reg_tree(std::FILE *out, const std::string &key, const TreeStyle &style) {
  const std::string full = reg_full_key(key);
  if (rsv_query_key(full.c_str(), nullptr, nullptr, kRegModule, __LINE__) != RSV_OK)
    return TreePrint::no_key;
  std::fprintf(out, "%s%s\n", style.indent.c_str(), full.c_str());
  return print_below(out, full, style, 1) ? TreePrint::whole : TreePrint::incomplete;
}

}  // namespace korutl_tool
