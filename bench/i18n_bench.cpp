// Localised texts on the sample tree (examples/halcyra-sample.reg): a text
// whose language library is already in the cache, against GNU gettext's
// dgettext on a compiled catalogue of the same texts (built from the same
// catalogue file); the library's own request, whose library is found only
// in another version; and a miss that loads (and at the end unloads) a
// library.
#include <benchmark/benchmark.h>
#include <libintl.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <string>

#include "bench/bench_store.h"
#include "korutl.h"
#include "siblings/rsv/rsv.h"

namespace {

// Keys of examples/lang/hal_en.txt, asked in turn.
constexpr std::array<const char *, 8> kKeys = {
    "HAL_SERVICE_STARTED", "HAL_AGENT_UNREACHABLE", "HAL_CONFIG_SAVED", "HAL_PLUGIN_FAILED",
    "HAL_TRAP_SENT",       "HAL_BACKUP_DONE",       "HAL_DISK_LOW",     "_RC_LANG_NOT_FOUND"};

// The run's store holds the sample tree: Halcyra 2.2.1 registers its
// libraries, Global\Language is English.
void language_store() {
  static const bool ready = [] {
    korutl_bench::bench_store();
    setenv("KORVO_LANGUAGE_PATH", KORUTL_LANGUAGE_DIR, 1);
    return rsv_import_file(KORUTL_SAMPLE_TREE, nullptr, "bench", __LINE__) == RSV_OK;
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
// the chain's first step misses and the search in other versions finds
// the library of 2.2.1. With no language given, the global one is asked.
void BM_I18nFoundInOtherVersion(benchmark::State &state, const char *language) {
  language_store();
  expect_text(state, KORVOLoadI18NString(language, kKeys[0]));
  size_t i = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(KORVOLoadI18NString(language, kKeys[i++ % kKeys.size()]));
  KORVOFiniteI18NStrings();
}
BENCHMARK_CAPTURE(BM_I18nFoundInOtherVersion, English, "English");
BENCHMARK_CAPTURE(BM_I18nFoundInOtherVersion, GlobalLanguage, nullptr);

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
