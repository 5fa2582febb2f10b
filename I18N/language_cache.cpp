// The cache of loaded language libraries: searching it, finding the library
// registered for a request, loading and adding it, and the search in the
// product's other versions. Records are only ever added (at the top) while
// a cache lives, so a record found stays valid until the cache is ended.
#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "I18N/language_library.h"
#include "readconfig/cfg_paths.h"
#include "readconfig/strict_version.h"
#include "siblings/rsv/rsv.h"

namespace korutl::i18n {

namespace cfg = korutl::cfg;

namespace {

// Language names of up to 95 characters are looked up; longer ones have no
// registered library.
constexpr size_t kLanguageArea = 96;
constexpr size_t kKeyPathSize = 768;

bool texts_match(const std::string &cached, std::string_view wanted) {
  return cached.empty() || wanted.empty() ||
         (cached.size() == wanted.size() &&
          strncasecmp(cached.data(), wanted.data(), wanted.size()) == 0);
}

struct FreeText {
  void operator()(char *text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

// The library file registered for the request's language under its
// languagesKey. Value names are language names with each of " .-_@" written
// as "-"; a name that is not registered is tried again without its part
// from the second "-", then without its part from the first:
// "en_US.ISO8859-1" asks for "en-US-ISO8859-1", "en-US", "en".
Text registered_file(const LanguageRequest &request) {
  if (request.language.empty() || request.languagesKey.empty() ||
      request.language.size() >= kLanguageArea)
    return nullptr;
  char name[kLanguageArea];
  std::memcpy(name, request.language.c_str(), request.language.size() + 1);
  for (char *c = name; *c != '\0'; ++c)
    if (std::strchr(" .-_@", *c) != nullptr) *c = '-';
  const char *key = request.languagesKey.c_str();
  Text file(KORVOCfgGetValue(key, name));
  char *first = std::strchr(name, '-');
  if (!file && first != nullptr) {
    if (char *second = std::strchr(first + 1, '-'); second != nullptr) {
      *second = '\0';
      file.reset(KORVOCfgGetValue(key, name));
    }
  }
  if (!file && first != nullptr) {
    *first = '\0';
    file.reset(KORVOCfgGetValue(key, name));
  }
  return file;
}

struct Release {
  void operator()(LanguageLibrary *library) const { ReleaseLanguageLibrary(library); }
};

// Loads `fileName` for the request and adds it to the cache.
LanguageLibrary *load_and_add(LanguageRequest &request, const char *fileName) {
  request.repeatable = false;
  std::unique_ptr<LanguageLibrary, Release> library(LoadLanguageLibrary(fileName));
  if (!library) return nullptr;
  library->language = request.language;
  library->product = request.product;
  library->version = request.version;
  library->instance = request.instance;
  library->lastUsed.store(std::time(nullptr), std::memory_order_relaxed);
  if (KORVOStackPush(request.cache, reinterpret_cast<intptr_t>(library.get())) != 0) return nullptr;
  return library.release();
}

struct FreeVersions {
  void operator()(char **list) const { KORVOCfgFreeProductVersions(list); }
};

}  // namespace

LanguageLibrary *FindCachedLibrary(KORVOStack *cache, const CacheKey &key) {
  const int32_t length = KORVOStackLength(cache);
  for (int32_t i = 0; i < length; ++i) {
    auto *library = reinterpret_cast<LanguageLibrary *>(KORVOStackGetNth(cache, i));
    if (library != nullptr && texts_match(library->language, key.language) &&
        texts_match(library->product, key.product) && texts_match(library->version, key.version) &&
        texts_match(library->instance, key.instance))
      return library;
  }
  return nullptr;
}

LanguageLibrary *FindCachedLibrary(const LanguageRequest &request) {
  return FindCachedLibrary(request.cache,
                           {request.language, request.product, request.version, request.instance});
}

LanguageLibrary *FindOrLoadLibrary(LanguageRequest &request) {
  if (LanguageLibrary *cached = FindCachedLibrary(request)) return cached;
  const Text file = registered_file(request);
  return file ? load_and_add(request, file.get()) : nullptr;
}

LanguageLibrary *find_or_load_file(LanguageRequest &request, const char *fileName) {
  if (LanguageLibrary *cached = FindCachedLibrary(request)) return cached;
  return load_and_add(request, fileName);
}

LanguageLibrary *FindInOtherVersions(LanguageRequest &request) {
  if (cfg::strict_version(request.product.c_str())) return nullptr;
  uint16_t count = 0;
  const std::unique_ptr<char *, FreeVersions> versions(
      KORVOCfgGetProductVersions(request.product.c_str(), &count));
  if (!versions) return nullptr;
  // Highest version first; the first that has a Languages key decides.
  for (uint16_t i = 0; i < count; ++i) {
    char path[kKeyPathSize];
    if (!cfg::compose(path, sizeof path, cfg::version_subkey, request.product.c_str(),
                      versions.get()[i], "Languages") ||
        rsv_query_key(path, nullptr, nullptr, kModule, __LINE__) != RSV_OK)
      continue;
    request.version = versions.get()[i];
    request.languagesKey = path;
    return FindOrLoadLibrary(request);
  }
  return nullptr;
}

}  // namespace korutl::i18n

extern "C" {

KORUTL_API void KORVOInitI18n(KORVOStack **cache) {
  if (cache != nullptr && *cache == nullptr) KORVOStackInit(cache);
}

KORUTL_API void KORVOFiniteI18n(KORVOStack **cache) {
  if (cache == nullptr || *cache == nullptr) return;
  while (auto *library = reinterpret_cast<korutl::i18n::LanguageLibrary *>(KORVOStackPop(*cache)))
    korutl::i18n::ReleaseLanguageLibrary(library);
  KORVOStackFinite(cache);
  *cache = nullptr;
}

}  // extern "C"
