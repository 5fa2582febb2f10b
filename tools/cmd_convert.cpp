// korutl convert --from F --to T: converts standard input to standard
// output between UTF-8, UTF-16LE and UCS-4LE, chunk by chunk, so the whole
// text is never held in memory. A sequence cut by a chunk end (a UTF-8
// sequence, a unit's bytes, or a high surrogate whose partner may follow)
// is carried into the next chunk.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/commands.h"
#include "tools/output.h"

namespace korutl_tool {

namespace {

constexpr size_t kChunkBytes = 64 * 1024;

template <typename Unit>
Unit load_le(const unsigned char *bytes) {
  Unit v = 0;
  for (size_t i = 0; i < sizeof(Unit); ++i) v = static_cast<Unit>(v | Unit(bytes[i]) << (8 * i));
  return v;
}

template <typename Unit>
void store_le(Unit v, unsigned char *bytes) {
  for (size_t i = 0; i < sizeof(Unit); ++i) bytes[i] = static_cast<unsigned char>(v >> (8 * i));
}

template <typename Unit>
bool write_units(const Unit *units, size_t count) {
  if (count == 0) return true;
  std::vector<unsigned char> bytes(count * sizeof(Unit));
  for (size_t i = 0; i < count; ++i) store_le(units[i], bytes.data() + i * sizeof(Unit));
  return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
}

template <typename From, typename To>
using Converter = int32_t (*)(const From **, const From *, To **, To *);

// Returns 0 when all input was converted, 1 on an incomplete end or error.
template <typename From, typename To>
int pump(Converter<From, To> convert) {
  std::vector<unsigned char> pending;  // bytes read but not yet converted
  std::vector<From> source;
  std::vector<To> target(kChunkBytes);
  std::vector<unsigned char> chunk(kChunkBytes);
  for (bool at_end = false; !at_end;) {
    const size_t got = std::fread(chunk.data(), 1, chunk.size(), stdin);
    at_end = got == 0;
    pending.insert(pending.end(), chunk.begin(), chunk.begin() + static_cast<long>(got));
    source.resize(pending.size() / sizeof(From));
    for (size_t i = 0; i < source.size(); ++i)
      source[i] = load_le<From>(&pending[i * sizeof(From)]);
    size_t usable = source.size();
    // A high surrogate may be joined with a unit of the next chunk.
    if constexpr (sizeof(From) > 1) {
      if (!at_end && usable > 0 && source[usable - 1] >= 0xD800 && source[usable - 1] <= 0xDBFF) {
        --usable;
      }
    }
    const From *s = source.data();
    int32_t result;
    do {
      To *t = target.data();
      result = convert(&s, source.data() + usable, &t, target.data() + target.size());
      if (!write_units(target.data(), static_cast<size_t>(t - target.data()))) {
        fail("cannot write standard output");
        return exit_failed;
      }
    } while (result == CONV_TARGET_EXHAUSTED);
    pending.erase(pending.begin(),
                  pending.begin() + (s - source.data()) * static_cast<long>(sizeof(From)));
  }
  std::fflush(stdout);
  if (!pending.empty()) {
    fail("input ends inside a character (" + std::to_string(pending.size()) + " bytes left)");
    return exit_failed;
  }
  return 0;
}

int run_convert(const std::string &from, const std::string &to) {
  if (from == to) {
    fail("--from and --to are the same form", exit_usage);
    return exit_usage;
  }
  if (from == "utf8" && to == "utf16le") return pump(KORVOConvertUTF8toUTF16);
  if (from == "utf8" && to == "ucs4") return pump(KORVOConvertUTF8toUCS4);
  if (from == "utf16le" && to == "utf8") return pump(KORVOConvertUTF16toUTF8);
  if (from == "utf16le" && to == "ucs4") return pump(KORVOConvertUTF16toUCS4);
  if (from == "ucs4" && to == "utf8") return pump(KORVOConvertUCS4toUTF8);
  return pump(KORVOConvertUCS4toUTF16);
}

void add_convert_command(CLI::App &app) {
  auto *cmd = app.add_subcommand(
      "convert", "Convert standard input to standard output (UTF-16 and UCS-4 little-endian)");
  static std::string from, to;
  const auto forms = CLI::IsMember({"utf8", "utf16le", "ucs4"});
  cmd->add_option("--from", from, "utf8, utf16le or ucs4")->required()->check(forms);
  cmd->add_option("--to", to, "utf8, utf16le or ucs4")->required()->check(forms);
  cmd->callback([] { exit_code = run_convert(from, to); });
}

}  // namespace

KORUTL_TOOL_COMMAND("convert", add_convert_command);

}  // namespace korutl_tool
