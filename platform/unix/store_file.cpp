#include "platform/unix/store_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <mutex>

namespace korutl::store {

namespace {

bool absolute(const char *path) { return path != nullptr && path[0] == '/'; }

// A relative KORVO_REGISTRY as first seen, made absolute against the
// working directory of that moment; shared by every thread of the process.
std::mutex resolved_mutex;
std::map<std::string, std::string> resolved;

bool made_absolute(const std::string &relative, std::string &file, std::string &why) {
  std::lock_guard lock(resolved_mutex);
  if (const auto it = resolved.find(relative); it != resolved.end()) {
    file = it->second;
    return true;
  }
  char *cwd = getcwd(nullptr, 0);
  if (cwd == nullptr) {
    why = "KORVO_REGISTRY is relative and the current folder cannot be read";
    return false;
  }
  file = std::string(cwd) + "/" + relative;
  std::free(cwd);
  resolved.emplace(relative, file);
  return true;
}

}  // namespace

bool store_file(std::string &file, std::string &why) {
  if (const char *env = std::getenv("KORVO_REGISTRY"); env != nullptr && *env != '\0') {
    if (absolute(env)) {
      file = env;
      return true;
    }
    return made_absolute(env, file, why);
  }
  if (const char *xdg = std::getenv("XDG_STATE_HOME"); absolute(xdg)) {
    file = std::string(xdg) + "/halcyra/registry.db";
    return true;
  }
  if (const char *home = std::getenv("HOME"); absolute(home)) {
    file = std::string(home) + "/.local/state/halcyra/registry.db";
    return true;
  }
  why =
      "no store file: KORVO_REGISTRY is unset and neither XDG_STATE_HOME nor HOME is an "
      "absolute path";
  return false;
}

long busy_timeout_ms() {
  constexpr long fallback = 10000;
  const char *env = std::getenv("KORVO_REGISTRY_BUSY_TIMEOUT");
  if (env == nullptr || *env == '\0') return fallback;
  char *end = nullptr;
  errno = 0;
  const long ms = std::strtol(env, &end, 10);
  return errno == 0 && *end == '\0' && ms >= 0 && ms <= 3600000 ? ms : fallback;
}

}  // namespace korutl::store
