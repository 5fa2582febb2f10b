// korutl encode base64|hex|prefixed [-d] [-w COLS]: stdin to stdout.
// Encoding writes the text and a line break; decoding skips blanks and line
// breaks, refuses any other character that is not of the form and bad
// padding (see armor.h), and writes the bytes. Base64 and hexadecimal
// stream in constant memory; the length-prefixed form holds at most 255
// bytes anyway.
#include <cstdio>
#include <string>

#include "korutl.h"
#include "tools/armor.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/stream_io.h"

namespace korutl_tool {

namespace {

struct EncodeOptions {
  std::string form;
  bool decode = false;
  size_t wrap = 0;
};

// The longest length-prefixed Base64 text, 4 * ceil(256 / 3), and blanks.
constexpr size_t kPrefixedTextLimit = 2735;

int encode_failed(const std::string &message) {
  fail("encode: " + message);
  return exit_failed;
}

int write_or_fail(const void *data, size_t size) {
  return write_all(data, size) ? exit_ok : encode_failed("cannot write standard output");
}

int run_prefixed(const EncodeOptions &opt) {
  Bytes in;
  if (!read_at_most(stdin, opt.decode ? kPrefixedTextLimit : 255, in))
    return encode_failed(opt.decode ? "not a length-prefixed Base64 text (too long)"
                                    : "the prefixed form holds at most 255 bytes");
  if (opt.decode) {
    trim_trailing_space(in);
    // Checked as Base64 first: the library reads any text.
    std::string error;
    const auto raw = unarmor_text(TextForm::base64, in, error);
    if (!raw) return encode_failed(error);
    Bytes out(256);
    uint32_t len = 0;
    KORVOCSPrepareBinaryBuffer(KORVO_BASE64_TO_BINARY, in.data(), static_cast<int32_t>(in.size()),
                               out.data(), &len);
    // An empty result is either an empty payload (length byte 0) or a text
    // that does not hold what its length byte announces.
    if (len == 0 && (raw->empty() || (*raw)[0] != 0))
      return encode_failed("not a length-prefixed Base64 text");
    return write_or_fail(out.data(), len);
  }
  std::string out(345, '\0');
  uint32_t len = 0;
  KORVOCSPrepareBinaryBuffer(KORVO_BINARY_TO_BASE64, in.data(), static_cast<int32_t>(in.size()),
                             out.data(), &len);
  out.resize(len);
  out += '\n';
  return write_or_fail(out.data(), out.size());
}

int run(const EncodeOptions &opt) {
  if (opt.form == "prefixed") return run_prefixed(opt);
  const TextForm form = opt.form == "base64" ? TextForm::base64 : TextForm::hex;
  TextEncoder encoder(form, opt.wrap);
  TextDecoder decoder(form);
  Bytes bytes;
  std::string text;
  uint8_t buf[65536];
  for (size_t n; (n = std::fread(buf, 1, sizeof buf, stdin)) > 0;) {
    if (opt.decode) {
      bytes.clear();
      if (!decoder.feed(buf, n, bytes)) return encode_failed(decoder.error());
      if (write_or_fail(bytes.data(), bytes.size()) != exit_ok) return exit_failed;
    } else {
      text = encoder.feed(buf, n);
      if (write_or_fail(text.data(), text.size()) != exit_ok) return exit_failed;
    }
  }
  if (std::ferror(stdin)) return encode_failed("cannot read standard input");
  if (opt.decode) {
    bytes.clear();
    if (!decoder.finish(bytes)) return encode_failed(decoder.error());
    return write_or_fail(bytes.data(), bytes.size());
  }
  text = encoder.finish();
  return write_or_fail(text.data(), text.size());
}

void add_encode_command(CLI::App &app) {
  static EncodeOptions opt;
  auto *cmd = app.add_subcommand("encode",
                                 "Base64, hexadecimal or length-prefixed Base64, stdin to stdout");
  cmd->add_option("FORM", opt.form, "base64, hex or prefixed")
      ->required()
      ->check(CLI::IsMember({"base64", "hex", "prefixed"}));
  cmd->add_flag("-d,--decode", opt.decode,
                "Decode instead of encoding (blanks and line breaks are skipped; any other "
                "character that is not of the form fails)");
  cmd->add_option("-w,--wrap", opt.wrap,
                  "Encoding base64 or hex: end a line after every COLS characters (0, the "
                  "default: one line)")
      ->option_text("COLS");
  cmd->callback([] { exit_code = run(opt); });
}

}  // namespace

KORUTL_TOOL_COMMAND("encode", add_encode_command);

}  // namespace korutl_tool
