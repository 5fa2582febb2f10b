// Demo step: a line of text UTF-8 -> UTF-16 -> UTF-7 and back.
#include <cstdio>
#include <string>

#include "tools/unicode_text.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

std::string hex_units(const Units &units) {
  std::string text;
  char buf[8];
  for (uint16_t u : units) {
    std::snprintf(buf, sizeof buf, "%s%04X", text.empty() ? "" : " ", u);
    text += buf;
  }
  return text;
}

void utf_round_trip(Context &c) {
  const std::string line = "Grüße, Welt";  // UTF-8
  const std::string want_utf7 = "Gr+APwA3w-e, Welt";
  const auto units = utf8_to_utf16(line);
  c.report.call("KORVOConvertUTF8toUTF16(" + quoted(line.c_str()) + ")",
                units ? hex_units(*units) : "failed");
  if (!c.report.expect(units && units->size() == 11, "11 UTF-16 units for 11 characters")) return;
  const auto utf7 = ucs2_to_utf7(*units, false, false);
  c.report.call("KORVOConvertUCS2toUTF7", utf7 ? quoted(utf7->c_str()) : "failed");
  if (!c.report.expect(utf7 && *utf7 == want_utf7, "UTF-7 text " + quoted(want_utf7.c_str())))
    return;
  const Utf7Decoded back = utf7_to_ucs2(*utf7);
  c.report.call("KORVOConvertUTF7toUCS2",
                back.result == CONV_OK ? hex_units(back.units) : "malformed");
  if (!c.report.expect(back.result == CONV_OK && back.units == *units,
                       "the same UTF-16 units back"))
    return;
  const auto text = utf16_to_utf8(back.units);
  c.report.call("KORVOConvertUTF16toUTF8", text ? quoted(text->c_str()) : "failed");
  c.report.expect(text && *text == line, "the same UTF-8 line back");
}

}  // namespace

KORUTL_DEMO_STEP(120, "Convert a line UTF-8 -> UTF-16 -> UTF-7 and back", utf_round_trip);

}  // namespace korutl_tool::demo
