#include "siblings/rsv/rsv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/temp_store.h"

namespace {

constexpr const char *M = "tests/rsv";
const std::string root = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra";

class RsvTest : public korutl_test::TempStore {};

std::string get(const std::string &key, const char *name) {
  char buf[256];
  uint16_t len = sizeof buf;
  if (rsv_get_value(key.c_str(), name, buf, &len, M, __LINE__) != RSV_OK) return "<none>";
  return buf;
}

std::vector<std::string> subkeys(const std::string &key, uint16_t slots = 8) {
  std::vector<std::vector<char>> store(slots, std::vector<char>(256));
  std::vector<char *> ptrs;
  for (auto &s : store) ptrs.push_back(s.data());
  uint16_t count = slots;
  EXPECT_EQ(rsv_enum_subkeys(key.c_str(), ptrs.data(), &count, M, __LINE__), RSV_OK);
  return {ptrs.begin(), ptrs.begin() + count};
}

std::vector<std::string> value_names(const std::string &key) {
  std::vector<std::vector<char>> store(8, std::vector<char>(33));
  std::vector<char *> ptrs;
  for (auto &s : store) ptrs.push_back(s.data());
  uint16_t count = 8;
  EXPECT_EQ(rsv_enum_values(key.c_str(), ptrs.data(), &count, M, __LINE__), RSV_OK);
  return {ptrs.begin(), ptrs.begin() + count};
}

TEST_F(RsvTest, MissingStoreIsAnEmptyTreeAndIsNotCreatedByReads) {
  uint16_t n = 99;
  EXPECT_EQ(rsv_query_key(root.c_str(), &n, nullptr, M, __LINE__), RSV_E_NO_KEY);
  EXPECT_EQ(rsv_get_value(root.c_str(), "x", nullptr, nullptr, M, __LINE__), RSV_E_NO_KEY);
  uint16_t count = 0;
  EXPECT_EQ(rsv_enum_subkeys(root.c_str(), nullptr, &count, M, __LINE__), RSV_E_NO_KEY);
  EXPECT_FALSE(store_exists());
  EXPECT_EQ(rsv_create_key(root.c_str(), M, __LINE__), RSV_OK);
  EXPECT_TRUE(store_exists());
}

TEST_F(RsvTest, CreatingAKeyCreatesItsParentsAndDeletingRemovesTheSubtree) {
  const std::string deep = root + "\\Products\\P\\Versions\\2.2.1";
  ASSERT_EQ(rsv_create_key(deep.c_str(), M, __LINE__), RSV_OK);
  ASSERT_EQ(rsv_set_value(deep.c_str(), "v", "1", M, __LINE__), RSV_OK);
  uint16_t sub = 0, val = 0;
  ASSERT_EQ(rsv_query_key((root + "\\Products\\P").c_str(), &sub, &val, M, __LINE__), RSV_OK);
  EXPECT_EQ(sub, 1);
  EXPECT_EQ(val, 0);
  ASSERT_EQ(rsv_delete_key((root + "\\products\\p").c_str(), M, __LINE__), RSV_OK);
  EXPECT_EQ(rsv_query_key(deep.c_str(), nullptr, nullptr, M, __LINE__), RSV_E_NO_KEY);
  EXPECT_EQ(rsv_query_key((root + "\\Products").c_str(), &sub, nullptr, M, __LINE__), RSV_OK);
  EXPECT_EQ(sub, 0);
  EXPECT_EQ(rsv_delete_key(deep.c_str(), M, __LINE__), RSV_E_NO_KEY);
}

TEST_F(RsvTest, NamesAreCaseInsensitiveCasePreservingAndOrdered) {
  for (const char *name : {"beta", "Alpha", "gamma", "ALPHA", "Delta"})
    ASSERT_EQ(rsv_create_key((root + "\\" + name).c_str(), M, __LINE__), RSV_OK);
  EXPECT_EQ(subkeys(root), (std::vector<std::string>{"Alpha", "beta", "Delta", "gamma"}));
  EXPECT_EQ(subkeys(root, 1), (std::vector<std::string>{"Alpha"}));

  const std::string key = root + "\\ALPHA";
  for (const char *name : {"zeta", "Eta", "alpha"})
    ASSERT_EQ(rsv_set_value(key.c_str(), name, name, M, __LINE__), RSV_OK);
  ASSERT_EQ(rsv_set_value(key.c_str(), "ZETA", "again", M, __LINE__), RSV_OK);
#if defined(_WIN32)
  // The system registry lists values in an order of its own.
  std::vector<std::string> names = value_names(root + "\\alpha");
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"Eta", "alpha", "zeta"}));
#else
  EXPECT_EQ(value_names(root + "\\alpha"), (std::vector<std::string>{"zeta", "Eta", "alpha"}));
#endif
  EXPECT_EQ(get(key, "Zeta"), "again");
}

TEST_F(RsvTest, GetValueLengthsAndCapacities) {
  ASSERT_EQ(rsv_create_key(root.c_str(), M, __LINE__), RSV_OK);
  ASSERT_EQ(rsv_set_value(root.c_str(), "t", "hello", M, __LINE__), RSV_OK);
  ASSERT_EQ(rsv_set_value(root.c_str(), "", "default", M, __LINE__), RSV_OK);
  uint16_t len = 0;
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", nullptr, &len, M, __LINE__), RSV_OK);
  EXPECT_EQ(len, 5);
  EXPECT_EQ(rsv_get_value(root.c_str(), "T", nullptr, nullptr, M, __LINE__), RSV_OK);
  EXPECT_EQ(rsv_get_value(root.c_str(), "u", nullptr, nullptr, M, __LINE__), RSV_E_NO_VALUE);
  EXPECT_EQ(get(root, ""), "default");

  char buf[8] = "XXXXXXX";
  len = 5;  // no room for the zero
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", buf, &len, M, __LINE__), RSV_E_BUFFER_SMALL);
  EXPECT_STREQ(buf, "XXXXXXX");
  len = 6;
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", buf, &len, M, __LINE__), RSV_OK);
  EXPECT_STREQ(buf, "hello");
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", buf, nullptr, M, __LINE__), RSV_E_BAD_ARGUMENT);

  const std::string huge(70000, 'x');
  ASSERT_EQ(rsv_set_value(root.c_str(), "huge", huge.c_str(), M, __LINE__), RSV_OK);
  len = 0;
  EXPECT_EQ(rsv_get_value(root.c_str(), "huge", nullptr, &len, M, __LINE__), RSV_E_TOO_LONG);
  const std::string too_big(1024 * 1024 + 1, 'y');
  EXPECT_EQ(rsv_set_value(root.c_str(), "big", too_big.c_str(), M, __LINE__), RSV_E_TOO_LONG);
}

TEST_F(RsvTest, LongValueNamesAreCutToTheSlot) {
  ASSERT_EQ(rsv_create_key(root.c_str(), M, __LINE__), RSV_OK);
  const std::string name(40, 'n');
  ASSERT_EQ(rsv_set_value(root.c_str(), name.c_str(), "x", M, __LINE__), RSV_OK);
  EXPECT_EQ(value_names(root), (std::vector<std::string>{std::string(32, 'n')}));
}

TEST_F(RsvTest, BadPathsAndArgumentsAreRefused) {
  const std::string long_name = root + "\\" + std::string(256, 'k');
  std::string too_deep = "HKEY_LOCAL_MACHINE";
  for (int i = 0; i < 512; ++i) too_deep += "\\k";
  for (const std::string &path :
       {std::string(), root + "\\", root + "\\\\x", "\\" + root, long_name, too_deep}) {
    EXPECT_EQ(rsv_create_key(path.c_str(), M, __LINE__), RSV_E_BAD_ARGUMENT) << path.size();
  }
  EXPECT_EQ(rsv_create_key((root + "\\" + std::string(255, 'k')).c_str(), M, __LINE__), RSV_OK);
  EXPECT_EQ(rsv_create_key(nullptr, M, __LINE__), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(rsv_set_value(root.c_str(), "v", nullptr, M, __LINE__), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(rsv_set_value((root + "\\absent").c_str(), "v", "x", M, __LINE__), RSV_E_NO_KEY);
  uint16_t count = 3;
  EXPECT_EQ(rsv_enum_values(root.c_str(), nullptr, &count, M, __LINE__), RSV_E_BAD_ARGUMENT);
}

}  // namespace
