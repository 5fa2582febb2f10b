// korutl reg: the configuration store's keys and values from a shell, with
// the verbs and switches of Windows' reg command (reg_verbs.h).
#include "siblings/rsv/rsv.h"
#include "tools/reg_keys.h"
#include "tools/reg_report.h"
#include "tools/reg_values.h"
#include "tools/reg_verbs.h"

namespace korutl_tool {

CLI::App *add_reg_verb(CLI::App &reg, const char *name, const std::string &description,
                       const std::string &footer) {
  CLI::App *verb = reg.add_subcommand(name, description);
  verb->allow_windows_style_options();
  verb->option_defaults()->ignore_case();
  verb->set_help_flag("-h,--help,-?", "Print this help and exit; changes nothing");
  verb->footer(footer + (footer.empty() ? "" : "\n") +
               "Every switch also takes reg.exe's form, /NAME (/v, /ve, /?), in any letter case.");
  return verb;
}

CLI::Option *add_key_argument(CLI::App *verb, const char *name, std::string &key,
                              const std::string &description, bool required) {
  const CLI::Validator full_key(
      [](std::string &text) {
        const std::string full = reg_full_key(text);
        if (full.empty())
          return "\"" + text + "\" does not begin with a root key (" + reg_root_names() +
                 " or their long names)";
        text = full;
        return std::string();
      },
      "KEY");
  return verb->add_option(name, key, description)->required(required)->transform(full_key);
}

CLI::Option *add_value_option(CLI::App *verb, std::string &name, const std::string &description) {
  const CLI::Validator not_a_switch(
      [](const std::string &text) {
        return !text.empty() && (text[0] == '-' || text[0] == '/')
                   ? "\"" + text + "\" looks like a switch, not a value name"
                   : std::string();
      },
      "NAME");
  return verb->add_option("-v,--value", name, description)->check(not_a_switch);
}

namespace {

RegGlobals globals;

constexpr RegVerbAdder kVerbs[] = {add_reg_reading_verbs, add_reg_changing_verbs,
                                   add_reg_two_key_verbs, add_reg_file_verbs, add_reg_host_verbs};

}  // namespace

bool use_host(const std::string &host) {
  const uint16_t rc = rsv_set_host(host.c_str(), kRegModule, __LINE__);
  if (rc != RSV_OK) fail_call(rc, "cannot work on the tree of host " + host);
  return rc == RSV_OK;
}

void on_run(CLI::App *verb, std::function<void()> body) {
  verb->callback([body = std::move(body)] {
    watch_store_failures();
    if (!globals.host.empty() && !use_host(globals.host)) return;
    body();
  });
}

namespace {

void add_reg_command(CLI::App &app) {
  CLI::App *reg = app.add_subcommand(
      "reg",
      "Registry keys and values: query, tree, add, delete, copy, compare, export, import. "
      "Keys begin with a root key (HKLM, HKCU, HKCR, HKU, HKCC or their long names). "
      "Exit status 0 done or found, 1 not found or failed, 2 usage.");
  reg->require_subcommand(1);
  reg->ignore_case();
  reg->set_help_flag("-h,--help,-?", "Print this help and exit");
  reg->add_option("--host", globals.host,
                  "Work on the tree of host NAME in a shared PostgreSQL store (default "
                  "KORVO_HOST, else this machine's name); give it before the verb")
      ->type_name("NAME");
  for (const RegVerbAdder add : kVerbs) add(*reg, globals);
}

}  // namespace

KORUTL_TOOL_COMMAND("reg", add_reg_command);

}  // namespace korutl_tool
