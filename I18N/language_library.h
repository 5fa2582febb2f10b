// The language library cache: records of loaded language libraries kept on
// a synchronised stack (newest at position 0), and the steps that find,
// load and add them for one request. Shared by the exported cache
// functions and the localised string loading.
#ifndef KORUTL_I18N_LANGUAGE_LIBRARY_H
#define KORUTL_I18N_LANGUAGE_LIBRARY_H

#include <atomic>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "korutl.h"

namespace korutl::i18n {

// Trace module of every call into a sibling library from this folder.
inline constexpr const char *kModule = "I18N/korstrng";

using GetStringResourceEntry = const char *(*)(const char *objectId, const char *language,
                                               const char *key);
using GetResourceEntry = const char *(*)(const char *key);

// One loaded library, owned by the cache that holds it. The texts are the
// request that loaded it (empty stands for null, which matches anything);
// they never change once the record is on the cache, so searching threads
// read them without a lock. lastUsed is written by every call that uses
// the library, hence atomic.
struct LanguageLibrary {
  intptr_t libraryHandle = 0;
  GetStringResourceEntry getStringResource = nullptr;
  GetResourceEntry getResource = nullptr;  // looked up only without the first
  std::string language;
  std::string product;
  std::string version;
  std::string instance;
  std::atomic<std::time_t> lastUsed{0};
};

// One call's request, private to that call. Steps of the fallback chain
// change language, version and languagesKey for the steps after them.
struct LanguageRequest {
  KORVOStack *cache = nullptr;  // not owned
  std::string language;
  std::string product;
  std::string version;
  std::string instance;
  std::string languagesKey;  // full path of the key naming the libraries
  // Cleared by a step that did more than read the store and search the
  // cache (trying to load a library, asking the current locale): only
  // while both stay as they were does the same request end the same way.
  bool repeatable = true;
};

// What a cache search compares: a request's four texts (empty for null).
struct CacheKey {
  std::string_view language;
  std::string_view product;
  std::string_view version;
  std::string_view instance;
};

// The newest cached library whose four texts match the key's (equal
// without regard to case, or empty on either side); null when none does.
LanguageLibrary *FindCachedLibrary(KORVOStack *cache, const CacheKey &key);
LanguageLibrary *FindCachedLibrary(const LanguageRequest &request);

// The cached library of the request, or the one registered for its
// language under languagesKey, loaded and added to the cache; null when
// there is none or it cannot be loaded or added.
LanguageLibrary *FindOrLoadLibrary(LanguageRequest &request);

// FindOrLoadLibrary in the Languages key of the product's highest version
// that has one, unless the product's "Use_Strict_Version" setting forbids
// it. Leaves that version and its key in the request, found or not.
LanguageLibrary *FindInOtherVersions(LanguageRequest &request);

// The cached library of the request, or `fileName` (resolved along the
// OS-services library's search path) loaded and added to the cache.
LanguageLibrary *find_or_load_file(LanguageRequest &request, const char *fileName);

// Loads `fileName` and looks up its entry point ("GetStringResource", else
// "get_resource"). A new record with empty texts, or null: no name, not
// loadable, no entry point (the library is unloaded again), no memory.
LanguageLibrary *LoadLanguageLibrary(const char *fileName);

// Unloads the record's library and releases the record; null is ignored.
void ReleaseLanguageLibrary(LanguageLibrary *library);

}  // namespace korutl::i18n

#endif
