// A temporary store plus the search path of the sample language libraries
// (examples/lang) and the test libraries beside oss_probe, for tests that
// load language libraries from disk.
#ifndef KORUTL_TESTS_SUPPORT_LANGUAGE_ENV_H
#define KORUTL_TESTS_SUPPORT_LANGUAGE_ENV_H

#include <cstdlib>
#include <string>

#include "korutl.h"
#include "tests/support/temp_store.h"

namespace korutl_test {

#if defined(_WIN32)
inline const std::string kLanguagePath = KORUTL_LANGUAGE_DIR ";" KORUTL_PROBE_DIR;
#else
inline const std::string kLanguagePath = KORUTL_LANGUAGE_DIR ":" KORUTL_PROBE_DIR;
#endif

class LanguageStore : public TempStore {
 protected:
  void SetUp() override {
    TempStore::SetUp();
    setenv("KORVO_LANGUAGE_PATH", kLanguagePath.c_str(), 1);
    KORVOInitI18n(&cache_);
    ASSERT_NE(cache_, nullptr);
  }
  void TearDown() override {
    KORVOFiniteI18n(&cache_);
    KORVOFiniteI18NStrings();
    unsetenv("KORVO_LANGUAGE_PATH");
    TempStore::TearDown();
  }
  // The text for `key`, or "<null>".
  std::string text(const char *object_id, const char *language, const char *key) {
    const char *t = KORVOLoadI18NStringEx(cache_, object_id, language, key);
    return t != nullptr ? t : "<null>";
  }
  KORVOStack *cache_ = nullptr;
};

}  // namespace korutl_test

#endif
