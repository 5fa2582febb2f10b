// The OS-services library: name resolution through KORVO_LANGUAGE_PATH (the
// ".dll" -> ".so" retry on Linux, none on Windows), entry points, locale,
// and the trace of failures. One source for both platforms: only the names
// that resolve and the locale the runtime reports differ.
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <unistd.h>
#endif

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "siblings/oss/oss.h"

namespace {

std::vector<std::string> traced;
void collect(const char *line) { traced.emplace_back(line); }

class Oss : public ::testing::Test {
 protected:
  void SetUp() override {
    traced.clear();
    oss_set_trace_func(collect, "test", __LINE__);
  }
  void TearDown() override {
    oss_set_trace_func(nullptr, "test", __LINE__);
    unsetenv("KORVO_LANGUAGE_PATH");
  }
};

// KORVO_LANGUAGE_PATH ("" unset), the name asked for, and whether it loads.
struct NameCase {
  std::string path, file;
  bool loads;
};

TEST_F(Oss, ResolvesNames) {
  const std::string dir = KORUTL_PROBE_DIR;
#ifdef _WIN32
  std::string backslashed = dir;
  for (char &c : backslashed) c = c == '/' ? '\\' : c;
  const NameCase cases[] = {
      {"", dir + "/oss_probe.dll", true}, {"", backslashed + "\\oss_probe.dll", true},
      {"", dir + "/oss_probe.so", false}, {"C:\\nonexistent;;" + dir, "oss_probe.dll", true},
      {dir, "OSS_PROBE.DLL", true},       {dir, "oss_probe.so", false},
      {dir, "missing.dll", false}};
#else
  const NameCase cases[] = {
      {"", dir + "/oss_probe.so", true}, {"", dir + "/oss_probe.dll", true},
      {"", "oss_probe.so", false},       {":/nonexistent:" + dir, "oss_probe.so", true},
      {dir, "oss_probe.DLL", true},      {dir, "missing.dll", false}};
#endif
  for (const NameCase &c : cases) {
    if (c.path.empty()) {
      unsetenv("KORVO_LANGUAGE_PATH");
    } else {
      setenv("KORVO_LANGUAGE_PATH", c.path.c_str(), 1);
    }
    intptr_t handle = 0;
    const uint16_t st = oss_load_library(c.file.c_str(), &handle, "test", 7);
    EXPECT_EQ(st == OSS_OK, c.loads) << c.path << " | " << c.file;
    if (st != OSS_OK) {
      EXPECT_EQ(handle, 0);
      continue;
    }
    void *entry = nullptr;
    ASSERT_EQ(oss_get_function_address(handle, "get_resource", &entry, "test", 8), OSS_OK);
    EXPECT_STREQ(reinterpret_cast<const char *(*)()>(entry)(), "probe");
    void *none = &entry;
    EXPECT_EQ(oss_get_function_address(handle, "GetStringResource", &none, "test", 9),
              OSS_E_NO_SYMBOL);
    EXPECT_EQ(none, &entry) << "address untouched on failure";
    EXPECT_EQ(oss_unload_library(handle, "test", 10), OSS_OK);
  }
}

TEST_F(Oss, FailuresAreTracedWithPositionAndReason) {
  intptr_t handle = 0;
  EXPECT_EQ(oss_load_library("no-such-library.dll", &handle, "I18N/korstrng", 42), OSS_E_NOT_FOUND);
  ASSERT_EQ(traced.size(), 1u);
  EXPECT_EQ(traced[0].rfind("I18N/korstrng:42: oss_load_library: ", 0), 0u) << traced[0];
  EXPECT_NE(traced[0].find("no-such-library"), std::string::npos) << "the loader's own reason";
  EXPECT_EQ(traced[0].back(), '\n');
  EXPECT_EQ(traced[0].find('\r'), std::string::npos) << "a system message's line end is cut";
  EXPECT_EQ(oss_load_library(nullptr, &handle, "m", 1), OSS_E_ARGUMENT);
  EXPECT_EQ(oss_load_library("x", nullptr, "m", 1), OSS_E_ARGUMENT);
#ifndef _WIN32
  // A registration names "x.dll"; only the retry finds x.so, and it is
  // damaged. The trace tells the damage, not the missing x.dll.
  const std::string dir = testing::TempDir() + "korutl-oss-" + std::to_string(getpid());
  std::filesystem::create_directories(dir);
  std::ofstream(dir + "/damaged.so") << "not a library";
  setenv("KORVO_LANGUAGE_PATH", dir.c_str(), 1);
  traced.clear();
  EXPECT_EQ(oss_load_library("damaged.dll", &handle, "test", 1), OSS_E_NOT_FOUND);
  ASSERT_EQ(traced.size(), 1u);
  EXPECT_NE(traced[0].find("damaged.so"), std::string::npos) << traced[0];
  EXPECT_EQ(traced[0].find("No such file"), std::string::npos) << traced[0];
  std::filesystem::remove_all(dir);
#endif
}

// The locale's name is read by the current-locale step of the localised
// texts' chain (i18n_test.cpp); a name that does not fit leaves the area empty.
TEST_F(Oss, LocaleNameThatDoesNotFit) {
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(oss_setlocale(0, 0, "test", 1), OSS_OK);
  char tiny[2] = "x";
  EXPECT_NE(oss_getlocale(1, tiny, sizeof tiny, "test", 3), OSS_OK);
  EXPECT_STREQ(tiny, "");
  unsetenv("LC_ALL");
  std::setlocale(LC_ALL, "C");
}

}  // namespace
