// korutl utf7 encode|decode: UTF-7 on one side, UTF-8 on the terminal side.
// The UTF-8 side goes through the library's UTF-8/UTF-16 conversions, whose
// UTF-16 units are the UCS-2 units its UTF-7 functions take.
#include <cstdio>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/stream_io.h"

namespace korutl_tool {

namespace {

struct Utf7Options {
  std::string action;
  bool optional_direct = false;
  bool close = false;
};

int fail(const char *message) {
  std::fprintf(stderr, "korutl utf7: %s\n", message);
  return 1;
}

int encode(const Utf7Options &opt, const std::vector<uint8_t> &in) {
  // One UTF-16 unit per input byte at the most.
  std::vector<uint16_t> units(in.size());
  const uint8_t *from = in.data();
  uint16_t *to = units.data();
  if (KORVOConvertUTF8toUTF16(&from, in.data() + in.size(), &to, units.data() + units.size()) != CONV_OK) {
    return fail("input ends inside a UTF-8 sequence");
  }
  units.resize(static_cast<size_t>(to - units.data()));
  // At most "+xyz-" for one unit: five bytes each is always enough.
  std::vector<uint8_t> out(units.size() * 5 + 1);
  const uint16_t *src = units.data();
  uint8_t *dst = out.data();
  if (KORVOConvertUCS2toUTF7(&src, units.data() + units.size(), &dst, out.data() + out.size(), opt.optional_direct,
                             opt.close) != CONV_OK) {
    return fail("conversion failed");
  }
  *dst++ = '\n';
  return write_all(out.data(), static_cast<size_t>(dst - out.data())) ? 0 : 1;
}

int decode(std::vector<uint8_t> in) {
  trim_trailing_space(in);
  std::vector<uint16_t> units(in.size() + 1);
  const uint8_t *src = in.data();
  uint16_t *dst = units.data();
  const int32_t result = KORVOConvertUTF7toUCS2(&src, in.data() + in.size(), &dst, units.data() + units.size());
  if (result == CONV_TARGET_EXHAUSTED) return fail("conversion failed");
  // Lone surrogates have no UTF-8 form; they show as U+FFFD.
  for (uint16_t *u = units.data(); u < dst; ++u) {
    const bool high = *u >= 0xD800 && *u <= 0xDBFF;
    const bool low = *u >= 0xDC00 && *u <= 0xDFFF;
    const bool paired = high && u + 1 < dst && u[1] >= 0xDC00 && u[1] <= 0xDFFF;
    if (paired) {
      ++u;
    } else if (high || low) {
      *u = 0xFFFD;
    }
  }
  // Three UTF-8 bytes per unit at the most (a pair takes four for two).
  std::vector<uint8_t> text(static_cast<size_t>(dst - units.data()) * 3);
  const uint16_t *from = units.data();
  uint8_t *to = text.data();
  if (KORVOConvertUTF16toUTF8(&from, dst, &to, text.data() + text.size()) != CONV_OK) {
    return fail("conversion to UTF-8 failed");
  }
  if (!write_all(text.data(), static_cast<size_t>(to - text.data())) || !write_all("\n", 1)) return 1;
  std::fflush(stdout);  // the text first, then the complaint about it
  return result == CONV_SOURCE_ILLEGAL ? fail("malformed UTF-7 (decoded as far as possible)") : 0;
}

void add_utf7_command(CLI::App &app) {
  static Utf7Options opt;
  auto *cmd = app.add_subcommand("utf7", "UTF-8 to UTF-7 and back, stdin to stdout");
  cmd->add_option("ACTION", opt.action, "encode or decode")->required()->check(CLI::IsMember({"encode", "decode"}));
  cmd->add_flag("--optional-direct", opt.optional_direct, "Write the optional direct characters unencoded");
  cmd->add_flag("--close", opt.close, "End every Base64 run with '-'");
  cmd->callback([] {
    std::vector<uint8_t> in = read_all(stdin);
    exit_code = opt.action == "encode" ? encode(opt, in) : decode(std::move(in));
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("utf7", add_utf7_command);

}  // namespace korutl_tool
