// `korutl demo`: it runs on a store of its own unless one is named, and
// fails when its sample does not import.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/run_tool.h"

namespace {

using korutl_test::run_tool;

class DemoTool : public korutl_test::ToolStore {};

const std::string sample = KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg";

// With nothing configured the demo must not create the user's store: HOME
// points into the test's folder, which stays empty.
TEST_F(DemoTool, RunsOnATemporaryStoreAndTouchesNoUserStore) {
  const std::string home = scratch("home"), old_home = std::getenv("HOME");
  std::filesystem::create_directories(home);
  unsetenv("KORVO_REGISTRY");
  unsetenv("XDG_STATE_HOME");
  setenv("HOME", home.c_str(), 1);
  const auto full = run_tool({"demo", "--sample", sample});
  const auto quiet = run_tool({"demo", "--quiet", "--sample", sample});
  setenv("HOME", old_home.c_str(), 1);
  EXPECT_EQ(full.status, 0) << full.out;
  EXPECT_NE(full.out.find("(temporary, removed afterwards)"), std::string::npos);
  EXPECT_NE(full.out.find("0 failed"), std::string::npos) << full.out;
  EXPECT_EQ(quiet.status, 0) << quiet.out;
  EXPECT_EQ(quiet.out.find('\n'), quiet.out.size() - 1) << "one line: " << quiet.out;
  EXPECT_TRUE(std::filesystem::is_empty(home));
}

TEST_F(DemoTool, ImportsIntoTheStoreThatIsNamedAndFailsOnABadSample) {
  EXPECT_EQ(run_tool({"demo", "-q", "--sample", sample}).status, 0);
  EXPECT_TRUE(store_exists());
  const std::string other = scratch("other.db");
  EXPECT_EQ(run_tool({"demo", "-q", "--store", other, "--sample", sample}).status, 0);
  setenv("KORVO_REGISTRY", other.c_str(), 1);
  EXPECT_EQ(run_tool({"reg", "query", "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery"}).status,
            0);
  setenv("KORVO_REGISTRY", file().c_str(), 1);
  const auto bad = run_tool({"demo", "--sample", input("bad.reg", "[HKEY_LOCAL_MACHINE\n")});
  EXPECT_EQ(bad.status, 1) << bad.out;
  EXPECT_NE(bad.out.find("FAILED: the sample tree did not import"), std::string::npos) << bad.out;
  EXPECT_EQ(run_tool({"demo", "--sample", "/nonexistent.reg"}).status, 2);
}

}  // namespace
