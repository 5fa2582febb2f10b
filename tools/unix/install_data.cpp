#include "tools/install_data.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

namespace korutl_tool {

namespace {

// The folder of the running command.
std::string program_dir() {
  char path[PATH_MAX];
  const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  if (n <= 0) return "";
  std::string dir(path, static_cast<size_t>(n));
  return dir.substr(0, dir.rfind('/'));
}

}  // namespace

std::string installed_data(const std::string &relative) {
  const std::string dir = program_dir();
  if (dir.empty()) return "";
  const std::string found = dir + "/../" + relative;
  struct stat st;
  if (stat(found.c_str(), &st) != 0) return "";
  char resolved[PATH_MAX];
  return realpath(found.c_str(), resolved) != nullptr ? resolved : found;
}

std::string use_installed_language_libraries() {
  const char *path = std::getenv("KORVO_LANGUAGE_PATH");
  if (path != nullptr && *path != '\0') return path;
  const std::string dir = installed_data(KORUTL_INSTALL_LANGDIR);
  if (!dir.empty()) setenv("KORVO_LANGUAGE_PATH", dir.c_str(), 1);
  return dir;
}

}  // namespace korutl_tool
