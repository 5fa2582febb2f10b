// Gives each test its own configuration store file through KORVO_REGISTRY,
// so no test ever reads or writes the user's real store.
#ifndef KORUTL_TESTS_SUPPORT_TEMP_STORE_H
#define KORUTL_TESTS_SUPPORT_TEMP_STORE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace korutl_test {

class TempStore : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/korutl-store-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    file_ = dir_ + "/sub/registry.db";
    setenv("KORVO_REGISTRY", file_.c_str(), 1);
  }
  void TearDown() override {
    if (dir_.empty()) return;  // SetUp skipped
    unsetenv("KORVO_REGISTRY");
    std::filesystem::remove_all(dir_);
  }
  const std::string &file() const { return file_; }
  bool store_exists() const { return std::filesystem::exists(file_); }

 private:
  std::string dir_;
  std::string file_;
};

}  // namespace korutl_test

#endif
