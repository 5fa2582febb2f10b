// Object identifiers: parsing, composing, accessors, parent, comparison.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "korutl.h"

namespace {

struct Destroy {
  void operator()(KORVOObjectId *id) const { KORVOStrDestroyObjectId(id); }
};
using Id = std::unique_ptr<KORVOObjectId, Destroy>;

Id parse(const char *text) { return Id(KORVOStrCreateObjectId(text, nullptr)); }

std::vector<std::string> parts(const KORVOObjectId *id) {
  std::vector<std::string> out;
  for (int32_t i = 0; i < KORVOStrGetNumberOfParts(id); ++i)
    out.emplace_back(KORVOStrGetPart(id, i));
  return out;
}

using Parts = std::vector<std::string>;

TEST(ObjectId, HalcyraOwnIdentifier) {
  const Id id = parse("\\localhost\\Halcyra\\2.2.1.3");
  ASSERT_TRUE(id);
  EXPECT_EQ(KORVOStrGetNumberOfParts(id.get()), 3);
  EXPECT_STREQ(KORVOStrGetHostFromObjectId(id.get()), "localhost");
  EXPECT_STREQ(KORVOStrGetProductFromObjectId(id.get()), "Halcyra");
  EXPECT_STREQ(KORVOStrGetVersionFromObjectId(id.get()), "2.2.1.3");
  EXPECT_EQ(KORVOStrGetInstanceFromObjectId(id.get()), nullptr);
  EXPECT_EQ(KORVOStrGetPart(id.get(), 3), nullptr);
  EXPECT_EQ(KORVOStrGetPart(id.get(), -1), nullptr);
  EXPECT_STREQ(KORVOStrGetObjectIdString(id.get()), "\\localhost\\Halcyra\\2.2.1.3");
}

TEST(ObjectId, ParsingNormalises) {
  struct Case {
    const char *text;
    Parts parts;
    const char *canonical;
  };
  const Case cases[] = {
      {"localhost\\Halcyra\\", {"localhost", "Halcyra"}, "\\localhost\\Halcyra"},
      {"\\local%41host\\x", {"localAhost", "x"}, "\\localAhost\\x"},
      {"", {}, ""},
      {"\\", {}, ""},
      {"\\\\a", {"a"}, "\\a"},                        // adjacent backslashes: no empty part
      {"\\a\\\\b\\c", {"a", "b", "c"}, "\\a\\b\\c"},  // and no word lost
      {"\\a%20b\\c%5Cd", {"a b", "c\\d"}, "\\a%20b\\c%5Cd"},
      {"\\%u00e9t%u00e9", {"\xC3\xA9t\xC3\xA9"}, "\\\xC3\xA9t\xC3\xA9"},
  };
  for (const Case &c : cases) {
    const Id id = parse(c.text);
    ASSERT_TRUE(id) << c.text;
    EXPECT_EQ(parts(id.get()), c.parts) << c.text;
    EXPECT_STREQ(KORVOStrGetObjectIdString(id.get()), c.canonical) << c.text;
  }
}

TEST(ObjectId, FurtherPartsAreTakenAsGiven) {
  const Id id(
      KORVOStrCreateObjectId("\\localhost\\Halcyra", "2.2.1.3", "inst one", "a\\b%41", nullptr));
  ASSERT_TRUE(id);
  EXPECT_EQ(parts(id.get()), (Parts{"localhost", "Halcyra", "2.2.1.3", "inst one", "a\\b%41"}));
  EXPECT_STREQ(KORVOStrGetObjectIdString(id.get()),
               "\\localhost\\Halcyra\\2.2.1.3\\inst%20one\\a%5Cb%41");
  EXPECT_STREQ(KORVOStrGetInstanceFromObjectId(id.get()), "inst one");
  // The copy re-parses the canonical text, so the escape comes back restored.
  const Id copy(KORVOStrCopyObjectId(id.get()));
  ASSERT_TRUE(copy);
  EXPECT_EQ(parts(copy.get()), (Parts{"localhost", "Halcyra", "2.2.1.3", "inst one", "a\\bA"}));
}

TEST(ObjectId, MoreThanAHundredFurtherPartsIsRefused) {
#define P10 "p", "p", "p", "p", "p", "p", "p", "p", "p", "p"
  const Id hundred(
      KORVOStrCreateObjectId("\\h", P10, P10, P10, P10, P10, P10, P10, P10, P10, P10, nullptr));
  ASSERT_TRUE(hundred);
  EXPECT_EQ(KORVOStrGetNumberOfParts(hundred.get()), 101);
  const Id too_many(KORVOStrCreateObjectId("\\h", P10, P10, P10, P10, P10, P10, P10, P10, P10, P10,
                                           "p", nullptr));
  EXPECT_FALSE(too_many);
#undef P10
}

TEST(ObjectId, Parent) {
  const Id id = parse("\\localhost\\Halcyra\\2.2.1.3");
  const Id parent(KORVOGetParentObjectId(id.get()));
  ASSERT_TRUE(parent);
  EXPECT_EQ(parts(parent.get()), (Parts{"localhost", "Halcyra"}));
  EXPECT_STREQ(KORVOStrGetObjectIdString(parent.get()), "\\localhost\\Halcyra");
  EXPECT_STREQ(KORVOStrGetObjectIdString(id.get()), "\\localhost\\Halcyra\\2.2.1.3");

  const Id host = parse("\\localhost");
  const Id root(KORVOGetParentObjectId(host.get()));
  ASSERT_TRUE(root);
  EXPECT_EQ(KORVOStrGetNumberOfParts(root.get()), 0);
  EXPECT_STREQ(KORVOStrGetObjectIdString(root.get()), "");

  EXPECT_EQ(KORVOGetParentObjectId(root.get()), nullptr);
  EXPECT_EQ(KORVOGetParentObjectId(nullptr), nullptr);
  const Id empty_part(KORVOStrCreateObjectId("", "", nullptr));
  ASSERT_TRUE(empty_part);
  EXPECT_STREQ(KORVOStrGetObjectIdString(empty_part.get()), "\\");
  EXPECT_EQ(KORVOGetParentObjectId(empty_part.get()), nullptr);
}

TEST(ObjectId, CompareUsesCanonicalTexts) {
  const Id a = parse("\\a%41"), b = parse("\\aA"), upper = parse("\\A"), lower = parse("\\a");
  EXPECT_EQ(KORVOStrCompareObjectId(a.get(), b.get()), 1);
  EXPECT_EQ(KORVOStrCompareObjectId(upper.get(), lower.get()), 0);
  EXPECT_EQ(KORVOStrCompareObjectId(a.get(), nullptr), 0);
  EXPECT_EQ(KORVOStrCompareObjectId(nullptr, nullptr), 0);
}

TEST(ObjectId, NullArguments) {
  EXPECT_EQ(KORVOStrCreateObjectId(nullptr, nullptr), nullptr);
  EXPECT_EQ(KORVOStrCopyObjectId(nullptr), nullptr);
  EXPECT_EQ(KORVOStrGetNumberOfParts(nullptr), -1);
  EXPECT_EQ(KORVOStrGetPart(nullptr, 0), nullptr);
  EXPECT_EQ(KORVOStrGetObjectIdString(nullptr), nullptr);
  KORVOStrDestroyObjectId(nullptr);
}

}  // namespace
