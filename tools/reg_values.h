// Registry values as the korutl command takes and shows them: type names,
// the bytes a value of each type stores for a command-line text, the text
// and JSON forms of a value's bytes, and reading values and names below a
// key. The one place these rules live: every `reg` verb, the tree printer,
// `cfg` and `demo` go through it.
#ifndef KORUTL_TOOLS_REG_VALUES_H
#define KORUTL_TOOLS_REG_VALUES_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/output.h"
#include "utl/rsv_names.h"

namespace korutl_tool {

// Where Halcyra's configuration tree starts.
inline const std::string kProducts = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products";

// The module name the registry commands give with their calls, for the
// library's trace.
inline constexpr const char *kRegModule = "tools/reg";

// The type code (RSV_REG_*) of a type name in any letter case ("reg_dword"),
// nothing for a name the command does not know.
std::optional<uint32_t> reg_type_code(std::string_view name);

// "REG_SZ" for 1 and so on; "REG_UNKNOWN(n)" for a code without a name.
std::string reg_type_name(uint32_t code);

// The type names the command knows, ", "-separated, for help texts.
std::string reg_type_names();

// The separator of REG_MULTI_SZ items on the command line unless one is
// given: the two characters backslash and zero, as reg.exe writes them.
inline constexpr std::string_view kMultiSeparator = "\\0";

// The bytes a value of `type` stores for the command-line `text`:
// - REG_SZ, REG_EXPAND_SZ: the text and a terminating zero.
// - REG_DWORD, REG_QWORD: a whole number in decimal or 0x hex (no sign,
//   leading zeros decimal), within 32 or 64 bits, little-endian. No text: 0.
// - REG_BINARY, REG_NONE: pairs of hex digits in either case.
// - REG_MULTI_SZ: items split at `separator` (not empty), each followed
//   by a zero, and one zero more; an empty item would end the list early
//   when read, so it is refused. No text or "": no items.
// Returns "" on success, else why the text does not fit the type.
std::string reg_parse_data(uint32_t type, const std::optional<std::string> &text,
                           std::string_view separator, std::string &bytes);

// The items of REG_MULTI_SZ bytes: split at each zero, the list's closing
// zeros dropped. An empty item inside the list is kept.
std::vector<std::string> reg_multi_sz_items(const std::string &bytes);

// The text form of a value, as reg.exe shows it: REG_SZ and REG_EXPAND_SZ
// up to their first zero, REG_MULTI_SZ items joined by `separator`, DWORD
// and QWORD (of 4 and 8 bytes) in lower-case 0x hex, anything else as
// contiguous upper-case hex digits.
std::string reg_show_value(uint32_t type, const std::string &bytes,
                           std::string_view separator = kMultiSeparator);

// The JSON form of a value's data: a string for REG_SZ and REG_EXPAND_SZ
// (up to the first zero), a number for DWORD and QWORD of 4 and 8 bytes, an
// array of strings for REG_MULTI_SZ, the upper-case hex string otherwise.
void reg_json_data(JsonWriter &json, uint32_t type, const std::string &bytes);

// A listing made of many reads sees one committed state of the tree.
struct ReadSnapshot : korutl::RsvSnapshot {
  ReadSnapshot() : RsvSnapshot(kRegModule, __LINE__) {}
};

// A value's type and bytes.
struct RegValue {
  uint32_t type = 0;
  std::string bytes;
};

// Reads one value ("" the default value) into `value`; the registry
// service's status (RSV_E_NO_KEY, RSV_E_NO_VALUE when it is missing).
uint16_t reg_read_value(const std::string &key, const std::string &name, RegValue &value);

// Whether the value exists: RSV_OK, RSV_E_NO_VALUE, RSV_E_NO_KEY or a
// failure of the service.
uint16_t reg_probe_value(const std::string &key, const std::string &name);

// The names a registry-service listing hands out, whole or not at all:
// `list` calls the service with the function and context it is given.
// The service's status; RSV_E_STORE, with no names, when memory ran out.
uint16_t collect_names(std::vector<std::string> &names,
                       const std::function<uint16_t(rsv_name_func, void *)> &list);

// The names of a key's values (in the order they were set) or subkeys (in
// name order) into `names`, whole whatever their length or number, with
// the registry service's status.
uint16_t list_names(const std::string &key, korutl::NameKind kind, std::vector<std::string> &names,
                    const char *module = kRegModule);

// The same, empty when the key is missing or cannot be listed.
std::vector<std::string> reg_value_names(const std::string &key);
std::vector<std::string> reg_subkey_names(const std::string &key);

}  // namespace korutl_tool

#endif
