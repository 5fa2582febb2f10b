// Gives each test its own configuration store, so no test ever reads or
// writes the user's real one. On Linux that is a store file named through
// KORVO_REGISTRY. On Windows the store is the system registry: the test
// process sees a scratch key under HKEY_CURRENT_USER in place of
// HKEY_LOCAL_MACHINE (RegOverridePredefKey), and the korutl command under
// test does the same from KORUTL_TEST_HKLM (tests/support/win32_hooks.cpp).
// Either way file() is a path in a scratch folder of the test's own, and
// scratch(name) another file there. cfg_key and cfg_set build keys and
// values of the configuration tree in the store, with paths relative to
// HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra.
//
// When the suite runs with KORVO_REGISTRY naming a PostgreSQL server
// (scripts/pg-suite.sh, the "pg." tests), each test works on a host of its
// own there (KORVO_HOST), which is as empty as a new file, and tests of a
// store file's own behaviour skip (KORUTL_FILE_STORE_ONLY).
// KORUTL_TEST_PG_DIR names a cluster of scripts/pg-cluster.sh to use (its
// "uri" file); where it could not start (its "unavailable" file) the
// test skips saying what to install.
#ifndef KORUTL_TESTS_SUPPORT_TEMP_STORE_H
#define KORUTL_TESTS_SUPPORT_TEMP_STORE_H

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "siblings/rsv/rsv.h"

namespace korutl_test {

inline std::string cfg_path(const std::string &relative) {
  return "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\" + relative;
}

inline void cfg_key(const std::string &relative) {
  ASSERT_EQ(rsv_create_key(cfg_path(relative).c_str(), "test", __LINE__), RSV_OK) << relative;
}

inline void cfg_set(const std::string &relative, const std::string &name, const std::string &text) {
  cfg_key(relative);
  ASSERT_EQ(rsv_set_value(cfg_path(relative).c_str(), name.c_str(), text.c_str(), "test", __LINE__),
            RSV_OK);
}

// Whether `registry` (a KORVO_REGISTRY text) names a PostgreSQL server.
inline bool names_server(const char *registry) {
  const std::string r = registry != nullptr ? registry : "";
  return r.rfind("postgresql://", 0) == 0 || r.rfind("postgres://", 0) == 0;
}

// Skips a test of what only a store file does (its file, folder, locks).
#define KORUTL_FILE_STORE_ONLY() \
  if (on_server()) GTEST_SKIP() << "a store file's own behaviour"

class TempStore : public ::testing::Test {
 protected:
  void SetUp() override {
#if !defined(_WIN32)
    if (const char *pg_dir = std::getenv("KORUTL_TEST_PG_DIR"); pg_dir != nullptr) {
      std::ifstream unavailable(std::string(pg_dir) + "/unavailable");
      if (unavailable) GTEST_SKIP() << std::string(std::istreambuf_iterator<char>(unavailable), {});
      std::ifstream uri(std::string(pg_dir) + "/uri");
      std::string line;
      if (std::getline(uri, line)) setenv("KORVO_REGISTRY", line.c_str(), 1);
    }
    if (names_server(std::getenv("KORVO_REGISTRY"))) {
      server_ = std::getenv("KORVO_REGISTRY");
      static int tests = 0;
      host_ = "test-" + std::to_string(getpid()) + "-" + std::to_string(++tests);
      setenv("KORVO_HOST", host_.c_str(), 1);
    }
#endif
    std::string pattern = (std::filesystem::temp_directory_path() / "korutl-store-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
    file_ = dir_ + "/sub/registry.db";
#if defined(_WIN32)
    scratch_ = "Software\\korutl-tests\\" + std::filesystem::path(dir_).filename().string();
    RegDeleteTreeA(HKEY_CURRENT_USER, scratch_.c_str());  // a stale one of a dead process
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, scratch_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    ASSERT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, key), ERROR_SUCCESS);
    RegCloseKey(key);
    setenv("KORUTL_TEST_HKLM", scratch_.c_str(), 1);
#else
    if (on_server())
      std::filesystem::create_directories(dir_ + "/sub");
    else
      setenv("KORVO_REGISTRY", file_.c_str(), 1);
#endif
  }
  void TearDown() override {
    if (dir_.empty()) return;  // SetUp skipped
#if defined(_WIN32)
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeA(HKEY_CURRENT_USER, scratch_.c_str());
    unsetenv("KORUTL_TEST_HKLM");
#else
    if (on_server()) {
      // The host's tree goes with the test; the server stays as it was named.
      rsv_set_host(nullptr, nullptr, 0);
      setenv("KORVO_REGISTRY", server_.c_str(), 1);
      rsv_delete_key("HKEY_LOCAL_MACHINE", nullptr, 0);
      rsv_delete_key("HKEY_CURRENT_USER", nullptr, 0);
      unsetenv("KORVO_HOST");
    } else {
      unsetenv("KORVO_REGISTRY");
    }
#endif
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }
  const std::string &file() const { return file_; }
  std::string scratch(const std::string &name) const { return dir_ + "/" + name; }
  // Whether anything has been written to the store.
  bool store_exists() const {
#if defined(_WIN32)
    HKEY key = nullptr;
    char name[256];
    const bool any =
        RegOpenKeyExA(HKEY_CURRENT_USER, scratch_.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS &&
        RegEnumKeyA(key, 0, name, sizeof name) == ERROR_SUCCESS;
    RegCloseKey(key);  // a key that never opened is refused, nothing more
    return any;
#else
    if (!on_server()) return std::filesystem::exists(file_);
    struct Seek {
      const std::string &host;
      bool found;
    } seek{host_, false};
    rsv_list_hosts(
        [](const char *listed, void *context) -> int32_t {
          auto *s = static_cast<Seek *>(context);
          s->found |= s->host == listed;
          return 0;
        },
        &seek, nullptr, 0);
    return seek.found;
#endif
  }
  bool on_server() const { return !server_.empty(); }
  const std::string &host() const { return host_; }

 private:
  std::string dir_, file_;
  std::string server_, host_;  // on a server: its URI and the test's host
#if defined(_WIN32)
  std::string scratch_;
#endif
};

}  // namespace korutl_test

#endif
