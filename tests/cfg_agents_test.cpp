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

// A result text as std::string ("(null)" for null), released.
std::string take(char *text) {
  std::string s = text != nullptr ? text : "(null)";
  std::free(text);
  return s;
}

const std::string versions = "Products\\P\\Versions\\";

std::string agent(const std::string &version, const std::string &instance,
                  const std::string &name) {
  return cfg_path(versions + version + "\\Instances\\" + instance + "\\Agents\\" + name);
}

class CfgAgents : public korutl_test::TempStore {
 protected:
  void SetUp() override {
    TempStore::SetUp();
    // 3 has instances a (first) and b; 2.10 has 1, 2 and 10; 2.2.1 has x.
    for (const char *a : {"3\\Instances\\a\\Agents\\Web", "3\\Instances\\b\\Agents\\Db",
                          "2.10\\Instances\\1\\Agents\\Db", "2.10\\Instances\\2\\Agents\\Web",
                          "2.10\\Instances\\10\\Agents\\Mail", "2.2.1\\Instances\\x\\Agents\\Db"})
      cfg_key(versions + a);
  }
};

TEST_F(CfgAgents, InstancesAreListedInVersionOrder) {
  uint16_t count = 0;
  char **list = KORVOCfgGetVersionInstances("P", "2.10", &count);
  EXPECT_EQ(names_of(list, count), (Names{"10", "2", "1"}));
  KORVOCfgFreeVersionInstances(list);
  for (const auto &[product, version] : {std::pair<const char *, const char *>{"P", "9"},
                                         {"P", nullptr},
                                         {nullptr, "3"},
                                         {"Q", "3"}}) {
    count = 7;
    EXPECT_EQ(KORVOCfgGetVersionInstances(product, version, &count), nullptr);
    EXPECT_EQ(count, 0);
  }
}

TEST_F(CfgAgents, LocateSearchesTheFirstInstanceOfEachVersion) {
  struct Case {
    const char *agent;
    std::string expected;
  };
  for (const Case &c :
       {Case{"Web", agent("3", "a", "Web")},
        // Db of 3 lives under its second instance: not seen; 2.10's
        // first instance in store order is "1".
        Case{"Db", agent("2.10", "1", "Db")}, Case{"Mail", "(null)"}, Case{"Nobody", "(null)"}}) {
    EXPECT_EQ(take(KORVOCfgLocateAgentKey("P", c.agent)), c.expected) << c.agent;
    // A null version searches the same way, whatever the instance.
    EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", nullptr, "b", c.agent)), c.expected) << c.agent;
  }
  EXPECT_EQ(take(KORVOCfgLocateAgentKey("Q", "Web")), "(null)");
  EXPECT_EQ(take(KORVOCfgLocateAgentKey(nullptr, "Web")), "(null)");
  EXPECT_EQ(take(KORVOCfgLocateAgentKey("P", nullptr)), "(null)");
}

TEST_F(CfgAgents, LocateExForAGivenVersion) {
  struct Case {
    const char *version;
    const char *instance;
    const char *agent;
    std::string expected;
  };
  for (const Case &c :
       {Case{"3", "b", "Db", agent("3", "b", "Db")}, Case{"3", "a", "Db", "(null)"},
        // No instance: the greatest instance key, 10, only.
        Case{"2.10", nullptr, "Mail", agent("2.10", "10", "Mail")},
        Case{"2.10", nullptr, "Web", "(null)"}, Case{"9", nullptr, "Web", "(null)"}}) {
    EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", c.version, c.instance, c.agent)), c.expected)
        << c.version << " " << c.agent;
  }
  EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx(nullptr, "3", "a", "Web")), "(null)");
  EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", "3", "a", nullptr)), "(null)");
}

TEST_F(CfgAgents, AgentPathsBeyond255CharactersAreRefused) {
  // The agent name makes the path exactly 255 or 256 characters long.
  const size_t fixed = agent("3", "a", "").size();
  const std::string fits(255 - fixed, 'g');
  const std::string too_long(256 - fixed, 'g');
  cfg_key(versions + "3\\Instances\\a\\Agents\\" + fits);
  cfg_key(versions + "3\\Instances\\a\\Agents\\" + too_long);
  EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", "3", "a", fits.c_str())), agent("3", "a", fits));
  EXPECT_EQ(take(KORVOCfgLocateAgentKey("P", fits.c_str())), agent("3", "a", fits));
  EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", "3", "a", too_long.c_str())), "(null)");
  EXPECT_EQ(take(KORVOCfgLocateAgentKey("P", too_long.c_str())), "(null)");

  cfg_set(versions + "3\\Instances\\a\\Agents\\" + fits, "Port", "1");
  cfg_set(versions + "3\\Instances\\a\\Agents\\" + too_long, "Port", "1");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(agent("3", "a", fits).c_str(), "Port")), "1");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(agent("3", "a", too_long).c_str(), "Port")), "(null)");
}

TEST_F(CfgAgents, AgentValuesFallBackToTheVersion) {
  cfg_set(versions + "3", "Port", "8080");
  cfg_set(versions + "3", "Host", "version-host");
  cfg_set(versions + "3\\Instances\\a\\Agents\\Web", "Host", "agent-host");
  const std::string web = agent("3", "a", "Web");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(web.c_str(), "Host")), "agent-host");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(web.c_str(), "Port")), "8080");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(web.c_str(), "None")), "(null)");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig("a\\b\\c", "Port")), "(null)");  // three cuts only
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(nullptr, "Port")), "(null)");

  cfg_set("Products\\P", "Owner", "ops");
  EXPECT_EQ(take(KORVOCfgGetProductConfig("P", "Owner")), "ops");
  EXPECT_EQ(take(KORVOCfgGetProductVersionConfig("P", "3", "Port")), "8080");
  EXPECT_EQ(take(KORVOCfgGetProductVersionConfig("P", nullptr, "Port")), "(null)");
  EXPECT_EQ(take(KORVOCfgGetProductConfig(nullptr, "Owner")), "(null)");
  EXPECT_EQ(take(KORVOCfgGetProductConfig(std::string(300, 'p').c_str(), "Owner")), "(null)");
}

class CfgLatest : public korutl_test::TempStore {};

TEST_F(CfgLatest, FindsTheGreatestVersionHoldingTheValue) {
  cfg_set("Products\\P\\Versions\\2.2.1\\Languages", "German", "de.dll");
  cfg_set("Products\\P\\Versions\\2.10\\Languages", "English", "en.dll");
  cfg_set("Products\\P\\Versions\\2.2.1\\Languages", "English", "en.dll");
  cfg_set("Products\\P\\Versions\\3", "Beta", "yes");
  cfg_set("Products\\Default\\Versions\\1", "Default", "x");
  struct Case {
    const char *product, *subkey, *name;
    std::string expected;
  };
  for (const Case &c :
       {Case{"P", "Languages", "English", cfg_path(versions + "2.10\\Languages")},
        Case{"P", "Languages", "German", cfg_path(versions + "2.2.1\\Languages")},
        Case{"P", nullptr, "Beta", cfg_path(versions + "3")},
        Case{"P", "", "Beta", cfg_path(versions + "3")}, Case{"P", "Languages", "French", "(null)"},
        Case{"Q", nullptr, "Beta", "(null)"},
        Case{nullptr, nullptr, nullptr, cfg_path("Products\\Default\\Versions\\1")},
        Case{"", "", "", cfg_path("Products\\Default\\Versions\\1")}})
    EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue(c.product, c.subkey, c.name)), c.expected)
        << (c.name ? c.name : "null");
}

TEST_F(CfgLatest, StrictVersionStopsTheSearch) {
  cfg_set("Products\\P\\Versions\\3", "Beta", "yes");
  for (const auto &[setting, searches] : {std::pair<const char *, bool>{"1", false},
                                          {"-1", false},
                                          {"257", false},
                                          {"0", true},
                                          {"256", true},
                                          {"", true},
                                          {"off", true},
                                          {"1000", true}}) {
    ASSERT_EQ(KORVOSaveSetting("Halcyra", "Products\\P", "Use_Strict_Version", setting), 1);
    EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", nullptr, "Beta")) != "(null)",
              searches)
        << setting;
  }
}

TEST_F(CfgLatest, PathsBeyond767CharactersAreRefused) {
  // Product and version keep the versions listing within 255 characters;
  // the subkey carries the latest-value path past 767.
  cfg_set("Products\\P\\Versions\\3\\" + std::string(200, 's') + "\\" + std::string(200, 't') +
              "\\" + std::string(200, 'u'),
          "V", "1");
  const std::string base = cfg_path(versions + "3\\");
  std::string subkey =
      std::string(200, 's') + "\\" + std::string(200, 't') + "\\" + std::string(200, 'u');
  ASSERT_LT(base.size() + subkey.size(), 767u);
  EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", subkey.c_str(), "V")), base + subkey);
  const std::string deep = subkey + "\\" + std::string(767 - base.size() - subkey.size(), 'v');
  cfg_set("Products\\P\\Versions\\3\\" + deep, "V", "1");
  EXPECT_EQ(base.size() + deep.size(), 768u);
  EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", deep.c_str(), "V")), "(null)");
  const std::string last = deep.substr(0, deep.size() - 1);  // 767 characters: fits
  cfg_set("Products\\P\\Versions\\3\\" + last, "V", "1");
  EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", last.c_str(), "V")), base + last);
}

}  // namespace
