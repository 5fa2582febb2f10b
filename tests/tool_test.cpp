// The korutl command's own wiring: exit statuses, its parsing and display
// of registry types, the armor and streaming of the filters, and one round
// trip through each group of subcommands. The rules behind the answers are
// the library's, tested against the library itself.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>

#include "tests/support/run_tool.h"

namespace {

using korutl_test::run_tool;

using Tool = korutl_test::SampleTool;

TEST_F(Tool, SubcommandsRegistryTypesAndFilters) {
  for (const char *usage : {"", "digits", "cfg get a b c d", "escape json x", "crypt protect",
                            "reg add HKLM\\X /v N /t REG_BOGUS /d 1", "reg tree HKLM --depth x"})
    expect(usage, 2);
  expect("oid parent \\localhost\\Halcyra", 0, "text=\\localhost\nparts=1\npart0=localhost\n");
  expect("match -i *.LOG app.log b.Log", 0);
  expect("match *.log app.log app.txt", 1);
  expect("unescape a%20b%5Cc%u0041", 0, "a b\\cA\n");
  expect("lang register Orrery 3 German orr_de.dll", 0);
  expect("lang list Orrery 3", 0, "German=orr_de.dll\n");
  expect("msg --oid \\h\\Orrery\\3 --lang German ORR_LANGUAGE", 0, "Deutsch\n");
  expect("lang unregister Orrery 3", 0);
  expect("lang list Orrery 3", 1);
  expect("msg NO_SUCH_KEY", 1, "korutl: no text for NO_SUCH_KEY\n");
  expect("msgfile register Orrery 3 Core core.msg", 0);
  expect("msgfile unregister Orrery 3", 0);
  expect("user check \\localhost\\Orrery\\2.10 operator", 0, "authorised\n");
  expect("user check \\localhost\\Orrery\\2.10 guest", 1);
  const std::string key = "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Global";
  const char *cases[][2] = {{"/v N /t REG_DWORD /d 17", "N    REG_DWORD    0x11"},
                            {"--value Q --type REG_QWORD --data 0x100000000", "0x100000000"},
                            {"/v B /t REG_BINARY /d 00ff10", "B    REG_BINARY    00FF10"},
                            {"/v M /t REG_MULTI_SZ /d a\\0b", "M    REG_MULTI_SZ    a\\0b"},
                            {"/ve /d top", "(Default)    REG_SZ    top"}};
  for (const auto &[add, shown] : cases) {
    expect("reg add " + key + " " + add, 0);
    EXPECT_NE(expect("reg query " + key, 0).find(shown), std::string::npos) << shown;
  }
  expect("reg delete " + key + " /v N", 0);
  expect("reg query " + key + " /v N", 1);
  expect("reg tree HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra --depth 1", 0,
         "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra\n"
         "  Use_Strict_Version (REG_SZ) = 0\n  Versions\\\n");
  expect("reg delete HKLM\\SOFTWARE /f", 0);
  expect("reg query " + key, 1);
  setenv("K8", "right", 1);
  const std::string key_file = "--key-file " + input("key", "right\n");
  // Each key source, method and armor once.
  for (const std::string &opts :
       {key_file + " --method safer", std::string("--key-env K8 --method xor --armor base64"),
        std::string("--key-env K8 --method none --armor hex")}) {
    const std::string sealed = expect("crypt protect " + opts, 0, nullptr, "agent password");
    expect("crypt restore " + opts, 0, "agent password", sealed);
  }
  // A failed restore writes the message and nothing of the damaged input.
  // The wrong key is noticed by the length checks for this text and key.
  const std::string sealed =
      expect("crypt protect --key-env K8 --armor hex", 0, nullptr, "0123456789");
  setenv("K8", "wrong", 1);
  expect("crypt restore --key-env K8 --armor hex", 1,
         "korutl: crypt: restore failed: wrong key, wrong method or damaged input\n", sealed);
  unsetenv("K8");
  // Input far larger than one chunk, with multi-byte characters and
  // surrogate pairs falling on every chunk boundary, comes back intact.
  std::string text;
  while (text.size() < 300000) text += "ab\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80x";
  std::string through = text;
  for (const char *step : {"utf8 --to utf16le", "utf16le --to ucs4", "ucs4 --to utf8"})
    through = expect(std::string("convert --from ") + step, 0, nullptr, through);
  EXPECT_TRUE(through == text) << "round trip differs, sizes " << through.size() << " "
                               << text.size();
}

#if !defined(_WIN32)
// `korutl demo` (Linux only: on Windows the tree is the system registry,
// which has no temporary stand-in): a store of its own unless one is named,
// and a failure when its sample does not import.
using DemoTool = korutl_test::ToolStore;

const std::string sample = KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg";

TEST_F(DemoTool, ImportsIntoTheNamedStoreOrATemporaryOneAndFailsOnABadSample) {
  EXPECT_EQ(run_tool({"demo", "-q", "--sample", sample}).status, 0);
  EXPECT_TRUE(store_exists());
  const auto bad = run_tool({"demo", "--sample", input("bad.reg", "[HKEY_LOCAL_MACHINE\n")});
  EXPECT_EQ(bad.status, 1) << bad.out;
  EXPECT_NE(bad.out.find("FAILED: the sample tree did not import"), std::string::npos) << bad.out;
  EXPECT_EQ(run_tool({"demo", "--sample", "/nonexistent.reg"}).status, 2);
  // With nothing configured the demo must not create the user's store:
  // HOME points into the test's folder, which stays empty.
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

#endif

}  // namespace
