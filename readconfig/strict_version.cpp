#include "readconfig/strict_version.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"
#include "readconfig/settings.h"

namespace korutl::cfg {

bool strict_version(const char *product) {
  const std::string section = std::string("Products\\") + product;
  char value[setting_buffer_size];
  KORVOGetSetting("Halcyra", section.c_str(), "Use_Strict_Version", "", value);
  if (std::strlen(value) > 3) return false;
  return static_cast<uint8_t>(std::atoi(value)) != 0;
}

}  // namespace korutl::cfg
