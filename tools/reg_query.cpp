// korutl reg query and reg tree: reading keys and values.
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tools/reg_report.h"
#include "tools/reg_tree.h"
#include "tools/reg_values.h"
#include "tools/reg_verbs.h"

namespace korutl_tool {

namespace reg_query_verbs {

constexpr const char *kJsonSchema =
    "--json writes one key object: {\"key\": PATH, \"values\": [{\"name\": NAME, \"type\": "
    "\"REG_SZ\", \"data\": DATA}], \"subkeys\": [KEY OBJECT]}; DATA is a string, a number "
    "(DWORD, QWORD), an array of strings (REG_MULTI_SZ) or upper-case hex (other types); a "
    "subkey below the last level read is {\"key\": PATH} alone.";

struct QueryArgs {
  std::string key, value, separator{kMultiSeparator}, pattern;
  bool default_value = false, recursive = false, keys_only = false, data_only = false,
       case_sensitive = false, exact = false, json = false, all_hosts = false;
  CLI::Option *value_option = nullptr, *find_option = nullptr;
  std::optional<std::string> only() const {
    if (default_value) return std::string();
    if (value_option->count() > 0) return value;
    return std::nullopt;
  }
};

void print_value_line(const std::string &name, const RegValue &value, const QueryArgs &a) {
  std::printf("    %s    %s    %s\n", shown_value_name(name).c_str(),
              reg_type_name(value.type).c_str(),
              reg_show_value(value.type, value.bytes, a.separator).c_str());
}

// reg.exe's layout: the key, its values, a blank line; then either the
// subkeys' paths or, recursive, each subkey the same way. Returns the
// number of values shown.
size_t print_query(const std::string &key, const QueryArgs &a) {
  KeyContents contents;
  read_key(key, a.only(), true, contents);
  size_t shown = contents.values.size();
  if (!a.only() || shown > 0) {
    std::printf("\n%s\n", key.c_str());
    for (const auto &[name, value] : contents.values) print_value_line(name, value, a);
  }
  if (!a.recursive) {
    if (a.only()) return shown;
    std::printf("\n");
    for (const std::string &sub : contents.subkeys)
      std::printf("%s\\%s\n", key.c_str(), sub.c_str());
    return shown;
  }
  for (const std::string &sub : contents.subkeys) shown += print_query(key + "\\" + sub, a);
  return shown;
}

bool matches(const std::string &text, const QueryArgs &a) {
  const std::string pattern = a.exact ? a.pattern : "*" + a.pattern + "*";
  return KORVOStrMatchesPattern(text.c_str(), pattern.c_str(), a.case_sensitive ? 0 : 1) != 0;
}

// /f: key names, value names and data (/k key names only, /d data only,
// both: key names and data), below the key, every level with /s.
size_t search(const std::string &key, const QueryArgs &a) {
  const bool in_keys = a.keys_only || !a.data_only, in_data = a.data_only || !a.keys_only,
             in_names = !a.keys_only && !a.data_only;
  KeyContents contents;
  read_key(key, std::nullopt, true, contents);
  size_t found = 0;
  for (const auto &[name, value] : contents.values) {
    if (!(in_names && matches(name, a)) &&
        !(in_data && matches(reg_show_value(value.type, value.bytes, a.separator), a)))
      continue;
    if (found++ == 0) std::printf("\n%s\n", key.c_str());
    print_value_line(name, value, a);
  }
  for (const std::string &sub : contents.subkeys) {
    const std::string path = key + "\\" + sub;
    if (in_keys && matches(sub, a)) {
      std::printf("%s\n", path.c_str());
      ++found;
    }
    if (a.recursive) found += search(path, a);
  }
  return found;
}

// --all-hosts: the one value of every host's tree that has it, a fleet
// inventory read in one statement.
void query_all_hosts(const QueryArgs &a, const std::string &name) {
  struct Found {
    std::string host;
    RegValue value;
  };
  std::vector<Found> found;
  const uint16_t rc = rsv_get_value_all_hosts(
      a.key.c_str(), name.c_str(),
      [](const char *host, uint32_t type, const void *data, uint32_t size,
         void *context) -> int32_t {
        static_cast<std::vector<Found> *>(context)->push_back(
            {host, {type, std::string(static_cast<const char *>(data), size)}});
        return 0;
      },
      &found, kRegModule, __LINE__);
  if (rc != RSV_OK) return fail_call(rc, "cannot read " + a.key + " across the hosts");
  if (a.json) {
    JsonWriter json;
    json.begin_object().key("key").string(a.key).key("name").string(name);
    json.key("hosts").begin_array();
    for (const Found &f : found) {
      json.begin_object().key("host").string(f.host).key("type").string(
          reg_type_name(f.value.type));
      json.key("data");
      reg_json_data(json, f.value.type, f.value.bytes);
      json.end_object();
    }
    json.end_array().end_object().finish();
  } else {
    for (const Found &f : found)
      std::printf("%s    %s    %s\n", f.host.c_str(), reg_type_name(f.value.type).c_str(),
                  reg_show_value(f.value.type, f.value.bytes, a.separator).c_str());
  }
  if (found.empty()) fail("no host has the value " + quoted_value_name(name) + " in " + a.key);
}

void run_query(const QueryArgs &a) {
  if (a.all_hosts) {
    if (!a.only()) return fail("query --all-hosts needs /v NAME or /ve", exit_usage);
    return query_all_hosts(a, *a.only());
  }
  const ReadSnapshot snapshot;
  if (!key_found(a.key)) return;
  const auto only = a.only();
  const std::string missing = only ? "no value " + quoted_value_name(*only) + " in " + a.key +
                                         (a.recursive ? " or below" : "")
                                   : "";
  if (only && !a.recursive && reg_probe_value(a.key, *only) == RSV_E_NO_VALUE) {
    fail(missing);
    return;
  }
  if (a.find_option->count() > 0) {
    const size_t found = search(a.key, a);
    if (found == 0)
      fail("nothing below " + a.key + " matches \"" + a.pattern + "\"");
    else
      std::printf("End of search: %zu match(es) found.\n", found);
    return;
  }
  size_t shown = 0;
  if (a.json) {
    JsonWriter json;
    write_reg_tree_json(json, a.key, a.recursive ? -1 : 1, only, &shown);
    json.finish();
  } else {
    shown = print_query(a.key, a);
    if (only && a.recursive && shown > 0)
      std::printf("\nEnd of search: %zu match(es) found.\n", shown);
  }
  if (only && shown == 0) fail(missing);
}

void add_query(CLI::App &reg) {
  static QueryArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "query",
      "Show a key's values and subkeys: reg query KEY [/v NAME | /ve] [/s] "
      "[/f PATTERN [/k] [/d] [/c] [/e]] [/se SEP] [--json]",
      std::string("Exit status 0 found, 1 not found or unreadable, 2 usage. ") + kJsonSchema);
  add_key_argument(verb, "KEY", a.key, "The key, e.g. HKLM\\SOFTWARE\\Vantrel");
  a.value_option = add_value_option(verb, a.value, "Show the value NAME alone");
  verb->add_flag("--ve,--default-value", a.default_value, "Show the default value alone")
      ->excludes(a.value_option);
  verb->add_flag("-s,--recursive", a.recursive, "Every subkey below the key too");
  verb->add_option("--se,--separator", a.separator,
                   "Show REG_MULTI_SZ items separated by SEP (default \\0)");
  auto *find = verb->add_option("-f,--find", a.pattern,
                                "Search key names, value names and data for PATTERN (* and ? "
                                "wildcards; contained in the text unless /e)");
  a.find_option = find;
  verb->add_flag("-k,--keys-only", a.keys_only, "With /f: search key names")->needs(find);
  verb->add_flag("-d,--data-only", a.data_only, "With /f: search data")->needs(find);
  verb->add_flag("-c,--case-sensitive", a.case_sensitive, "With /f: letter case counts")
      ->needs(find);
  verb->add_flag("-e,--exact", a.exact, "With /f: the whole text must match")->needs(find);
  verb->add_flag("--json", a.json, "Write JSON (schema below)")->excludes(find);
  verb->add_flag("--all-hosts", a.all_hosts,
                 "With /v or /ve: that value in every host's tree of a shared store, one line "
                 "\"HOST    TYPE    DATA\" per host that has it (--json: {\"key\", \"name\", "
                 "\"hosts\": [{\"host\", \"type\", \"data\"}]})")
      ->excludes(find)
      ->excludes("--recursive");
  on_run(verb, [] { run_query(a); });
}

struct TreeArgs {
  std::string key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel";
  int depth = -1;
  bool json = false;
};

void run_tree(const TreeArgs &a) {
  const ReadSnapshot snapshot;
  if (!key_found(a.key)) return;
  if (a.json) {
    JsonWriter json;
    write_reg_tree_json(json, a.key, a.depth);
    json.finish();
  } else {
    print_reg_tree(stdout, a.key, TreeStyle{a.depth, ""});
  }
}

void add_tree(CLI::App &reg) {
  static TreeArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "tree",
      "Show a key and everything below it as a tree: reg tree [KEY] [--depth N] [--json]",
      std::string("Values show as \"name (TYPE) = data\", subkeys as \"name\\\", two blanks deeper "
                  "a level. Exit status 0 whole, 1 missing or unreadable, 2 usage. ") +
          kJsonSchema);
  add_key_argument(verb, "KEY", a.key, "The key (default HKLM\\SOFTWARE\\Vantrel)", false);
  verb->add_option("--depth", a.depth, "Levels of subkeys shown (default all)")
      ->check(CLI::Range(0, 512));
  verb->add_flag("--json", a.json, "Write JSON (schema below)");
  on_run(verb, [] { run_tree(a); });
}

}  // namespace reg_query_verbs

void add_reg_reading_verbs(CLI::App &reg, const RegGlobals &) {
  reg_query_verbs::add_query(reg);
  reg_query_verbs::add_tree(reg);
}

}  // namespace korutl_tool
