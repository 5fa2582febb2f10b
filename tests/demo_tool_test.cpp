#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/tool_store.h"

namespace {

using korutl_test::run_tool;

using DemoTool = korutl_test::ToolStore;

size_t lines(const std::string &text) {
  size_t n = 0;
  for (char c : text) n += c == '\n';
  return n;
}

const std::string sample = "'" KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg'";

// With nothing configured the demo must not create the user's store: HOME
// and XDG_STATE_HOME point into the test's folder, which stays empty.
TEST_F(DemoTool, RunsOnATemporaryStoreAndTouchesNoUserStore) {
  const std::string home = std::filesystem::path(file()).parent_path().parent_path() / "home";
  std::filesystem::create_directories(home);
  const std::string env = "env -u KORVO_REGISTRY -u XDG_STATE_HOME HOME='" + home + "'";
  const auto full = run_tool("demo --sample " + sample, env);
  EXPECT_EQ(full.status, 0) << full.out;
  EXPECT_NE(full.out.find("(temporary, removed afterwards)"), std::string::npos);
  EXPECT_NE(full.out.find("0 failed"), std::string::npos) << full.out;
  const auto quiet = run_tool("demo --quiet --sample " + sample, env);
  EXPECT_EQ(quiet.status, 0) << quiet.out;
  EXPECT_EQ(lines(quiet.out), 1u) << quiet.out;
  EXPECT_TRUE(std::filesystem::is_empty(home));
  EXPECT_FALSE(store_exists());
}

TEST_F(DemoTool, ImportsIntoTheStoreThatIsNamed) {
  const auto by_env = run_tool("demo -q --sample " + sample);
  EXPECT_EQ(by_env.status, 0) << by_env.out;
  EXPECT_TRUE(store_exists());
  const std::string other = std::filesystem::path(file()).parent_path() / "other.db";
  EXPECT_EQ(run_tool("demo -q --store '" + other + "' --sample " + sample).status, 0);
  EXPECT_EQ(run_tool("reg query 'HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery'",
                     "KORVO_REGISTRY='" + other + "'")
                .status,
            0);
}

// A sample that does not import fails its step, and the demo exits 1.
TEST_F(DemoTool, FailsWhenTheSampleDoesNotImport) {
  const std::string bad = std::filesystem::path(file()).parent_path().parent_path() / "bad.reg";
  std::ofstream(bad) << "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\n";
  const auto r = run_tool("demo --sample '" + bad + "'");
  EXPECT_EQ(r.status, 1) << r.out;
  EXPECT_NE(r.out.find("FAILED: the sample tree did not import"), std::string::npos) << r.out;
  EXPECT_EQ(run_tool("demo --sample /nonexistent.reg").status, 2);
}

TEST_F(DemoTool, TreesShowTypesValuesAndDepth) {
  ASSERT_EQ(run_tool("reg import " + sample).status, 0);
  const auto all = run_tool("reg tree 'HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra'");
  EXPECT_EQ(all.status, 0);
  for (const char *want : {"HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra\n",
                           "\n  Use_Strict_Version (REG_SZ) = 0\n", "\n  Versions\\\n",
                           "\n    2.2.1\\\n", "\n      Build (REG_DWORD) = 0x322\n",
                           "\n              Hosts (REG_MULTI_SZ) = alpha\\0beta\n"})
    EXPECT_NE(all.out.find(want), std::string::npos) << want << "\n" << all.out;
  const auto shallow =
      run_tool("reg tree 'HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra' --depth 1");
  EXPECT_EQ(shallow.out,
            "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra\n"
            "  Use_Strict_Version (REG_SZ) = 0\n  Versions\\\n");
  EXPECT_EQ(run_tool("reg tree 'HKLM\\Nothing'").status, 1);
  // cfg tree: versions in version order, instances, agents with values.
  const auto orrery = run_tool("cfg tree orrery");
  EXPECT_EQ(orrery.status, 0);
  EXPECT_NE(orrery.out.find("Orrery\n  version 3\n    instance lab\n      agent Probe\n"
                            "        Interval (REG_DWORD) = 0xa\n  version 2.10\n"),
            std::string::npos)
      << orrery.out;
  EXPECT_EQ(orrery.out.find("Halcyra"), std::string::npos);
  EXPECT_EQ(run_tool("cfg tree Nothing").status, 1);
  for (const char *args : {"reg tree HKLM --depth", "reg tree HKLM --depth -1",
                           "reg tree HKLM --depth x", "reg tree HKLM HKLM"})
    EXPECT_EQ(run_tool(args).status, 2) << args;
}

}  // namespace
