// korutl cfg against the sample configuration tree in examples/.
#include <gtest/gtest.h>

#include <vector>

#include <algorithm>

#include <string>

#include "tests/support/tool_store.h"

namespace {

using korutl_test::run_tool;

class CfgTool : public korutl_test::ToolStore {
 protected:
  void SetUp() override {
    ToolStore::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(run_tool("reg import '" KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg'").status, 0);
  }
};

const std::string root = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra";

TEST_F(CfgTool, SubcommandsPrintWhatTheLibraryFinds) {
  const std::string collector =
      root + "\\Products\\Halcyra\\Versions\\2.2.1\\Instances\\3\\Agents\\Collector";
  struct Case {
    std::string args;
    std::string out;
  };
  for (const Case &c :
       {Case{"versions Orrery", "3\n2.10\n2.2.1\n"}, Case{"instances Orrery 3", "lab\n"},
        Case{"get Halcyra Use_Strict_Version", "Use_Strict_Version=0\n"},
        Case{"get Orrery 3 Beta", "Beta=yes\n"},
        Case{"latest Halcyra Languages German",
             root + "\\Products\\Halcyra\\Versions\\2.2.1\\Languages\n"},
        Case{"agent-key Orrery Probe",
             root + "\\Products\\Orrery\\Versions\\3\\Instances\\lab\\Agents\\Probe\n"},
        Case{"agent-key Orrery Probe 2.10 main",
             root + "\\Products\\Orrery\\Versions\\2.10\\Instances\\main\\Agents\\Probe\n"},
        Case{"agent-key Halcyra Collector 2.2.1", collector + "\n"},
        // The agent has no "Beta": its version's value stands in.
        Case{"agent-get '" + root +
                 "\\Products\\Orrery\\Versions\\3\\Instances\\lab\\Agents\\Probe' Beta",
             "Beta=yes\n"},
        Case{"agent-get '" + collector + "' Use_Strict_Version", ""},
        Case{"enum '" + root + "\\Global'",
             "Install_Path=/opt/vantrel/halcyra\nCpx_Objects_Path=\nLanguage=English\n"},
        Case{"plugins", "Inventory=libhalinv.so\nScheduler=libhalsched.so\n"},
        Case{"traps", "nms-primary=10.0.0.5:162\nnms-backup=10.0.1.5:162\n"},
        Case{"env MILayer", "HAL_LOG_LEVEL\nHAL_TMP\n"}}) {
    const auto r = run_tool("cfg " + c.args);
#if defined(_WIN32)
    // The system registry lists values in an order of its own.
    const auto lines = [](const std::string &text) {
      std::vector<std::string> v;
      for (size_t at = 0, end; at < text.size(); at = end + 1) {
        end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        v.push_back(text.substr(at, end - at));
      }
      std::sort(v.begin(), v.end());
      return v;
    };
    EXPECT_EQ(lines(r.out), lines(c.out)) << c.args;
#else
    EXPECT_EQ(r.out, c.out) << c.args;
#endif
    EXPECT_EQ(r.status, c.out.empty() ? 1 : 0) << c.args;
  }
}

TEST_F(CfgTool, NotFoundExitsOneAndUsageErrorsTwo) {
  // Orrery is set to strict versions: its latest-value search finds nothing.
  for (const char *args : {"versions Nope", "instances Orrery 9", "get Orrery 2.10 Beta",
                           "latest Orrery Languages English", "agent-key Orrery Nobody",
                           "enum 'HKLM\\\\Nowhere'", "env Nowhere"})
    EXPECT_EQ(run_tool(std::string("cfg ") + args).status, 1) << args;
  for (const char *args : {"", "frob", "versions", "get Orrery", "get a b c d", "traps extra",
                           "agent-key a b c d e", "agent-get onlyone"})
    EXPECT_EQ(run_tool(std::string("cfg ") + args).status, 2) << args;
  for (const char *sub : {"versions", "instances", "get", "latest", "agent-key", "agent-get",
                          "enum", "plugins", "traps", "env"}) {
    const auto r = run_tool(std::string("cfg ") + sub + " --help");
    EXPECT_EQ(r.status, 0) << sub;
    EXPECT_NE(r.out.find("Usage:"), std::string::npos) << sub;
  }
}

}  // namespace
