// Many threads loading texts through one cache at once, misses and hits
// mixed, and the library's own cache created by whichever call comes first.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "korutl.h"
#include "tests/support/language_env.h"

namespace {

class I18nConcurrency : public korutl_test::LanguageStore {};

TEST_F(I18nConcurrency, ThreadsShareOneCache) {
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "English", "hal_en.dll"), 0);
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "German", "hal_de.dll"), 0);
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "French", "hal_fr.dll"), 0);
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("Orrery", "2.10", "German", "orr_de.dll"), 0);
  struct Request {
    const char *object_id;
    const char *language;
    const char *key;
    const char *expected;
  };
  const Request requests[] = {
      {"\\localhost\\Halcyra\\2.2.1", "English", "HAL_LANGUAGE", "English"},
      {"\\localhost\\Halcyra\\2.2.1", "German", "HAL_LANGUAGE", "Deutsch"},
      {"\\localhost\\Halcyra\\2.2.1", "French", "HAL_LANGUAGE", "Français"},
      {"\\localhost\\Orrery\\2.10\\main", "German", "ORR_LANGUAGE", "Deutsch"},
      {"\\localhost\\Orrery\\3", "German", "ORR_LANGUAGE", "Deutsch"},  // found in 2.10
      {nullptr, "German", "HAL_LANGUAGE", "Deutsch"},                   // own cache
  };
  constexpr int kThreads = 8;
  constexpr int kRounds = 300;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRounds; ++i) {
        const Request &r = requests[(t + i) % std::size(requests)];
        const char *text = r.object_id != nullptr
                               ? KORVOLoadI18NStringEx(cache_, r.object_id, r.language, r.key)
                               : KORVOLoadI18NString(r.language, r.key);
        if (text == nullptr || std::string(text) != r.expected) wrong.fetch_add(1);
      }
    });
  }
  for (std::thread &t : threads) t.join();
  EXPECT_EQ(wrong.load(), 0);
  // Four libraries, perhaps loaded more than once by threads that missed
  // at the same moment; every record stays until the cache ends.
  EXPECT_GE(KORVOStackLength(cache_), 4);
  EXPECT_LE(KORVOStackLength(cache_), 4 * kThreads);
}

}  // namespace
