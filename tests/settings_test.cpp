// Direct settings, registrations of language and message files, and the
// user questions: what they write is what the registry service reads, and
// what does not fit their buffers is refused.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

const std::string kRoot = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\";
const std::string kProducts = kRoot + "Products\\";

class Settings : public korutl_test::TempStore {
 protected:
  static std::string setting(const char *section, const char *name) {
    char out[1024];
    EXPECT_EQ(KORVOGetSetting("Halcyra", section, name, "dflt", out), 1);
    return out;
  }
  // A value read through the registry service, "<none>" when absent.
  static std::string value(const std::string &key, const char *name) {
    char buf[256];
    uint16_t len = sizeof buf;
    return rsv_get_value(key.c_str(), name, buf, &len, "t", __LINE__) == RSV_OK ? buf : "<none>";
  }
  static bool key_exists(const std::string &key) {
    return rsv_query_key((kProducts + key).c_str(), nullptr, nullptr, "t", __LINE__) == RSV_OK;
  }
};

TEST_F(Settings, SavedSettingsAreSeenByBothDoorsAndMissingOnesCreateNoStore) {
  EXPECT_EQ(setting("Global", "Install_Path"), "dflt");
  char out[1024] = "junk";
  EXPECT_EQ(KORVOGetInstallPath(out), out);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(KORVOGetInstallPath(nullptr), nullptr);
  EXPECT_FALSE(store_exists());

  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Install_Path", "/opt/halcyra"), 1);
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "MILayer", "Hostlist_Path", "/etc/hosts.hal"), 1);
  EXPECT_STREQ(KORVOGetInstallPath(out), "/opt/halcyra");
  EXPECT_STREQ(KORVOGetHostListPath(out), "/etc/hosts.hal");
  EXPECT_EQ(value(kRoot + "Global", "install_path"), "/opt/halcyra");
  ASSERT_EQ(rsv_create_key((kProducts + "P").c_str(), "t", __LINE__), RSV_OK);
  ASSERT_EQ(rsv_set_value((kProducts + "P").c_str(), "Use_Strict_Version", "1", "t", __LINE__),
            RSV_OK);
  EXPECT_EQ(setting("Products\\P", "Use_Strict_Version"), "1");
}

TEST_F(Settings, OversizedPathsAndValuesAreRefused) {
  const std::string long_section(1010, 's');  // "SOFTWARE\Vantrel\Halcyra\" + this > 1023
  EXPECT_EQ(KORVOSaveSetting("Halcyra", long_section.c_str(), "v", "x"), 0);
  EXPECT_EQ(setting(long_section.c_str(), "v"), "dflt");
  const std::string value_1023(1023, 'v');
  EXPECT_EQ(KORVOSaveSetting("Halcyra", "Global", "v", value_1023.c_str()), 1);
  EXPECT_EQ(setting("Global", "v"), value_1023);
  EXPECT_EQ(KORVOSaveSetting("Halcyra", "Global", "v", std::string(1024, 'v').c_str()), 0);
  // Written longer by the other door: not seen, the default comes back.
  ASSERT_EQ(rsv_set_value((kRoot + "Global").c_str(), "big", std::string(2000, 'b').c_str(), "t",
                          __LINE__),
            RSV_OK);
  EXPECT_EQ(setting("Global", "big"), "dflt");
  EXPECT_EQ(KORVOSaveSetting(nullptr, "Global", "v", "x"), 0);
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "empty_saved", ""), 1);
  EXPECT_EQ(setting("Global", "empty_saved"), "");  // size 1: the stored empty text
}

TEST(SettingsPaths, RegModeAndLocalizedPaths) {
  char out[64] = "abc";
  EXPECT_EQ(KORVOGetRegMode(out), 1);
  EXPECT_EQ(out[0], '\0');
  EXPECT_EQ(KORVOGetRegMode(nullptr), 1);
  EXPECT_STREQ(KORVOMakeLocalizedPath(out, "C:\\base", 0, nullptr, "msg.txt"), "C:\\base\\msg.txt");
  EXPECT_STREQ(KORVOMakeLocalizedPath(out, "C:\\base", 1, nullptr, "msg.txt"), "C:\\basemsg.txt");
  EXPECT_STREQ(KORVOMakeLocalizedPath(out, "C:\\base", 0, "de", "m"), "C:\\base\\localized\\de\\m");
  EXPECT_EQ(KORVOMakeLocalizedPath(out, "C:\\base", 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(KORVOMakeLocalizedPath(out, nullptr, 0, nullptr, "f"), nullptr);
  EXPECT_STREQ(out, "C:\\base\\localized\\de\\m") << "refusals leave the buffer alone";
}

TEST_F(Settings, RegistrationsAddBesideEachOtherAndDeregistrationsRemoveTheKey) {
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 0);  // nothing registered
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "French", "p_fr.dll"), 0);
  EXPECT_EQ(KORVOCfgRegisterMessageFile("P", "1.0", "Core", "core.msg"), 0);
  EXPECT_EQ(value(kProducts + "P\\Versions\\1.0\\Languages", "German"), "p_de.dll");
  EXPECT_EQ(value(kProducts + "P\\Versions\\1.0\\Languages", "French"), "p_fr.dll");
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 0);
  EXPECT_FALSE(key_exists("P\\Versions\\1.0\\Languages"));
  EXPECT_TRUE(key_exists("P\\Versions\\1.0\\EventLayerMessages"));
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_FALSE(key_exists("P\\Versions\\1.0\\EventLayerMessages"));
  EXPECT_TRUE(key_exists("P\\Versions\\1.0"));
  // Missing names stand for Default.
  EXPECT_EQ(KORVOCfgRegisterLanguageFile(nullptr, "", nullptr, "d.dll"), 0);
  EXPECT_EQ(value(kProducts + "Default\\Versions\\Default\\Languages", "Default"), "d.dll");
  EXPECT_EQ(KORVOCfgRegisterMessageFile("", nullptr, "", "core.msg"), 0);
  EXPECT_EQ(value(kProducts + "Default\\Versions\\Default\\EventLayerMessages", "Default"),
            "core.msg");
}

TEST_F(Settings, RegistrationsThatDoNotFitOrNameNoFileAreRefused) {
  const std::string long_product(200, 'p');
  EXPECT_EQ(KORVOCfgRegisterLanguageFile(long_product.c_str(), "1.0", "de", "x.dll"), 1);
  EXPECT_EQ(KORVOCfgRegisterMessageFile(long_product.c_str(), "1.0", "m", "x.msg"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile(long_product.c_str(), "1.0"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile(long_product.c_str(), "1.0"), 1);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked(long_product.c_str()), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "de", nullptr), 1);
  EXPECT_EQ(KORVOCfgRegisterMessageFile("P", "1.0", "m", nullptr), 1);
  EXPECT_FALSE(key_exists("P"));
#if !defined(_WIN32)
  // A store file that is not a database: every query fails with a store
  // error, which only the language deregistration reports.
  const std::string junk = scratch("junk");
  std::ofstream(junk) << "this is not a database, not even close to one\n";
  setenv("KORVO_REGISTRY", junk.c_str(), 1);
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 1);
#endif
}

TEST_F(Settings, UsersAreCheckedWithBackslashesReadAsSlashes) {
  ASSERT_EQ(rsv_create_key((kProducts + "Orrery\\Users\\domain/admin").c_str(), "t", __LINE__),
            RSV_OK);
  ASSERT_EQ(rsv_create_key((kProducts + "Halcyra").c_str(), "t", __LINE__), RSV_OK);
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
