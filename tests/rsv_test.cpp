// The registry service: keys and values, name rules, buffer sizes, path
// limits, and .reg files in and out (that every tree, whatever bytes it
// holds, comes back from its export is fuzz/regfile_roundtrip_fuzz.cpp's,
// whose seeds run as tests).
#include "siblings/rsv/rsv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/temp_store.h"

namespace {

// Where a call comes from, for the store's trace lines.
#define AT "tests/rsv", __LINE__
const std::string root = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra";

class RsvTest : public korutl_test::TempStore {
 protected:
  std::string write(const char *name, const std::string &text) const {
    std::ofstream(scratch(name), std::ios::binary) << text;
    return scratch(name);
  }
  std::string export_all(const char *key = "HKEY_LOCAL_MACHINE") {
    EXPECT_EQ(rsv_export_file(key, scratch("export.reg").c_str(), AT), RSV_OK);
    std::ifstream in(scratch("export.reg"), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // Deletes every key below the root, which itself stays (and refuses to go).
  static void empty_tree() {
    ASSERT_EQ(rsv_delete_key("HKEY_LOCAL_MACHINE", AT), RSV_E_BAD_ARGUMENT);
    const auto drop = [](const char *name, void *) -> int32_t {
      return rsv_delete_key(("HKEY_LOCAL_MACHINE\\" + std::string(name)).c_str(), AT);
    };
    ASSERT_EQ(rsv_list_names("HKEY_LOCAL_MACHINE", RSV_LIST_SUBKEYS, drop, nullptr, AT), RSV_OK);
    uint16_t left = 1;
    ASSERT_EQ(rsv_query_key("HKEY_LOCAL_MACHINE", &left, nullptr, AT), RSV_OK);
    ASSERT_EQ(left, 0);
  }
};

// Names in slots of 32 characters and a zero, as the library's callers have them.
using Names = std::vector<std::string>;
Names names(const std::string &key, bool values, uint16_t slots = 8) {
  std::vector<std::vector<char>> store(slots, std::vector<char>(256));
  std::vector<char *> ptrs;
  for (auto &s : store) ptrs.push_back(s.data());
  uint16_t count = slots;
  EXPECT_EQ((values ? rsv_enum_values : rsv_enum_subkeys)(key.c_str(), ptrs.data(), &count, AT),
            RSV_OK);
  return {ptrs.begin(), ptrs.begin() + count};
}

// A value's text, or "<unread>" when it cannot be read.
std::string text_of(const std::string &key, const char *name) {
  char buf[64];
  uint16_t len = sizeof buf;
  return rsv_get_value(key.c_str(), name, buf, &len, AT) == RSV_OK ? buf : "<unread>";
}

// A value's type and bytes.
std::pair<uint32_t, std::string> data_of(const std::string &key, const char *name) {
  uint32_t type = 0, size = 0;
  if (rsv_get_value_ex(key.c_str(), name, &type, nullptr, &size, AT) != RSV_OK) return {};
  std::string data(size, '\0');
  if (rsv_get_value_ex(key.c_str(), name, &type, data.data(), &size, AT) != RSV_OK) return {};
  return {type, data};
}

TEST_F(RsvTest, KeysAndValues) {
  uint16_t n = 99;
  EXPECT_EQ(rsv_query_key(root.c_str(), &n, nullptr, AT), RSV_E_NO_KEY);
  EXPECT_EQ(rsv_get_value(root.c_str(), "x", nullptr, nullptr, AT), RSV_E_NO_KEY);
  n = 0;
  EXPECT_EQ(rsv_enum_subkeys(root.c_str(), nullptr, &n, AT), RSV_E_NO_KEY);
  EXPECT_FALSE(store_exists());
  // A key comes with its parents; deleting one removes its subtree.
  const std::string deep = root + "\\Products\\P\\Versions\\2.2.1";
  ASSERT_EQ(rsv_create_key(deep.c_str(), AT), RSV_OK);
  EXPECT_TRUE(store_exists());
  ASSERT_EQ(rsv_set_value(deep.c_str(), "v", "1", AT), RSV_OK);
  uint16_t sub = 0, val = 9;
  ASSERT_EQ(rsv_query_key((root + "\\Products\\P").c_str(), &sub, &val, AT), RSV_OK);
  EXPECT_EQ(sub, 1);
  EXPECT_EQ(val, 0);
  ASSERT_EQ(rsv_delete_key((root + "\\products\\p").c_str(), AT), RSV_OK);
  EXPECT_EQ(rsv_query_key(deep.c_str(), nullptr, nullptr, AT), RSV_E_NO_KEY);
  EXPECT_EQ(rsv_query_key((root + "\\Products").c_str(), &sub, nullptr, AT), RSV_OK);
  EXPECT_EQ(sub, 0);
  EXPECT_EQ(rsv_delete_key(deep.c_str(), AT), RSV_E_NO_KEY);
  for (const char *name : {"beta", "Alpha", "gamma", "ALPHA", "Delta"})
    ASSERT_EQ(rsv_create_key((root + "\\" + name).c_str(), AT), RSV_OK);
  EXPECT_EQ(names(root, false), (Names{"Alpha", "beta", "Delta", "gamma", "Products"}));
  EXPECT_EQ(names(root, false, 1), Names{"Alpha"});
  const std::string key = root + "\\ALPHA";
  const std::string long_name(40, 'n');
  for (const char *name : {"zeta", "Eta", "alpha", "ZETA", long_name.c_str()})
    ASSERT_EQ(rsv_set_value(key.c_str(), name, name, AT), RSV_OK);
  // A name longer than its slot is cut to it. Sorted: the system registry
  // lists values in an order of its own (the store's order of setting is
  // the enumeration's test in cfg_test.cpp).
  Names values = names(root + "\\alpha", true);
  std::sort(values.begin(), values.end());
  EXPECT_EQ(values, (Names{"Eta", "alpha", std::string(32, 'n'), "zeta"}));
  EXPECT_EQ(text_of(key, "Zeta"), "ZETA");
  ASSERT_EQ(rsv_create_key(root.c_str(), AT), RSV_OK);
  ASSERT_EQ(rsv_set_value(root.c_str(), "t", "hello", AT), RSV_OK);
  uint16_t len = 0;
  EXPECT_EQ(rsv_get_value(root.c_str(), "T", nullptr, &len, AT), RSV_OK);
  EXPECT_EQ(len, 5);
  EXPECT_EQ(rsv_get_value(root.c_str(), "u", nullptr, nullptr, AT), RSV_E_NO_VALUE);
  char buf[8] = "XXXXXXX";
  len = 5;  // no room for the zero
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", buf, &len, AT), RSV_E_BUFFER_SMALL);
  EXPECT_STREQ(buf, "XXXXXXX");
  len = 6;
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", buf, &len, AT), RSV_OK);
  EXPECT_STREQ(buf, "hello");
  EXPECT_EQ(rsv_get_value(root.c_str(), "t", buf, nullptr, AT), RSV_E_BAD_ARGUMENT);
  // Values beyond a 16-bit length are stored but not read this way; beyond
  // a megabyte they are refused.
  ASSERT_EQ(rsv_set_value(root.c_str(), "huge", std::string(70000, 'x').c_str(), AT), RSV_OK);
  EXPECT_EQ(rsv_get_value(root.c_str(), "huge", nullptr, &len, AT), RSV_E_TOO_LONG);
  EXPECT_EQ(rsv_set_value(root.c_str(), "big", std::string(1024 * 1024 + 1, 'y').c_str(), AT),
            RSV_E_TOO_LONG);
  std::string too_deep = "HKEY_LOCAL_MACHINE";
  for (int i = 0; i < 512; ++i) too_deep += "\\k";
  for (const std::string &path : {std::string(), root + "\\", root + "\\\\x", "\\" + root,
                                  root + "\\" + std::string(256, 'k'), too_deep})
    EXPECT_EQ(rsv_create_key(path.c_str(), AT), RSV_E_BAD_ARGUMENT) << path.size();
  EXPECT_EQ(rsv_create_key((root + "\\" + std::string(255, 'k')).c_str(), AT), RSV_OK);
  EXPECT_EQ(rsv_create_key(nullptr, AT), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(rsv_set_value(root.c_str(), "v", nullptr, AT), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(rsv_set_value((root + "\\absent").c_str(), "v", "x", AT), RSV_E_NO_KEY);
  uint16_t count = 3;
  EXPECT_EQ(rsv_enum_values(root.c_str(), nullptr, &count, AT), RSV_E_BAD_ARGUMENT);
  ASSERT_EQ(rsv_import_file(KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg", nullptr, AT), RSV_OK);
  const std::string first = export_all();
  ASSERT_EQ(first.substr(0, 2), "\xFF\xFE");
  const std::string saved = write("saved.reg", first);
  empty_tree();
  ASSERT_EQ(rsv_import_file(saved.c_str(), nullptr, AT), RSV_OK);
  EXPECT_EQ(export_all(), first);
  EXPECT_EQ(text_of(root + "\\Products\\Orrery\\Versions\\2.10", "Description"),
            "Orrery 2.10 \"long-term\" release");
  char data[64];
  uint32_t type = 0, size = sizeof data;
  ASSERT_EQ(rsv_get_value_ex((root + "\\MILayer\\Environment").c_str(), "HAL_TMP", &type, data,
                             &size, AT),
            RSV_OK);
  EXPECT_EQ(type, 2u);
  EXPECT_EQ(std::string(data, size), std::string("/var/tmp/hal\0", 13));
}

TEST_F(RsvTest, RegFileImports) {
  // UTF-16 files are read above (the export); edits come here in UTF-8.
  const std::string keys =
      "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\A\\B]\n\"x\"=\"1\"\n@=\"d\"\n"
      "[HKEY_LOCAL_MACHINE\\A\\C]\n";
  ASSERT_EQ(rsv_import_file(write("a.reg", keys).c_str(), nullptr, AT), RSV_OK);
  const std::string edits =
      "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\A\\B]\n"
      "\"x\"=-\n[-HKEY_LOCAL_MACHINE\\A\\C]\n";
  ASSERT_EQ(rsv_import_file(write("b.reg", edits).c_str(), nullptr, AT), RSV_OK);
  EXPECT_EQ(rsv_get_value("HKEY_LOCAL_MACHINE\\A\\B", "x", nullptr, nullptr, AT), RSV_E_NO_VALUE);
  EXPECT_EQ(text_of("HKEY_LOCAL_MACHINE\\A\\B", ""), "d");
  EXPECT_EQ(rsv_query_key("HKEY_LOCAL_MACHINE\\A\\C", nullptr, nullptr, AT), RSV_E_NO_KEY);
  // Whether the parser accepts a text at all is the fuzz target's
  // (fuzz/regfile_fuzz.cpp); here a refused file must change nothing and
  // name its line.
  ASSERT_EQ(rsv_create_key((root + "\\Old").c_str(), AT), RSV_OK);
  const std::string before = export_all();
  const std::string head =
      "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\New]\n\"ok\"=\"1\"\n";
  for (const auto &[text, line] :
       {std::pair<std::string, uint32_t>{"REGEDIT 4\n", 1},
        {head + "\"n\"=dword:123\n", 4},
        {head + "\n[-HKEY_LOCAL_MACHINE]\n", 5},
        {head + "\"n\"=hex:01,\\\n  02,\n", 4},
        {head + "[HKEY_LOCAL_MACHINE\n", 4},
        {"Windows Registry Editor Version 5.00\n\"orphan\"=\"1\"\n", 2}}) {
    uint32_t bad_line = 99;
    EXPECT_EQ(rsv_import_file(write("bad.reg", text).c_str(), &bad_line, AT), RSV_E_BAD_ARGUMENT)
        << text;
    EXPECT_EQ(bad_line, line) << text;
  }
  EXPECT_EQ(export_all(), before);
  uint32_t bad_line = 99;
  EXPECT_EQ(rsv_import_file(scratch("missing.reg").c_str(), &bad_line, AT), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(bad_line, 0u);
  // REGEDIT4 is 8-bit text (every byte kept) and its hex(2) bytes are the
  // text itself; in a UTF-8 file the 3-byte form of U+DCFF is the byte 0xFF.
  const std::string r4 =
      "REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\R4\xED\xB3\xBF]\r\n\"caf\xE9\"=\"\xE9t\xE9\"\r\n"
      "\"e\"=hex(2):25,41,25,00\r\n";
  ASSERT_EQ(rsv_import_file(write("r4.reg", r4).c_str(), nullptr, AT), RSV_OK);
  EXPECT_EQ(data_of("HKEY_LOCAL_MACHINE\\R4\xED\xB3\xBF", "caf\xE9"),
            std::make_pair(1u, std::string("\xE9t\xE9\0", 4)));
  EXPECT_EQ(data_of("HKEY_LOCAL_MACHINE\\R4\xED\xB3\xBF", "e"),
            std::make_pair(2u, std::string("%A%\0", 4)));
  const std::string u8 =
      "Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\U8]\n"
      "\"\xED\xB3\xBF\xFE\"=\"\xC3\xA9\"\n";
  ASSERT_EQ(rsv_import_file(write("u8.reg", u8).c_str(), nullptr, AT), RSV_OK);
  EXPECT_EQ(data_of("HKEY_LOCAL_MACHINE\\U8", "\xFF\xFE"),
            std::make_pair(1u, std::string("\xC3\xA9\0", 3)));
}

}  // namespace
