#include "readconfig/strict_version.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "korutl.h"
#include "readconfig/settings.h"

namespace korutl::cfg {

bool strict_version(const char *product) {
  char section[setting_buffer_size];
  const int n = std::snprintf(section, sizeof section, "Products\\%s", product);
  // A product name too long for a setting's path has no setting.
  if (n < 0 || static_cast<size_t>(n) >= sizeof section) return false;
  char value[setting_buffer_size];
  KORVOGetSetting("Halcyra", section, "Use_Strict_Version", "", value);
  if (std::strlen(value) > 3) return false;
  return static_cast<uint8_t>(std::atoi(value)) != 0;
}

}  // namespace korutl::cfg
