#include "tools/reg_keys.h"

#include <strings.h>

#include <algorithm>
#include <cstring>

namespace korutl_tool {

std::string reg_full_key(const std::string &key) {
  const size_t root_end = std::min(key.find('\\'), key.size());
  for (const RegRoot &root : kRegRoots) {
    for (const char *form : {root.name, root.short_name}) {
      if (root_end != std::strlen(form) || strncasecmp(key.c_str(), form, root_end) != 0) continue;
      std::string full = root.name + key.substr(root_end);
      while (full.back() == '\\') full.pop_back();
      return full;
    }
  }
  return "";
}

bool reg_is_root(const std::string &full_key) { return full_key.find('\\') == std::string::npos; }

std::string reg_root_names() {
  std::string names;
  for (const RegRoot &root : kRegRoots)
    names += (names.empty() ? "" : ", ") + std::string(root.short_name);
  return names;
}

}  // namespace korutl_tool
