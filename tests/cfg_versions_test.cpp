#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "korutl.h"
#include "tests/support/cfg_tree.h"
#include "tests/support/temp_store.h"

namespace {

using korutl_test::cfg_key;
using korutl_test::cfg_path;
using korutl_test::cfg_set;
using korutl_test::names_of;
using Names = std::vector<std::string>;

class CfgVersions : public korutl_test::TempStore {
 protected:
  Names versions(const char *product, uint16_t expected_count) {
    uint16_t count = 999;
    char **list = KORVOCfgGetProductVersions(product, &count);
    EXPECT_EQ(count, expected_count);
    Names out = names_of(list, count);
    KORVOCfgFreeProductVersions(list);
    return out;
  }
};

TEST_F(CfgVersions, ListedGreatestVersionKeyFirst) {
  for (const char *v : {"2.2.1", "3", "2.10", "V2.3-beta", "2.2.1.3.9", "43", "1"})
    cfg_key(std::string("Products\\P\\Versions\\") + v);
  // 43 wraps to 5032704 and sorts below 1 (100000000); the fifth number of
  // 2.2.1.3.9 is ignored, so it sits just above 2.2.1.
  EXPECT_EQ(versions("P", 7), (Names{"3", "2.10", "V2.3-beta", "2.2.1.3.9", "2.2.1", "1", "43"}));
}

TEST_F(CfgVersions, NoVersionsGiveNullAndCountZero) {
  cfg_key("Products\\Empty\\Versions");
  cfg_key("Products\\NoVersionsKey");
  for (const char *product : {"Empty", "NoVersionsKey", "Absent"})
    EXPECT_EQ(versions(product, 0), Names{});
  uint16_t count = 5;
  EXPECT_EQ(KORVOCfgGetProductVersions(nullptr, &count), nullptr);
  EXPECT_EQ(count, 0);
  cfg_key("Products\\P\\Versions\\1");
  char **list = KORVOCfgGetProductVersions("P", nullptr);  // count is optional
  ASSERT_NE(list, nullptr);
  EXPECT_STREQ(list[0], "1");
  KORVOCfgFreeVersionInstances(list);
  KORVOCfgFreeProductVersions(nullptr);
}

TEST_F(CfgVersions, ProductNameTooLongForTheKeyPathIsRefused) {
  // A path of 255 characters fits the 256-byte buffer, 256 do not.
  const size_t fixed = cfg_path("Products\\\\Versions").size();
  const std::string fits(255 - fixed, 'p');
  const std::string too_long(256 - fixed, 'p');
  cfg_key("Products\\" + fits + "\\Versions\\1");
  cfg_key("Products\\" + too_long + "\\Versions\\1");
  EXPECT_EQ(versions(fits.c_str(), 1), Names{"1"});
  EXPECT_EQ(versions(too_long.c_str(), 0), Names{});
}

TEST_F(CfgVersions, VersionNamesTooLongForTheKeyPathAreRefused) {
  // The version name brings the version key path to 255 characters, then
  // to 256; the instances key path, 10 characters longer, likewise.
  const size_t fixed = cfg_path("Products\\P\\Versions\\").size();
  auto value_of = [](const std::string &v) {
    char *text = KORVOCfgGetProductVersionConfig("P", v.c_str(), "Port");
    const bool found = text != nullptr;
    std::free(text);
    return found;
  };
  auto instances_of = [](const std::string &v) {
    uint16_t count = 9;
    char **list = KORVOCfgGetVersionInstances("P", v.c_str(), &count);
    KORVOCfgFreeVersionInstances(list);
    return count;
  };
  const std::string v255(255 - fixed, 'v'), v256(256 - fixed, 'v');
  const std::string i255(245 - fixed, 'i'), i256(246 - fixed, 'i');
  for (const std::string &v : {v255, v256, i255, i256}) {
    cfg_set("Products\\P\\Versions\\" + v, "Port", "80");
    cfg_key("Products\\P\\Versions\\" + v + "\\Instances\\1");
  }
  EXPECT_TRUE(value_of(v255));
  EXPECT_FALSE(value_of(v256));
  EXPECT_EQ(instances_of(i255), 1);
  EXPECT_EQ(instances_of(i256), 0);
}

// Each registry service call carries the calling module for its trace.
std::string traced;
void keep_trace(const char *line) { traced += line; }

TEST_F(CfgVersions, ServiceCallsNameTheirModuleInTheTrace) {
  rsv_set_trace_func(keep_trace, "test", __LINE__);
  cfg_key("Products\\P\\Versions\\1");
  traced.clear();
  EXPECT_EQ(KORVOCfgGetValue(cfg_path("Nowhere").c_str(), "X"), nullptr);
  EXPECT_EQ(traced.rfind("readconfig/prodcfg:", 0), 0u) << traced;
  traced.clear();
  EXPECT_EQ(KORVOCfgGetProductVersionLatestValue("P", nullptr, "X"), nullptr);
  EXPECT_EQ(traced.rfind("readconfig/plugcfg:", 0), 0u) << traced;
  rsv_set_trace_func(nullptr, "test", __LINE__);
}

TEST_F(CfgVersions, GetValueReadsTextsOfExactSize) {
  cfg_set("Global", "Install_Path", "/opt/vantrel/halcyra");
  cfg_set("Global", "", "default value");
  cfg_set("Global", "Empty", "");
  const std::string key = cfg_path("Global");
  struct Case {
    const char *name;
    const char *expected;  // null: no value
  };
  for (const Case &c :
       {Case{"Install_Path", "/opt/vantrel/halcyra"}, Case{"install_path", "/opt/vantrel/halcyra"},
        Case{"", "default value"}, Case{"Empty", ""}, Case{"Missing", nullptr}}) {
    char *text = KORVOCfgGetValue(key.c_str(), c.name);
    if (c.expected == nullptr) {
      EXPECT_EQ(text, nullptr) << c.name;
    } else {
      ASSERT_NE(text, nullptr) << c.name;
      EXPECT_STREQ(text, c.expected);
    }
    std::free(text);
  }
  EXPECT_EQ(KORVOCfgGetValue(cfg_path("Nowhere").c_str(), "Install_Path"), nullptr);
  EXPECT_EQ(KORVOCfgGetValue(nullptr, "Install_Path"), nullptr);
  EXPECT_EQ(KORVOCfgGetValue(key.c_str(), nullptr), nullptr);
}

TEST_F(CfgVersions, GetValueRefusesTextsBeyondASixteenBitLength) {
  cfg_set("Global", "Big", std::string(65534, 'x'));
  cfg_set("Global", "Huge", std::string(65535, 'x'));
  char *big = KORVOCfgGetValue(cfg_path("Global").c_str(), "Big");
  ASSERT_NE(big, nullptr);
  EXPECT_EQ(std::string(big).size(), 65534u);
  std::free(big);
  EXPECT_EQ(KORVOCfgGetValue(cfg_path("Global").c_str(), "Huge"), nullptr);
}

}  // namespace
