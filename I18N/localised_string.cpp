// Localised texts: the fallback chain that finds the language library for
// an object identifier and a language, and the library's own cache behind
// KORVOLoadI18NString.
#include <strings.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include "I18N/language_library.h"
#include "readconfig/cfg_paths.h"
#include "siblings/oss/oss.h"
#include "siblings/rsv/rsv.h"
#include "utl/rsv_names.h"
#include "utl/version.h"

namespace {

using korutl::i18n::kModule;
using korutl::i18n::LanguageLibrary;
using korutl::i18n::LanguageRequest;
namespace cfg = korutl::cfg;

// Halcyra's own identifier: this library's product at this build's version.
constexpr const char *kOwnObjectId =
    "\\localhost\\" KORUTL_PRODUCT_NAME "\\" KORUTL_FULL_VERSION_TEXT;
constexpr const char *kNotFoundText =
    "(KOR0301) Cannot find language library (language not installed for product).";
// The instance path, the Languages key path and the file name of the
// name-based step each have 768 bytes; what would not fit is not looked up.
constexpr size_t kAreaSize = 768;
constexpr size_t kLocaleArea = 1536;

struct FreeText {
  void operator()(char *text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

struct DestroyObjectId {
  void operator()(KORVOObjectId *id) const { KORVOStrDestroyObjectId(id); }
};

Text global_language() { return Text(KORVOCfgGetValue(cfg::global_key, "Language")); }

// The current locale's name, as the OS-services library reads it after
// setting the locale from the environment; empty when it cannot be had.
std::string current_locale() {
  Text area(static_cast<char *>(std::calloc(kLocaleArea, 1)));
  if (!area) return {};
  oss_setlocale(0, 0, kModule, __LINE__);
  oss_getlocale(1, area.get(), kAreaSize, kModule, __LINE__);
  return area.get();
}

// The steps of the fallback chain, in order; the first library found ends
// it. Steps share the request, so a version or key found by a search in
// other versions stays for the steps after it.
LanguageLibrary *find_library(LanguageRequest &request, const std::string &requested) {
  using namespace korutl::i18n;
  if (LanguageLibrary *found = FindOrLoadLibrary(request)) return found;
  if (LanguageLibrary *found = FindInOtherVersions(request)) return found;
  request.language = "Default";
  if (LanguageLibrary *found = FindOrLoadLibrary(request)) return found;
  if (LanguageLibrary *found = FindInOtherVersions(request)) return found;
  // A library named after the language, "de.dll" for "de", wherever the
  // OS-services library finds it.
  request.language = requested;
  char file[kAreaSize];
  if (cfg::compose(file, sizeof file, "%s%s%s", "", requested.c_str(), ".dll")) {
    if (LanguageLibrary *found = find_or_load_file(request, file)) return found;
  }
  if (const Text global = global_language()) {
    request.language = global.get();
    if (LanguageLibrary *found = FindOrLoadLibrary(request)) return found;
  }
  if (LanguageLibrary *found = FindInOtherVersions(request)) return found;
  request.repeatable = false;  // the locale follows the environment
  request.language = current_locale();
  if (LanguageLibrary *found = FindOrLoadLibrary(request)) return found;
  return FindInOtherVersions(request);
}

// Fills the request from the identifier. A Languages key path that would
// not fit its area leaves languagesKey empty: the steps reading it find
// nothing.
void fill_request(LanguageRequest &request, const KORVOObjectId *id) {
  const char *product = KORVOStrGetProductFromObjectId(id);
  const char *version = KORVOStrGetVersionFromObjectId(id);
  const char *instance = KORVOStrGetInstanceFromObjectId(id);
  request.product = product != nullptr && *product != '\0' ? product : "Default";
  request.version = version != nullptr && *version != '\0' ? version : "Default";
  request.instance = instance != nullptr ? instance : "";
  // Every level below the version, each followed by a backslash.
  std::string instancePath;
  for (int32_t i = 3; i < KORVOStrGetNumberOfParts(id); ++i)
    instancePath.append(KORVOStrGetPart(id, i)).push_back('\\');
  char path[kAreaSize];
  bool fits;
  if (instancePath.size() >= kAreaSize) {
    fits = false;
  } else if (instancePath.size() > 1) {
    fits = cfg::compose(path, sizeof path, cfg::instance_languages_key, request.product.c_str(),
                        request.version.c_str(), instancePath.c_str());
  } else {
    fits = cfg::compose(path, sizeof path, cfg::version_subkey, request.product.c_str(),
                        request.version.c_str(), "Languages");
  }
  request.languagesKey = fits ? path : "";
}

// The first step of the chain when it can be answered from the cache
// alone: the common case of a library already loaded, at the cost of a scan
// of the identifier and the cache, without allocating. Only identifiers
// without escapes are read here; the parts are the runs between
// backslashes, as the full parser takes them.
LanguageLibrary *cached_first_step(KORVOStack *cache, const char *objectId,
                                   std::string_view language) {
  std::string_view parts[4];
  size_t count = 0;
  for (const char *p = objectId != nullptr ? objectId : ""; *p != '\0' && count < 4;) {
    if (*p == '\\') {
      ++p;
      continue;
    }
    const char *end = p;
    while (*end != '\0' && *end != '\\') {
      if (*end == '%') return nullptr;
      ++end;
    }
    parts[count++] = std::string_view(p, static_cast<size_t>(end - p));
    p = end;
  }
  const korutl::i18n::CacheKey key{language, parts[1].empty() ? "Default" : parts[1],
                                   parts[2].empty() ? "Default" : parts[2], parts[3]};
  return korutl::i18n::FindCachedLibrary(cache, key);
}

const char *call_library(LanguageLibrary *library, const char *objectId, const char *language,
                         const char *key) {
  library->lastUsed.store(std::time(nullptr), std::memory_order_relaxed);
  if (library->getStringResource != nullptr)
    return library->getStringResource(objectId, language, key);
  return library->getResource(key);
}

// How a request ended: the library found (null: none) and the product
// the identifier names.
struct Outcome {
  LanguageLibrary *library = nullptr;
  std::string product;
  bool repeatable = true;  // see LanguageRequest::repeatable
};

// The cache first, then the fallback chain; `requested` is the language
// asked for ("Default" for none).
Outcome resolve(KORVOStack *cache, const char *objectId, const std::string &requested) {
  Outcome outcome;
  if ((outcome.library = cached_first_step(cache, objectId, requested)) != nullptr) return outcome;
  const std::unique_ptr<KORVOObjectId, DestroyObjectId> id(
      KORVOStrCreateObjectId(objectId, nullptr));
  LanguageRequest request;
  request.cache = cache;
  request.language = requested;
  fill_request(request, id.get());
  {
    // The chain's reads in one read transaction of the store: one state
    // of the tree, without a transaction of its own for each read.
    const korutl::RsvSnapshot snapshot(kModule, __LINE__);
    outcome.library = find_library(request, requested);
  }
  outcome.product = request.product;
  outcome.repeatable = request.repeatable;
  return outcome;
}

// No library at all: Halcyra's own text for that case, in the same
// language. For Halcyra itself that would ask again, so a fixed text.
const char *nothing_found(const Outcome &outcome, const std::string &requested) {
  if (strncasecmp(outcome.product.c_str(), "Halcyra", 96) != 0)
    return KORVOLoadI18NString(requested.c_str(), "_RC_LANG_NOT_FOUND");
  return kNotFoundText;
}

std::string requested_language(const char *language) {
  return language != nullptr && *language != '\0' ? language : "Default";
}

const char *load_string(KORVOStack *cache, const char *objectId, const char *language,
                        const char *key) {
  const std::string requested = requested_language(language);
  const Outcome outcome = resolve(cache, objectId, requested);
  if (outcome.library == nullptr) return nothing_found(outcome, requested);
  return call_library(outcome.library, objectId, requested.c_str(), key);
}

// The library's own cache. Creating it on the first call is guarded, so
// that first calls may come from several threads; ending it is not (texts
// of the cache die with it, so no call may be under way then anyway).
// Ending it also starts a new generation, which no remembered request of
// the old one matches.
std::atomic<KORVOStack *> own_cache{nullptr};
std::atomic<uint64_t> own_cache_generation{1};
std::mutex own_cache_mutex;

KORVOStack *library_cache() {
  KORVOStack *cache = own_cache.load(std::memory_order_acquire);
  if (cache != nullptr) return cache;
  std::lock_guard guard(own_cache_mutex);
  cache = own_cache.load(std::memory_order_relaxed);
  if (cache == nullptr) {
    KORVOInitI18n(&cache);
    own_cache.store(cache, std::memory_order_release);
  }
  return cache;
}

// The requests of KORVOLoadI18NString lately resolved on this thread. A
// request always asks for the same identifier, so the language (or none:
// the global language) names it; its outcome holds while the own cache
// has the same records (they are only ever added, so its generation and
// length tell) and the store has seen no commit, for then every step
// reads and finds what it did. Outcomes that tried to load a library or
// asked the locale are not remembered.
struct Remembered {
  uint64_t generation = 0;  // 0: unused
  int32_t length = 0;
  uint64_t counter = 0;
  bool global = false;
  std::string language;   // as asked, when given
  std::string requested;  // as handed to the library
  LanguageLibrary *library = nullptr;
};
constexpr size_t kRemembered = 4;
thread_local Remembered remembered[kRemembered];
thread_local size_t next_remembered = 0;

// The state a remembered outcome is checked against, taken before any
// read of the request, so that what is read afterwards is at least as new.
struct State {
  bool counted = false;
  uint64_t counter = 0;
  uint64_t generation = 0;
  int32_t length = 0;
};

State current_state(KORVOStack *cache) {
  State state;
  state.counted = rsv_change_counter(&state.counter, kModule, __LINE__) == RSV_OK;
  state.generation = own_cache_generation.load(std::memory_order_acquire);
  state.length = KORVOStackLength(cache);
  return state;
}

Remembered *recall(const State &state, const char *language) {
  if (!state.counted) return nullptr;
  const bool global = language == nullptr;
  for (Remembered &r : remembered)
    if (r.generation == state.generation && r.length == state.length &&
        r.counter == state.counter && r.global == global && (global || r.language == language))
      return &r;
  return nullptr;
}

// Remembering is an extra: without the memory for it, the call still
// gives its text.
void remember(const State &state, const char *language, const std::string &requested,
              LanguageLibrary *library) noexcept {
  Remembered &r = remembered[next_remembered++ % kRemembered];
  r.generation = 0;  // unused until whole
  try {
    r.language = language != nullptr ? language : "";
    r.requested = requested;
  } catch (const std::bad_alloc &) {
    return;
  }
  r.global = language == nullptr;
  r.library = library;
  r.length = state.length;
  r.counter = state.counter;
  r.generation = state.generation;
}

// KORVOLoadI18NString for the own cache; language null for the global one.
const char *own_string(KORVOStack *cache, const char *language, const char *key) {
  if (language != nullptr) {
    if (LanguageLibrary *cached = cached_first_step(cache, kOwnObjectId, language))
      return call_library(cached, kOwnObjectId, language, key);
  }
  const State state = current_state(cache);
  if (const Remembered *r = recall(state, language)) {
    // A copy: the library may ask for texts itself, which may reuse r.
    const std::string requested = r->requested;
    return call_library(r->library, kOwnObjectId, requested.c_str(), key);
  }
  const Text global = language == nullptr ? global_language() : nullptr;
  const std::string requested = requested_language(language != nullptr ? language : global.get());
  const Outcome outcome = resolve(cache, kOwnObjectId, requested);
  if (outcome.library == nullptr) return nothing_found(outcome, requested);
  if (state.counted && outcome.repeatable) remember(state, language, requested, outcome.library);
  return call_library(outcome.library, kOwnObjectId, requested.c_str(), key);
}

}  // namespace

extern "C" {

KORUTL_API const char *KORVOLoadI18NStringEx(KORVOStack *cache, const char *objectId,
                                             const char *language, const char *key) {
  if (cache == nullptr || key == nullptr) return nullptr;
  try {
    return load_string(cache, objectId, language, key);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

KORUTL_API const char *KORVOLoadI18NString(const char *language, const char *key) {
  KORVOStack *cache = library_cache();
  if (cache == nullptr || key == nullptr) return nullptr;
  try {
    return own_string(cache, language != nullptr && *language != '\0' ? language : nullptr, key);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

KORUTL_API void KORVOFiniteI18NStrings(void) {
  std::lock_guard guard(own_cache_mutex);
  KORVOStack *cache = own_cache.exchange(nullptr, std::memory_order_acq_rel);
  own_cache_generation.fetch_add(1, std::memory_order_acq_rel);
  KORVOFiniteI18n(&cache);
}

}  // extern "C"
