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
                            "reg add HKLM\\X /v N /t REG_BOGUS /d 1"})
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

// korutl reg: help and mistyped switches touch nothing, nothing is deleted
// or overwritten unasked (the tests have no terminal to answer on).
TEST_F(Tool, RegHelpMistakesAndUnaskedChangesLeaveTheStore) {
  const std::string tree = expect("reg tree HKLM", 0);
  for (const char *verb : {"query", "add", "delete", "copy", "compare", "export", "import", "tree"})
    for (const char *help : {" --help", " /?", " -h"}) expect(std::string("reg ") + verb + help, 0);
  const std::string global = "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Global";
  for (const char *usage :
       {"reg add HKLM\\X /bogus", "reg delete -x", "reg add HKLM\\X --value -h",
        "reg delete HKLM\\X /v /f", "reg query NOROOT\\X", "reg delete HKLM\\X /ve /va",
        "reg add HKLM\\X /d 1", "reg add HKLM\\X /v q /t REG_QWORD /d 18446744073709551616",
        "reg add HKLM\\X /v d /t reg_dword /d 4294967296",
        "reg add HKLM\\X /v b /t REG_BINARY /d 0g",
        "reg add HKLM\\X /v m /t REG_MULTI_SZ /d a\\0\\0b", "reg export HKLM\\X out.reg /q",
        "reg tree HKLM --depth x"})
    expect(usage, 2);
  for (const std::string &refused : std::vector<std::string>{
           "reg delete HKLM /f", "reg delete hkey_local_machine", "reg delete " + global,
           "reg delete " + global + " /v Language", "reg delete " + global + " /va",
           "reg add " + global + " /v Language /d x", "reg copy " + global + " " + global + " /s"})
    EXPECT_EQ(expect(refused, 1).rfind("korutl: ", 0), 0u) << refused;
  EXPECT_EQ(expect("reg tree HKLM", 0), tree);
}

// Values as typed and as shown: type names in any case, ranges, reg.exe's
// display, names longer than the service's old 33-byte slots, JSON.
TEST_F(Tool, RegValuesInAndOut) {
  const std::string key = "hklm\\SOFTWARE\\Vantrel\\J";
  const char *cases[][2] = {
      {"/v N /t reg_dword /d 17", "    N    REG_DWORD    0x11\n"},
      {"--value Q --type REG_QWORD --data 18446744073709551615",
       "    Q    REG_QWORD    0xffffffffffffffff\n"},
      {"/v B /t REG_BINARY /d 00ff1a", "    B    REG_BINARY    00FF1A\n"},
      {"/v M /t REG_MULTI_SZ /s , /d a,b", "    M    REG_MULTI_SZ    a\\0b\n"},
      {"/ve /d top", "    (Default)    REG_SZ    top\n"},
      {"/v A_value_name_far_longer_than_thirty_two_characters /d x",
       "    A_value_name_far_longer_than_thirty_two_characters    REG_SZ    x\n"}};
  for (const auto &[add, shown] : cases) {
    expect("reg add " + key + " " + add, 0);
    EXPECT_NE(expect("reg query " + key, 0).find(shown), std::string::npos) << shown;
  }
  expect("reg add " + key + " /v N /t REG_DWORD /d 0x20 /f", 0);
  expect("reg add " + key + "\\Sub", 0);
  // Values in the order they were set; the Windows registry keeps its own.
  const std::string json = expect("reg query " + key + " --json", 0);
#if !defined(_WIN32)
  EXPECT_EQ(json,
            "{\"key\":\"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\\\Vantrel\\\\J\",\"values\":["
            "{\"name\":\"N\",\"type\":\"REG_DWORD\",\"data\":32},"
            "{\"name\":\"Q\",\"type\":\"REG_QWORD\",\"data\":18446744073709551615},"
            "{\"name\":\"B\",\"type\":\"REG_BINARY\",\"data\":\"00FF1A\"},"
            "{\"name\":\"M\",\"type\":\"REG_MULTI_SZ\",\"data\":[\"a\",\"b\"]},"
            "{\"name\":\"\",\"type\":\"REG_SZ\",\"data\":\"top\"},"
            "{\"name\":\"A_value_name_far_longer_than_thirty_two_characters\",\"type\":\"REG_SZ\","
            "\"data\":\"x\"}],\"subkeys\":[{\"key\":\"HKEY_LOCAL_"
            "MACHINE\\\\SOFTWARE\\\\Vantrel\\\\J\\\\Sub\"}]}\n");
#endif
  expect("reg tree " + key + " --depth 0", 0);
  expect("reg delete " + key + " /va /f", 0);
  expect("reg query " + key + " /v N", 1,
         "korutl: no value \"N\" in HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\J\n");
}

// copy, compare (0 identical, 1 different), search, and a backup through
// standard output and input.
TEST_F(Tool, RegCopyCompareSearchAndBackup) {
  const std::string orrery = "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery",
                    copy = "HKLM\\SOFTWARE\\Vantrel\\Copy";
  expect("reg copy " + orrery + " " + copy + " /s", 0);
  expect("reg compare " + orrery + " " + copy + " /s", 0);
  expect("reg add " + copy + "\\Versions\\3 /v Beta /d no /f", 0);
  EXPECT_NE(expect("reg compare " + orrery + " " + copy + " /s", 1)
                .find("> Value: HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Copy\\Versions\\3  Beta  "
                      "REG_SZ  no\n"),
            std::string::npos);
  expect("reg compare " + orrery + " " + copy, 0);  // the top level alone
  EXPECT_NE(expect("reg query " + copy + " /f NO /d /e /s", 0).find("1 match"), std::string::npos);
  expect("reg query " + copy + " /f NO /d /e /c /s", 1);
#if !defined(_WIN32)  // the registry service reads and writes named files only there
  const std::string backup = expect("reg export " + copy + " -", 0);
  expect("reg delete " + copy + " /f", 0);
  expect("reg query " + copy, 1,
         "korutl: the key HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Copy does not exist\n");
  expect("reg import -", 0, nullptr, backup);
  EXPECT_EQ(expect("reg export " + copy + " -", 0), backup);
#endif
}

#if !defined(_WIN32)
// A store that fails says why and which file, never "does not exist".
TEST_F(Tool, RegNamesTheDamagedStore) {
  const std::string damaged = input("damaged.db", std::string(8192, 'x'));
  const std::string store = std::getenv("KORVO_REGISTRY");
  setenv("KORVO_REGISTRY", damaged.c_str(), 1);
  for (const char *line :
       {"reg query HKLM\\SOFTWARE", "reg tree HKLM --json", "reg delete HKLM\\X /f"}) {
    const std::string out = expect(line, 1);
    EXPECT_EQ(out.rfind("korutl: cannot read HKEY_LOCAL_MACHINE", 0), 0u) << out;
    EXPECT_NE(out.find(damaged + " is damaged: file is not a database\n"), std::string::npos)
        << out;
    EXPECT_EQ(out.find('\n'), out.size() - 1) << out;
  }
  setenv("KORVO_REGISTRY", store.c_str(), 1);
}
#endif

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
