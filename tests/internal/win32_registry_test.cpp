// The Win32 registry layer is hidden inside the library, so it is tested
// against the library's objects directly.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/win32.h"
#include "tests/support/temp_store.h"

namespace {

class Win32Registry : public korutl_test::TempStore {};

TEST_F(Win32Registry, CreateSetQueryWithWin32Semantics) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  char no_class[] = "";
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\X", 0, KEY_READ, &key),
            ERROR_FILE_NOT_FOUND);
  for (const DWORD expected : {DWORD{REG_CREATED_NEW_KEY}, DWORD{REG_OPENED_EXISTING_KEY}}) {
    ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "software\\X", 0, no_class, 0, KEY_WRITE, nullptr,
                              &key, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, expected);
    EXPECT_EQ(RegSetValueExA(key, "s", 0, REG_SZ, reinterpret_cast<const BYTE *>("text"), 5),
              ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  }
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\x", 0, KEY_READ, &key), ERROR_SUCCESS);
  DWORD type = 0, size = 4;
  char buf[8] = {};
  EXPECT_EQ(RegQueryValueExA(key, "s", nullptr, &type, reinterpret_cast<LPBYTE>(buf), &size),
            ERROR_MORE_DATA);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(buf[0], '\0');
  size = sizeof buf;
  EXPECT_EQ(RegQueryValueExA(key, "S", nullptr, &type, reinterpret_cast<LPBYTE>(buf), &size),
            ERROR_SUCCESS);
  EXPECT_EQ(type, DWORD{REG_SZ});
  EXPECT_STREQ(buf, "text");
  EXPECT_EQ(RegQueryValueExA(key, "none", nullptr, &type, nullptr, &size), ERROR_FILE_NOT_FOUND);
  // Opened for reading only: writing is refused.
  EXPECT_EQ(RegSetValueExA(key, "s", 0, REG_SZ, reinterpret_cast<const BYTE *>("x"), 2),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

}  // namespace
