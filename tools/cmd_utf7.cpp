// korutl utf7 encode|decode: UTF-7 on one side, UTF-8 on the terminal side.
// The UTF-8 side goes through the library's UTF-8/UTF-16 conversions, whose
// UTF-16 units are the UCS-2 units its UTF-7 functions take.
#include <cstdio>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/stream_io.h"
#include "tools/unicode_text.h"

namespace korutl_tool {

namespace {

struct Utf7Options {
  std::string action;
  bool optional_direct = false;
  bool close = false;
};

int utf7_failed(const char *message) {
  fail(std::string("utf7: ") + message);
  return exit_failed;
}

int encode(const Utf7Options &opt, const std::vector<uint8_t> &in) {
  const auto units = utf8_to_utf16(std::string(in.begin(), in.end()));
  if (!units) return utf7_failed("input ends inside a UTF-8 sequence");
  const auto text = ucs2_to_utf7(*units, opt.optional_direct, opt.close);
  if (!text) return utf7_failed("conversion failed");
  return write_all(text->data(), text->size()) && write_all("\n", 1) ? 0 : 1;
}

int decode(std::vector<uint8_t> in) {
  trim_trailing_space(in);
  const Utf7Decoded decoded = utf7_to_ucs2(std::string(in.begin(), in.end()));
  if (decoded.result == CONV_TARGET_EXHAUSTED) return utf7_failed("conversion failed");
  const auto text = utf16_to_utf8(decoded.units);
  if (!text) return utf7_failed("conversion to UTF-8 failed");
  if (!write_all(text->data(), text->size()) || !write_all("\n", 1)) return 1;
  std::fflush(stdout);  // the text first, then the complaint about it
  return decoded.result == CONV_SOURCE_ILLEGAL
             ? utf7_failed("malformed UTF-7 (decoded as far as possible)")
             : 0;
}

void add_utf7_command(CLI::App &app) {
  static Utf7Options opt;
  auto *cmd = app.add_subcommand("utf7", "UTF-8 to UTF-7 and back, stdin to stdout");
  cmd->add_option("ACTION", opt.action, "encode or decode")
      ->required()
      ->check(CLI::IsMember({"encode", "decode"}));
  cmd->add_flag("--optional-direct", opt.optional_direct,
                "Write the optional direct characters unencoded");
  cmd->add_flag("--close", opt.close, "End every Base64 run with '-'");
  cmd->callback([] {
    std::vector<uint8_t> in = read_all(stdin);
    exit_code = opt.action == "encode" ? encode(opt, in) : decode(std::move(in));
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("utf7", add_utf7_command);

}  // namespace korutl_tool
