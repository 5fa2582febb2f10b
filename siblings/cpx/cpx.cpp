// libkorcpx on iconv. Handles index a table of open converters; each has
// its own mutex because an iconv descriptor keeps shift state.
#include "siblings/cpx/cpx.h"

#include <iconv.h>
#include <langinfo.h>
#include <strings.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace {

struct CodeSet {
  int32_t number;
  const char *iconv_name;
};

// The first entry of a name wins when the local code set is looked up.
constexpr CodeSet kCodeSets[] = {
    {437, "CP437"},         {850, "CP850"},         {1200, "UTF-16LE"},  {1201, "UTF-16BE"},
    {1250, "CP1250"},       {1251, "CP1251"},       {1252, "CP1252"},    {20127, "ANSI_X3.4-1968"},
    {28591, "ISO-8859-1"},  {28592, "ISO-8859-2"},  {28605, "ISO-8859-15"}, {65001, "UTF-8"},
    {CPX_CODESET_FAMILY, "UTF-8"},
};

const char *iconv_name_of(int32_t number) {
  for (const CodeSet &c : kCodeSets) {
    if (c.number == number) return c.iconv_name;
  }
  return nullptr;
}

struct Converter {
  std::mutex mutex;
  iconv_t cd;
  ~Converter() { iconv_close(cd); }
};

std::mutex table_mutex;  // guards `started` and `converters`
bool started = false;
std::vector<std::shared_ptr<Converter>> converters;  // handle = index + 1

std::shared_ptr<Converter> converter_of(int32_t handle) {
  std::lock_guard g(table_mutex);
  if (handle <= 0 || static_cast<size_t>(handle) > converters.size()) return nullptr;
  return converters[handle - 1];
}

}  // namespace

extern "C" {

CPX_API int32_t cpx_init(void) {
  std::lock_guard g(table_mutex);
  started = true;
  return CPX_OK;
}

CPX_API int32_t cpx_init_ex(const char *const *settings) {
  if (settings == nullptr) return CPX_E_ARGUMENT;
  constexpr std::string_view kObjDir = "CPXOBJDIR=";
  for (const char *const *s = settings; *s != nullptr; ++s) {
    const std::string_view setting(*s);
    if (setting.substr(0, kObjDir.size()) != kObjDir) return CPX_E_SETTING;
    struct stat st;
    if (stat(*s + kObjDir.size(), &st) != 0 || !S_ISDIR(st.st_mode)) return CPX_E_SETTING;
  }
  return cpx_init();
}

CPX_API int32_t cpx_term(void) {
  std::lock_guard g(table_mutex);
  converters.clear();  // a converter in use elsewhere closes when that use ends
  started = false;
  return CPX_OK;
}

CPX_API int32_t cpx_local_codeset(void) {
  const char *name = nl_langinfo(CODESET);
  if (name == nullptr) return 0;
  for (const CodeSet &c : kCodeSets) {
    if (strcasecmp(c.iconv_name, name) == 0) return c.number;
  }
  return 0;
}

CPX_API int32_t cpx_open_conversion(int32_t from, int32_t to, int32_t *handle) {
  if (handle == nullptr) return CPX_E_ARGUMENT;
  const char *from_name = iconv_name_of(from);
  const char *to_name = iconv_name_of(to);
  if (from_name == nullptr || to_name == nullptr) return CPX_E_UNKNOWN_CODESET;
  std::lock_guard g(table_mutex);
  if (!started) return CPX_E_NOT_STARTED;
  iconv_t cd = iconv_open(to_name, from_name);
  if (cd == reinterpret_cast<iconv_t>(-1)) return CPX_E_UNKNOWN_CODESET;
  auto conv = std::make_shared<Converter>();
  conv->cd = cd;
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
}

CPX_API int32_t cpx_close_conversion(int32_t handle) {
  std::lock_guard g(table_mutex);
  if (handle <= 0 || static_cast<size_t>(handle) > converters.size()) return CPX_E_ARGUMENT;
  converters[handle - 1].reset();
  return CPX_OK;
}

CPX_API int32_t cpx_convert_text(int32_t handle, intptr_t source, intptr_t source_length,
                                 intptr_t target, intptr_t target_capacity, intptr_t written,
                                 int32_t reserved1, int32_t reserved2, int32_t reserved3,
                                 intptr_t flags) {
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
  // Leave room for the terminator so iconv itself can never pass the end.
  size_t out_left = capacity - (terminate ? 1 : 0);

  std::lock_guard g(conv->mutex);
  iconv(conv->cd, nullptr, nullptr, nullptr, nullptr);  // a fresh shift state per text
  const size_t r = iconv(conv->cd, &in, &in_left, &out, &out_left);
  if (r == static_cast<size_t>(-1)) return errno == E2BIG ? CPX_E_TARGET_TOO_SMALL : CPX_E_INVALID_INPUT;
  // Flush a closing shift sequence, if the target code set has one.
  if (iconv(conv->cd, nullptr, nullptr, &out, &out_left) == static_cast<size_t>(-1)) {
    return CPX_E_TARGET_TOO_SMALL;
  }
  const auto length = static_cast<int32_t>(out - reinterpret_cast<char *>(target));
  if (terminate) *out = '\0';
  if (written != 0) *reinterpret_cast<int32_t *>(written) = length;
  return CPX_OK;
}

}  // extern "C"
