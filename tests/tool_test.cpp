// The korutl command: runs the built binary and reads what it prints.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/run_tool.h"

#ifdef KORUTL_TOOL_FILE

namespace {

using korutl_test::run_tool;
using korutl_test::ToolRun;

TEST(Tool, Version) {
  const ToolRun r = run_tool("version");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "name=Halcyra Utility Library\nversion=2.2.1.3\nrelease=8\nfile=korutl.dll\n");
}

TEST(Tool, Digits) {
  const ToolRun r = run_tool("digits 'f:'");
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("f      15       15      70"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find(":       0       96      26"), std::string::npos) << r.out;
}

TEST(Tool, UsageErrorsExitTwo) {
  EXPECT_EQ(run_tool("").status, 2);
  EXPECT_EQ(run_tool("no-such-command").status, 2);
  EXPECT_EQ(run_tool("digits").status, 2);
  EXPECT_EQ(run_tool("--help").status, 0);
}

}  // namespace

#endif
