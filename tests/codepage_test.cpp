// Code-page conversion through libkorcpx and the internal-products record:
// real text both ways, refusals instead of overflow, and the -1 handle.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "korutl.h"
#include "siblings/cpx/cpx.h"
#include "siblings/oss/oss.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

class CodePage : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(cpx_init(), CPX_OK); }
  void TearDown() override { cpx_term(); }
};

int32_t convert(int32_t handle, const std::string &in, char *out, intptr_t capacity,
                int32_t *written, intptr_t flags = CPX_TERMINATE) {
  return KORVOCpxConversion(&handle, reinterpret_cast<intptr_t>(in.data()),
                            static_cast<intptr_t>(in.size()), reinterpret_cast<intptr_t>(out),
                            capacity, reinterpret_cast<intptr_t>(written), flags);
}

TEST_F(CodePage, Cp1252ToFamilyAndBack) {
  const std::string cp1252 =
      "Gr\xFC\xDF"
      "e \x80";  // "Grüße €"
  const std::string utf8 =
      "Gr\xC3\xBC\xC3\x9F"
      "e \xE2\x82\xAC";
  int32_t to_utf8 = -1, to_cp1252 = -1;
  ASSERT_EQ(cpx_open_conversion(1252, 65456, &to_utf8), CPX_OK);
  ASSERT_EQ(cpx_open_conversion(65456, 1252, &to_cp1252), CPX_OK);
  char out[64];
  int32_t written = -1;
  ASSERT_EQ(convert(to_utf8, cp1252, out, sizeof out, &written), 1);
  EXPECT_EQ(std::string(out, written), utf8);
  EXPECT_EQ(out[written], '\0');
  ASSERT_EQ(convert(to_cp1252, utf8, out, sizeof out, &written), 1);
  EXPECT_EQ(std::string(out, written), cp1252);
}

TEST_F(CodePage, RefusesInsteadOfOverflowing) {
  int32_t h = -1;
  ASSERT_EQ(cpx_open_conversion(1252, 65001, &h), CPX_OK);
  const std::string text = "\xFC\xFC\xFC";  // six bytes in UTF-8
  char out[8];
  std::memset(out, 'x', sizeof out);
  int32_t written = -7;
  EXPECT_EQ(convert(h, text, out, 6, &written), 0) << "no room for the terminator";
  EXPECT_EQ(written, -7) << "length untouched on failure";
  EXPECT_EQ(out[6], 'x');
  EXPECT_EQ(convert(h, text, out, 6, &written, 0), 1) << "fits without the terminator";
  EXPECT_EQ(written, 6);
  int32_t from_utf8 = -1;
  ASSERT_EQ(cpx_open_conversion(65456, 1252, &from_utf8), CPX_OK);
  EXPECT_EQ(convert(from_utf8, "\xC3", out, sizeof out, &written), 0) << "cut sequence";
  EXPECT_EQ(convert(from_utf8, "\xFF\xFE", out, sizeof out, &written), 0) << "no UTF-8";
  int32_t never = 5;
  EXPECT_EQ(cpx_open_conversion(1252, 4242, &never), CPX_E_UNKNOWN_CODESET);
}

#if defined(_WIN32)
// On Windows the local code set is the ANSI code page, whatever the C
// locale: 1252 under an English system.
TEST_F(CodePage, RecordConvertsWithTheAnsiCodePage) {
  ASSERT_EQ(cpx_local_codeset(), static_cast<int32_t>(GetACP()));
  if (GetACP() != 1252) GTEST_SKIP() << "expectations are for code page 1252, this is " << GetACP();
  KORVOIntProdData *record = KORVOCreateIntProdData();
  ASSERT_NE(record, nullptr);
  char out[16];
  int32_t written = 0;
  EXPECT_EQ(convert(*record->cpxToLocal, "\xC3\xBC\xE2\x82\xAC", out, sizeof out, &written), 1);
  EXPECT_EQ(std::string(out, written), "\xFC\x80");
  EXPECT_EQ(convert(*record->cpxToLocal, "\xE4\xB8\xAD", out, sizeof out, &written), 0)
      << "no form in 1252, and no best-fit stand-in either";
  EXPECT_EQ(convert(*record->cpxFromLocal, "\xFC", out, sizeof out, &written), 1);
  EXPECT_EQ(std::string(out, written), "\xC3\xBC");
  KORVODestroyIntProdData(record);
}
#else
TEST_F(CodePage, RecordConvertsWithTheLocalCodeSet) {
  setenv("LC_ALL", "C", 1);
  std::setlocale(LC_ALL, "");  // local code set US-ASCII (20127)
  KORVOIntProdData *record = KORVOCreateIntProdData();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->readyFlag1, 0);
  EXPECT_NE(*record->cpxFromLocal, -1);
  EXPECT_NE(*record->cpxToLocal, -1);
  char out[16];
  int32_t written = 0;
  EXPECT_EQ(convert(*record->cpxToLocal, "\xC3\xBC", out, sizeof out, &written), 0)
      << "u-umlaut has no ASCII form";
  EXPECT_EQ(convert(*record->cpxToLocal, "plain", out, sizeof out, &written), 1);
  int32_t dead = -1;
  EXPECT_EQ(KORVOCpxConversion(&dead, 1, 1, 1, 1, 0, 0), 0) << "-1 converts nothing";
  EXPECT_EQ(KORVOCpxConversion(nullptr, 1, 1, 1, 1, 0, 0), 0);
  KORVODestroyIntProdData(record);
  KORVODestroyIntProdData(nullptr);
  std::setlocale(LC_ALL, "C");
  unsetenv("LC_ALL");
}

#endif

TEST(CodePageStart, SettingsAndCleanup) {
  const std::string dir = std::filesystem::temp_directory_path().string();
  const std::string good = "CPXOBJDIR=" + dir, bad = "CPXOBJDIR=" + dir + "/no-such-folder";
  const char *const ok_list[] = {good.c_str(), nullptr};
  const char *const bad_list[] = {bad.c_str(), nullptr};
  const char *const unknown[] = {"COLOUR=blue", nullptr};
  int32_t h = 0;
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED);
  EXPECT_EQ(cpx_init_ex(bad_list), CPX_E_SETTING);
  EXPECT_EQ(cpx_init_ex(unknown), CPX_E_SETTING);
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED);
  EXPECT_EQ(cpx_init_ex(ok_list), CPX_OK);
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_OK);
  KORVOCleanupInternalProducts(nullptr);  // still ends the library
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED);
}

}  // namespace

namespace {

// Start-up through the registry: the conversion objects' folder comes from
// the "Cpx_Objects_Path" setting, and trace lines then reach stderr.
class RegistryStart : public korutl_test::TempStore {};

TEST_F(RegistryStart, ObjectsPathDecidesTheStart) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  struct Case {
    std::string path;
    int32_t started;
  };
  const Case cases[] = {{"", 1}, {folder, 1}, {folder + "/no-such-folder", 0}};
  for (const Case &c : cases) {
    ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Cpx_Objects_Path", c.path.c_str()), 1);
    KORVOIntProdData *record = reinterpret_cast<KORVOIntProdData *>(&record);  // stale value
    EXPECT_EQ(KORVOInitInternalProducts(&record), c.started) << c.path;
    if (c.started == 0) {
      EXPECT_EQ(record, nullptr) << "a failed start leaves null";
      int32_t h = 0;
      EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED) << "ended again";
      continue;
    }
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->readyFlag1, 1);
    EXPECT_EQ(record->readyFlag2, 1);
    KORVOCleanupInternalProducts(record);
  }
  EXPECT_EQ(KORVOInitInternalProducts(nullptr), 0);
}

TEST_F(RegistryStart, TraceLinesReachStandardError) {
  ASSERT_EQ(KORVOInitRegistry(), 1);
  ::testing::internal::CaptureStderr();
  intptr_t handle = 0;
  oss_load_library("no-such-language.dll", &handle, "I18N/korstrng", 12);
  const std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(err.rfind("I18N/korstrng:12: oss_load_library: ", 0), 0u) << err;
  EXPECT_EQ(err.back(), '\n');
  cpx_term();
  oss_set_trace_func(nullptr, "test", __LINE__);
  rsv_set_trace_func(nullptr, "test", __LINE__);
}

}  // namespace
