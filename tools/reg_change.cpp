// korutl reg add and reg delete. Nothing is destroyed unasked: overwriting
// a value and every deletion ask on a terminal unless /f, refuse without
// one, and a root key is never deleted.
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/reg_keys.h"
#include "tools/reg_report.h"
#include "tools/reg_values.h"
#include "tools/reg_verbs.h"

namespace korutl_tool {

namespace reg_change_verbs {

struct AddArgs {
  std::string key, value, type = "REG_SZ", data, separator{kMultiSeparator};
  bool default_value = false, force = false;
  CLI::Option *value_option = nullptr, *data_option = nullptr, *type_option = nullptr,
              *separator_option = nullptr;
};

void run_add(const AddArgs &a) {
  const bool has_value = a.default_value || a.value_option->count() > 0;
  if (!has_value &&
      (a.data_option->count() + a.type_option->count() + a.separator_option->count()) > 0) {
    fail("/t, /d and /s need /v NAME or /ve", exit_usage);
    return;
  }
  const std::string name = a.default_value ? "" : a.value;
  const uint32_t type = reg_type_code(a.type).value_or(RSV_REG_NONE);  // checked by the parser
  std::string bytes;
  const std::optional<std::string> data =
      a.data_option->count() > 0 ? std::optional<std::string>(a.data) : std::nullopt;
  if (const std::string why = reg_parse_data(type, data, a.separator, bytes); !why.empty()) {
    fail(reg_type_name(type) + ": " + why, exit_usage);
    return;
  }
  const std::string shown = quoted_value_name(name);
  if (has_value) {
    const uint16_t rc = reg_probe_value(a.key, name);
    if (rc == RSV_OK) {
      if (!confirmed("Value " + shown + " exists in " + a.key + ", overwrite", a.force,
                     "overwriting the value " + shown + " of " + a.key))
        return;
    } else if (rc != RSV_E_NO_VALUE && rc != RSV_E_NO_KEY) {
      fail_call(rc, "cannot read " + a.key);
      return;
    }
  }
  if (const uint16_t rc = rsv_create_key(a.key.c_str(), kRegModule, __LINE__); rc != RSV_OK) {
    fail_call(rc, "cannot create " + a.key);
    return;
  }
  if (has_value) {
    if (const uint16_t rc =
            rsv_set_value_ex(a.key.c_str(), name.c_str(), type, bytes.data(),
                             static_cast<uint32_t>(bytes.size()), kRegModule, __LINE__);
        rc != RSV_OK) {
      fail_call(rc, "cannot set the value " + shown + " of " + a.key);
      return;
    }
  }
  report_done();
}

void add_add(CLI::App &reg) {
  static AddArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "add",
      "Create a key, or set a value: reg add KEY [/v NAME | /ve] [/t TYPE] [/s SEP] [/d DATA] [/f]",
      "Types (any letter case): " + reg_type_names() +
          ". DWORD and QWORD take decimal or 0x hex within their range; REG_BINARY and REG_NONE "
          "hex digits; REG_MULTI_SZ items separated by SEP (default \\0). An existing value is "
          "overwritten only after a yes on the terminal, or with /f.");
  add_key_argument(verb, "KEY", a.key, "The key; missing keys above it are created too");
  a.value_option = add_value_option(verb, a.value, "Set the value NAME");
  verb->add_flag("--ve,--default-value", a.default_value, "Set the key's default value")
      ->excludes(a.value_option);
  const CLI::Validator type_name(
      [](const std::string &text) {
        return reg_type_code(text) ? std::string()
                                   : "unknown type \"" + text + "\" (" + reg_type_names() + ")";
      },
      "TYPE");
  a.type_option =
      verb->add_option("-t,--type", a.type, "The value's type (default REG_SZ)")->check(type_name);
  a.separator_option =
      verb->add_option("-s,--separator", a.separator, "REG_MULTI_SZ item separator");
  a.data_option = verb->add_option("-d,--data", a.data, "The value's data");
  verb->add_flag("-f,--force", a.force, "Overwrite an existing value without asking");
  on_run(verb, [] { run_add(a); });
}

struct DeleteArgs {
  std::string key, value;
  bool default_value = false, all_values = false, force = false;
  CLI::Option *value_option = nullptr;
};

void run_delete(const DeleteArgs &a) {
  const bool one_value = a.default_value || a.value_option->count() > 0;
  const std::string name = a.default_value ? "" : a.value;
  const std::string shown = quoted_value_name(name);
  if (!one_value && !a.all_values && reg_is_root(a.key)) {
    fail("the root key " + a.key + " is never deleted");
    return;
  }
  if (!key_found(a.key)) return;
  uint16_t rc = one_value ? reg_probe_value(a.key, name) : RSV_OK;
  if (rc == RSV_E_NO_VALUE) {
    fail("no value " + shown + " in " + a.key);
    return;
  }
  if (rc != RSV_OK) {
    fail_call(rc, "cannot read " + a.key);
    return;
  }
  std::vector<std::string> names;
  if (a.all_values) {
    if (rc = list_names(a.key, korutl::NameKind::value, names); rc != RSV_OK) {
      fail_call(rc, "cannot read the value names of " + a.key);
      return;
    }
  }
  const bool asked =
      one_value ? confirmed("Delete the registry value " + shown + " of " + a.key, a.force,
                            "deleting the value " + shown + " of " + a.key)
      : a.all_values
          ? confirmed("Delete all " + std::to_string(names.size()) + " values of " + a.key, a.force,
                      "deleting the values of " + a.key)
          : confirmed("Permanently delete the registry key " + a.key + " and everything below it",
                      a.force, "deleting the key " + a.key);
  if (!asked) return;
  if (!a.all_values) names = {name};
  for (const std::string &n : names) {
    rc = one_value || a.all_values
             ? rsv_delete_value(a.key.c_str(), n.c_str(), kRegModule, __LINE__)
             : rsv_delete_key(a.key.c_str(), kRegModule, __LINE__);
    if (rc != RSV_OK) {
      fail_call(rc, one_value || a.all_values
                        ? "cannot delete the value " + quoted_value_name(n) + " of " + a.key
                        : "cannot delete " + a.key);
      return;
    }
  }
  report_done();
}

void add_delete(CLI::App &reg) {
  static DeleteArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "delete",
      "Delete a key with everything below it, or values: reg delete KEY [/v NAME | /ve | /va] [/f]",
      "Asks on the terminal unless /f; with no terminal and no /f nothing is deleted (exit "
      "status 1). A root key is never deleted.");
  add_key_argument(verb, "KEY", a.key, "The key");
  a.value_option = add_value_option(verb, a.value, "Delete the value NAME alone");
  auto *ve =
      verb->add_flag("--ve,--default-value", a.default_value, "Delete the default value alone")
          ->excludes(a.value_option);
  verb->add_flag("--va,--all-values", a.all_values, "Delete every value of the key, not the key")
      ->excludes(a.value_option)
      ->excludes(ve);
  verb->add_flag("-f,--force", a.force, "Delete without asking");
  on_run(verb, [] { run_delete(a); });
}

}  // namespace reg_change_verbs

void add_reg_changing_verbs(CLI::App &reg, const RegGlobals &) {
  reg_change_verbs::add_add(reg);
  reg_change_verbs::add_delete(reg);
}

}  // namespace korutl_tool
