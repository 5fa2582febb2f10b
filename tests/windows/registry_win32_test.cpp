// On Windows the configuration tree is the system registry: what a program
// writes with the registry API, korrsv.dll reads, and the other way round
// (the settings' two doors are cfg_test.cpp's, which runs on this registry
// as well). Writers in several threads lose nothing.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

// Where a call comes from, for the store's trace lines.
#define AT "tests/registry", __LINE__
const std::string sub = "SOFTWARE\\Vantrel\\Halcyra\\Global";
const std::string full = "HKEY_LOCAL_MACHINE\\" + sub;

using SystemRegistry = korutl_test::TempStore;

std::string rsv_text(const char *name) {
  char text[64];
  uint16_t length = sizeof text;
  return rsv_get_value(full.c_str(), name, text, &length, AT) == RSV_OK ? text : "<none>";
}

TEST_F(SystemRegistry, AllDoorsSeeOneTree) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, sub.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, nullptr),
            ERROR_SUCCESS);
  ASSERT_EQ(RegSetValueExA(key, "FromApi", 0, REG_SZ, reinterpret_cast<const BYTE *>("api"), 4),
            ERROR_SUCCESS);
  EXPECT_EQ(rsv_text("fromapi"), "api");
  ASSERT_EQ(rsv_set_value(full.c_str(), "FromRsv", "rsv", AT), RSV_OK);
  char text[64];
  DWORD type = 0, size = sizeof text;
  ASSERT_EQ(RegQueryValueExA(key, "FromRsv", nullptr, &type, reinterpret_cast<BYTE *>(text), &size),
            ERROR_SUCCESS);
  EXPECT_EQ(type, DWORD{REG_SZ});
  EXPECT_STREQ(text, "rsv");
  RegCloseKey(key);
  EXPECT_EQ(rsv_delete_key("HKEY_LOCAL_MACHINE", AT), RSV_E_BAD_ARGUMENT) << "a root stays";
  ASSERT_EQ(rsv_delete_key("HKEY_LOCAL_MACHINE\\SOFTWARE", AT), RSV_OK);
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, sub.c_str(), 0, KEY_READ, &key),
            ERROR_FILE_NOT_FOUND);
  // Unknown roots are empty.
  EXPECT_EQ(rsv_query_key("HKEY_NOWHERE\\SOFTWARE", nullptr, nullptr, AT), RSV_E_NO_KEY);
  EXPECT_EQ(rsv_create_key("HKEY_NOWHERE\\SOFTWARE", AT), RSV_E_BAD_ARGUMENT);
  uint16_t subkeys = 1;
  EXPECT_EQ(rsv_query_key("HKEY_LOCAL_MACHINE", &subkeys, nullptr, AT), RSV_OK);
  EXPECT_EQ(subkeys, 0);
}

TEST_F(SystemRegistry, ThreadsWritingAtOnceLoseNothing) {
  constexpr int threads = 4, count = 50;
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t)
    pool.emplace_back([t] {
      const std::string key = full + "\\W" + std::to_string(t);
      EXPECT_EQ(rsv_create_key(key.c_str(), AT), RSV_OK) << t;
      for (int i = 0; i < count; ++i) {
        const std::string v = std::to_string(i);
        EXPECT_EQ(rsv_set_value(key.c_str(), ("v" + v).c_str(), v.c_str(), AT), RSV_OK);
      }
    });
  for (auto &th : pool) th.join();
  for (int t = 0; t < threads; ++t) {
    uint16_t values = 0;
    const std::string key = full + "\\W" + std::to_string(t);
    ASSERT_EQ(rsv_query_key(key.c_str(), nullptr, &values, AT), RSV_OK);
    EXPECT_EQ(values, count) << t;
  }
}

}  // namespace
