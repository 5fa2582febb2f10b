// A text whose library is in the cache costs no read of the configuration
// store; one found only by a later step of the chain reads the store on
// every call. Reads are counted in both copies of the store module: the
// library's own (direct settings) and the registry service's.
#include <gtest/gtest.h>

#include <atomic>
#include <string_view>

#include "korutl.h"
#include "platform/store.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/language_env.h"

namespace {

std::atomic<int> reads{0};
void count_library_read(std::string_view) { reads.fetch_add(1); }
void count_service_read(const char *) { reads.fetch_add(1); }

class I18nStoreReads : public korutl_test::LanguageStore {
 protected:
  void SetUp() override {
    LanguageStore::SetUp();
    korutl::store::set_read_hook(count_library_read);
    rsv_set_read_hook(count_service_read, "t", __LINE__);
  }
  void TearDown() override {
    korutl::store::set_read_hook(nullptr);
    rsv_set_read_hook(nullptr, "t", __LINE__);
    LanguageStore::TearDown();
  }
  int reads_of(const char *object_id, const char *expected) {
    reads = 0;
    EXPECT_EQ(text(object_id, "German", "HAL_LANGUAGE"), expected) << object_id;
    return reads.load();
  }
};

TEST_F(I18nStoreReads, CachedLibraryReadsNothing) {
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "German", "hal_de.dll"), 0);
  EXPECT_GT(reads_of("\\localhost\\Halcyra\\2.2.1", "Deutsch"), 0);  // loads
  EXPECT_EQ(reads_of("\\localhost\\Halcyra\\2.2.1", "Deutsch"), 0);
  EXPECT_EQ(reads_of("\\otherhost\\HALCYRA\\2.2.1\\inst", "Deutsch"), 0);
  // Found only in another version: the first step's lookup is repeated.
  EXPECT_GT(reads_of("\\localhost\\Halcyra\\2.2.1.3", "Deutsch"), 0);
  EXPECT_GT(reads_of("\\localhost\\Halcyra\\2.2.1.3", "Deutsch"), 0);
}

}  // namespace
