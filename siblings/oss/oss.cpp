// libkoross on the dynamic linker (dlopen/dlsym/dlclose) and setlocale.
#include "siblings/oss/oss.h"

#include <dlfcn.h>
#include <strings.h>

#include <atomic>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

extern "C" OSS_API const int32_t OSS_V19 = 19;

namespace {

std::atomic<oss_trace_func> trace_func{nullptr};

uint16_t fail(uint16_t status, const char *module, int32_t line, const char *operation,
              const std::string &reason) {
  if (oss_trace_func f = trace_func.load(std::memory_order_acquire)) {
    char text[1024];
    std::snprintf(text, sizeof text, "%s:%d: %s: %s\n", module ? module : "?", line, operation,
                  reason.c_str());
    f(text);
  }
  return status;
}

// One name through the folders of KORVO_LANGUAGE_PATH, then the linker's
// search. Keeps the first loader message for the trace.
void *open_by_search(const std::string &name, std::string &reason) {
  const auto attempt = [&reason](const std::string &path) -> void * {
    void *h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (h == nullptr && reason.empty()) {
      const char *e = dlerror();
      reason = e ? e : "cannot load " + path;
    }
    return h;
  };
  if (name.find('/') != std::string::npos) return attempt(name);
  if (const char *path = std::getenv("KORVO_LANGUAGE_PATH")) {
    std::string_view rest(path);
    while (!rest.empty()) {
      const size_t colon = rest.find(':');
      const std::string_view folder = rest.substr(0, colon);
      rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
      if (folder.empty()) continue;
      const std::string candidate = std::string(folder) + "/" + name;
      // Only a file that exists is worth the loader's error message.
      if (void *h = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL)) return h;
      if (const char *e = dlerror(); e && std::strstr(e, "No such file") == nullptr && reason.empty()) {
        reason = e;
      }
    }
  }
  return attempt(name);
}

}  // namespace

extern "C" {

OSS_API uint16_t oss_load_library(const char *file, intptr_t *handle, const char *module,
                                  int32_t line) {
  if (file == nullptr || *file == '\0' || handle == nullptr) {
    return fail(OSS_E_ARGUMENT, module, line, "oss_load_library", "no file name");
  }
  std::string reason;
  std::string name(file);
  void *h = open_by_search(name, reason);
  if (h == nullptr && name.size() > 4 && strcasecmp(name.c_str() + name.size() - 4, ".dll") == 0) {
    name.replace(name.size() - 4, 4, ".so");
    h = open_by_search(name, reason);
  }
  if (h == nullptr) return fail(OSS_E_NOT_FOUND, module, line, "oss_load_library", reason);
  *handle = reinterpret_cast<intptr_t>(h);
  return OSS_OK;
}

OSS_API uint16_t oss_get_function_address(intptr_t handle, const char *name, void **address,
                                          const char *module, int32_t line) {
  if (handle == 0 || name == nullptr || address == nullptr) {
    return fail(OSS_E_ARGUMENT, module, line, "oss_get_function_address", "null argument");
  }
  dlerror();
  void *sym = dlsym(reinterpret_cast<void *>(handle), name);
  if (sym == nullptr) {
    const char *e = dlerror();
    return fail(OSS_E_NO_SYMBOL, module, line, "oss_get_function_address",
                e ? e : std::string("no entry point ") + name);
  }
  *address = sym;
  return OSS_OK;
}

OSS_API uint16_t oss_unload_library(intptr_t handle, const char *module, int32_t line) {
  if (handle == 0) return fail(OSS_E_ARGUMENT, module, line, "oss_unload_library", "null handle");
  if (dlclose(reinterpret_cast<void *>(handle)) != 0) {
    const char *e = dlerror();
    return fail(OSS_E_ARGUMENT, module, line, "oss_unload_library", e ? e : "dlclose failed");
  }
  return OSS_OK;
}

OSS_API uint16_t oss_setlocale(int32_t, int32_t, const char *module, int32_t line) {
  if (std::setlocale(LC_ALL, "") == nullptr) {
    return fail(OSS_E_NOT_FOUND, module, line, "oss_setlocale",
                "the environment names a locale that is not installed");
  }
  return OSS_OK;
}

OSS_API uint16_t oss_getlocale(int32_t, char *area, int32_t size, const char *module,
                               int32_t line) {
  if (area == nullptr || size <= 0) {
    return fail(OSS_E_ARGUMENT, module, line, "oss_getlocale", "no area");
  }
  area[0] = '\0';
  // The message locale: the language the user wants texts in.
  const char *name = std::setlocale(LC_MESSAGES, nullptr);
  if (name == nullptr) return fail(OSS_E_NOT_FOUND, module, line, "oss_getlocale", "no locale");
  const size_t len = std::strlen(name);
  if (len >= static_cast<size_t>(size)) {
    return fail(OSS_E_ARGUMENT, module, line, "oss_getlocale", "locale name too long for the area");
  }
  std::memcpy(area, name, len + 1);
  return OSS_OK;
}

OSS_API uint16_t oss_set_trace_func(oss_trace_func func, const char *, int32_t) {
  trace_func.store(func, std::memory_order_release);
  return OSS_OK;
}

}  // extern "C"
