// Localised texts: a text whose language library is already in the cache,
// against GNU gettext's dgettext on a compiled catalogue of the same texts
// (built from the same catalogue file); a text found only in another
// version; and a miss that loads (and at the end unloads) a library.
#include <benchmark/benchmark.h>
#include <libintl.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <string>

#include "bench/bench_store.h"
#include "korutl.h"

namespace {

// Keys of examples/lang/hal_en.txt, asked in turn.
constexpr std::array<const char *, 8> kKeys = {
    "HAL_SERVICE_STARTED", "HAL_AGENT_UNREACHABLE", "HAL_CONFIG_SAVED", "HAL_PLUGIN_FAILED",
    "HAL_TRAP_SENT",       "HAL_BACKUP_DONE",       "HAL_DISK_LOW",     "_RC_LANG_NOT_FOUND"};

// The run's store: Halcyra 2.2.1 registers its English library.
void language_store() {
  static const bool ready = [] {
    korutl_bench::bench_store();
    setenv("KORVO_LANGUAGE_PATH", KORUTL_LANGUAGE_DIR, 1);
    return KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "English", "hal_en.dll") == 0;
  }();
  (void)ready;
}

void expect_text(benchmark::State &state, const char *text) {
  if (text == nullptr || text[0] != '(') state.SkipWithError("no text");
}

void BM_I18nCachedHit(benchmark::State &state) {
  language_store();
  KORVOStack *cache = nullptr;
  KORVOInitI18n(&cache);
  expect_text(state,
              KORVOLoadI18NStringEx(cache, "\\localhost\\Halcyra\\2.2.1", "English", kKeys[0]));
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(KORVOLoadI18NStringEx(cache, "\\localhost\\Halcyra\\2.2.1", "English",
                                                   kKeys[i++ % kKeys.size()]));
  }
  KORVOFiniteI18n(&cache);
}
BENCHMARK(BM_I18nCachedHit);

void BM_GettextDgettext(benchmark::State &state) {
  // gettext ignores LANGUAGE under the "C" locale, not under C.UTF-8.
  if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) state.SkipWithError("no C.UTF-8 locale");
  setenv("LANGUAGE", "en", 1);
  bindtextdomain("hal_en", KORUTL_BENCH_LOCALE_DIR);
  bind_textdomain_codeset("hal_en", "UTF-8");
  expect_text(state, dgettext("hal_en", kKeys[0]));
  size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(dgettext("hal_en", kKeys[i++ % kKeys.size()]));
  unsetenv("LANGUAGE");
  std::setlocale(LC_ALL, "C");
}
BENCHMARK(BM_GettextDgettext);

// Halcyra's own identifier names version 2.2.1.3, which registers nothing:
// every call repeats the first step's lookup in the store before the
// search in other versions finds the cached library.
void BM_I18nFoundInOtherVersion(benchmark::State &state) {
  language_store();
  expect_text(state, KORVOLoadI18NString("English", kKeys[0]));
  size_t i = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(KORVOLoadI18NString("English", kKeys[i++ % kKeys.size()]));
  KORVOFiniteI18NStrings();
}
BENCHMARK(BM_I18nFoundInOtherVersion);

// A new cache per iteration: the store lookup, loading the library and
// its entry point, and the call. Ending the cache (unloading) is not timed.
void BM_I18nMissLoadsLibrary(benchmark::State &state) {
  language_store();
  for (auto _ : state) {
    KORVOStack *cache = nullptr;
    KORVOInitI18n(&cache);
    benchmark::DoNotOptimize(
        KORVOLoadI18NStringEx(cache, "\\localhost\\Halcyra\\2.2.1", "English", kKeys[0]));
    state.PauseTiming();
    KORVOFiniteI18n(&cache);
    state.ResumeTiming();
  }
}
BENCHMARK(BM_I18nMissLoadsLibrary)->Unit(benchmark::kMicrosecond);

}  // namespace
