// korutl: the library's services from a shell.
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "tools/commands.h"
#include "tools/output.h"
#include "utl/version.h"

namespace korutl_tool {

namespace {
// A function-local map: registrations run during static initialisation of
// the other files, in no fixed order.
std::map<std::string, CommandAdder> &registry() {
  static std::map<std::string, CommandAdder> commands;
  return commands;
}

// The subcommand line a usage error points to: "korutl cfg get".
std::string command_path(const CLI::App *app) {
  std::string path;
  for (; app != nullptr; app = app->get_parent())
    path = app->get_name() + (path.empty() ? "" : " " + path);
  return path;
}

// --help-all: the top-level help, then every verb as
//   korutl cfg get PRODUCT [VERSION] NAME:
//       Print a value of a product, or of a product version
//     --json                      Print one JSON document ...
// which help2man turns into a subsection per verb with its switches, so
// that the manual page shows every verb, reg's included, without a list
// of its own.
class ManualFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App *app, std::string name,
                        CLI::AppFormatMode mode) const override {
    if (mode != CLI::AppFormatMode::All || app->get_parent() != nullptr)
      return CLI::Formatter::make_help(app, std::move(name), mode);
    std::string out = CLI::Formatter::make_help(app, std::move(name), CLI::AppFormatMode::Normal);
    verbs(app, app->get_name(), out);
    return out;
  }

 private:
  void verbs(const CLI::App *app, const std::string &path, std::string &out) const {
    const auto all = [](const CLI::App *) { return true; };
    for (const CLI::App *sub : app->get_subcommands(all)) {
      const std::string here = path + " " + sub->get_name();
      if (!sub->get_subcommands(all).empty()) {
        verbs(sub, here, out);
        continue;
      }
      out += "\n" + here;
      for (const CLI::Option *opt : sub->get_options())
        if (opt->get_positional())
          out += opt->get_required() ? " " + opt->get_name(true, false)
                                     : " [" + opt->get_name(true, false) + "]";
      out += ":\n    " + sub->get_description() + "\n";
      for (const CLI::Option *opt : sub->get_options())
        if (!opt->get_positional() && opt != sub->get_help_ptr() && opt != sub->get_help_all_ptr())
          out += make_option(opt, false);
    }
  }
};

// The deepest subcommand given on the command line.
const CLI::App *last_parsed(const CLI::App &app) {
  for (const CLI::App *sub : app.get_subcommands())
    if (sub->parsed()) return last_parsed(*sub);
  return &app;
}
}  // namespace

bool register_command(const char *name, CommandAdder adder) {
  registry().emplace(name, adder);
  return true;
}

void add_all_commands(CLI::App &app) {
  for (const auto &[name, adder] : registry()) adder(app);
}

}  // namespace korutl_tool

int main(int argc, char **argv) {
  using namespace korutl_tool;
  CLI::App app{"korutl - the Halcyra utility library from the command line", "korutl"};
  app.require_subcommand(1);
  app.set_version_flag("--version", "korutl " KORUTL_FULL_VERSION_TEXT);
  // Every subcommand with its options in one text, for the manual page.
  app.formatter(std::make_shared<ManualFormatter>());
  app.set_help_all_flag("--help-all", "Print the help of every subcommand and exit");
  add_all_commands(app);
  // CLI11 would report a misspelt subcommand as a missing one.
  if (argc > 1 && argv[1][0] != '-' &&
      app.get_subcommands([&](const CLI::App *sub) { return sub->check_name(argv[1]); }).empty()) {
    fail(std::string("unknown subcommand '") + argv[1] + "' (korutl --help lists them)",
         exit_usage);
    return exit_usage;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &e) {
    return app.exit(e);  // --help, --help-all, --version: printed, nothing done
  } catch (const CLI::ParseError &e) {
    fail(std::string(e.what()) + " (see " + command_path(last_parsed(app)) + " --help)",
         exit_usage);
    return exit_usage;
  }
  return exit_code;
}
