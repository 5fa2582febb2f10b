// libkoross's loader on the dynamic linker.
#include <dlfcn.h>

#include <clocale>
#include <cstring>

#include "siblings/oss/loader.h"

namespace koross {

const char kPathListSeparator = ':';
// Registrations made for Windows ("de.dll") find the shared object "de.so".
const char *const kDllStandIn = ".so";

bool names_a_path(std::string_view name) { return name.find('/') != std::string_view::npos; }

void *open_library(const std::string &path, std::string &reason, bool &missing) {
  void *h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (h == nullptr) {
    const char *e = dlerror();
    reason = e != nullptr ? e : "cannot load " + path;
    missing = e != nullptr && std::strstr(e, "No such file") != nullptr;
  }
  return h;
}

void *find_symbol(void *library, const char *name, std::string &reason) {
  dlerror();
  void *sym = dlsym(library, name);
  if (sym == nullptr) {
    const char *e = dlerror();
    reason = e != nullptr ? e : std::string("no entry point ") + name;
  }
  return sym;
}

bool close_library(void *library, std::string &reason) {
  if (dlclose(library) == 0) return true;
  const char *e = dlerror();
  reason = e != nullptr ? e : "dlclose failed";
  return false;
}

const char *message_locale() { return std::setlocale(LC_MESSAGES, nullptr); }

}  // namespace koross
