// Every allocation the library makes may fail. This program is linked with
// malloc, calloc, realloc and operator new wrapped (tests/CMakeLists.txt),
// so a test can make exactly the nth call fail (operator new then throws). Each operation below is
// run with the 1st, 2nd, ... allocation failing until one run makes no failing call: every run must
// give the operation's failure result or its full answer, never a crash, and LeakSanitizer
// (sanitizer builds) sees nothing left over.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "korutl.h"
#include "tests/support/cfg_tree.h"
#include "tests/support/language_env.h"
#include "tests/support/temp_store.h"

namespace {

// 0: no call fails; n > 0: the nth call from now fails, later ones do not.
std::atomic<long> countdown{0};
std::atomic<long> failed{0};

bool fail_this_call() {
  if (countdown.load(std::memory_order_relaxed) <= 0) return false;
  if (countdown.fetch_sub(1, std::memory_order_relaxed) != 1) return false;
  failed.fetch_add(1, std::memory_order_relaxed);
  return true;
}

}  // namespace

// Visible beyond this program: under the sanitizers the linker also sees
// the shared libraries' references through the wrappers.
#define WRAPPER __attribute__((visibility("default")))
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
WRAPPER void *__wrap_malloc(size_t size) {
  return fail_this_call() ? nullptr : __real_malloc(size);
}
WRAPPER void *__wrap_calloc(size_t count, size_t size) {
  return fail_this_call() ? nullptr : __real_calloc(count, size);
}
WRAPPER void *__wrap_realloc(void *block, size_t size) {
  return fail_this_call() ? nullptr : __real_realloc(block, size);
}
void *__real__Znwm(size_t size);
WRAPPER void *__wrap__Znwm(size_t size) {
  if (fail_this_call()) throw std::bad_alloc();
  return __real__Znwm(size);
}
}

namespace {

using korutl_test::cfg_set;

// Keys of the hash table, made before any allocation is made to fail. The
// table keeps the caller's key texts, so they outlive it.
const std::vector<std::string> kKeys = [] {
  std::vector<std::string> keys;
  for (int i = 0; i < 200; ++i) keys.push_back("key" + std::to_string(i));
  return keys;
}();

constexpr const char *kVersion3 =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery\\Versions\\3";

// One operation: runs it, frees what it returned, and says whether it gave
// its full, correct answer.
struct Case {
  const char *name;
  std::function<bool()> run;
};

// Runs `c` with the nth allocation failing for n = 1, 2, ... and returns
// how many allocations the operation made.
long sweep(const Case &c) {
  for (long n = 1; n < 10000; ++n) {
    failed = 0;
    countdown = n;
    bool full_answer = false;
    try {
      full_answer = c.run();
    } catch (const std::bad_alloc &) {
      // A C caller cannot catch it: the process would end.
      ADD_FAILURE() << c.name << ": std::bad_alloc escaped with allocation " << n << " failing";
    }
    countdown = 0;
    if (failed == 0) {
      EXPECT_TRUE(full_answer) << c.name << ": wrong answer with no allocation failing";
      return n - 1;
    }
  }
  ADD_FAILURE() << c.name << ": still allocating after 10000 calls";
  return 0;
}

class AllocationFailure : public korutl_test::TempStore {
 protected:
  void SetUp() override {
    TempStore::SetUp();
    cfg_set("Products\\Orrery\\Versions\\2.10", "Path", "/opt/orrery-2.10");
    cfg_set("Products\\Orrery\\Versions\\3\\Instances\\lab\\Agents\\Probe", "Port", "7001");
    cfg_set("Products\\Orrery\\Versions\\3\\Instances\\main", "Path", "/opt/orrery-3");
    cfg_set("Products\\Orrery\\Versions\\3", "Path", "/opt/orrery-3");
    cfg_set("Probe\\Environment", "ORR_HOME", "/opt/orrery");
    cfg_set("Probe\\Environment", "ORR_MODE", "lab");
  }
};

// Whether a returned malloc text is `expected` (or contains it, with
// `part`); frees it. Allocates nothing, so that only the library's own
// allocations are counted.
bool is_text(char *text, const char *expected, bool part = false) {
  const bool right = text != nullptr && (part ? std::strstr(text, expected) != nullptr
                                              : std::strcmp(text, expected) == 0);
  std::free(text);
  return right;
}

TEST_F(AllocationFailure, ConfigurationTreeAnswersOrFailsCleanly) {
  const Case cases[] = {
      {"KORVOCfgGetValue",
       [] { return is_text(KORVOCfgGetValue(kVersion3, "Path"), "/opt/orrery-3"); }},
      {"KORVOCfgGetProductVersions",
       [] {
         uint16_t count = 0;
         char **list = KORVOCfgGetProductVersions("Orrery", &count);
         const bool right = list != nullptr && count == 2 && std::strcmp(list[0], "3") == 0 &&
                            std::strcmp(list[1], "2.10") == 0;
         KORVOCfgFreeProductVersions(list);
         return right;
       }},
      {"KORVOCfgGetVersionInstances",
       [] {
         uint16_t count = 0;
         char **list = KORVOCfgGetVersionInstances("Orrery", "3", &count);
         const bool right = list != nullptr && count == 2;
         KORVOCfgFreeVersionInstances(list);
         return right;
       }},
      {"KORVOCfgLocateAgentKey",
       [] {
         return is_text(KORVOCfgLocateAgentKey("Orrery", "Probe"),
                        "\\Instances\\lab\\Agents\\Probe", true);
       }},
      {"KORVOCfgGetProductVersionLatestValue",
       [] {
         return is_text(KORVOCfgGetProductVersionLatestValue("Orrery", "", "Path"), kVersion3);
       }},
      {"KORVOCfgGetEnvironmentVars",
       [] {
         uint16_t count = 0;
         char **vars = KORVOCfgGetEnvironmentVars("Probe", &count);
         const bool right = vars != nullptr && count == 2;
         KORVOCfgFreeEnvironmentVars(vars, count);
         return right;
       }},
      {"KORVOCfgEnumerate",
       [] {
         static int calls;
         calls = 0;
         KORVOCfgEnumerate("HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Probe\\Environment",
                           [](const char *, const char *) { return ++calls; });
         return calls == 2;
       }},
      {"KORVOInitInternalProducts",
       [] {
         KORVOIntProdData *data = nullptr;
         const bool right = KORVOInitInternalProducts(&data) == 1 && data != nullptr;
         KORVOCleanupInternalProducts(data);
         return right;
       }},
      {"KORVOSaveSetting and KORVOGetSetting",
       [] {
         char value[1024] = "";
         return KORVOSaveSetting("Halcyra", "Global", "Language", "German") == 1 &&
                KORVOGetSetting("Halcyra", "Global", "Language", "none", value) == 1 &&
                std::strcmp(value, "German") == 0;
       }},
  };
  for (const Case &c : cases) EXPECT_GT(sweep(c), 0) << c.name << " allocates nothing";
}

TEST_F(AllocationFailure, StringsAndIdentifiersAnswerOrFailCleanly) {
  const Case cases[] = {
      {"KORVOStrGetEscapedXMLString",
       [] {
         return is_text(KORVOStrGetEscapedXMLString("a<b & \"c\""), "a&lt;b &amp; &quot;c&quot;");
       }},
      {"KORVOStrCreateObjectId, copy, parent, text",
       [] {
         KORVOObjectId *id = KORVOStrCreateObjectId("\\host\\Orrery\\3\\lab", nullptr);
         if (id == nullptr) return false;
         KORVOObjectId *copy = KORVOStrCopyObjectId(id);
         KORVOObjectId *parent = copy != nullptr ? KORVOGetParentObjectId(copy) : nullptr;
         const char *text = parent != nullptr ? KORVOStrGetObjectIdString(parent) : nullptr;
         const bool right = text != nullptr && std::strcmp(text, "\\host\\Orrery\\3") == 0;
         KORVOStrDestroyObjectId(parent);
         KORVOStrDestroyObjectId(copy);
         KORVOStrDestroyObjectId(id);
         return right;
       }},
      {"KORVOMakeLocalizedPath",
       [] {
         char out[64];
         return KORVOMakeLocalizedPath(out, "C:\\Halcyra", 0, "de", "msg.txt") == out &&
                std::strcmp(out, "C:\\Halcyra\\localized\\de\\msg.txt") == 0;
       }},
      {"KORVOStrGetQuotedString into a new buffer",
       [] { return is_text(KORVOStrGetQuotedString("it's", nullptr, 0, '\''), "'it\\'s'"); }},
  };
  for (const Case &c : cases) EXPECT_GT(sweep(c), 0) << c.name << " allocates nothing";
}

// Containers must also keep what they held when growing fails.
TEST_F(AllocationFailure, ContainersKeepTheirContents) {
  const Case cases[] = {
      {"KORVOHashTblLookup, 200 keys",
       [] {
         KORVOHashTbl table;
         KORVOHashTblInit(&table);
         int created = 0;
         for (int i = 0; i < 200; ++i) {
           if (KORVOHashTblLookup(&table, kKeys[i].c_str(), 16) != nullptr) ++created;
         }
         // Every key that went in is still found.
         int found = 0;
         for (int i = 0; i < 200; ++i) {
           if (KORVOHashTblLookup(&table, kKeys[i].c_str(), 0) != nullptr) ++found;
         }
         EXPECT_EQ(found, created);
         KORVOHashTblDestroy(&table);
         return created == 200;
       }},
      {"KORVOStackPush, 50 values",
       [] {
         KORVOStack *stack = nullptr;
         if (KORVOStackInit(&stack) != 0 || stack == nullptr) return false;
         int pushed = 0;
         for (intptr_t i = 0; i < 50; ++i) pushed += KORVOStackPush(stack, i) == 0;
         const bool right = pushed == 50 && KORVOStackLength(stack) == 50;
         EXPECT_EQ(KORVOStackLength(stack), pushed);
         while (KORVOStackLength(stack) > 0) KORVOStackPop(stack);
         KORVOStackFinite(&stack);
         return right;
       }},
  };
  for (const Case &c : cases) EXPECT_GT(sweep(c), 0) << c.name << " allocates nothing";
}

using AllocationFailureI18n = korutl_test::LanguageStore;

// The whole fallback chain on a cache of its own: the identifier's version
// has no registration, so the text comes from another version's library.
TEST_F(AllocationFailureI18n, LocalisedTextAnswersOrFailsCleanly) {
  ASSERT_EQ(KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "German", "hal_de.dll"), 0);
  const Case c{"KORVOLoadI18NStringEx on a fresh cache", [] {
                 KORVOStack *cache = nullptr;
                 KORVOInitI18n(&cache);
                 if (cache == nullptr) return false;
                 const char *text = KORVOLoadI18NStringEx(cache, "\\localhost\\Halcyra\\2.2.1.3",
                                                          "German", "HAL_LANGUAGE");
                 const bool right = text != nullptr && std::strcmp(text, "Deutsch") == 0;
                 KORVOFiniteI18n(&cache);
                 return right;
               }};
  EXPECT_GT(sweep(c), 0);
}

}  // namespace
