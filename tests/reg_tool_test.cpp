#include <gtest/gtest.h>

#include <string>

#include "tests/support/tool_store.h"

namespace {

using korutl_test::run_tool;

class RegTool : public korutl_test::ToolStore {};

const std::string key = "'HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Global'";

TEST_F(RegTool, AddQueryDeleteRoundTripWithEveryType) {
  struct Case {
    const char *args;
    const char *shown;
  };
  for (const Case &c : {Case{"/v Path /d /opt/hal", "Path    REG_SZ    /opt/hal"},
                        Case{"--value N --type REG_DWORD --data 17", "N    REG_DWORD    0x11"},
                        Case{"/v Q /t REG_QWORD /d 0x100000000", "Q    REG_QWORD    0x100000000"},
                        Case{"/v B /t REG_BINARY /d 00ff10", "B    REG_BINARY    00FF10"},
                        Case{"/v M /t REG_MULTI_SZ /d 'a\\0b'", "M    REG_MULTI_SZ    a\\0b"},
                        Case{"/ve /d top", "(Default)    REG_SZ    top"}}) {
    ASSERT_EQ(run_tool("reg add " + key + " " + c.args).status, 0) << c.args;
    const auto q = run_tool("reg query " + key);
    EXPECT_EQ(q.status, 0);
    EXPECT_NE(q.out.find(c.shown), std::string::npos) << q.out;
  }
  EXPECT_EQ(run_tool("reg delete " + key + " /v N").status, 0);
  EXPECT_EQ(run_tool("reg query " + key + " /v N").status, 1);
  EXPECT_EQ(run_tool("reg delete 'HKLM\\SOFTWARE' /f").status, 0);
  EXPECT_EQ(run_tool("reg query " + key).status, 1);
}

TEST_F(RegTool, UsageErrorsAndMissingKeys) {
  EXPECT_EQ(run_tool("reg query 'HKLM\\Nothing'").status, 1);
  EXPECT_EQ(run_tool("reg delete 'HKLM\\Nothing'").status, 1);
  for (const char *args : {"reg", "reg query",
                           "reg frobnicate "
                           "HKLM",
                           "reg add HKLM\\\\X /v", "reg add HKLM\\\\X /v N /t REG_DWORD /d nope",
                           "reg add HKLM\\\\X /v N /t REG_BOGUS /d 1", "reg query HKLM /z"})
    EXPECT_EQ(run_tool(args).status, 2) << args;
  EXPECT_FALSE(store_exists());
}

}  // namespace
