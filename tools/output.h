// How every subcommand reports: one exit status convention, one failure
// line format, and JSON for the verbs that offer --json.
#ifndef KORUTL_TOOLS_OUTPUT_H
#define KORUTL_TOOLS_OUTPUT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace korutl_tool {

// Exit statuses, the same in every subcommand.
enum ExitStatus : int {
  exit_ok = 0,      // done, or found
  exit_failed = 1,  // not found, or failed
  exit_usage = 2,   // the command line is wrong; nothing was done
};

// Prints "korutl: <message>" as one line on standard error and leaves
// `status` for main() to return (a later success never clears it).
void fail(std::string_view message, ExitStatus status = exit_failed);

// A JSON document written to standard output as it is built. Commas are
// placed by the writer. Strings are arbitrary bytes: valid UTF-8 passes
// through (control characters escaped), and each byte that is not part of
// valid UTF-8 is written as the escape \udc80..\udcff of that byte, so
// that names and data holding any bytes print without loss.
class JsonWriter {
 public:
  JsonWriter &begin_object();
  JsonWriter &end_object();
  JsonWriter &begin_array();
  JsonWriter &end_array();
  JsonWriter &key(std::string_view name);
  JsonWriter &string(std::string_view bytes);
  JsonWriter &number(uint64_t n);
  JsonWriter &boolean(bool b);
  JsonWriter &null();
  // Ends the document with a line feed.
  void finish();

 private:
  void separate();
  std::string out_;
  bool need_comma_ = false;
};

// The JSON string literal (with its quotes) for `bytes`, as JsonWriter
// writes it.
std::string json_quote(std::string_view bytes);

}  // namespace korutl_tool

#endif
