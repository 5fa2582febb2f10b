// The six Unicode conversions: values, leniency, and where they stop.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "korutl.h"

namespace {

// Runs one conversion over all of `in` into a target of `room` units.
template <typename From, typename To>
struct Run {
  int32_t result;
  std::vector<To> out;
  size_t consumed;
};

template <typename From, typename To>
Run<From, To> run(int32_t (*fn)(const From **, const From *, To **, To *),
                  const std::vector<From> &in, size_t room = 64) {
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

TEST(UtfConversions, EmptySourceLeavesPointersAlone) {
  uint16_t src16 = 0x41;
  const uint16_t *s = &src16;
  uint8_t out[4];
  uint8_t *t = out;
  EXPECT_EQ(KORVOConvertUTF16toUTF8(&s, s, &t, out + 4), CONV_OK);
  EXPECT_EQ(s, &src16);
  EXPECT_EQ(t, out);
}

TEST(UtfConversions, SurrogatePairsJoinAndSplit) {
  EXPECT_EQ(run(KORVOConvertUTF16toUCS4, U16{0xD83D, 0xDE00}).out, U32{0x1F600});
  EXPECT_EQ(run(KORVOConvertUTF16toUTF8, U16{0xD83D, 0xDE00}).out, (U8{0xF0, 0x9F, 0x98, 0x80}));
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xF0, 0x9F, 0x98, 0x80}).out, (U16{0xD83D, 0xDE00}));
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xF0, 0x9F, 0x98, 0x80}).out, U32{0x1F600});
  EXPECT_EQ(run(KORVOConvertUCS4toUTF16, U32{0x1F600}).out, (U16{0xD83D, 0xDE00}));
  // The UCS-4 encoder joins a pair given as two units; the UTF-16 one does not see them.
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0xD83D, 0xDE00}).out, (U8{0xF0, 0x9F, 0x98, 0x80}));
}

TEST(UtfConversions, LoneSurrogatesPassThrough) {
  EXPECT_EQ(run(KORVOConvertUTF16toUTF8, U16{0xD800, 0x41}).out, (U8{0xED, 0xA0, 0x80, 0x41}));
  const auto tail = run(KORVOConvertUTF16toUCS4, U16{0x41, 0xD800});
  EXPECT_EQ(tail.result, CONV_OK);
  EXPECT_EQ(tail.out, (U32{0x41, 0xD800}));
  EXPECT_EQ(run(KORVOConvertUTF16toUCS4, U16{0xDC00, 0xD800}).out, (U32{0xDC00, 0xD800}));
}

TEST(UtfConversions, ValuesBeyondTheTargetForm) {
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
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xC0, 0x00}).out, U32{0xFFFD});
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xDF, 0xBF, 0xC2, 0x80}).out, (U32{0x7FF, 0x80}));
}

TEST(UtfConversions, IncompleteSequenceAtTheEnd) {
  for (const U8 &in : {U8{0x41, 0xE2, 0x82}, U8{0x41, 0xC3}}) {
    const auto r16 = run(KORVOConvertUTF8toUTF16, in);
    EXPECT_EQ(r16.result, CONV_SOURCE_EXHAUSTED);
    EXPECT_EQ(r16.out, U16{0x41});
    EXPECT_EQ(r16.consumed, 1u);
    const auto r32 = run(KORVOConvertUTF8toUCS4, in);
    EXPECT_EQ(r32.result, CONV_SOURCE_EXHAUSTED);
    EXPECT_EQ(r32.consumed, 1u);
  }
}

TEST(UtfConversions, StopsBeforeACharacterThatDoesNotFit) {
  const auto ab = run(KORVOConvertUTF16toUTF8, U16{'A', 'B'}, 1);
  EXPECT_EQ(ab.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(ab.out, U8{'A'});
  EXPECT_EQ(ab.consumed, 1u);
  const auto pair = run(KORVOConvertUCS4toUTF16, U32{0x1F600}, 1);
  EXPECT_EQ(pair.result, CONV_TARGET_EXHAUSTED);
  EXPECT_TRUE(pair.out.empty());
  EXPECT_EQ(pair.consumed, 0u);
  const auto four = run(KORVOConvertUTF8toUTF16, U8{0xF0, 0x9F, 0x98, 0x80}, 1);
  EXPECT_EQ(four.result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(four.consumed, 0u);
  const auto three = run(KORVOConvertUTF16toUTF8, U16{0x20AC}, 2);
  EXPECT_EQ(three.result, CONV_TARGET_EXHAUSTED);
  EXPECT_TRUE(three.out.empty());
}

// Converting in pieces, resuming from the returned pointers, gives the
// same output as one call.
TEST(UtfConversions, ResumesWhereItStopped) {
  const U8 text = {'x', 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80, 'y', 0xC3, 0xA9};
  const auto whole = run(KORVOConvertUTF8toUCS4, text).out;
  U32 pieces;
  const uint8_t *s = text.data();
  const uint8_t *end = text.data() + text.size();
  for (const uint8_t *limit = s; s < end;) {
    limit = std::min(limit + 2, end);
    uint32_t out[8];
    uint32_t *t = out;
    const int32_t r = KORVOConvertUTF8toUCS4(&s, limit, &t, out + 8);
    EXPECT_TRUE(r == CONV_OK || r == CONV_SOURCE_EXHAUSTED);
    pieces.insert(pieces.end(), out, t);
  }
  EXPECT_EQ(pieces, whole);
  EXPECT_EQ(whole, (U32{'x', 0x20AC, 0x1F600, 'y', 0xE9}));
}

// Long conversions run a bulk stage that stores characters in their widest
// form; whatever the room, the result must equal converting through a
// target too small for that stage, and nothing past the returned target
// position may change.
template <typename From, typename To>
void expect_same_as_small_target(int32_t (*fn)(const From **, const From *, To **, To *),
                                 const std::vector<From> &in) {
  constexpr To kUntouched = static_cast<To>(0x5A5A5A5Au);
  std::vector<To> reference;
  const From *rs = in.data();
  int32_t reference_result;
  do {
    To small[8];
    To *t = small;
    reference_result = fn(&rs, in.data() + in.size(), &t, small + 8);
    reference.insert(reference.end(), small, t);
  } while (reference_result == CONV_TARGET_EXHAUSTED);
  for (size_t room = 0; room <= reference.size() + 20; room += 1 + room / 8) {
    std::vector<To> target(room + 8, kUntouched);
    const From *s = in.data();
    To *t = target.data();
    const int32_t r = fn(&s, in.data() + in.size(), &t, target.data() + room);
    const auto written = static_cast<size_t>(t - target.data());
    ASSERT_LE(written, room);
    ASSERT_TRUE(std::equal(target.data(), t, reference.begin())) << "room " << room;
    ASSERT_TRUE(std::all_of(t, target.data() + target.size(), [](To u) { return u == kUntouched; }))
        << "changed past the end, room " << room;
    if (written == reference.size()) {
      EXPECT_EQ(r, reference_result) << "room " << room;
      EXPECT_EQ(s, rs) << "room " << room;
    } else {
      EXPECT_EQ(r, CONV_TARGET_EXHAUSTED) << "room " << room;
    }
  }
}

TEST(UtfConversions, BulkStageMatchesSmallTargets) {
  // Units chosen to hit every length, stray and malformed bytes, lone and
  // paired surrogates, and ASCII runs long enough for the block copy.
  const U8 bytes = {'a',  'b',  'c',  'd',  'e',  'f',  'g',  'h',  0xC3, 0xA9, 0xE2, 0x82,
                    0xAC, 0xF0, 0x9F, 0x98, 0x80, 0x80, 0xC3, 0x41, 0xF8, 0x88, 0x80, 0x80,
                    0x80, 0xFC, 0x84, 0x80, 0x80, 0x80, 0x80, 0xFF, 0xE0, 0x80, 0x80};
  const U16 units = {'x',    'y', 'z',    'w',   0xE9,  0x20AC, 0xD83D, 0xDE00,
                     0xD83D, 'q', 0xDE00, 0x7FF, 0x800, 0xFFFF, 0xDBFF, 0xDFFF};
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    U8 text;
    U16 wide;
    uint32_t x = seed;
    for (int i = 0; i < 300; ++i) {
      x = x * 1103515245u + 12345u;
      text.push_back(bytes[(x >> 16) % bytes.size()]);
      wide.push_back(units[(x >> 20) % units.size()]);
    }
    expect_same_as_small_target(KORVOConvertUTF8toUTF16, text);
    expect_same_as_small_target(KORVOConvertUTF8toUCS4, text);
    expect_same_as_small_target(KORVOConvertUTF16toUTF8, wide);
  }
}

}  // namespace
