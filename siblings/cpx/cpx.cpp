// libkorcpx: handles index a table of open converters (codec.h); each has
// its own mutex because a converter may keep shift state.
#include "siblings/cpx/cpx.h"

#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string_view>
#include <system_error>
#include <vector>

#include "siblings/cpx/codec.h"
#include "utl/no_throw.h"

namespace {

// A codec with the mutex that keeps it to one caller at a time.
struct Converter {
  std::mutex mutex;
  std::unique_ptr<korcpx::Codec> codec;
};

std::mutex table_mutex;  // guards `started` and `converters`
bool started = false;
std::vector<std::shared_ptr<Converter>> converters;  // handle = index + 1

std::shared_ptr<Converter> converter_of(int32_t handle) {
  std::lock_guard g(table_mutex);
  if (handle <= 0 || static_cast<size_t>(handle) > converters.size()) return nullptr;
  return converters[static_cast<size_t>(handle) - 1];
}

}  // namespace

extern "C" {

CPX_API int32_t cpx_init(void) {
  std::lock_guard g(table_mutex);
  started = true;
  return CPX_OK;
}

CPX_API int32_t cpx_init_ex(const char *const *settings) {
  return korutl::without_exceptions(
      [&]() -> int32_t {
        if (settings == nullptr) return CPX_E_ARGUMENT;
        constexpr std::string_view kObjDir = "CPXOBJDIR=";
        for (const char *const *s = settings; *s != nullptr; ++s) {
          const std::string_view setting(*s);
          if (setting.substr(0, kObjDir.size()) != kObjDir) return CPX_E_SETTING;
          std::error_code error;
          if (!std::filesystem::is_directory(*s + kObjDir.size(), error)) return CPX_E_SETTING;
        }
        return cpx_init();
      },
      [&] { return CPX_E_NO_MEMORY; });
}

CPX_API int32_t cpx_term(void) {
  std::lock_guard g(table_mutex);
  converters.clear();  // a converter in use elsewhere closes when that use ends
  started = false;
  return CPX_OK;
}

CPX_API int32_t cpx_local_codeset(void) { return korcpx::local_codeset(); }

CPX_API int32_t cpx_open_conversion(int32_t from, int32_t to, int32_t *handle) {
  return korutl::without_exceptions(
      [&]() -> int32_t {
        if (handle == nullptr) return CPX_E_ARGUMENT;
        if (korcpx::code_set(from) == nullptr || korcpx::code_set(to) == nullptr)
          return CPX_E_UNKNOWN_CODESET;
        std::lock_guard g(table_mutex);
        if (!started) return CPX_E_NOT_STARTED;
        auto conv = std::make_shared<Converter>();
        conv->codec = korcpx::open_codec(from, to);
        if (conv->codec == nullptr) return CPX_E_UNKNOWN_CODESET;
        // Reuse a closed slot so that handles stay small.
        for (size_t i = 0; i < converters.size(); ++i) {
          if (converters[i] == nullptr) {
            converters[i] = std::move(conv);
            *handle = static_cast<int32_t>(i + 1);
            return CPX_OK;
          }
        }
        converters.push_back(std::move(conv));
        *handle = static_cast<int32_t>(converters.size());
        return CPX_OK;
      },
      [&] { return CPX_E_NO_MEMORY; });
}

CPX_API int32_t cpx_close_conversion(int32_t handle) {
  std::lock_guard g(table_mutex);
  if (handle <= 0 || static_cast<size_t>(handle) > converters.size()) return CPX_E_ARGUMENT;
  converters[static_cast<size_t>(handle) - 1].reset();
  return CPX_OK;
}

CPX_API int32_t cpx_convert_text(int32_t handle, intptr_t source, intptr_t source_length,
                                 intptr_t target, intptr_t target_capacity, intptr_t written,
                                 int32_t reserved1, int32_t reserved2, int32_t reserved3,
                                 intptr_t flags) {
  return korutl::without_exceptions(
      [&]() -> int32_t {
        if (source == 0 || target == 0 || target_capacity < 0 || reserved1 != 0 || reserved2 != 0 ||
            reserved3 != 0) {
          return CPX_E_ARGUMENT;
        }
        const std::shared_ptr<Converter> conv = converter_of(handle);
        if (conv == nullptr) return CPX_E_ARGUMENT;
        auto *in = reinterpret_cast<char *>(source);
        size_t in_left = source_length < 0 ? std::strlen(in) : static_cast<size_t>(source_length);
        auto *out = reinterpret_cast<char *>(target);
        const bool terminate = (flags & CPX_TERMINATE) != 0;
        const size_t capacity = static_cast<size_t>(target_capacity);
        if (terminate && capacity == 0) return CPX_E_TARGET_TOO_SMALL;
        // Leave room for the terminator so the converter can never pass the end.
        size_t length = 0;
        std::lock_guard g(conv->mutex);
        const int32_t r =
            conv->codec->convert(in, in_left, out, capacity - (terminate ? 1 : 0), length);
        if (r != CPX_OK) return r;
        out += length;
        if (terminate) *out = '\0';
        if (written != 0) *reinterpret_cast<int32_t *>(written) = static_cast<int32_t>(length);
        return CPX_OK;
      },
      [&] { return CPX_E_NO_MEMORY; });
}

}  // extern "C"
