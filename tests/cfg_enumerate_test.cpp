#include <gtest/gtest.h>

#include <algorithm>

#include <string>
#include <utility>
#include <vector>

#include "korutl.h"
#include "tests/support/cfg_tree.h"
#include "tests/support/temp_store.h"

namespace {

using korutl_test::cfg_path;
using korutl_test::cfg_set;
using Pairs = std::vector<std::pair<std::string, std::string>>;
using Names = std::vector<std::string>;

// The callback has no context argument: it collects here.
Pairs seen;

int32_t collect(const char *name, const char *data) {
  seen.emplace_back(name, data);
  return 0;
}

Pairs enumerate(const std::string &key) {
  seen.clear();
  KORVOCfgEnumerate(key.c_str(), collect);
  return seen;
}

class CfgEnumerate : public korutl_test::TempStore {};

TEST_F(CfgEnumerate, EveryReadableValueInTheOrderItWasSet) {
  cfg_set("K", "b", "2");
  cfg_set("K", "a", "1");
  cfg_set("K", "c", "");
  cfg_set("K", "big", std::string(1536, 'x'));  // does not fit the data buffer
  cfg_set("K", "edge", std::string(1535, 'y'));
  Pairs expected{{"b", "2"}, {"a", "1"}, {"c", ""}, {"edge", std::string(1535, 'y')}};
  Pairs found = enumerate(cfg_path("K"));
#if defined(_WIN32)
  // The system registry lists values in an order of its own.
  std::sort(expected.begin(), expected.end());
  std::sort(found.begin(), found.end());
#endif
  EXPECT_EQ(found, expected);
  korutl_test::cfg_key("Empty");
  EXPECT_EQ(enumerate(cfg_path("Empty")), Pairs{});
  EXPECT_EQ(enumerate(cfg_path("Missing")), Pairs{});
  seen.clear();
  KORVOCfgEnumerate(nullptr, collect);
  KORVOCfgEnumerate(cfg_path("K").c_str(), nullptr);
  EXPECT_EQ(seen, Pairs{});
}

TEST_F(CfgEnumerate, NamesLongerThanTheirSlotAreNeverReportedCut) {
  const std::string name32(32, 'n');
  cfg_set("K", name32 + "-longer", "cut");
  cfg_set("K", "short", "s");
  EXPECT_EQ(enumerate(cfg_path("K")), (Pairs{{"short", "s"}}));
  // A real 32-character name beside a longer one cut to the same text:
  // reported once, with its own data (at the first of the two places, as
  // the two cannot be told apart).
  cfg_set("K", name32, "real");
  EXPECT_EQ(enumerate(cfg_path("K")), (Pairs{{name32, "real"}, {"short", "s"}}));
}

TEST_F(CfgEnumerate, PlugInsAndTrapDestinations) {
  cfg_set("MILayer\\PlugIn", "Inventory", "libhalinv.so");
  cfg_set("SNMPLayer\\Notifications", "nms", "10.0.0.5:162");
  seen.clear();
  KORVOCfgEnumerateMilPlugIn(collect);
  KORVOCfgEnumerateSnmpTrapDest(collect);
  EXPECT_EQ(seen, (Pairs{{"Inventory", "libhalinv.so"}, {"nms", "10.0.0.5:162"}}));
}

Names environment(const char *component, uint16_t expected_count) {
  uint16_t count = 99;
  char **vars = KORVOCfgGetEnvironmentVars(component, &count);
  EXPECT_EQ(count, expected_count) << (component ? component : "null");
  EXPECT_EQ(vars == nullptr, expected_count == 0);
  Names out;
  for (uint16_t i = 0; vars != nullptr && i < count; ++i) out.emplace_back(vars[i]);
  KORVOCfgFreeEnvironmentVars(vars, count);
  return out;
}

TEST_F(CfgEnumerate, EnvironmentVariableNames) {
  cfg_set("MILayer\\Environment", "A", "1");
  cfg_set("MILayer\\Environment", "B", std::string(4000, 'x'));  // data are not read
  korutl_test::cfg_key("Bare\\Environment");
  EXPECT_EQ(environment("MILayer", 2), (Names{"A", "B"}));
  for (const char *component : {"", "Bare", "Missing"})
    EXPECT_EQ(environment(component, 0), Names{});
  EXPECT_EQ(environment(nullptr, 0), Names{});
  EXPECT_EQ(KORVOCfgGetEnvironmentVars("MILayer", nullptr), nullptr);
  KORVOCfgFreeEnvironmentVars(nullptr, 3);
}

TEST_F(CfgEnumerate, EnvironmentRefusesOverlongNamesAndPaths) {
  cfg_set("C\\Environment", std::string(32, 'v'), "fits");
  EXPECT_EQ(environment("C", 1), Names{std::string(32, 'v')});
  cfg_set("C\\Environment", std::string(33, 'w'), "too long");
  EXPECT_EQ(environment("C", 0), Names{});

  // The component makes the path 255 characters (fits) or 256.
  const size_t fixed = cfg_path("\\Environment").size();
  const std::string fits(255 - fixed, 'c');
  const std::string too_long(256 - fixed, 'c');
  cfg_set(fits + "\\Environment", "X", "1");
  cfg_set(too_long + "\\Environment", "X", "1");
  EXPECT_EQ(environment(fits.c_str(), 1), Names{"X"});
  EXPECT_EQ(environment(too_long.c_str(), 0), Names{});
}

}  // namespace
