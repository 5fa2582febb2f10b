// korutl reg copy and reg compare: two keys side by side.
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/reg_report.h"
#include "tools/reg_tree.h"
#include "tools/reg_values.h"
#include "tools/reg_verbs.h"

namespace korutl_tool {

namespace reg_copy_verbs {

struct CopyArgs {
  std::string source, target, to_host;
  bool recursive = false, force = false;
};

// One key of the copied tree: its path below the source and its values.
struct CopiedKey {
  std::string below;
  KeyContents contents;
};

bool read_copied(const std::string &source, const std::string &below, bool recursive,
                 std::vector<CopiedKey> &keys) {
  keys.push_back({below, {}});
  bool complete = read_key(source + below, std::nullopt, recursive, keys.back().contents);
  const std::vector<std::string> subkeys = keys.back().contents.subkeys;
  for (const std::string &sub : subkeys)
    complete = read_copied(source, below + "\\" + sub, recursive, keys) && complete;
  return complete;
}

// Copies the values of SOURCE (every key below it with /s) into TARGET,
// all read from one committed state before anything is written.
void run_copy(const CopyArgs &a) {
  std::vector<CopiedKey> keys;
  {
    const ReadSnapshot snapshot;
    if (!key_found(a.source) || !read_copied(a.source, "", a.recursive, keys)) return;
  }
  if (!a.to_host.empty() && !use_host(a.to_host)) return;
  size_t existing = 0;
  for (const CopiedKey &k : keys) {
    for (const auto &value : k.contents.values) {
      const uint16_t rc = reg_probe_value(a.target + k.below, value.first);
      if (rc == RSV_OK) {
        ++existing;
      } else if (rc != RSV_E_NO_VALUE && rc != RSV_E_NO_KEY) {
        fail_call(rc, "cannot read " + a.target + k.below);
        return;
      }
    }
  }
  if (existing > 0 &&
      !confirmed("Overwrite " + std::to_string(existing) + " existing values below " + a.target,
                 a.force, "overwriting " + std::to_string(existing) + " values below " + a.target))
    return;
  for (const CopiedKey &k : keys) {
    const std::string key = a.target + k.below;
    if (const uint16_t rc = rsv_create_key(key.c_str(), kRegModule, __LINE__); rc != RSV_OK) {
      fail_call(rc, "cannot create " + key);
      return;
    }
    for (const auto &[name, value] : k.contents.values) {
      if (const uint16_t rc =
              rsv_set_value_ex(key.c_str(), name.c_str(), value.type, value.bytes.data(),
                               static_cast<uint32_t>(value.bytes.size()), kRegModule, __LINE__);
          rc != RSV_OK) {
        fail_call(rc, "cannot set the value " + quoted_value_name(name) + " of " + key);
        return;
      }
    }
  }
  report_done();
}

void add_copy(CLI::App &reg) {
  static CopyArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "copy", "Copy a key's values into another key: reg copy SOURCE TARGET [/s] [/f]",
      "Values already in TARGET are overwritten only after a yes on the terminal, or "
      "with /f. The copy is read from one state of SOURCE; it is written key by key.");
  add_key_argument(verb, "SOURCE", a.source, "The key copied");
  add_key_argument(verb, "TARGET", a.target, "The key written (created when missing)");
  verb->add_flag("-s,--recursive", a.recursive, "Every subkey below SOURCE too");
  verb->add_flag("-f,--force", a.force, "Overwrite existing values without asking");
  verb->add_option("--to-host", a.to_host,
                   "Write TARGET in the tree of host NAME of a shared store (SOURCE is read "
                   "from --host's, else this machine's)")
      ->type_name("NAME");
  on_run(verb, [] { run_copy(a); });
}

struct CompareArgs {
  std::string first, second, value;
  bool default_value = false, recursive = false;
  CLI::Option *value_option = nullptr;
};

struct Comparison {
  const CompareArgs &args;
  std::optional<std::string> only;
  bool different = false, complete = true;

  void line(char side, const char *what, const std::string &text) {
    std::printf("%c %s: %s\n", side, what, text.c_str());
    different = true;
  }

  void value_line(char side, const std::string &key, const std::string &name, const RegValue &v) {
    line(side, "Value",
         key + "  " + shown_value_name(name) + "  " + reg_type_name(v.type) + "  " +
             reg_show_value(v.type, v.bytes));
  }

  // Matching names are found through the store, which knows how names
  // compare.
  void compare(const std::string &below) {
    const std::string one = args.first + below, two = args.second + below;
    KeyContents a, b;
    const bool subkeys = !only || args.recursive;
    complete = read_key(one, only, subkeys, a) && complete;
    complete = read_key(two, only, subkeys, b) && complete;
    for (const auto &[name, value] : a.values) {
      RegValue other;
      const uint16_t rc = reg_read_value(two, name, other);
      if (rc == RSV_E_NO_VALUE) {
        value_line('<', one, name, value);
      } else if (rc != RSV_OK) {
        fail_call(rc, "cannot read the value " + quoted_value_name(name) + " of " + two);
        complete = false;
      } else if (other.type != value.type || other.bytes != value.bytes) {
        value_line('<', one, name, value);
        value_line('>', two, name, other);
      }
    }
    for (const auto &[name, value] : b.values)
      if (reg_probe_value(one, name) == RSV_E_NO_VALUE) value_line('>', two, name, value);
    for (const std::string &sub : a.subkeys) {
      const uint16_t rc =
          rsv_query_key((two + "\\" + sub).c_str(), nullptr, nullptr, kRegModule, __LINE__);
      if (rc == RSV_E_NO_KEY && !only)
        line('<', "Key", one + "\\" + sub);
      else if (rc == RSV_OK && args.recursive)
        compare(below + "\\" + sub);
    }
    for (const std::string &sub : b.subkeys)
      if (!only && rsv_query_key((one + "\\" + sub).c_str(), nullptr, nullptr, kRegModule,
                                 __LINE__) == RSV_E_NO_KEY)
        line('>', "Key", two + "\\" + sub);
  }
};

void run_compare(const CompareArgs &a) {
  const ReadSnapshot snapshot;
  if (!key_found(a.first) || !key_found(a.second)) return;
  Comparison c{a, std::nullopt};
  if (a.default_value || a.value_option->count() > 0) c.only = a.default_value ? "" : a.value;
  c.compare("");
  if (!c.complete) return;
  std::printf("\nResult Compared: %s\n", c.different ? "Different" : "Identical");
  if (c.different) exit_code = exit_failed;
}

void add_compare(CLI::App &reg) {
  static CompareArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "compare", "Compare two keys: reg compare KEY1 KEY2 [/v NAME | /ve] [/s]",
      "Prints \"< Value: ...\" for what KEY1 has, \"> Value: ...\" for what KEY2 has "
      "differently, \"< Key:\" and \"> Key:\" for subkeys on one side only, then \"Result "
      "Compared: Identical\" or \"Different\". Exit status 0 identical, 1 different (or, "
      "with a \"korutl:\" line, not compared: a key missing or unreadable), 2 usage.");
  add_key_argument(verb, "KEY1", a.first, "The first key");
  add_key_argument(verb, "KEY2", a.second, "The second key");
  a.value_option = add_value_option(verb, a.value, "Compare the value NAME alone");
  verb->add_flag("--ve,--default-value", a.default_value, "Compare the default value alone")
      ->excludes(a.value_option);
  verb->add_flag("-s,--recursive", a.recursive, "Compare every subkey below too");
  on_run(verb, [] { run_compare(a); });
}

}  // namespace reg_copy_verbs

void add_reg_two_key_verbs(CLI::App &reg, const RegGlobals &) {
  reg_copy_verbs::add_copy(reg);
  reg_copy_verbs::add_compare(reg);
}

}  // namespace korutl_tool
