// The korutl command's subcommands other than reg, as a user meets them:
// statuses and failure lines, --json documents, value display, locale
// names, the strict encoders, and --help that changes nothing.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/run_tool.h"

namespace {

using korutl_test::run_tool;
using Commands = korutl_test::SampleTool;

const std::string probe =
    "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery\\Versions\\2."
    "10\\Instances\\main\\Agents\\Probe";

TEST_F(Commands, AnswersStatusesAndDocuments) {
  const std::string long_name(40, 'n');
  korutl_test::cfg_set("Global", long_name, "whole");
  struct Case {
    std::string line;
    int status;
    const char *out;
  } cases[] = {
      {"nosuch", 2, "korutl: unknown subcommand 'nosuch' (korutl --help lists them)\n"},
      {"--version", 0, "korutl 2.2.1.3\n"},
      {"cfg get Orrery", 2, nullptr},
      {"cfg get Orrery 2.10 Nope", 1, "korutl: value Nope not found\n"},
      {"cfg agent-key Orrery Nope", 1, "korutl: agent Nope not found\n"},
      {"cfg agent-get " + probe + " Interval", 0, "Interval=0x3c\n"},
      {"cfg enum " + probe, 0, "Interval=0x3c\nSignature=DEADBEEF\n"},
      {"cfg enum HKLM\\Nope", 1, "korutl: key HKEY_LOCAL_MACHINE\\Nope not found\n"},
      {"cfg versions Orrery --json", 0, "{\"versions\":[\"3\",\"2.10\",\"2.2.1\"]}\n"},
      {"cfg agent-get " + probe + " Signature --json", 0,
       "{\"name\":\"Signature\",\"type\":\"REG_BINARY\",\"data\":\"DEADBEEF\"}\n"},
      {"cfg latest Halcyra Languages de --json", 0,
       "{\"key\":\"HKEY_LOCAL_MACHINE\\\\SOFTWARE\\\\Vantrel\\\\Halcyra\\\\Products\\\\Halcyra\\\\"
       "Versions\\\\2.2.1\\\\Languages\"}\n"},
      {"oid parse \\localhost\\Halcyra\\2.2.1.3 --json", 0,
       "{\"text\":\"\\\\localhost\\\\Halcyra\\\\2.2.1.3\",\"parts\":[\"localhost\",\"Halcyra\","
       "\"2.2.1.3\"]}\n"},
      {"version --json", 0,
       "{\"name\":\"Halcyra Utility Library\",\"version\":\"2.2.1.3\",\"release\":8,\"file\":"
       "\"korutl.dll\"}\n"},
      {"msg --lang de HAL_SERVICE_STARTED", 0, "(KOR0001) Der Halcyra-Dienst wurde gestartet.\n"},
      {"msg --lang fr_FR.UTF-8@euro HAL_LANGUAGE --json", 0,
       "{\"language\":\"fr_FR.UTF-8@euro\",\"messages\":[{\"key\":\"HAL_LANGUAGE\",\"text\":"
       "\"Français\"}]}\n"},
      {"msg --oid \\h\\Nope\\1 X", 1,
       "korutl: no language library serves X: (KOR0301) No language library of this product is "
       "installed for the requested language.\n"},
  };
  for (const Case &c : cases) expect(c.line, c.status, c.out);
  EXPECT_NE(
      expect("cfg enum HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Global", 0).find(long_name + "=whole"),
      std::string::npos);
  // Locale names from the environment, the first usable one deciding.
  for (const char *variable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) unsetenv(variable);
  setenv("LANGUAGE", "C", 1);
  setenv("LANG", "de_DE.UTF-8", 1);
  expect("msg HAL_LANGUAGE", 0, "Deutsch\n");
  setenv("LANGUAGE", "fr:de", 1);
  expect("msg HAL_LANGUAGE", 0, "Français\n");
  unsetenv("LANGUAGE");
  unsetenv("LANG");
}

// A damaged store file: Linux stores only.
#if !defined(_WIN32)
TEST_F(Commands, StoreFailuresSayWhyAndWhere) {
  KORUTL_FILE_STORE_ONLY();
  std::ofstream(file(), std::ios::binary | std::ios::trunc) << std::string(8192, 'x');
  for (const std::string &line : std::vector<std::string>{
           "cfg get Orrery X", "cfg versions Orrery", "cfg latest Orrery X",
           "cfg agent-key Orrery P", "cfg agent-get " + probe + " X", "cfg enum " + probe,
           "cfg env MILayer", "lang register Orrery 3 de x.dll", "user check \\h\\Orrery\\3 u"}) {
    const std::string out = expect(line, 1);
    EXPECT_EQ(out.rfind("korutl: ", 0), 0u) << line << ": " << out;
    EXPECT_NE(out.find(file()), std::string::npos) << line << ": " << out;
    EXPECT_EQ(out.find("not found"), std::string::npos) << line << ": " << out;
  }
}
#endif

TEST_F(Commands, EncodersStreamAndRejectGarbage) {
  std::string bytes;
  for (unsigned i = 0; bytes.size() < 300000; ++i) bytes += static_cast<char>(i * 7919 % 251);
  const std::string wrapped = expect("encode base64 -w 76", 0, nullptr, bytes);
  EXPECT_EQ(wrapped.find('\n'), 76u);
  EXPECT_TRUE(expect("encode base64 -d", 0, nullptr, wrapped) == bytes);
  EXPECT_TRUE(expect("encode hex -d", 0, nullptr, expect("encode hex -w 9", 0, nullptr, bytes)) ==
              bytes);
  const char *cases[][4] = {
      {"encode base64 -w 4", "foobar", "Zm9v\nYmFy\n", "0"},
      {"encode base64 -d", " Zm9v\r\nYg==\n", "foob", "0"},
      {"encode hex -d", "6 16\n2", "ab", "0"},
      {"encode base64 -d", "a!!!", nullptr, "1"},
      {"encode base64 -d", "Zm9vYg", nullptr, "1"},
      {"encode base64 -d", "Zm=9", nullptr, "1"},
      {"encode base64 -d", "Zg==Zg==", nullptr, "1"},
      {"encode hex -d", "abc", nullptr, "1"},
      {"encode hex -d", "0g", nullptr, "1"},
  };
  for (const auto &[line, in, out, status] : cases) {
    const std::string got = expect(line, status[0] - '0', out, in);
    if (status[0] == '1') {
      EXPECT_EQ(got.rfind("korutl: encode: ", 0), 0u) << line << " " << in;
    }
  }
}

// --help of every verb (as --help-all lists them, reg's included) prints
// and exits 0, and never creates the store.
using Help = korutl_test::ToolStore;

TEST_F(Help, OfEveryVerbTouchesNothing) {
  std::istringstream all(run_tool({"--help-all"}).out);
  size_t verbs = 0;
  for (std::string line; std::getline(all, line);) {
    if (line.rfind("korutl ", 0) != 0 || line.back() != ':') continue;
    std::istringstream words(line.substr(7, line.size() - 8));
    std::vector<std::string> args;
    for (std::string w; words >> w && w.find_first_of("[:") == std::string::npos &&
                        w.find_first_of("abcdefghijklmnopqrstuvwxyz") != std::string::npos;)
      args.push_back(w);
    args.push_back("--help");
    const auto r = run_tool(args);
    EXPECT_EQ(r.status, 0) << line << "\n" << r.out;
    ++verbs;
  }
  EXPECT_GT(verbs, 30u);
  EXPECT_FALSE(store_exists());
}

}  // namespace
