// Registry values as the korutl command shows them: type names, the text
// form of a value's bytes, and the names below a key. Shared by `reg`, the
// tree printer and `demo`.
#ifndef KORUTL_TOOLS_REG_VALUES_H
#define KORUTL_TOOLS_REG_VALUES_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "utl/rsv_names.h"

namespace korutl_tool {

// Where Halcyra's configuration tree starts.
inline const std::string kProducts = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products";

// The module name the registry commands give with their calls, for the
// library's trace.
inline constexpr const char *kRegModule = "tools/reg";

// Registry type names and their codes (RSV_REG_*).
const std::map<std::string, uint32_t> &reg_type_codes();

// "REG_SZ" for 1 and so on; "REG_NONE" for a code without a name.
std::string reg_type_name(uint32_t code);

// "HKLM" and "HKLM\..." stand for HKEY_LOCAL_MACHINE.
std::string reg_full_key(const std::string &key);

// The text form of a value: texts as they are, REG_MULTI_SZ items joined
// by "\0", DWORD and QWORD in 0x hex, anything else as hex digits.
std::string reg_show_value(uint32_t type, const std::string &bytes);

// A listing made of many reads sees one committed state of the tree.
struct ReadSnapshot : korutl::RsvSnapshot {
  ReadSnapshot() : RsvSnapshot(kRegModule, __LINE__) {}
};

// A value's type and bytes, or nothing when the key or value is missing.
struct RegValue {
  uint32_t type = 0;
  std::string bytes;
};
std::optional<RegValue> reg_read_value(const std::string &key, const std::string &name);

// The names of a key's values (in the order they were set) or subkeys (in
// name order) into `names`, with the registry service's status.
uint16_t list_names(const std::string &key, korutl::NameKind kind, std::vector<std::string> &names,
                    const char *module = kRegModule);

// The same, empty when the key is missing or cannot be listed.
std::vector<std::string> reg_value_names(const std::string &key);
std::vector<std::string> reg_subkey_names(const std::string &key);

}  // namespace korutl_tool

#endif
