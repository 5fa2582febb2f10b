// Key paths as the korutl command takes them: a key begins with one of the
// root keys the store knows, in its long or short form and any letter case.
#ifndef KORUTL_TOOLS_REG_KEYS_H
#define KORUTL_TOOLS_REG_KEYS_H

#include <string>

namespace korutl_tool {

// A root key with its short form.
struct RegRoot {
  const char *name;
  const char *short_name;
};

// The root keys of the store: on Windows the system registry's, on Linux
// the same names, so that a tree moves between hosts unchanged.
inline constexpr RegRoot kRegRoots[] = {
    {"HKEY_LOCAL_MACHINE", "HKLM"}, {"HKEY_CURRENT_USER", "HKCU"},   {"HKEY_CLASSES_ROOT", "HKCR"},
    {"HKEY_USERS", "HKU"},          {"HKEY_CURRENT_CONFIG", "HKCC"},
};

// The full form of `key`: its root in the long upper-case form
// ("hklm\Software" -> "HKEY_LOCAL_MACHINE\Software"), trailing backslashes
// dropped; "" when it does not begin with a root key. The names below the
// root are checked by the store.
std::string reg_full_key(const std::string &key);

// Whether a full key is a root key itself.
bool reg_is_root(const std::string &full_key);

// "HKLM, HKCU, HKCR, HKU, HKCC", for messages.
std::string reg_root_names();

}  // namespace korutl_tool

#endif
