// Library identification: the functions, and the version-stamp block that
// tools find inside the library file. Nothing reads the block, so only this
// test notices when a compiler or linker drops it or a field moves.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "korutl.h"

namespace {

// `text` zero-padded to `width` bytes, as the block stores it.
std::string padded(const std::string &text, size_t width) {
  return text + std::string(width - text.size(), '\0');
}

// Name, full version, release and file name are what `korutl version`
// prints (tool_test.cpp); the version, patch level and file OS, constants
// that getters merely return, are read back from the stamp block. Here:
// the shared object's name, and the full version writing its 8 bytes only.
TEST(Identification, FunctionsAndStampBlockInTheLibraryFile) {
#if !defined(_WIN32)
  EXPECT_STREQ(KORUTL_LIBRARY_SONAME, "libkorutl.so.2");
#endif
  char buffer[16];
  std::memset(buffer, 'x', sizeof buffer);
  EXPECT_EQ(KORVOUtlGetLibFullVersion(buffer), buffer);
  EXPECT_EQ(std::memcmp(buffer, "2.2.1.3\0xxxxxxxx", 16), 0);
  EXPECT_EQ(KORVOUtlGetLibFullVersion(nullptr), nullptr);
  std::ifstream in(KORUTL_LIBRARY_FILE, std::ios::binary);
  const std::string file{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  // The first hit is the loaded data; debug information may repeat it.
  const std::string header = padded("VantrelXVTLVERvtlverXVantrel61100", 40) + "\xCC\xAA\x22\xDD";
  const size_t at = file.find(header);
  ASSERT_NE(at, std::string::npos) << "no stamp block in the library file";
  const std::string marker = padded("VTLVERVantrelXVTLVERvtlverVantrel", 40);
  // Records: marker and value; the legal notice is any text, its 70 bytes
  // placing the records after it.
  const std::string before_legal = header + marker + padded("Vantrel", 40) + marker +
                                   padded("Halcyra Utility Library", 40) + marker +
                                   padded("2.2.1", 20) + marker +
                                   padded("HLC for Windows95,98,NT and 2000", 40) + marker;
  EXPECT_EQ(file.compare(at, before_legal.size(), before_legal), 0);
  const size_t legal = at + before_legal.size();
  // Then the product and further version, and four 16-bit numbers: patch
  // level, release, file OS, file type; a 16-bit zero ends the block.
  const std::string after_legal = marker + padded("Halcyra", 40) + marker + padded("1", 20) +
                                  marker + std::string("\3\0", 2) + marker +
                                  std::string("\x08\0", 2) + marker + std::string("\2\0", 2) +
                                  marker + std::string("\2\0\0\0", 4);
  EXPECT_EQ(file.compare(legal + 70, after_legal.size(), after_legal), 0);
}

}  // namespace
