#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

constexpr const char *M = "tests/regfile";
const std::string sample = KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg";

class RegFileTest : public korutl_test::TempStore {
 protected:
  std::string path(const char *name) const { return file() + "." + name; }
  static std::string slurp(const std::string &f) {
    std::ifstream in(f, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static void spit(const std::string &f, const std::string &text) {
    std::ofstream(f, std::ios::binary) << text;
  }
  std::string export_all() {
    const std::string out = path("export.reg");
    EXPECT_EQ(rsv_export_file("HKEY_LOCAL_MACHINE", out.c_str(), M, __LINE__), RSV_OK);
    return slurp(out);
  }
};

TEST_F(RegFileTest, ExportThenImportReproducesTheTreeExactly) {
  std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
  ASSERT_EQ(rsv_import_file(sample.c_str(), nullptr, M, __LINE__), RSV_OK);
  const std::string first = export_all();
  ASSERT_EQ(first.substr(0, 2), "\xFF\xFE");
  spit(path("saved.reg"), first);
  ASSERT_EQ(rsv_delete_key("HKEY_LOCAL_MACHINE", M, __LINE__), RSV_OK);
  ASSERT_EQ(rsv_import_file(path("saved.reg").c_str(), nullptr, M, __LINE__), RSV_OK);
  EXPECT_EQ(export_all(), first);

  char buf[64];
  uint16_t len = sizeof buf;
  ASSERT_EQ(rsv_get_value(
                "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery\\Versions\\2.10",
                "Description", buf, &len, M, __LINE__),
            RSV_OK);
  EXPECT_STREQ(buf, "Orrery 2.10 \"long-term\" release");
  uint32_t type = 0, size = sizeof buf;
  ASSERT_EQ(rsv_get_value_ex("HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\MILayer\\Environment",
                             "HAL_TMP", &type, buf, &size, M, __LINE__),
            RSV_OK);
  EXPECT_EQ(type, 2u);
  EXPECT_EQ(std::string(buf, size), std::string("/var/tmp/hal\0", 13));
}

TEST_F(RegFileTest, EditsDeletionsAndUtf16Input) {
  std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
  const std::string text =
      "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\A\\B]\r\n"
      "\"x\"=\"1\"\r\n\"y\"=\"2\"\r\n@=\"d\"\r\n[HKEY_LOCAL_MACHINE\\A\\C]\r\n";
  std::string wide = "\xFF\xFE";
  for (char c : text) wide += std::string{c, '\0'};
  spit(path("a.reg"), wide);
  ASSERT_EQ(rsv_import_file(path("a.reg").c_str(), nullptr, M, __LINE__), RSV_OK);
  spit(path("b.reg"),
       "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\A\\B]\n"
       "\"x\"=-\n[-HKEY_LOCAL_MACHINE\\A\\C]\n");
  ASSERT_EQ(rsv_import_file(path("b.reg").c_str(), nullptr, M, __LINE__), RSV_OK);
  EXPECT_EQ(rsv_get_value("HKEY_LOCAL_MACHINE\\A\\B", "x", nullptr, nullptr, M, __LINE__),
            RSV_E_NO_VALUE);
  EXPECT_EQ(rsv_get_value("HKEY_LOCAL_MACHINE\\A\\B", "", nullptr, nullptr, M, __LINE__), RSV_OK);
  EXPECT_EQ(rsv_query_key("HKEY_LOCAL_MACHINE\\A\\C", nullptr, nullptr, M, __LINE__), RSV_E_NO_KEY);
}

TEST_F(RegFileTest, MalformedFilesChangeNothingAndNameTheLine) {
  std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
  ASSERT_EQ(rsv_import_file(sample.c_str(), nullptr, M, __LINE__), RSV_OK);
  const std::string before = export_all();
  const std::string head =
      "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\New]\n\"ok\"=\"1\"\n";
  struct Case {
    std::string text;
    uint32_t line;
  };
  for (const Case &c :
       {Case{"REGEDIT4\n", 1}, Case{head + "\"bad\"=\"unterminated\n", 4},
        Case{head + "\"n\"=dword:123\n", 4}, Case{head + "\"n\"=hex:0g\n", 4},
        Case{head + "\"n\"=hex:01,\\\n  02,\n", 4}, Case{head + "[HKEY_LOCAL_MACHINE\\\\x]\n", 4},
        Case{head + "[HKEY_LOCAL_MACHINE\n", 4}, Case{head + "junk\n", 4},
        Case{"Windows Registry Editor Version 5.00\n\"orphan\"=\"1\"\n", 2},
        Case{head + "\"e\"=\"bad \\q escape\"\n", 4}, Case{"\xFF\xFEW", 1}}) {
    spit(path("bad.reg"), c.text);
    uint32_t line = 99;
    EXPECT_EQ(rsv_import_file(path("bad.reg").c_str(), &line, M, __LINE__), RSV_E_BAD_ARGUMENT)
        << c.text;
    EXPECT_EQ(line, c.line) << c.text;
  }
  EXPECT_EQ(export_all(), before);
  uint32_t line = 99;
  EXPECT_EQ(rsv_import_file(path("missing.reg").c_str(), &line, M, __LINE__), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(line, 0u);
}

}  // namespace
