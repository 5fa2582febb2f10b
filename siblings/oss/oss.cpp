// libkoross: loading libraries through the system's loader (loader.h),
// the locale, and the trace function.
#include "siblings/oss/oss.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "siblings/oss/loader.h"
#include "siblings/trace_line.h"
#include "utl/no_throw.h"

extern "C" OSS_API const int32_t OSS_V19 = 19;

namespace {

std::atomic<oss_trace_func> trace_func{nullptr};

// Traces one failure and gives its status.
uint16_t fail(uint16_t status, const char *module, int32_t line, const char *operation,
              std::string_view reason) {
  korutl::siblings::emit_trace_line(trace_func.load(std::memory_order_acquire), module, line,
                                    operation, reason);
  return status;
}

// Why a load failed, for the trace. A file that exists but does not load
// (damaged, wrong architecture, a missing dependency) says more than any
// "not found", so its message replaces an earlier one of that kind; among
// messages of one kind the first stays.
struct LoadFailure {
  std::string text;
  bool only_missing = true;

  void offer(const std::string &why, bool missing) {
    if (text.empty() || (only_missing && !missing)) {
      text = why;
      only_missing = missing;
    }
  }
};

// One name through the folders of KORVO_LANGUAGE_PATH, then the loader's
// own search. A folder without the file tells nothing.
void *open_by_search(const std::string &name, LoadFailure &failure) {
  const auto attempt = [&failure](const std::string &path, bool quiet_if_missing) -> void * {
    std::string why;
    bool missing = false;
    void *h = koross::open_library(path, why, missing);
    if (h == nullptr && !(quiet_if_missing && missing)) failure.offer(why, missing);
    return h;
  };
  if (koross::names_a_path(name)) return attempt(name, false);
  if (const char *path = std::getenv("KORVO_LANGUAGE_PATH")) {
    std::string_view rest(path);
    while (!rest.empty()) {
      const size_t end = rest.find(koross::kPathListSeparator);
      const std::string_view folder = rest.substr(0, end);
      rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
      if (folder.empty()) continue;
      if (void *h = attempt(std::string(folder) + "/" + name, true)) return h;
    }
  }
  return attempt(name, false);
}

bool ends_with_dll(const std::string &name) {
  if (name.size() <= 4) return false;
  std::string suffix = name.substr(name.size() - 4);
  for (char &c : suffix) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return suffix == ".dll";
}

}  // namespace

extern "C" {

OSS_API uint16_t oss_load_library(const char *file, intptr_t *handle, const char *module,
                                  int32_t line) {
  return korutl::without_exceptions(
      [&]() -> uint16_t {
        if (file == nullptr || *file == '\0' || handle == nullptr) {
          return fail(OSS_E_ARGUMENT, module, line, "oss_load_library", "no file name");
        }
        LoadFailure failure;
        std::string name(file);
        void *h = open_by_search(name, failure);
        if (h == nullptr && koross::kDllStandIn != nullptr && ends_with_dll(name)) {
          name.replace(name.size() - 4, 4, koross::kDllStandIn);
          h = open_by_search(name, failure);
        }
        if (h == nullptr)
          return fail(OSS_E_NOT_FOUND, module, line, "oss_load_library", failure.text);
        *handle = reinterpret_cast<intptr_t>(h);
        return OSS_OK;
      },
      [&] { return fail(OSS_E_NOT_FOUND, module, line, "oss_load_library", "out of memory"); });
}

OSS_API uint16_t oss_get_function_address(intptr_t handle, const char *name, void **address,
                                          const char *module, int32_t line) {
  return korutl::without_exceptions(
      [&]() -> uint16_t {
        if (handle == 0 || name == nullptr || address == nullptr) {
          return fail(OSS_E_ARGUMENT, module, line, "oss_get_function_address", "null argument");
        }
        std::string reason;
        void *sym = koross::find_symbol(reinterpret_cast<void *>(handle), name, reason);
        if (sym == nullptr) {
          return fail(OSS_E_NO_SYMBOL, module, line, "oss_get_function_address", reason);
        }
        *address = sym;
        return OSS_OK;
      },
      [&] {
        return fail(OSS_E_NO_SYMBOL, module, line, "oss_get_function_address", "out of memory");
      });
}

OSS_API uint16_t oss_unload_library(intptr_t handle, const char *module, int32_t line) {
  return korutl::without_exceptions(
      [&]() -> uint16_t {
        if (handle == 0)
          return fail(OSS_E_ARGUMENT, module, line, "oss_unload_library", "null handle");
        if (std::string reason; !koross::close_library(reinterpret_cast<void *>(handle), reason)) {
          return fail(OSS_E_ARGUMENT, module, line, "oss_unload_library", reason);
        }
        return OSS_OK;
      },
      [&] { return fail(OSS_E_ARGUMENT, module, line, "oss_unload_library", "out of memory"); });
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
  const char *name = koross::message_locale();
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
