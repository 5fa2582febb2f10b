// Whole-stream byte input and output for subcommands that filter stdin to
// stdout. Binary-safe: nothing is translated.
#ifndef KORUTL_TOOLS_STREAM_IO_H
#define KORUTL_TOOLS_STREAM_IO_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace korutl_tool {

inline std::vector<uint8_t> read_all(std::FILE *in) {
  std::vector<uint8_t> data;
  uint8_t buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) data.insert(data.end(), buf, buf + n);
  return data;
}

inline bool write_all(const void *data, size_t size) {
  return size == 0 || std::fwrite(data, 1, size, stdout) == size;
}

// Text input usually ends with a line break; encoded forms never do.
inline void trim_trailing_space(std::vector<uint8_t> &text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ' ||
                           text.back() == '\t')) {
    text.pop_back();
  }
}

}  // namespace korutl_tool

#endif
