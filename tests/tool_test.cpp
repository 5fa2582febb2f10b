// The korutl command's own wiring: exit statuses, its parsing and display
// of registry types, the armor and streaming of the filters, and one round
// trip through each group of subcommands. The rules behind the answers are
// the library's, tested against the library itself.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/run_tool.h"

namespace {

using korutl_test::run_tool;

class Tool : public korutl_test::ToolStore {
 protected:
  void SetUp() override {
    ToolStore::SetUp();
    if (IsSkipped()) return;
    setenv("KORVO_LANGUAGE_PATH", KORUTL_LANGUAGE_DIR, 1);
    ASSERT_EQ(run_tool({"reg", "import", KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg"}).status,
              0);
  }
  void TearDown() override {
    unsetenv("KORVO_LANGUAGE_PATH");
    ToolStore::TearDown();
  }
  // The status, and the output when `out` is given, of one run.
  void expect(const std::vector<std::string> &args, int status, const char *out = nullptr,
              const std::string &in = "") {
    std::string line;
    for (const std::string &a : args) line += a + " ";
    const auto r = run_tool(args, in.empty() ? "" : input("in", in));
    EXPECT_EQ(r.status, status) << line << "\n" << r.out;
    if (out != nullptr) {
      EXPECT_EQ(r.out, out) << line;
    }
  }
};

const std::string global = "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Global";

TEST_F(Tool, StatusesAndTextSubcommands) {
  expect({"version"}, 0,
         "name=Halcyra Utility Library\nversion=2.2.1.3\nrelease=8\nfile=korutl.dll\n");
  expect({"--help"}, 0);
  expect({"cfg", "get", "--help"}, 0);
  for (const std::vector<std::string> &usage : std::vector<std::vector<std::string>>{
           {},
           {"no-such-command"},
           {"digits"},
           {"cfg", "get", "a", "b", "c", "d"},
           {"reg", "add", "HKLM\\X", "/v", "N", "/t", "REG_BOGUS", "/d", "1"},
           {"reg", "tree", "HKLM", "--depth", "x"},
           {"escape", "json", "x"},
           {"crypt", "protect"}})
    expect(usage, 2);
  expect({"cfg", "versions", "Orrery"}, 0, "3\n2.10\n2.2.1\n");
  expect({"cfg", "versions", "Nope"}, 1, "");
  expect({"oid", "parent", "\\localhost\\Halcyra"}, 0,
         "text=\\localhost\nparts=1\npart0=localhost\n");
  expect({"match", "-i", "*.LOG", "app.log", "b.Log"}, 0);
  expect({"match", "*.log", "app.log", "app.txt"}, 1);
  expect({"hostname", "--", "ok", "a_b"}, 1);
  expect({"unescape", "a%20b%5Cc%u0041"}, 0, "a b\\cA\n");
  expect({"digits", "f"}, 0);
}

TEST_F(Tool, RegistryTypesRoundTrip) {
  struct Case {
    std::vector<std::string> add;
    const char *shown;
  };
  for (const Case &c :
       {Case{{"/v", "N", "/t", "REG_DWORD", "/d", "17"}, "N    REG_DWORD    0x11"},
        Case{{"--value", "Q", "--type", "REG_QWORD", "--data", "0x100000000"},
             "Q    REG_QWORD    0x100000000"},
        Case{{"/v", "B", "/t", "REG_BINARY", "/d", "00ff10"}, "B    REG_BINARY    00FF10"},
        Case{{"/v", "M", "/t", "REG_MULTI_SZ", "/d", "a\\0b"}, "M    REG_MULTI_SZ    a\\0b"},
        Case{{"/ve", "/d", "top"}, "(Default)    REG_SZ    top"}}) {
    std::vector<std::string> args{"reg", "add", global};
    args.insert(args.end(), c.add.begin(), c.add.end());
    ASSERT_EQ(run_tool(args).status, 0) << c.shown;
    EXPECT_NE(run_tool({"reg", "query", global}).out.find(c.shown), std::string::npos) << c.shown;
  }
  expect({"reg", "delete", global, "/v", "N"}, 0);
  expect({"reg", "query", global, "/v", "N"}, 1);
  expect({"reg", "tree", "HKLM\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra", "--depth", "1"}, 0,
         "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Halcyra\n"
         "  Use_Strict_Version (REG_SZ) = 0\n  Versions\\\n");
  expect({"reg", "delete", "HKLM\\SOFTWARE", "/f"}, 0);
  expect({"reg", "query", global}, 1);
}

TEST_F(Tool, LanguageRegistrationsMessagesAndUsers) {
  expect({"lang", "register", "Orrery", "3", "German", "orr_de.dll"}, 0);
  expect({"lang", "list", "Orrery", "3"}, 0, "German=orr_de.dll\n");
  expect({"msg", "--oid", "\\h\\Orrery\\3", "--lang", "German", "ORR_LANGUAGE"}, 0, "Deutsch\n");
  expect({"lang", "unregister", "Orrery", "3"}, 0);
  expect({"lang", "list", "Orrery", "3"}, 1);
  expect({"msg", "NO_SUCH_KEY"}, 1, "korutl: no text for NO_SUCH_KEY\n");
  expect({"msgfile", "register", "Orrery", "3", "Core", "core.msg"}, 0);
  expect({"msgfile", "unregister", "Orrery", "3"}, 0);
  expect({"user", "check", "\\localhost\\Orrery\\2.10", "operator"}, 0, "authorised\n");
  expect({"user", "check", "\\localhost\\Orrery\\2.10", "guest"}, 1);
}

TEST_F(Tool, FiltersRoundTrip) {
  const std::string key = input("key", "a key text\n");
  // Each method and each armor once.
  for (const std::vector<std::string> &opts :
       std::vector<std::vector<std::string>>{{"--method", "safer"},
                                             {"--method", "xor", "--armor", "base64"},
                                             {"--method", "none", "--armor", "hex"}}) {
    std::vector<std::string> args{"crypt", "protect", "--key-file", key};
    args.insert(args.end(), opts.begin(), opts.end());
    const auto sealed = run_tool(args, input("plain", "Halcyra agent password"));
    ASSERT_EQ(sealed.status, 0) << opts[1] << sealed.out;
    args[1] = "restore";
    const auto back = run_tool(args, input("sealed", sealed.out));
    EXPECT_EQ(back.status, 0) << opts[1];
    EXPECT_EQ(back.out, "Halcyra agent password") << opts[1];
  }
  // A failed restore writes the message and nothing of the damaged input.
  setenv("K8", "right", 1);
  const auto sealed = run_tool({"crypt", "protect", "--key-env", "K8"}, input("p", "0123456789"));
  setenv("K8", "wrong", 1);
  expect({"crypt", "restore", "--key-env", "K8"}, 1,
         "korutl crypt: restore failed: wrong key, wrong method or damaged input\n", sealed.out);
  unsetenv("K8");
  expect({"encode", "base64", "-d"}, 0, "foob", "Zm9vYg==\n");
  expect({"utf7", "decode"}, 1,
         "\xc3\xa9\nkorutl utf7: malformed UTF-7 (decoded as far as possible)\n", "+AOl-");
  expect({"convert", "--from", "utf8", "--to", "utf16le"}, 1, nullptr, "a\xE2\x82");
}

// Input far larger than one chunk, with multi-byte characters and
// surrogate pairs falling on every chunk boundary, must come back intact.
TEST_F(Tool, ConvertStreamsAcrossChunks) {
  std::string text;
  while (text.size() < 300000) text += "ab\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80x";
  std::string through = text;
  for (const auto &[from, to] : {std::pair<const char *, const char *>{"utf8", "utf16le"},
                                 {"utf16le", "ucs4"},
                                 {"ucs4", "utf8"}}) {
    const auto r = run_tool({"convert", "--from", from, "--to", to}, input(from, through));
    ASSERT_EQ(r.status, 0) << from;
    through = r.out;
  }
  EXPECT_TRUE(through == text) << "round trip differs, sizes " << through.size() << " "
                               << text.size();
}

}  // namespace
