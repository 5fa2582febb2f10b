// The command's value texts (tools/reg_values.cpp): any text either parses
// for a type or is refused, and what `reg query` shows of the parsed bytes
// parses back to the same bytes, for every type.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "siblings/rsv/rsv.h"
#include "tools/reg_values.h"

using namespace korutl_tool;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  static constexpr uint32_t kTypes[] = {RSV_REG_SZ,    RSV_REG_EXPAND_SZ, RSV_REG_MULTI_SZ,
                                        RSV_REG_DWORD, RSV_REG_QWORD,     RSV_REG_BINARY,
                                        RSV_REG_NONE};
  const uint32_t type = kTypes[data[0] % 7];
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  if (text.find('\0') != std::string::npos) return 0;  // no command-line word holds one
  std::string bytes, again;
  if (!reg_parse_data(type, text, kMultiSeparator, bytes).empty()) return 0;
  if (!reg_parse_data(type, reg_show_value(type, bytes), kMultiSeparator, again).empty() ||
      again != bytes)
    std::abort();
  JsonWriter json;
  reg_json_data(json, type, bytes);
  return 0;
}
