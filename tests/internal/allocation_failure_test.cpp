// Every allocation the library makes may fail (tests/support/
// failing_allocator.h): each operation below gives its failure result or
// its full answer, never crashes or throws, and LeakSanitizer (sanitizer
// builds) sees nothing left over.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "korutl.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/language_env.h"

namespace {

using korutl_test::cfg_set;
using korutl_test::sweep_all;
using korutl_test::SweepCase;

// Keys of the hash table, made before any allocation is made to fail. The
// table keeps the caller's key texts, so they outlive it.
const std::vector<std::string> kKeys = [] {
  std::vector<std::string> keys;
  for (int i = 0; i < 200; ++i) keys.push_back("key" + std::to_string(i));
  return keys;
}();

constexpr const char *kVersion3 =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Orrery\\Versions\\3";

const std::string kProbe = std::string(kVersion3) + "\\Instances\\lab\\Agents\\Probe";

// Whether a returned malloc text is `expected`; frees it. Allocates
// nothing, so that only the library's own allocations are counted.
bool is_text(char *text, const char *expected) {
  const bool right = text != nullptr && std::strcmp(text, expected) == 0;
  std::free(text);
  return right;
}

// Where list calls report their count.
uint16_t count;

// Whether a name list holds `want` names, `first` (unless null) the first
// of them; releases it (`slots`: an environment list, else a version or
// instance list).
bool is_list(char **list, uint16_t want, const char *first, bool slots = false) {
  const bool right =
      list != nullptr && count == want && (first == nullptr || std::strcmp(list[0], first) == 0);
  slots ? KORVOCfgFreeEnvironmentVars(list, count) : KORVOCfgFreeProductVersions(list);
  return right;
}

class AllocationFailure : public korutl_test::LanguageStore {
 protected:
  void SetUp() override {
    LanguageStore::SetUp();
    ASSERT_EQ(KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "German", "hal_de.dll"), 0);
    cfg_set("Products\\Orrery\\Versions\\2.10", "Path", "/opt/orrery-2.10");
    cfg_set("Products\\Orrery\\Versions\\3\\Instances\\lab\\Agents\\Probe", "Port", "7001");
    cfg_set("Products\\Orrery\\Versions\\3\\Instances\\main", "Path", "/opt/orrery-3");
    cfg_set("Products\\Orrery\\Versions\\3", "Path", "/opt/orrery-3");
    cfg_set("Probe\\Environment", "ORR_HOME", "/opt/orrery");
    cfg_set("Probe\\Environment", "ORR_MODE", "lab");
  }
};

TEST_F(AllocationFailure, EveryOperationAnswersOrFailsCleanly) {
  const SweepCase cases[] = {
      {"KORVOCfgGetValue",
       [] { return is_text(KORVOCfgGetValue(kVersion3, "Path"), "/opt/orrery-3"); }},
      {"KORVOCfgGetProductVersions",
       [] { return is_list(KORVOCfgGetProductVersions("Orrery", &count), 2, "3"); }},
      {"KORVOCfgGetVersionInstances",
       [] { return is_list(KORVOCfgGetVersionInstances("Orrery", "3", &count), 2, nullptr); }},
      {"KORVOCfgLocateAgentKey",
       [] { return is_text(KORVOCfgLocateAgentKey("Orrery", "Probe"), kProbe.c_str()); }},
      {"KORVOCfgGetProductVersionLatestValue",
       [] {
         return is_text(KORVOCfgGetProductVersionLatestValue("Orrery", "", "Path"), kVersion3);
       }},
      {"KORVOCfgGetEnvironmentVars",
       [] { return is_list(KORVOCfgGetEnvironmentVars("Probe", &count), 2, nullptr, true); }},
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
      {"KORVOStrGetEscapedXMLString",
       [] {
         return is_text(KORVOStrGetEscapedXMLString("a<b & \"c\""), "a&lt;b &amp; &quot;c&quot;");
       }},
      {"KORVOStrCreateObjectId, copy, parent, text",
       [] {
         KORVOObjectId *id = KORVOStrCreateObjectId("\\host\\Orrery\\3\\lab", nullptr);
         KORVOObjectId *copy = id != nullptr ? KORVOStrCopyObjectId(id) : nullptr;
         KORVOObjectId *parent = copy != nullptr ? KORVOGetParentObjectId(copy) : nullptr;
         const char *text = parent != nullptr ? KORVOStrGetObjectIdString(parent) : nullptr;
         const bool right = text != nullptr && std::strcmp(text, "\\host\\Orrery\\3") == 0;
         for (KORVOObjectId *each : {parent, copy, id}) KORVOStrDestroyObjectId(each);
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
      // Containers must also keep what they held when growing fails.
      {"KORVOHashTblLookup, 200 keys",
       [] {
         KORVOHashTbl table;
         KORVOHashTblInit(&table);
         int created = 0, found = 0;
         for (const std::string &key : kKeys)
           created += KORVOHashTblLookup(&table, key.c_str(), 16) != nullptr;
         for (const std::string &key : kKeys)
           found += KORVOHashTblLookup(&table, key.c_str(), 0) != nullptr;
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
         EXPECT_EQ(KORVOStackLength(stack), pushed);
         while (KORVOStackLength(stack) > 0) KORVOStackPop(stack);
         KORVOStackFinite(&stack);
         return pushed == 50;
       }},
      // The whole fallback chain on a cache of its own: the identifier's
      // version has no registration, so the text comes from another
      // version's library.
      {"KORVOLoadI18NStringEx on a fresh cache",
       [] {
         KORVOStack *cache = nullptr;
         KORVOInitI18n(&cache);
         const char *text = KORVOLoadI18NStringEx(cache, "\\localhost\\Halcyra\\2.2.1.3", "German",
                                                  "HAL_LANGUAGE");
         const bool right =
             cache != nullptr && text != nullptr && std::strcmp(text, "Deutsch") == 0;
         KORVOFiniteI18n(&cache);
         return right;
       }},
  };
  sweep_all(cases);
}

}  // namespace
