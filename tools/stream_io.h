// Byte input and output for subcommands that filter stdin to stdout.
// Binary-safe: nothing is translated.
#ifndef KORUTL_TOOLS_STREAM_IO_H
#define KORUTL_TOOLS_STREAM_IO_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace korutl_tool {

// The whole stream, for filters whose input is bounded by what they do.
inline std::vector<uint8_t> read_all(std::FILE *in) {
  std::vector<uint8_t> data;
  uint8_t buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) data.insert(data.end(), buf, buf + n);
  return data;
}

// The stream into `data` when it holds at most `limit` bytes; false (having
// read no more than limit + 1 bytes) when it holds more.
inline bool read_at_most(std::FILE *in, size_t limit, std::vector<uint8_t> &data) {
  data.assign(limit + 1, 0);
  size_t got = 0;
  for (size_t n; got <= limit && (n = std::fread(data.data() + got, 1, limit + 1 - got, in)) > 0;)
    got += n;
  data.resize(got);
  return got <= limit;
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
