// The version key of any name must equal one computed the long way: the
// name's first four digit runs, each read in full precision and capped at
// 32 bits, combined modulo 2^32.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "readconfig/name_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string name(reinterpret_cast<const char *>(data), size);  // stops at a zero below
  uint64_t part[4] = {0, 0, 0, 0};
  int found = 0;
  bool in_run = false;
  for (size_t i = 0; i < size && data[i] != 0; ++i) {
    const bool digit = data[i] >= '0' && data[i] <= '9';
    if (digit && !in_run) {
      if (found == 4) break;
      ++found;
    }
    if (digit)
      part[found - 1] = std::min<uint64_t>(part[found - 1] * 10 + (data[i] - '0'), UINT32_MAX);
    in_run = digit;
  }
  const uint32_t expected =
      static_cast<uint32_t>(((part[0] * 100 + part[1]) * 1000 + part[2]) * 1000 + part[3]);
  if (korutl::cfg::VersionSortKey(name.c_str()) != expected) std::abort();
  return 0;
}
