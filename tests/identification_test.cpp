// Library identification: the functions, the version-stamp block inside the
// library file and the Windows version resource must tell the same facts.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "korutl.h"

namespace {

std::string read_file(const char *path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(Identification, Functions) {
  EXPECT_STREQ(KORVOUtlGetLibName(), "Halcyra Utility Library");
  EXPECT_STREQ(KORVOUtlGetLibVersion(), "2.2.1");
  EXPECT_STREQ(KORVOUtlGetLibFileName(), "korutl.dll");
  EXPECT_EQ(KORVOUtlGetLibPatchLevel(), 3);
  EXPECT_EQ(KORVOUtlGetLibRelease(), 8);
  EXPECT_EQ(KORVOUtlGetLibFileOS(), 2);
  EXPECT_EQ(KORVOUtlGetLibFileType(), KORVOUtlGetLibFileOS());
#if !defined(_WIN32)
  EXPECT_STREQ(KORUTL_LIBRARY_SONAME, "libkorutl.so.2");
#endif
}

TEST(Identification, FullVersionWritesEightBytesExactly) {
  char buffer[16];
  std::memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(KORVOUtlGetLibFullVersion(buffer), buffer);
  EXPECT_EQ(std::memcmp(buffer, "2.2.1.3\0xxxxxxxx", 16), 0);
  EXPECT_EQ(KORVOUtlGetLibFullVersion(nullptr), nullptr);
}

// Reads the stamp block from the library file byte by byte: any field that
// moves, changes width or changes value fails here.
class StampBlock : public ::testing::Test {
 protected:
  static constexpr char kHeader[] = "VantrelXVTLVERvtlverXVantrel61100";
  static constexpr char kMarker[] = "VTLVERVantrelXVTLVERvtlverVantrel";

  void SetUp() override {
    file_ = read_file(KORUTL_LIBRARY_FILE);
    ASSERT_FALSE(file_.empty());
    // The first hit is the loaded data; debug information may repeat the
    // block's bytes further on.
    const std::string header(kHeader, sizeof kHeader);  // with its zero
    pos_ = file_.find(header);
    ASSERT_NE(pos_, std::string::npos) << "no stamp header in the library file";
  }

  // The zero-padded field of `width` bytes at the cursor; advances it.
  std::string field(size_t width) {
    EXPECT_LE(pos_ + width, file_.size());
    std::string f = file_.substr(pos_, width);
    pos_ += width;
    return f;
  }
  static std::string padded(const char *text, size_t width) {
    std::string s(text);
    s.resize(width, '\0');
    return s;
  }
  unsigned number16() {
    const std::string f = field(2);
    return static_cast<unsigned char>(f[0]) | static_cast<unsigned char>(f[1]) << 8;
  }

  std::string file_;
  size_t pos_ = 0;
};

TEST_F(StampBlock, HeaderRecordsAndEnd) {
  EXPECT_EQ(field(40), padded(kHeader, 40));
  EXPECT_EQ(field(4), std::string("\xCC\xAA\x22\xDD", 4));

  struct TextRecord {
    const char *value;  // null: any text (the legal notice)
    size_t width;
  };
  const TextRecord texts[] = {{"Vantrel", 40}, {"Halcyra Utility Library", 40},
                              {"2.2.1", 20},   {"HLC for Windows95,98,NT and 2000", 40},
                              {nullptr, 70},   {"Halcyra", 40},
                              {"1", 20}};
  for (const TextRecord &r : texts) {
    EXPECT_EQ(field(40), padded(kMarker, 40)) << "marker before record at " << pos_;
    const std::string value = field(r.width);
    if (r.value != nullptr) {
      EXPECT_EQ(value, padded(r.value, r.width));
    } else {
      EXPECT_EQ(value.back(), '\0') << "legal notice fills its field without a terminator";
      EXPECT_GT(std::strlen(value.c_str()), 0u);
    }
  }
  const unsigned numbers[] = {3, 8, 2, 2};  // patch level, release, file OS, file type
  for (const unsigned n : numbers) {
    EXPECT_EQ(field(40), padded(kMarker, 40));
    EXPECT_EQ(number16(), n);
  }
  EXPECT_EQ(number16(), 0u) << "closing 16-bit zero";
}

}  // namespace
