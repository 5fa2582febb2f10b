// The configuration tree: versions in version order, instances and agents,
// the latest version holding a value, enumerations, direct settings,
// registrations of language and message files, the user questions, and
// the path lengths at which each refuses rather than overflow its buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "korutl.h"
#include "tests/support/temp_store.h"

namespace {

using korutl_test::cfg_key;
using korutl_test::cfg_path;
using korutl_test::cfg_set;
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

// A name list as names, released; `slots` for the environment's kind.
Names listed(char **list, const uint16_t &count, bool slots = false) {
  EXPECT_EQ(list == nullptr, count == 0);
  const Names out = list != nullptr ? Names(list, list + count) : Names{};
  slots ? KORVOCfgFreeEnvironmentVars(list, count) : KORVOCfgFreeProductVersions(list);
  return out;
}
Names versions_of(const char *product, uint16_t n = 999) {
  return listed(KORVOCfgGetProductVersions(product, &n), n);
}
Names instances_of(const char *product, const std::string &version, uint16_t n = 999) {
  return listed(KORVOCfgGetVersionInstances(product, version.c_str(), &n), n);
}
Names environment(const char *component, uint16_t n = 99) {
  return listed(KORVOCfgGetEnvironmentVars(component, &n), n, true);
}

using Cfg = korutl_test::TempStore;

TEST_F(Cfg, VersionsInstancesAndAgentsAreFoundAndOverlongNamesRefused) {
  for (const char *v : {"2.2.1", "3", "2.10\\Instances\\1", "2.10\\Instances\\10",
                        "2.10\\Instances\\2", "V2.3-beta", "2.2.1.3.9", "43", "1"})
    cfg_key(versions + v);
  // 43 wraps to 5032704 and sorts below 1 (100000000); the fifth number of
  // 2.2.1.3.9 is ignored, so it sits just above 2.2.1.
  EXPECT_EQ(versions_of("P"), (Names{"3", "2.10", "V2.3-beta", "2.2.1.3.9", "2.2.1", "1", "43"}));
  EXPECT_EQ(instances_of("P", "2.10"), (Names{"10", "2", "1"}));
  cfg_key("Products\\Empty\\Versions");
  for (const char *product : {"Empty", "Absent", static_cast<const char *>(nullptr)})
    EXPECT_EQ(versions_of(product), Names{});
  EXPECT_EQ(instances_of("P", "9"), Names{});
  EXPECT_EQ(instances_of(nullptr, "3"), Names{});
  KORVOCfgFreeProductVersions(nullptr);
  // Each name brings its key path to 255 characters (fits the 256-byte
  // buffer) or to 256 (refused).
  size_t fixed = cfg_path("Products\\\\Versions").size();
  const std::string p255(255 - fixed, 'p'), p256(256 - fixed, 'p');
  cfg_key("Products\\" + p255 + "\\Versions\\1");
  cfg_key("Products\\" + p256 + "\\Versions\\1");
  EXPECT_EQ(versions_of(p255.c_str()), Names{"1"});
  EXPECT_EQ(versions_of(p256.c_str()), Names{});
  // The version key path, and the instances key path 10 characters longer.
  fixed = cfg_path(versions).size();
  const std::string v255(255 - fixed, 'v'), v256(256 - fixed, 'v');
  const std::string i255(245 - fixed, 'i'), i256(246 - fixed, 'i');
  for (const std::string &v : {v255, v256, i255, i256}) {
    cfg_set(versions + v, "Port", "80");
    cfg_key(versions + v + "\\Instances\\1");
  }
  EXPECT_EQ(take(KORVOCfgGetProductVersionConfig("P", v255.c_str(), "Port")), "80");
  EXPECT_EQ(take(KORVOCfgGetProductVersionConfig("P", v256.c_str(), "Port")), "(null)");
  EXPECT_EQ(instances_of("P", i255), Names{"1"});
  EXPECT_EQ(instances_of("P", i256), Names{});
  // The agent name, for the agent key path.
  fixed = agent("3", "a", "").size();
  const std::string a255(255 - fixed, 'g'), a256(256 - fixed, 'g');
  for (const std::string &a : {a255, a256})
    cfg_set(versions + "3\\Instances\\a\\Agents\\" + a, "Port", "1");
  EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", "3", "a", a255.c_str())), agent("3", "a", a255));
  EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", "3", "a", a256.c_str())), "(null)");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(agent("3", "a", a256).c_str(), "Port")), "(null)");
  // 3 has instances a (first) and b; 2.10 has 1, 2 and 10.
  for (const char *a : {"3\\Instances\\a\\Agents\\Web", "3\\Instances\\b\\Agents\\Db",
                        "2.10\\Instances\\1\\Agents\\Db", "2.10\\Instances\\2\\Agents\\Web",
                        "2.10\\Instances\\10\\Agents\\Mail"})
    cfg_key(versions + a);
  // Version, instance, agent; where it is found (version and instance), if
  // at all. No version: the first instance of each version, in version
  // order; no instance: the greatest instance key only.
  // (No version, no instance, found in the first version: the sweep's case.)
  const char *cases[][5] = {{nullptr, "b", "Db", "2.10", "1"},
                            {nullptr, nullptr, "Mail"},
                            {"3", "b", "Db", "3", "b"},
                            {"3", "a", "Db"},
                            {"2.10", nullptr, "Mail", "2.10", "10"},
                            {"2.10", nullptr, "Web"},
                            {"3", "a", nullptr}};
  for (const auto &[version, instance, name, found_version, found_instance] : cases) {
    const std::string expected =
        found_version != nullptr ? agent(found_version, found_instance, name) : "(null)";
    EXPECT_EQ(take(KORVOCfgLocateAgentKeyEx("P", version, instance, name)), expected)
        << (version ? version : "-") << " " << (name ? name : "-");
    if (version == nullptr) {
      EXPECT_EQ(take(KORVOCfgLocateAgentKey("P", name)), expected) << name;
    }
  }
  EXPECT_EQ(take(KORVOCfgLocateAgentKey(nullptr, "Web")), "(null)");

  cfg_set(versions + "3", "Port", "8080");
  cfg_set(versions + "3", "Host", "version-host");
  cfg_set(versions + "3\\Instances\\a\\Agents\\Web", "Host", "agent-host");
  const std::string web = agent("3", "a", "Web");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(web.c_str(), "Host")), "agent-host");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig(web.c_str(), "Port")), "8080");
  EXPECT_EQ(take(KORVOCfgGetAgentConfig("a\\b\\c", "Port")), "(null)");  // three cuts only
  cfg_set("Products\\P", "Owner", "ops");
  EXPECT_EQ(take(KORVOCfgGetProductConfig("P", "Owner")), "ops");
  EXPECT_EQ(take(KORVOCfgGetProductConfig(std::string(300, 'p').c_str(), "Owner")), "(null)");
}

// The enumeration callback has no context argument: it collects here.
using Pairs = std::vector<std::pair<std::string, std::string>>;
Pairs seen;

int32_t collect(const char *name, const char *data) { return seen.emplace_back(name, data), 0; }

Pairs enumerate(const std::string &relative) {
  seen.clear();
  KORVOCfgEnumerate(cfg_path(relative).c_str(), collect);
#if defined(_WIN32)
  // The system registry lists values in an order of its own.
  std::sort(seen.begin(), seen.end());
#endif
  return seen;
}

TEST_F(Cfg, ValuesAreReadUpToASixteenBitLengthEnumeratedInOrderAndLatestWithin767) {
  cfg_set(versions + "2.2.1\\Languages", "German", "de.dll");
  cfg_set(versions + "2.10\\Languages", "English", "en.dll");
  cfg_set(versions + "2.2.1\\Languages", "English", "en.dll");
  cfg_set(versions + "3", "Beta", "yes");
  cfg_set("Products\\Default\\Versions\\1", "Default", "x");
  const std::tuple<const char *, const char *, const char *, std::string> cases[] = {
      {"P", "Languages", "English", cfg_path(versions + "2.10\\Languages")},
      {"P", "Languages", "German", cfg_path(versions + "2.2.1\\Languages")},
      {"P", "Languages", "French", "(null)"},
      {nullptr, nullptr, nullptr, cfg_path("Products\\Default\\Versions\\1")},
  };
  for (const auto &[product, subkey, name, expected] : cases)
    EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue(product, subkey, name)), expected)
        << (name ? name : "null");
  // Use_Strict_Version stops the search at the first version.
  const char *settings[] = {"1", "-1", "257", "0", "256", "", "off", "1000"};  // 3 strict
  for (int i = 0; i < 8; ++i) {
    ASSERT_EQ(KORVOSaveSetting("Halcyra", "Products\\P", "Use_Strict_Version", settings[i]), 1);
    EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", nullptr, "Beta")) == "(null)", i < 3)
        << settings[i];
  }
  // Product and version keep the versions listing within 255 characters;
  // the subkey carries the latest-value path past 767.
  const std::string base = cfg_path(versions + "3\\");
  const std::string subkey =
      std::string(200, 's') + "\\" + std::string(200, 't') + "\\" + std::string(200, 'u');
  const std::string deep = subkey + "\\" + std::string(767 - base.size() - subkey.size(), 'v');
  ASSERT_EQ(base.size() + deep.size(), 768u);
  const std::string last = deep.substr(0, deep.size() - 1);  // 767 characters: fits
  for (const std::string &s : {deep, last}) cfg_set(versions + "3\\" + s, "V", "1");
  EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", last.c_str(), "V")), base + last);
  EXPECT_EQ(take(KORVOCfgGetProductVersionLatestValue("P", deep.c_str(), "V")), "(null)");
  const std::string key = cfg_path("Global");
  cfg_set("Global", "Path", "/opt/halcyra");
  cfg_set("Global", "", "default value");
  cfg_set("Global", "Big", std::string(65534, 'x'));
  cfg_set("Global", "Huge", std::string(65535, 'x'));
  EXPECT_EQ(take(KORVOCfgGetValue(key.c_str(), "path")), "/opt/halcyra");
  EXPECT_EQ(take(KORVOCfgGetValue(key.c_str(), "")), "default value");
  EXPECT_EQ(take(KORVOCfgGetValue(key.c_str(), "Big")).size(), 65534u);
  for (const char *none : {"Huge", "Missing", static_cast<const char *>(nullptr)})
    EXPECT_EQ(KORVOCfgGetValue(key.c_str(), none), nullptr);
  EXPECT_EQ(KORVOCfgGetValue(nullptr, "Path"), nullptr);
  cfg_set("K", "b", "2");
  cfg_set("K", "a", "");
  cfg_set("K", "big", std::string(1536, 'x'));  // does not fit the data buffer
  cfg_set("K", "edge", std::string(1535, 'y'));
  const std::string name32(32, 'n');
  cfg_set("K", name32 + "-longer", "cut");  // never reported cut to its slot
  Pairs expected{{"b", "2"}, {"a", ""}, {"edge", std::string(1535, 'y')}};
#if defined(_WIN32)
  std::sort(expected.begin(), expected.end());
#endif
  EXPECT_EQ(enumerate("K"), expected);
  // A real 32-character name beside a longer one cut to the same text:
  // reported once, with its own data.
  cfg_set("L", name32 + "-longer", "cut");
  cfg_set("L", name32, "real");
  EXPECT_EQ(enumerate("L"), (Pairs{{name32, "real"}}));
  EXPECT_EQ(enumerate("Missing"), Pairs{});
  KORVOCfgEnumerate(nullptr, collect);
  KORVOCfgEnumerate(cfg_path("K").c_str(), nullptr);
}

std::string setting(const char *section, const char *name) {
  char out[1024];
  EXPECT_EQ(KORVOGetSetting("Halcyra", section, name, "dflt", out), 1);
  return out;
}
// A value as the configuration reader sees it.
std::string value(const std::string &key, const char *name) {
  return take(KORVOCfgGetValue(cfg_path(key).c_str(), name));
}
bool key_exists(const std::string &key) {
  return rsv_query_key(cfg_path(key).c_str(), nullptr, nullptr, "t", 1) == RSV_OK;
}

TEST_F(Cfg, SettingsEnvironmentRegistrationsAndUsers) {
  EXPECT_EQ(setting("Global", "Install_Path"), "dflt");
  char out[1024] = "junk";
  EXPECT_EQ(KORVOGetInstallPath(out), out);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(KORVOGetInstallPath(nullptr), nullptr);
  EXPECT_FALSE(store_exists());

  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Install_Path", "/opt/halcyra"), 1);
  EXPECT_STREQ(KORVOGetInstallPath(out), "/opt/halcyra");
  EXPECT_EQ(value("Global", "install_path"), "/opt/halcyra");
  cfg_set("Products\\P", "Use_Strict_Version", "1");
  EXPECT_EQ(setting("Products\\P", "Use_Strict_Version"), "1");
  const std::string long_section(1010, 's');  // "SOFTWARE\Vantrel\Halcyra\" + this > 1023
  EXPECT_EQ(KORVOSaveSetting("Halcyra", long_section.c_str(), "v", "x"), 0);
  EXPECT_EQ(setting(long_section.c_str(), "v"), "dflt");
  const std::string value_1023(1023, 'v');
  EXPECT_EQ(KORVOSaveSetting("Halcyra", "Global", "v", value_1023.c_str()), 1);
  EXPECT_EQ(setting("Global", "v"), value_1023);
  EXPECT_EQ(KORVOSaveSetting("Halcyra", "Global", "v", std::string(1024, 'v').c_str()), 0);
  cfg_set("Global", "big", std::string(2000, 'b'));  // longer, by the other door: not seen
  EXPECT_EQ(setting("Global", "big"), "dflt");
  EXPECT_EQ(setting("Global", "missing"), "dflt");
  EXPECT_EQ(KORVOSaveSetting(nullptr, "Global", "v", "x"), 0);
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "empty_saved", ""), 1);
  EXPECT_EQ(setting("Global", "empty_saved"), "");  // size 1: the stored empty text
  // Composing into the caller's buffer, here without a separator of its
  // own; with one and a language, the allocation sweep's case.
  EXPECT_STREQ(KORVOMakeLocalizedPath(out, "C:\\base", 1, nullptr, "msg.txt"), "C:\\basemsg.txt");
  EXPECT_EQ(KORVOMakeLocalizedPath(out, "C:\\base", 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(KORVOMakeLocalizedPath(out, nullptr, 0, nullptr, "f"), nullptr);
  EXPECT_STREQ(out, "C:\\basemsg.txt") << "refusals leave the buffer alone";
  cfg_set("MILayer\\Environment", "A", "1");
  cfg_set("MILayer\\Environment", "B", std::string(4000, 'x'));  // data are not read
  EXPECT_EQ(environment("MILayer"), (Names{"A", "B"}));
  EXPECT_EQ(environment(nullptr), Names{});
  EXPECT_EQ(KORVOCfgGetEnvironmentVars("MILayer", nullptr), nullptr);
  // Names of 32 characters fit, 33 are refused; so are component paths of
  // 256 characters.
  cfg_set("C\\Environment", std::string(32, 'v'), "fits");
  EXPECT_EQ(environment("C"), Names{std::string(32, 'v')});
  cfg_set("C\\Environment", std::string(33, 'w'), "too long");
  EXPECT_EQ(environment("C"), Names{});
  const size_t fixed = cfg_path("\\Environment").size();
  const std::string c255(255 - fixed, 'c'), c256(256 - fixed, 'c');
  cfg_set(c255 + "\\Environment", "X", "1");
  cfg_set(c256 + "\\Environment", "X", "1");
  EXPECT_EQ(environment(c255.c_str()), Names{"X"});
  EXPECT_EQ(environment(c256.c_str()), Names{});
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 0);  // nothing registered
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "French", "p_fr.dll"), 0);
  EXPECT_EQ(KORVOCfgRegisterMessageFile("P", "1.0", "Core", "core.msg"), 0);
  const std::string v1 = versions + "1.0";
  EXPECT_EQ(value(v1 + "\\Languages", "German"), "p_de.dll");
  EXPECT_EQ(value(v1 + "\\Languages", "French"), "p_fr.dll");
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 0);
  EXPECT_FALSE(key_exists(v1 + "\\Languages"));
  EXPECT_TRUE(key_exists(v1 + "\\EventLayerMessages"));
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_FALSE(key_exists(v1 + "\\EventLayerMessages"));
  EXPECT_TRUE(key_exists(v1));
  // Missing names stand for Default.
  const std::string fallback = "Products\\Default\\Versions\\Default\\";
  EXPECT_EQ(KORVOCfgRegisterLanguageFile(nullptr, "", nullptr, "d.dll"), 0);
  EXPECT_EQ(value(fallback + "Languages", "Default"), "d.dll");
  EXPECT_EQ(KORVOCfgRegisterMessageFile("", nullptr, "", "core.msg"), 0);
  EXPECT_EQ(value(fallback + "EventLayerMessages", "Default"), "core.msg");
  const std::string long_product(200, 'p');
  EXPECT_EQ(KORVOCfgRegisterLanguageFile(long_product.c_str(), "1.0", "de", "x.dll"), 1);
  EXPECT_EQ(KORVOCfgRegisterMessageFile(long_product.c_str(), "1.0", "m", "x.msg"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile(long_product.c_str(), "1.0"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile(long_product.c_str(), "1.0"), 1);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked(long_product.c_str()), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("Q", "1.0", "de", nullptr), 1);
  EXPECT_EQ(KORVOCfgRegisterMessageFile("Q", "1.0", "m", nullptr), 1);
  EXPECT_FALSE(key_exists("Products\\Q"));
  cfg_key("Products\\Orrery\\Users\\domain/admin");
  cfg_key("Products\\Halcyra");
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked("orrery"), 1);
  for (const char *open : {"Halcyra", "", static_cast<const char *>(nullptr)})
    EXPECT_EQ(KORVOCfgAuthorizationToBeChecked(open), 0);
  KORVOObjectId *ids[] = {KORVOStrCreateObjectId("\\localhost\\Orrery\\2.10", nullptr),
                          KORVOStrCreateObjectId("\\localhost", nullptr), nullptr};
  const std::string too_long(300, 'u');  // the path could not hold it
  for (const char *user : {"domain\\admin", "DOMAIN/Admin"}) {
    EXPECT_EQ(KORVOCfgCheckAuthorization(user, ids[0]), 1) << user;
    EXPECT_EQ(KORVOCfgCheckAuthorization(user, ids[1]), 0) << user;
    EXPECT_EQ(KORVOCfgCheckAuthorization(user, ids[2]), 0) << user;
  }
  for (const char *user : {"admin", "", too_long.c_str(), static_cast<const char *>(nullptr)})
    EXPECT_EQ(KORVOCfgCheckAuthorization(user, ids[0]), 0) << (user ? user : "(null)");
  for (KORVOObjectId *id : ids) KORVOStrDestroyObjectId(id);
}

}  // namespace
