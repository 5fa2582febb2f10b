// korutl utf7 encode|decode: UTF-7 on one side, UTF-8 on the terminal side.
// The UTF-8 side goes through iconv as UTF-16 in host byte order, whose
// units are exactly the UCS-2 units the library's UTF-7 functions take.
#include <iconv.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/stream_io.h"

namespace korutl_tool {

namespace {

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr const char *kHostUtf16 = "UTF-16LE";
#else
constexpr const char *kHostUtf16 = "UTF-16BE";
#endif

struct Utf7Options {
  std::string action;
  bool optional_direct = false;
  bool close = false;
};

int fail(const char *message) {
  std::fprintf(stderr, "korutl utf7: %s\n", message);
  return 1;
}

// Converts all of `in` with iconv; nullopt on invalid input.
std::optional<std::vector<char>> iconv_all(const char *to, const char *from, const char *in, size_t size) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  std::vector<char> out(size * 2 + 16);
  char *src = const_cast<char *>(in);
  size_t src_left = size;
  size_t done = 0;
  std::optional<std::vector<char>> result;
  for (;;) {
    char *dst = out.data() + done;
    size_t dst_left = out.size() - done;
    const size_t r = iconv(cd, &src, &src_left, &dst, &dst_left);
    done = out.size() - dst_left;
    if (r != static_cast<size_t>(-1)) {
      out.resize(done);
      result = std::move(out);
      break;
    }
    if (errno != E2BIG) break;
    out.resize(out.size() * 2);
  }
  iconv_close(cd);
  return result;
}

int encode(const Utf7Options &opt, const std::vector<uint8_t> &in) {
  const auto wide = iconv_all(kHostUtf16, "UTF-8", reinterpret_cast<const char *>(in.data()), in.size());
  if (!wide) return fail("input is not valid UTF-8");
  std::vector<uint16_t> units(wide->size() / 2);
  std::copy(wide->begin(), wide->begin() + static_cast<std::ptrdiff_t>(units.size() * 2),
            reinterpret_cast<char *>(units.data()));
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
  const auto text = iconv_all("UTF-8", kHostUtf16, reinterpret_cast<const char *>(units.data()),
                              static_cast<size_t>(dst - units.data()) * 2);
  if (!text) return fail("conversion to UTF-8 failed");
  if (!write_all(text->data(), text->size()) || !write_all("\n", 1)) return 1;
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
