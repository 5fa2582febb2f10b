// The string, identifier and conversion subcommands of the korutl command.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/run_tool.h"

#ifdef KORUTL_TOOL_FILE

namespace {

using korutl_test::run_tool;

TEST(StringTool, OidParseAndParent) {
  auto r = run_tool("oid parse 'localhost\\Halcyra\\2.2.1.3\\'");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out,
            "text=\\localhost\\Halcyra\\2.2.1.3\nparts=3\npart0=localhost\npart1=Halcyra\n"
            "part2=2.2.1.3\n");
  r = run_tool("oid parent '\\localhost\\Halcyra'");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "text=\\localhost\nparts=1\npart0=localhost\n");
  EXPECT_EQ(run_tool("oid parent ''").status, 1);
}

TEST(StringTool, MatchHostnameEscape) {
  EXPECT_EQ(run_tool("match -i '*.LOG' app.log b.Log").status, 0);
  EXPECT_EQ(run_tool("match '*.log' app.log app.txt").status, 1);
  EXPECT_EQ(run_tool("hostname a-1.b2. 1.2.3.4").status, 0);
  EXPECT_EQ(run_tool("hostname -- ok a_b").status, 1);
  EXPECT_EQ(run_tool("escape html \"it's <b>\"").out, "it's &lt;b&gt;\n");
  EXPECT_EQ(run_tool("escape special 'a b\\c'").out, "a%20b%5Cc\n");
  EXPECT_EQ(run_tool("unescape 'a%20b%5Cc%u0041'").out, "a b\\cA\n");
  EXPECT_EQ(run_tool("escape json x").status, 2);
}

// Input far larger than one chunk, with multi-byte characters and
// surrogate pairs falling on every chunk boundary, must come back intact.
TEST(StringTool, ConvertStreamsAcrossChunks) {
  const std::string path = ::testing::TempDir() + "korutl_convert_input.txt";
  std::string text;
  while (text.size() < 300000) text += "ab\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80x";
  std::ofstream(path, std::ios::binary) << text;
  const auto r =
      run_tool("convert --from utf8 --to utf16le < '" + path +
               "' | '" KORUTL_TOOL_FILE "' convert --from utf16le --to ucs4 | '" KORUTL_TOOL_FILE
               "' convert --from ucs4 --to utf8");
  EXPECT_EQ(r.status, 0);
  EXPECT_TRUE(r.out == text) << "round trip differs, sizes " << r.out.size() << " " << text.size();
  std::remove(path.c_str());
}

TEST(StringTool, ConvertReportsACutCharacter) {
  const auto r = run_tool("convert --from utf8 --to ucs4 < /dev/null");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(run_tool("convert --from utf8 --to utf8 < /dev/null").status, 2);
  const std::string path = ::testing::TempDir() + "korutl_convert_cut.txt";
  std::ofstream(path, std::ios::binary) << "a\xE2\x82";
  EXPECT_EQ(run_tool("convert --from utf8 --to utf16le < '" + path + "' > /dev/null").status, 1);
  std::remove(path.c_str());
}

}  // namespace

#endif
