// The registry service on its store file: a damaged file and a change of
// KORVO_REGISTRY between calls. Linux only: on Windows the tree is the
// system registry, which has no file of ours.
#include "siblings/rsv/rsv.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/temp_store.h"

namespace {

constexpr const char *M = "tests/rsv";
const std::string root = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra";

std::vector<std::string> traced;
void collect(const char *line) { traced.emplace_back(line); }

class RsvStoreFile : public korutl_test::TempStore {};

TEST_F(RsvStoreFile, DamagedStoreFailsWithATraceAndIsLeftAlone) {
  std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
  const std::string garbage(8192, 'G');
  std::ofstream(file(), std::ios::binary) << garbage;
  traced.clear();
  rsv_set_trace_func(collect, "readconfig/settings", __LINE__);
  EXPECT_EQ(rsv_create_key(root.c_str(), "readconfig/prodcfg", 42), RSV_E_STORE);
  EXPECT_EQ(rsv_query_key(root.c_str(), nullptr, nullptr, "I18N/korstrng", 7), RSV_E_STORE);
  rsv_set_trace_func(nullptr, M, __LINE__);
  ASSERT_EQ(traced.size(), 2u);
  EXPECT_EQ(traced[0].rfind("readconfig/prodcfg:42: create_key: ", 0), 0u) << traced[0];
  EXPECT_EQ(traced[1].rfind("I18N/korstrng:7: query_key: ", 0), 0u) << traced[1];
  std::ifstream in(file(), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), garbage);
}

TEST_F(RsvStoreFile, ChangingTheStoreFileBetweenCallsIsHonoured) {
  ASSERT_EQ(rsv_create_key(root.c_str(), M, __LINE__), RSV_OK);
  const std::string other = file() + ".other";
  setenv("KORVO_REGISTRY", other.c_str(), 1);
  EXPECT_EQ(rsv_query_key(root.c_str(), nullptr, nullptr, M, __LINE__), RSV_E_NO_KEY);
  setenv("KORVO_REGISTRY", file().c_str(), 1);
  EXPECT_EQ(rsv_query_key(root.c_str(), nullptr, nullptr, M, __LINE__), RSV_OK);
}

}  // namespace
