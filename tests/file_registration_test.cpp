// Registration of language and message files, and the user questions.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

constexpr const char *M = "test";
const std::string kProducts = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\";

class FileRegistrationTest : public korutl_test::TempStore {
 protected:
  static std::string value(const std::string &key, const char *name) {
    char buf[256];
    uint16_t len = sizeof buf;
    return rsv_get_value((kProducts + key).c_str(), name, buf, &len, M, __LINE__) == RSV_OK
               ? buf
               : "<none>";
  }
  static bool key_exists(const std::string &key) {
    return rsv_query_key((kProducts + key).c_str(), nullptr, nullptr, M, __LINE__) == RSV_OK;
  }
};

TEST_F(FileRegistrationTest, RegisteringAddsValuesBesideEachOtherAndDefaultsMissingNames) {
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "French", "p_fr.dll"), 0);
  EXPECT_EQ(value("P\\Versions\\1.0\\Languages", "German"), "p_de.dll");
  EXPECT_EQ(value("P\\Versions\\1.0\\Languages", "French"), "p_fr.dll");

  EXPECT_EQ(KORVOCfgRegisterLanguageFile(nullptr, "", nullptr, "d.dll"), 0);
  EXPECT_EQ(value("Default\\Versions\\Default\\Languages", "Default"), "d.dll");
  EXPECT_EQ(KORVOCfgRegisterMessageFile("", nullptr, "", "core.msg"), 0);
  EXPECT_EQ(value("Default\\Versions\\Default\\EventLayerMessages", "Default"), "core.msg");
}

TEST_F(FileRegistrationTest, DeregisteringRemovesTheWholeKey) {
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 0);  // nothing registered
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 0);
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "French", "p_fr.dll"), 0);
  ASSERT_EQ(KORVOCfgRegisterMessageFile("P", "1.0", "Core", "core.msg"), 0);
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 0);
  EXPECT_FALSE(key_exists("P\\Versions\\1.0\\Languages"));
  EXPECT_TRUE(key_exists("P\\Versions\\1.0\\EventLayerMessages"));
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_FALSE(key_exists("P\\Versions\\1.0\\EventLayerMessages"));
  EXPECT_TRUE(key_exists("P\\Versions\\1.0"));
}

TEST_F(FileRegistrationTest, StoreErrorsTellTheTwoDeregistrationsApart) {
#if defined(_WIN32)
  GTEST_SKIP() << "Linux only: store errors are made by damaging the store file, which Windows "
                  "does not have";
#endif
  // A store file that is not a database: every query fails with a store
  // error, which only the language deregistration reports.
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 0);
  const std::string junk = file() + ".junk";
  std::ofstream(junk) << "this is not a database, not even close to one\n";
  setenv("KORVO_REGISTRY", junk.c_str(), 1);
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile("P", "1.0"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile("P", "1.0"), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "German", "p_de.dll"), 1);
}

TEST_F(FileRegistrationTest, PathsThatDoNotFitAreRefusedAndNullFileNamesTooLeaveNoKey) {
  const std::string long_product(200, 'p');
  EXPECT_EQ(KORVOCfgRegisterLanguageFile(long_product.c_str(), "1.0", "de", "x.dll"), 1);
  EXPECT_EQ(KORVOCfgRegisterMessageFile(long_product.c_str(), "1.0", "m", "x.msg"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterLanguageFile(long_product.c_str(), "1.0"), 1);
  EXPECT_EQ(KORVOCfgDeRegisterMessageFile(long_product.c_str(), "1.0"), 1);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked(long_product.c_str()), 0);
  EXPECT_EQ(KORVOCfgRegisterLanguageFile("P", "1.0", "de", nullptr), 1);
  EXPECT_EQ(KORVOCfgRegisterMessageFile("P", "1.0", "m", nullptr), 1);
  EXPECT_FALSE(key_exists("P"));
}

TEST_F(FileRegistrationTest, UsersAreCheckedWithBackslashesReadAsSlashes) {
  ASSERT_EQ(rsv_create_key((kProducts + "Orrery\\Users\\domain/admin").c_str(), M, __LINE__),
            RSV_OK);
  ASSERT_EQ(rsv_create_key((kProducts + "Halcyra").c_str(), M, __LINE__), RSV_OK);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked("orrery"), 1);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked("Halcyra"), 0);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked(nullptr), 0);
  EXPECT_EQ(KORVOCfgAuthorizationToBeChecked(""), 0);

  KORVOObjectId *orrery = KORVOStrCreateObjectId("\\localhost\\Orrery\\2.10", nullptr);
  KORVOObjectId *host_only = KORVOStrCreateObjectId("\\localhost", nullptr);
  struct Case {
    const char *user;
    const KORVOObjectId *id;
    uint8_t listed;
  };
  const std::string too_long(300, 'u');  // the path could not hold it
  for (const Case &c : {Case{"domain\\admin", orrery, 1}, Case{"DOMAIN/Admin", orrery, 1},
                        Case{"admin", orrery, 0}, Case{nullptr, orrery, 0},
                        Case{"domain\\admin", host_only, 0}, Case{"domain\\admin", nullptr, 0},
                        Case{too_long.c_str(), orrery, 0}, Case{"", orrery, 0}}) {
    EXPECT_EQ(KORVOCfgCheckAuthorization(c.user, c.id), c.listed) << (c.user ? c.user : "(null)");
  }
  KORVOStrDestroyObjectId(host_only);
  KORVOStrDestroyObjectId(orrery);
}

}  // namespace
