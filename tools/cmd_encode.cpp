// korutl encode base64|hex|prefixed [-d]: stdin to stdout. Encoding writes
// the text and a line break; decoding ignores trailing blanks and line
// breaks and writes the bytes.
#include <cstdio>
#include <string>

#include "korutl.h"
#include "tools/armor.h"
#include "tools/commands.h"
#include "tools/stream_io.h"

namespace korutl_tool {

namespace {

struct EncodeOptions {
  std::string form;
  bool decode = false;
};

int fail(const char *message) {
  std::fprintf(stderr, "korutl encode: %s\n", message);
  return 1;
}

// The length-prefixed form carries at most 255 payload bytes.
int run_prefixed(const Bytes &in, bool decode) {
  if (decode) {
    if (in.size() > 2735) return fail("not a length-prefixed Base64 text (too long)");
    Bytes out(256);
    uint32_t len = 0;
    KORVOCSPrepareBinaryBuffer(KORVO_BASE64_TO_BINARY, in.data(), static_cast<int32_t>(in.size()),
                               out.data(), &len);
    // An empty result is either an empty payload (length byte 0) or a text
    // that does not hold what its length byte announces.
    if (len == 0) {
      const auto raw = base64_decode(in);
      if (!raw || raw->empty() || (*raw)[0] != 0) return fail("not a length-prefixed Base64 text");
    }
    return write_all(out.data(), len) ? 0 : 1;
  }
  if (in.size() > 255) return fail("the prefixed form holds at most 255 bytes");
  std::string out(345, '\0');
  uint32_t len = 0;
  KORVOCSPrepareBinaryBuffer(KORVO_BINARY_TO_BASE64, in.data(), static_cast<int32_t>(in.size()),
                             out.data(), &len);
  out.resize(len);
  out += '\n';
  return write_all(out.data(), out.size()) ? 0 : 1;
}

int run(const EncodeOptions &opt) {
  Bytes in = read_all(stdin);
  if (opt.decode) trim_trailing_space(in);
  if (opt.form == "prefixed") return run_prefixed(in, opt.decode);
  const bool base64 = opt.form == "base64";
  if (opt.decode) {
    const auto out = base64 ? base64_decode(in) : hex_decode(in);
    if (!out) return fail("input too long");
    return write_all(out->data(), out->size()) ? 0 : 1;
  }
  auto out = base64 ? base64_encode(in) : hex_encode(in);
  if (!out) return fail("input too long");
  *out += '\n';
  return write_all(out->data(), out->size()) ? 0 : 1;
}

void add_encode_command(CLI::App &app) {
  static EncodeOptions opt;
  auto *cmd = app.add_subcommand("encode",
                                 "Base64, hexadecimal or length-prefixed Base64, stdin to stdout");
  cmd->add_option("FORM", opt.form, "base64, hex or prefixed")
      ->required()
      ->check(CLI::IsMember({"base64", "hex", "prefixed"}));
  cmd->add_flag("-d,--decode", opt.decode, "Decode instead of encoding");
  cmd->callback([] { exit_code = run(opt); });
}

}  // namespace

KORUTL_TOOL_COMMAND("encode", add_encode_command);

}  // namespace korutl_tool
