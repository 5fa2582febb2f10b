// The Unicode conversions: the values they give, their leniency, and where
// they stop. That converting in pieces through a small target gives what
// one call gives, and that UTF-7 round-trips, the fuzz targets check on any
// input (fuzz/utf8_decode_fuzz.cpp, utf16_decode_fuzz.cpp, utf7_fuzz.cpp).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korutl.h"

namespace {

// Runs one conversion over all of `in` into a target of `room` units.
template <typename To>
struct Run {
  int32_t result;
  std::vector<To> out;
  size_t consumed;
};

template <typename From, typename To>
Run<To> run(int32_t (*fn)(const From **, const From *, To **, To *), const std::vector<From> &in,
            size_t room = 64) {
  std::vector<To> target(room + 1, To{0x5A});
  const From *s = in.data();
  To *t = target.data();
  const int32_t r = fn(&s, in.data() + in.size(), &t, target.data() + room);
  EXPECT_EQ(target[room], To{0x5A}) << "wrote past the target end";
  return {r, std::vector<To>(target.data(), t), static_cast<size_t>(s - in.data())};
}

using U8 = std::vector<uint8_t>;
using U16 = std::vector<uint16_t>;
using U32 = std::vector<uint32_t>;

TEST(UtfConversions, SurrogatesAndValuesBeyondTheTargetForm) {
  EXPECT_EQ(run(KORVOConvertUTF16toUCS4, U16{0xD83D, 0xDE00}).out, U32{0x1F600});
  EXPECT_EQ(run(KORVOConvertUTF16toUTF8, U16{0xD83D, 0xDE00}).out, (U8{0xF0, 0x9F, 0x98, 0x80}));
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xF0, 0x9F, 0x98, 0x80}).out, (U16{0xD83D, 0xDE00}));
  EXPECT_EQ(run(KORVOConvertUCS4toUTF16, U32{0x1F600}).out, (U16{0xD83D, 0xDE00}));
  // The UCS-4 encoder joins a pair given as two units; the UTF-16 one does not see them.
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0xD83D, 0xDE00}).out, (U8{0xF0, 0x9F, 0x98, 0x80}));
  // Lone and reversed surrogates pass through.
  EXPECT_EQ(run(KORVOConvertUTF16toUTF8, U16{0xD800, 0x41}).out, (U8{0xED, 0xA0, 0x80, 0x41}));
  EXPECT_EQ(run(KORVOConvertUTF16toUCS4, U16{0x41, 0xD800}).out, (U32{0x41, 0xD800}));
  EXPECT_EQ(run(KORVOConvertUTF16toUCS4, U16{0xDC00, 0xD800}).out, (U32{0xDC00, 0xD800}));

  EXPECT_EQ(run(KORVOConvertUCS4toUTF16, U32{0x110000}).out, U16{0xFFFD});
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0x110000}).out, (U8{0xF4, 0x90, 0x80, 0x80}));
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0x80000000}).out, (U8{0xEF, 0xBF, 0xBD}));
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0x7FFFFFFF}).out,
            (U8{0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}));
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xF4, 0x90, 0x80, 0x80}).out, U16{0xFFFD});
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xF4, 0x90, 0x80, 0x80}).out, U32{0x110000});
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}).out,
            U32{0x7FFFFFFF});
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xFE, 0x80, 0x80, 0x80, 0x80, 0x80}).out, U32{0xFFFD});
}

TEST(UtfConversions, LenientUtf8Decoding) {
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0x80}).out, U16{0x80});
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xC3, 0x41}).out, U16{0x81});
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xC0, 0x80}).out, U16{0});
  // The sum wraps below the offset: a value past 0x7FFFFFFF, so U+FFFD.
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xC0, 0x00}).out, U16{0xFFFD});
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xDF, 0xBF, 0xC2, 0x80}).out, (U32{0x7FF, 0x80}));
}

// A cut sequence at the end of the source is left for the next call; a
// character that does not fit the target is not begun.
TEST(UtfConversions, WhereConversionsStop) {
  for (const U8 &in : {U8{0x41, 0xE2, 0x82}, U8{0x41, 0xC3}}) {
    const auto r16 = run(KORVOConvertUTF8toUTF16, in);
    EXPECT_EQ(r16.result, CONV_SOURCE_EXHAUSTED);
    EXPECT_EQ(r16.out, U16{0x41});
    EXPECT_EQ(r16.consumed, 1u);
  }
  const auto ab = run(KORVOConvertUTF16toUTF8, U16{'A', 'B'}, 1);
  EXPECT_EQ(ab.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(ab.out, U8{'A'});
  EXPECT_EQ(ab.consumed, 1u);
  const auto pair = run(KORVOConvertUCS4toUTF16, U32{0x1F600}, 1);
  EXPECT_EQ(pair.result, CONV_TARGET_EXHAUSTED);
  EXPECT_TRUE(pair.out.empty());
  EXPECT_EQ(pair.consumed, 0u);
  const auto three = run(KORVOConvertUTF16toUTF8, U16{0x20AC}, 2);
  EXPECT_EQ(three.result, CONV_TARGET_EXHAUSTED);
  EXPECT_TRUE(three.out.empty());
  EXPECT_EQ(run(KORVOConvertUTF16toUTF8, U16{}).result, CONV_OK);
}

using Units = std::vector<uint16_t>;

Units units(const std::u16string &s) { return Units(s.begin(), s.end()); }

struct Encoded {
  int32_t result;
  std::string text;
  size_t consumed;
};

Encoded encode(const std::u16string &text, bool optional_direct, bool close, size_t room = 256) {
  const Units in = units(text);
  std::vector<uint8_t> out(room + 1, 0xAA);
  const uint16_t *src = in.data();
  uint8_t *dst = out.data();
  const int32_t r = KORVOConvertUCS2toUTF7(&src, in.data() + in.size(), &dst, out.data() + room,
                                           optional_direct ? 1 : 0, close ? 1 : 0);
  EXPECT_EQ(out[room], 0xAA) << "wrote past the target end";
  return {r, std::string(out.data(), dst), static_cast<size_t>(src - in.data())};
}

Run<uint16_t> decode(const std::string &in, size_t room = 256) {
  return run(KORVOConvertUTF7toUCS2, std::vector<uint8_t>(in.begin(), in.end()), room);
}

TEST(Utf7, KnownAnswers) {
  struct {
    const char16_t *in;
    bool optional_direct, close;
    const char *out;
  } encoded[] = {{u"\u00e9", false, false, "+AOk"},
                 {u"\u00e9", false, true, "+AOk-"},
                 {u"\u00e9a", false, false, "+AOk-a"},
                 {u"\u00e9 ", false, false, "+AOk "},
                 {u"\u00e9-", false, false, "+AOk--"},
                 {u"a+b", false, false, "a+-b"},
                 {u"~\\!", false, false, "+AH4AXAAh"},
                 {u"~\\!", true, true, "+AH4AXA-!"},
                 {u"", false, true, ""},
                 {u"\r\n\t", false, false, "\r\n\t"}};
  for (const auto &c : encoded) {
    const Encoded e = encode(c.in, c.optional_direct, c.close);
    EXPECT_EQ(e.result, CONV_OK) << c.out;
    EXPECT_EQ(e.text, c.out);
  }
  // Decoding goes on after malformed input and reports it at the end.
  struct {
    const char *in;
    int32_t result;
    const char16_t *out;
  } decoded[] = {{"+-", CONV_OK, u"+"},
                 {"+AOk-a", CONV_OK, u"\u00e9a"},
                 {"+AOk x", CONV_OK, u"\u00e9 x"},
                 {"+ZeVnLIqe", CONV_OK, u"\u65e5\u672c\u8a9e"},
                 {"+AOk-+AOk-", CONV_OK, u"\u00e9\u00e9"},
                 {"~\\", CONV_OK, u"~\\"},  // not strict about what RFC 2152 would encode
                 {"+AOl-", CONV_SOURCE_ILLEGAL, u"\u00e9"},
                 {"+", CONV_SOURCE_ILLEGAL, u""},
                 {"+ x", CONV_SOURCE_ILLEGAL, u" x"},
                 {"a\351b", CONV_SOURCE_ILLEGAL, u"a\uffe9b"},
                 {"+A-ok", CONV_SOURCE_ILLEGAL, u"ok"}};
  for (const auto &c : decoded) {
    const auto d = decode(c.in);
    EXPECT_EQ(d.result, c.result) << c.in;
    EXPECT_EQ(d.out, units(c.out)) << c.in;
  }
}

TEST(Utf7, TargetExhaustedAndNullPointers) {
  // Encoder: room for "a+" only; '-' of the plus sign does not fit.
  Encoded e = encode(u"a+b", false, false, 2);
  EXPECT_EQ(e.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(e.text, "a+");
  EXPECT_EQ(e.consumed, 2u);
  // Inside a run: "+AO" fits, the last sextet of U+00E9 does not; closing
  // the run needs room for the hyphen before 'a'.
  EXPECT_EQ(encode(u"\u00e9", false, false, 3).text, "+AO");
  e = encode(u"\u00e9a", false, false, 4);
  EXPECT_EQ(e.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(e.text, "+AOk");
  auto d = decode("abc", 2);
  EXPECT_EQ(d.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(d.out, units(u"ab"));
  EXPECT_EQ(d.consumed, 3u);
  // Exhaustion wins over an earlier malformed byte.
  EXPECT_EQ(decode("\xe9xyz", 2).result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(decode("+-", 0).result, CONV_TARGET_EXHAUSTED);
  uint8_t b[4];
  uint8_t *bp = b;
  const uint16_t *np = nullptr;
  EXPECT_EQ(KORVOConvertUCS2toUTF7(&np, nullptr, &bp, b + 4, 0, 0), CONV_OK);
  EXPECT_EQ(bp, b);
  EXPECT_EQ(KORVOConvertUCS2toUTF7(nullptr, nullptr, nullptr, nullptr, 0, 0), CONV_OK);
  EXPECT_EQ(KORVOConvertUTF7toUCS2(nullptr, nullptr, nullptr, nullptr), CONV_OK);
}

}  // namespace
