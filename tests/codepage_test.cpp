// Code-page conversion through libkorcpx and the internal-products record:
// real text both ways, refusals instead of overflow, the -1 handle, and
// start-up from the registry.
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

// The converted text, or "<refused>" (the length then untouched).
std::string convert(int32_t handle, const std::string &in, intptr_t capacity = 16,
                    intptr_t flags = CPX_TERMINATE) {
  char out[24];
  std::memset(out, 'x', sizeof out);
  int32_t written = -7;
  const int32_t ok = KORVOCpxConversion(
      &handle, reinterpret_cast<intptr_t>(in.data()), static_cast<intptr_t>(in.size()),
      reinterpret_cast<intptr_t>(out), capacity, reinterpret_cast<intptr_t>(&written), flags);
  EXPECT_EQ(out[capacity], 'x') << "wrote past the capacity";
  if (ok == 0) return written == -7 ? "<refused>" : "<refused, length changed>";
  EXPECT_TRUE(flags != CPX_TERMINATE || out[written] == '\0');
  return std::string(out, static_cast<size_t>(written));
}

int32_t open(int32_t from, int32_t to) {
  int32_t h = -1;
  EXPECT_EQ(cpx_open_conversion(from, to, &h), CPX_OK);
  return h;
}

TEST(CodePage, ConvertsBothWaysAndRefusesInsteadOfOverflowing) {
  ASSERT_EQ(cpx_init(), CPX_OK);
  const std::string cp1252 = "Gr\374\337e \200", utf8 = "Gr\303\274\303\237e \342\202\254";
  EXPECT_EQ(convert(open(1252, 65456), cp1252), utf8);
  const int32_t from_utf8 = open(65456, 1252);
  EXPECT_EQ(convert(from_utf8, utf8), cp1252);
  EXPECT_EQ(convert(from_utf8, "\xC3"), "<refused>") << "cut sequence";
  EXPECT_EQ(convert(from_utf8, "\xFF\xFE"), "<refused>") << "no UTF-8";
  const int32_t to_utf8 = open(1252, 65001);
  EXPECT_EQ(convert(to_utf8, "\xFC\xFC\xFC", 6), "<refused>") << "no room for the terminator";
  EXPECT_EQ(convert(to_utf8, "\xFC\xFC\xFC", 6, 0), "\xC3\xBC\xC3\xBC\xC3\xBC");
  int32_t never = 5;
  EXPECT_EQ(cpx_open_conversion(1252, 4242, &never), CPX_E_UNKNOWN_CODESET);
  int32_t dead = -1;
  EXPECT_EQ(KORVOCpxConversion(&dead, 1, 1, 1, 1, 0, 0), 0) << "-1 converts nothing";
  EXPECT_EQ(KORVOCpxConversion(nullptr, 1, 1, 1, 1, 0, 0), 0);
  cpx_term();
}

// The record converts between UTF-8 and the local code set: on Windows
// the ANSI code page, whatever the C locale (1252 under an English
// system); on Linux that of the locale, US-ASCII (20127) for "C".
TEST(CodePage, RecordConvertsWithTheLocalCodeSetUnknownSettingsAndCleanup) {
#if defined(_WIN32)
  if (GetACP() != 1252) GTEST_SKIP() << "expectations are for code page 1252, this is " << GetACP();
  const char *local = "\xFC";
#else
  setenv("LC_ALL", "C", 1);
  std::setlocale(LC_ALL, "");
  const char *local = "<refused>";  // u-umlaut has no ASCII form
#endif
  ASSERT_EQ(cpx_init(), CPX_OK);
  KORVOIntProdData *record = KORVOCreateIntProdData();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->readyFlag1, 0);
  EXPECT_EQ(convert(*record->cpxToLocal, "\xC3\xBC"), local);
  EXPECT_EQ(convert(*record->cpxToLocal, "\xE4\xB8\xAD"), "<refused>")
      << "no form, and no best-fit stand-in either";
  EXPECT_EQ(convert(*record->cpxFromLocal, "plain"), "plain");
  KORVODestroyIntProdData(record);
  KORVODestroyIntProdData(nullptr);
  cpx_term();
  std::setlocale(LC_ALL, "C");
  unsetenv("LC_ALL");
  // Unknown settings start nothing; cleanup ends the library. Good and bad
  // object folders: the registry start below.
  const char *const unknown[] = {"COLOUR=blue", nullptr};
  int32_t h = 0;
  EXPECT_EQ(cpx_init_ex(unknown), CPX_E_SETTING);
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED);
  ASSERT_EQ(cpx_init(), CPX_OK);
  KORVOCleanupInternalProducts(nullptr);  // still ends the library
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED);
}

// Start-up through the registry: the conversion objects' folder comes from
// the "Cpx_Objects_Path" setting, and trace lines then reach stderr.
using RegistryStart = korutl_test::TempStore;

TEST_F(RegistryStart, ObjectsPathDecidesTheStart) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Cpx_Objects_Path",
                             (folder + "/no-such-folder").c_str()),
            1);
  KORVOIntProdData *record = reinterpret_cast<KORVOIntProdData *>(&record);  // stale value
  EXPECT_EQ(KORVOInitInternalProducts(&record), 0);
  EXPECT_EQ(record, nullptr) << "a failed start leaves null";
  int32_t h = 0;
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED) << "ended again";
  // An existing folder starts it (so does an empty setting: the allocation
  // sweep's case).
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Cpx_Objects_Path", folder.c_str()), 1);
  ASSERT_EQ(KORVOInitInternalProducts(&record), 1);
  EXPECT_EQ(record->readyFlag1, 1);
  EXPECT_EQ(record->readyFlag2, 1);
  ::testing::internal::CaptureStderr();
  intptr_t handle = 0;
  oss_load_library("no-such-language.dll", &handle, "I18N/korstrng", 12);
  const std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(err.rfind("I18N/korstrng:12: oss_load_library: ", 0), 0u) << err;
  KORVOCleanupInternalProducts(record);
  EXPECT_EQ(KORVOInitInternalProducts(nullptr), 0);
  oss_set_trace_func(nullptr, "test", __LINE__);
  rsv_set_trace_func(nullptr, "test", __LINE__);
}

}  // namespace
