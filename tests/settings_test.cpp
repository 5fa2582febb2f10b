#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

class SettingsTest : public korutl_test::TempStore {};

std::string setting(const char *section, const char *name, const char *def = "dflt") {
  char out[1024];
  EXPECT_EQ(KORVOGetSetting("Halcyra", section, name, def, out), 1);
  return out;
}

TEST_F(SettingsTest, MissingSettingGivesTheDefaultWithoutCreatingTheStore) {
  EXPECT_EQ(setting("Global", "Install_Path"), "dflt");
  char out[1024] = "junk";
  EXPECT_EQ(KORVOGetInstallPath(out), out);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(KORVOGetInstallPath(nullptr), nullptr);
  EXPECT_FALSE(store_exists());
}

TEST_F(SettingsTest, SavedSettingsAreSeenByBothDoors) {
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Install_Path", "/opt/halcyra"), 1);
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "MILayer", "Hostlist_Path", "/etc/hosts.hal"), 1);
  char out[1024];
  EXPECT_STREQ(KORVOGetInstallPath(out), "/opt/halcyra");
  EXPECT_STREQ(KORVOGetHostListPath(out), "/etc/hosts.hal");

  char buf[64];
  uint16_t len = sizeof buf;
  ASSERT_EQ(rsv_get_value("HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Global", "install_path",
                          buf, &len, "t", __LINE__),
            RSV_OK);
  EXPECT_STREQ(buf, "/opt/halcyra");

  const char *product = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\P";
  ASSERT_EQ(rsv_create_key(product, "t", __LINE__), RSV_OK);
  ASSERT_EQ(rsv_set_value(product, "Use_Strict_Version", "1", "t", __LINE__), RSV_OK);
  EXPECT_EQ(setting("Products\\P", "Use_Strict_Version"), "1");
}

TEST_F(SettingsTest, OversizedPathsAndValuesAreRefused) {
  const std::string long_section(1010, 's');  // "SOFTWARE\Vantrel\Halcyra\" + this > 1023
  EXPECT_EQ(KORVOSaveSetting("Halcyra", long_section.c_str(), "v", "x"), 0);
  EXPECT_EQ(setting(long_section.c_str(), "v"), "dflt");
  const std::string value_1023(1023, 'v');
  EXPECT_EQ(KORVOSaveSetting("Halcyra", "Global", "v", value_1023.c_str()), 1);
  EXPECT_EQ(setting("Global", "v"), value_1023);
  const std::string value_1024(1024, 'v');
  EXPECT_EQ(KORVOSaveSetting("Halcyra", "Global", "v", value_1024.c_str()), 0);
  // Written longer by the other door: not seen, the default comes back.
  const std::string big(2000, 'b');
  ASSERT_EQ(rsv_set_value("HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Global", "big",
                          big.c_str(), "t", __LINE__),
            RSV_OK);
  EXPECT_EQ(setting("Global", "big"), "dflt");
  EXPECT_EQ(KORVOSaveSetting(nullptr, "Global", "v", "x"), 0);
  EXPECT_EQ(setting("Global", "empty_saved"), "dflt");
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "empty_saved", ""), 1);
  EXPECT_EQ(setting("Global", "empty_saved"), "");  // size 1: the stored empty text
}

TEST(SettingsPaths, RegModeAndLocalizedPaths) {
  EXPECT_EQ(KORVOGetRegMode(nullptr), 1);
  char name[4] = "abc";
  EXPECT_EQ(KORVOGetRegMode(name), 1);
  EXPECT_EQ(name[0], '\0');

  struct Case {
    uint8_t separator;
    const char *language;
    const char *expected;
  };
  for (const Case &c : {Case{0, nullptr, "C:\\base\\msg.txt"}, Case{1, nullptr, "C:\\basemsg.txt"},
                        Case{0, "de", "C:\\base\\localized\\de\\msg.txt"}}) {
    char out[64];
    EXPECT_EQ(KORVOMakeLocalizedPath(out, "C:\\base", c.separator, c.language, "msg.txt"), out);
    EXPECT_STREQ(out, c.expected);
  }
  char out[8] = "keep";
  EXPECT_EQ(KORVOMakeLocalizedPath(out, "C:\\base", 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(KORVOMakeLocalizedPath(out, nullptr, 0, nullptr, "f"), nullptr);
  EXPECT_STREQ(out, "keep");
}

}  // namespace
