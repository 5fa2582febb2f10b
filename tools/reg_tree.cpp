#include "tools/reg_tree.h"

#include "siblings/rsv/rsv.h"
#include "tools/reg_values.h"

namespace korutl_tool {

void print_reg_values(std::FILE *out, const std::string &key, const std::string &pad) {
  for (const std::string &name : reg_value_names(key)) {
    const auto value = reg_read_value(key, name);
    if (!value) continue;
    std::fprintf(out, "%s%s (%s) = %s\n", pad.c_str(), name.empty() ? "(Default)" : name.c_str(),
                 reg_type_name(value->type).c_str(),
                 reg_show_value(value->type, value->bytes).c_str());
  }
}

namespace {

void print_below(std::FILE *out, const std::string &key, const TreeStyle &style, int depth) {
  const std::string pad = style.indent + std::string(size_t(depth) * 2, ' ');
  print_reg_values(out, key, pad);
  if (style.max_depth >= 0 && depth > style.max_depth) return;
  for (const std::string &sub : reg_subkey_names(key)) {
    std::fprintf(out, "%s%s\\\n", pad.c_str(), sub.c_str());
    if (style.max_depth < 0 || depth < style.max_depth)
      print_below(out, key + "\\" + sub, style, depth + 1);
  }
}

}  // namespace

bool print_reg_tree(std::FILE *out, const std::string &key, const TreeStyle &style) {
  const std::string full = reg_full_key(key);
  if (rsv_query_key(full.c_str(), nullptr, nullptr, "tools/reg", __LINE__) != RSV_OK) return false;
  std::fprintf(out, "%s%s\n", style.indent.c_str(), full.c_str());
  print_below(out, full, style, 1);
  return true;
}

}  // namespace korutl_tool
