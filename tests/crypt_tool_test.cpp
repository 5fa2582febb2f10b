// korutl crypt, encode and utf7: the subcommands filter stdin to stdout.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "tests/support/run_tool.h"

#ifdef KORUTL_TOOL_FILE

namespace {

using korutl_test::run_tool;
using korutl_test::ToolRun;

// A scratch file per test, removed at the end. The process id keeps tests
// that ctest runs side by side off each other's files.
class ToolFiles : public ::testing::Test {
 protected:
  std::string file(const std::string &name, const std::string &content) {
    const std::string path =
        ::testing::TempDir() + "korutl_crypt_tool_" + std::to_string(getpid()) + "_" + name;
    std::ofstream(path, std::ios::binary) << content;
    paths_.push_back(path);
    return path;
  }
  void TearDown() override {
    for (const auto &p : paths_) std::remove(p.c_str());
  }

 private:
  std::vector<std::string> paths_;
};

using CryptTool = ToolFiles;

TEST_F(CryptTool, ProtectRestoreEveryMethodAndArmor) {
  const std::string key = file("key", "a key text\n");
  const std::string plain = file("plain", "Halcyra agent password");
  for (const char *method : {"safer", "xor", "none"}) {
    for (const char *armor : {"", " --armor base64", " --armor hex"}) {
      const std::string opts = std::string(" --method ") + method + armor;
      const ToolRun prot =
          run_tool("crypt protect --key-file '" + key + "'" + opts + " < '" + plain + "'");
      ASSERT_EQ(prot.status, 0) << opts << prot.out;
      const std::string sealed = file("sealed", prot.out);
      const ToolRun back =
          run_tool("crypt restore --key-file '" + key + "'" + opts + " < '" + sealed + "'");
      EXPECT_EQ(back.status, 0) << opts;
      EXPECT_EQ(back.out, "Halcyra agent password") << opts;
    }
  }
}

TEST_F(CryptTool, FailedRestoreWritesOnlyTheMessage) {
  const std::string plain = file("plain", "0123456789");
  const ToolRun prot =
      run_tool("crypt protect --key-env K8 --armor hex < '" + plain + "'", "K8=right");
  ASSERT_EQ(prot.status, 0);
  const std::string sealed = file("sealed", prot.out);
  // The wrong key is noticed by the length checks for this text and key.
  const ToolRun wrong =
      run_tool("crypt restore --key-env K8 --armor hex < '" + sealed + "'", "K8=wrong");
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.out, "korutl crypt: restore failed: wrong key, wrong method or damaged input\n");
  EXPECT_EQ(run_tool("crypt restore --key-env K8_UNSET < '" + sealed + "'").status, 1);
  EXPECT_EQ(run_tool("crypt protect < '" + plain + "'").status, 2);  // no key source
  EXPECT_EQ(run_tool("crypt protect --method rot13 --key-env K8 < '" + plain + "'", "K8=k").status,
            2);
}

TEST_F(CryptTool, EncodeForms) {
  struct Case {
    std::string args, input, output;
    int status;
  } cases[] = {
      {"encode base64", "foob", "Zm9vYg==\n", 0},
      {"encode base64 -d", "Zm9vYg==\n", "foob", 0},
      {"encode hex", std::string("\x00\x7f\x80\xff", 4), "007F80FF\n", 0},
      {"encode hex -d", "007f80FFa", std::string("\x00\x7f\x80\xff\xa0", 5), 0},
      {"encode prefixed", "abc", "A2FiYw==\n", 0},
      {"encode prefixed -d", "A2FiYw==", "abc", 0},
      {"encode prefixed -d", "AA==", "", 0},
      {"encode prefixed -d", "A2Fi", "korutl encode: not a length-prefixed Base64 text\n", 1},
      {"encode prefixed", std::string(256, 'x'),
       "korutl encode: the prefixed form holds at most 255 bytes\n", 1},
      {"utf7 encode", "Hi Mom -\xe2\x98\xba-!", "Hi Mom -+Jjo--+ACE\n", 0},
      {"utf7 encode --optional-direct --close", "Hi Mom -\xe2\x98\xba-!", "Hi Mom -+Jjo--!\n", 0},
      {"utf7 decode", "+ZeVnLIqe", "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e\n", 0},
      {"utf7 decode", "+AOl-",
       "\xc3\xa9\nkorutl utf7: malformed UTF-7 (decoded as far as possible)\n", 1},
  };
  for (const Case &c : cases) {
    const ToolRun r = run_tool(c.args + " < '" + file("in", c.input) + "'");
    EXPECT_EQ(r.status, c.status) << c.args;
    EXPECT_EQ(r.out, c.output) << c.args;
  }
}

}  // namespace

#endif
