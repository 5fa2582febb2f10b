// The .reg parser on arbitrary bytes: it must never crash, and whatever it
// accepts must be keys with usable paths, and never the deletion of a root.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/store_rules.h"
#include "siblings/rsv/regfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::vector<korutl::store::KeyRecord> records;
  size_t bad_line = 0;
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  const korutl::regfile::Parsed parsed = korutl::regfile::parse(text, records, bad_line);
  if (parsed != korutl::regfile::Parsed::ok) {
    if (parsed != korutl::regfile::Parsed::malformed || bad_line == 0) std::abort();
    return 0;
  }
  std::vector<std::string_view> parts;
  for (const auto &r : records) {
    if (!korutl::store::split_key_path(r.path, parts)) std::abort();
    if (r.remove &&
        (!r.values.empty() || !r.removed_values.empty() || korutl::store::is_root_key(r.path)))
      std::abort();
  }
  return 0;
}
