#include "tools/reg_tree.h"

#include "siblings/rsv/rsv.h"
#include "tools/reg_keys.h"
#include "tools/reg_report.h"

namespace korutl_tool {

std::string shown_value_name(const std::string &name) { return name.empty() ? "(Default)" : name; }

bool read_key(const std::string &key, const std::optional<std::string> &only, bool subkeys,
              KeyContents &contents) {
  contents = {};
  bool complete = true;
  std::vector<std::string> names;
  if (only) {
    names.push_back(*only);
  } else if (const uint16_t rc = list_names(key, korutl::NameKind::value, names); rc != RSV_OK) {
    fail_call(rc, "cannot read the value names of " + key);
    complete = false;
  }
  for (const std::string &name : names) {
    RegValue value;
    const uint16_t rc = reg_read_value(key, name, value);
    if (rc == RSV_OK) {
      contents.values.emplace_back(name, std::move(value));
    } else if (!(only && rc == RSV_E_NO_VALUE)) {
      fail_call(rc, "cannot read the value \"" + shown_value_name(name) + "\" of " + key);
      complete = false;
    }
  }
  if (subkeys) {
    if (const uint16_t rc = list_names(key, korutl::NameKind::subkey, contents.subkeys);
        rc != RSV_OK) {
      fail_call(rc, "cannot read the subkeys of " + key);
      complete = false;
    }
  }
  return complete;
}

namespace {

void print_value_lines(std::FILE *out, const KeyContents &contents, const std::string &pad) {
  for (const auto &[name, value] : contents.values)
    std::fprintf(out, "%s%s (%s) = %s\n", pad.c_str(), shown_value_name(name).c_str(),
                 reg_type_name(value.type).c_str(),
                 reg_show_value(value.type, value.bytes).c_str());
}

bool print_below(std::FILE *out, const std::string &key, const TreeStyle &style, int depth) {
  const std::string pad = style.indent + std::string(size_t(depth) * 2, ' ');
  const bool list_subkeys = style.max_depth < 0 || depth <= style.max_depth;
  KeyContents contents;
  bool complete = read_key(key, std::nullopt, list_subkeys, contents);
  print_value_lines(out, contents, pad);
  for (const std::string &sub : contents.subkeys) {
    std::fprintf(out, "%s%s\\\n", pad.c_str(), sub.c_str());
    if (style.max_depth < 0 || depth < style.max_depth)
      complete = print_below(out, key + "\\" + sub, style, depth + 1) && complete;
  }
  return complete;
}

// RSV_OK or RSV_E_NO_KEY; any other failure is reported.
uint16_t look_up(const std::string &key) {
  const uint16_t rc = rsv_query_key(key.c_str(), nullptr, nullptr, kRegModule, __LINE__);
  if (rc != RSV_OK && rc != RSV_E_NO_KEY) fail_call(rc, "cannot read " + key);
  return rc;
}

bool write_below(JsonWriter &json, const std::string &key, int max_depth, int depth,
                 const std::optional<std::string> &only, size_t &values) {
  const bool list_subkeys = max_depth < 0 || depth <= max_depth;
  KeyContents contents;
  bool complete = read_key(key, only, list_subkeys, contents);
  json.key("values").begin_array();
  for (const auto &[name, value] : contents.values) {
    json.begin_object().key("name").string(name);
    json.key("type").string(reg_type_name(value.type)).key("data");
    reg_json_data(json, value.type, value.bytes);
    json.end_object();
  }
  json.end_array();
  values += contents.values.size();
  if (!list_subkeys) return complete;
  json.key("subkeys").begin_array();
  for (const std::string &sub : contents.subkeys) {
    const std::string path = key + "\\" + sub;
    json.begin_object().key("key").string(path);
    if (max_depth < 0 || depth < max_depth)
      complete = write_below(json, path, max_depth, depth + 1, only, values) && complete;
    json.end_object();
  }
  json.end_array();
  return complete;
}

}  // namespace

bool print_reg_values(std::FILE *out, const std::string &key, const std::string &pad) {
  if (const uint16_t rc = look_up(key); rc != RSV_OK) return rc == RSV_E_NO_KEY;
  KeyContents contents;
  const bool complete = read_key(key, std::nullopt, false, contents);
  print_value_lines(out, contents, pad);
  return complete;
}

TreePrint print_reg_tree(std::FILE *out, const std::string &key, const TreeStyle &style) {
  const std::string full = reg_full_key(key);
  if (full.empty()) return TreePrint::no_key;
  if (const uint16_t rc = look_up(full); rc != RSV_OK)
    return rc == RSV_E_NO_KEY ? TreePrint::no_key : TreePrint::incomplete;
  std::fprintf(out, "%s%s\n", style.indent.c_str(), full.c_str());
  return print_below(out, full, style, 1) ? TreePrint::whole : TreePrint::incomplete;
}

TreePrint write_reg_tree_json(JsonWriter &json, const std::string &key, int max_depth,
                              const std::optional<std::string> &only, size_t *values) {
  if (const uint16_t rc = look_up(key); rc != RSV_OK)
    return rc == RSV_E_NO_KEY ? TreePrint::no_key : TreePrint::incomplete;
  json.begin_object().key("key").string(key);
  size_t written = 0;
  const bool complete = write_below(json, key, max_depth, 1, only, written);
  if (values != nullptr) *values = written;
  json.end_object();
  return complete ? TreePrint::whole : TreePrint::incomplete;
}

}  // namespace korutl_tool
