// UCS-2 <-> UTF-7: the encoder's run closing, the decoder's recovery from
// malformed input, and the pointer positions when the target runs out.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korutl.h"

namespace {

using Units = std::vector<uint16_t>;

struct Encoded {
  int32_t result;
  std::string text;
  size_t consumed;
};

Encoded encode(const Units &in, bool optional_direct = false, bool close = false,
               size_t room = 256) {
  std::vector<uint8_t> out(room + 1, 0xAA);
  const uint16_t *src = in.data();
  uint8_t *dst = out.data();
  const int32_t r = KORVOConvertUCS2toUTF7(&src, in.data() + in.size(), &dst, out.data() + room,
                                           optional_direct ? 1 : 0, close ? 1 : 0);
  EXPECT_EQ(out[room], 0xAA) << "wrote past the target end";
  return {r, std::string(out.data(), dst), static_cast<size_t>(src - in.data())};
}

struct Decoded {
  int32_t result;
  Units units;
  size_t consumed;
};

Decoded decode(const std::string &in, size_t room = 256) {
  Units out(room + 1, 0xAAAA);
  const auto *begin = reinterpret_cast<const uint8_t *>(in.data());
  const uint8_t *src = begin;
  uint16_t *dst = out.data();
  const int32_t r = KORVOConvertUTF7toUCS2(&src, begin + in.size(), &dst, out.data() + room);
  EXPECT_EQ(out[room], 0xAAAA) << "wrote past the target end";
  return {r, Units(out.data(), dst), static_cast<size_t>(src - begin)};
}

Units units(const std::u16string &s) { return Units(s.begin(), s.end()); }

TEST(Utf7, EncodeTable) {
  struct Case {
    std::u16string in;
    bool optional_direct, close;
    std::string out;
  } cases[] = {
      {u"\u00e9", false, false, "+AOk"},
      {u"\u00e9", false, true, "+AOk-"},
      {u"\u00e9a", false, false, "+AOk-a"},
      {u"\u00e9 ", false, false, "+AOk "},
      {u"\u00e9-", false, false, "+AOk--"},
      {u"a+b", false, false, "a+-b"},
      {u"\u65e5\u672c\u8a9e", false, false, "+ZeVnLIqe"},
      {u"A\u2262\u0391.", false, false, "A+ImIDkQ."},
      {u"Hi Mom -\u263a-!", false, false, "Hi Mom -+Jjo--+ACE"},
      {u"Hi Mom -\u263a-!", true, false, "Hi Mom -+Jjo--!"},
      {u"~\\", false, false, "+AH4AXA"},
      {u"~\\", true, true, "+AH4AXA-"},
      {u"", false, true, ""},
      {u"\r\n\t", false, false, "\r\n\t"},
  };
  for (const Case &c : cases) {
    const Encoded e = encode(units(c.in), c.optional_direct, c.close);
    EXPECT_EQ(e.result, CONV_OK) << c.out;
    EXPECT_EQ(e.text, c.out);
    EXPECT_EQ(e.consumed, c.in.size()) << c.out;
  }
}

TEST(Utf7, DecodeTable) {
  struct Case {
    std::string in;
    int32_t result;
    std::u16string out;
  } cases[] = {
      {"+-", CONV_OK, u"+"},
      {"a+-b", CONV_OK, u"a+b"},
      {"+AOk-a", CONV_OK, u"\u00e9a"},
      {"+AOk", CONV_OK, u"\u00e9"},
      {"+AOk x", CONV_OK, u"\u00e9 x"},
      {"+ZeVnLIqe", CONV_OK, u"\u65e5\u672c\u8a9e"},
      {"Hi Mom -+Jjo--!", CONV_OK, u"Hi Mom -\u263a-!"},
      {"+AOk-+AOk-", CONV_OK, u"\u00e9\u00e9"},
      {"~\\", CONV_OK, u"~\\"},  // not strict about what RFC 2152 would encode
      {"+AOl-", CONV_SOURCE_ILLEGAL, u"\u00e9"},
      {"+", CONV_SOURCE_ILLEGAL, u""},
      {"+A-", CONV_SOURCE_ILLEGAL, u""},
      {"+ x", CONV_SOURCE_ILLEGAL, u" x"},
      // Decoding goes on after malformed input and reports it at the end.
      {"a\xe9"
       "b",
       CONV_SOURCE_ILLEGAL, u"a\uffe9b"},
      {"+A-ok", CONV_SOURCE_ILLEGAL, u"ok"},
  };
  for (const Case &c : cases) {
    const Decoded d = decode(c.in);
    EXPECT_EQ(d.result, c.result) << c.in;
    EXPECT_EQ(d.units, units(c.out)) << c.in;
    EXPECT_EQ(d.consumed, c.in.size()) << c.in;
  }
}

TEST(Utf7, TargetExhausted) {
  // Encoder: room for "a+" only; '-' of the plus sign does not fit.
  Encoded e = encode(units(u"a+b"), false, false, 2);
  EXPECT_EQ(e.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(e.text, "a+");
  EXPECT_EQ(e.consumed, 2u);
  // Inside a run: "+AO" fits, the last sextet of U+00E9 does not.
  e = encode(units(u"\u00e9"), false, false, 3);
  EXPECT_EQ(e.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(e.text, "+AO");
  // Closing the run needs room for the hyphen before 'a'.
  e = encode(units(u"\u00e9a"), false, false, 4);
  EXPECT_EQ(e.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(e.text, "+AOk");
  EXPECT_EQ(encode({}, false, false, 0).result, CONV_OK);

  Decoded d = decode("abc", 2);
  EXPECT_EQ(d.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(d.units, units(u"ab"));
  EXPECT_EQ(d.consumed, 3u);
  // Exhaustion wins over an earlier malformed byte.
  d = decode("\xe9xyz", 2);
  EXPECT_EQ(d.result, CONV_TARGET_EXHAUSTED);
  d = decode("+-", 0);
  EXPECT_EQ(d.result, CONV_TARGET_EXHAUSTED);
}

TEST(Utf7, NullPointersConvertNothing) {
  uint8_t b[4];
  uint8_t *bp = b;
  const uint16_t *np = nullptr;
  EXPECT_EQ(KORVOConvertUCS2toUTF7(&np, nullptr, &bp, b + 4, 0, 0), CONV_OK);
  EXPECT_EQ(KORVOConvertUCS2toUTF7(nullptr, nullptr, nullptr, nullptr, 0, 0), CONV_OK);
  EXPECT_EQ(KORVOConvertUTF7toUCS2(nullptr, nullptr, nullptr, nullptr), CONV_OK);
  EXPECT_EQ(bp, b);
}

}  // namespace
