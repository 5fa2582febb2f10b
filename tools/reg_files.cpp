// korutl reg export and reg import: .reg files, "-" for standard output
// and input.
#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/reg_platform.h"
#include "tools/reg_report.h"
#include "tools/reg_values.h"
#include "tools/reg_verbs.h"

namespace korutl_tool {

namespace reg_files_verbs {

// The FILE operand. A path beginning with / reads to the parser as a
// switch it does not know; the only switches of these verbs are /y and /?,
// so such a word is the file. Anything else left over is a usage error.
bool file_operand(CLI::App *verb, std::string &file) {
  for (const std::string &extra : verb->remaining()) {
    if (!file.empty() || extra.empty() || extra[0] != '/') {
      fail("unexpected argument \"" + extra + "\"", exit_usage);
      return false;
    }
    file = extra;
  }
  if (file.empty())
    fail("FILE is required (- for standard " +
             std::string(verb->get_name() == "export" ? "output)" : "input)"),
         exit_usage);
  return !file.empty();
}

// The file handed to the registry service: "-" stands for the standard
// stream.
const char *service_file(const std::string &file, bool output) {
  if (file != "-") return file.c_str();
  const char *stream = standard_stream_file(output);
  if (stream == nullptr)
    fail(std::string("standard ") + (output ? "output" : "input") + " cannot be used here",
         exit_usage);
  return stream;
}

struct ExportArgs {
  std::string key, file;
  bool yes = false;
};

void run_export(CLI::App *verb, ExportArgs &a) {
  if (!file_operand(verb, a.file)) return;
  const char *file = service_file(a.file, true);
  if (file == nullptr) return;
  {
    const ReadSnapshot snapshot;
    if (!key_found(a.key)) return;
  }
  struct stat st {};
  if (a.file != "-" && stat(file, &st) == 0 && S_ISREG(st.st_mode) &&
      !confirmed("File " + a.file + " exists. Overwrite", a.yes, "overwriting " + a.file, "/y"))
    return;
  if (const uint16_t rc = rsv_export_file(a.key.c_str(), file, kRegModule, __LINE__);
      rc != RSV_OK) {
    fail_call(rc, "cannot export " + a.key + " to " + a.file);
    return;
  }
  if (a.file != "-") report_done();
}

void add_export(CLI::App &reg) {
  static ExportArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "export", "Write a key and everything below it to a .reg file: reg export KEY FILE [/y]",
      "FILE - writes to standard output. An existing file is overwritten only after a yes on "
      "the terminal, or with /y.");
  verb->allow_extras();  // the FILE operand: see file_operand
  add_key_argument(verb, "KEY", a.key, "The key");
  verb->add_option("FILE", a.file, "The file written, - for standard output");
  verb->add_flag("-y,--yes", a.yes, "Overwrite an existing file without asking");
  on_run(verb, [verb] { run_export(verb, a); });
}

struct ImportArgs {
  std::string file;
};

void run_import(CLI::App *verb, ImportArgs &a) {
  if (!file_operand(verb, a.file)) return;
  const char *file = service_file(a.file, false);
  if (file == nullptr) return;
  uint32_t bad_line = 0;
  if (const uint16_t rc = rsv_import_file(file, &bad_line, kRegModule, __LINE__); rc != RSV_OK) {
    if (bad_line > 0)
      fail(a.file + ":" + std::to_string(bad_line) + ": malformed line; nothing was imported");
    else
      fail_call(rc, "cannot import " + a.file);
    return;
  }
  report_done();
}

void add_import(CLI::App &reg) {
  static ImportArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "import", "Apply a .reg file in one transaction: reg import FILE",
      "FILE - reads standard input. A malformed file changes nothing; the message names its "
      "line.");
  verb->allow_extras();  // the FILE operand: see file_operand
  verb->add_option("FILE", a.file, "The file read, - for standard input");
  on_run(verb, [verb] { run_import(verb, a); });
}

}  // namespace reg_files_verbs

void add_reg_file_verbs(CLI::App &reg, const RegGlobals &) {
  reg_files_verbs::add_export(reg);
  reg_files_verbs::add_import(reg);
}

}  // namespace korutl_tool
