#include "tools/install_data.h"

#include <cstdlib>

namespace korutl_tool {

std::string installed_data(const std::string &) { return ""; }

std::string use_installed_language_libraries() {
  const char *path = std::getenv("KORVO_LANGUAGE_PATH");
  return path != nullptr ? path : "";
}

}  // namespace korutl_tool
