// Loading language libraries: the OS-services library's name resolution
// through KORVO_LANGUAGE_PATH (the ".dll" -> ".so" retry on Linux, none on
// Windows), entry points, locale and trace of failures; then localised
// texts with the sample language libraries loaded from disk: the fallback
// chain step by step, the names it tries, libraries that fail to load,
// unloading, and many threads on one cache.
#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif
#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "korutl.h"
#include "siblings/oss/oss.h"
#include "tests/support/language_env.h"
#include "tests/support/run_tool.h"

namespace {

// Trace lines of the OS-services library, collected for one test.
std::vector<std::string> trace_lines;
void collect_trace(const char *line) { trace_lines.emplace_back(line); }

// KORVO_LANGUAGE_PATH ("" unset), the name asked for, and whether it loads.
using NameCase = std::tuple<std::string, std::string, bool>;

TEST(Oss, ResolvesNamesTracesFailuresAndEmptiesALocaleNameThatDoesNotFit) {
  oss_set_trace_func(collect_trace, "test", __LINE__);
  const std::string dir = KORUTL_PROBE_DIR;
#ifdef _WIN32
  std::string backslashed = dir;
  for (char &c : backslashed) c = c == '/' ? '\\' : c;
  const NameCase cases[] = {
      {"", dir + "/oss_probe.dll", true}, {"", backslashed + "\\oss_probe.dll", true},
      {"", dir + "/oss_probe.so", false}, {"C:\\nonexistent;;" + dir, "oss_probe.dll", true},
      {dir, "OSS_PROBE.DLL", true},       {dir, "oss_probe.so", false},
      {dir, "missing.dll", false}};
#else
  const NameCase cases[] = {
      {"", dir + "/oss_probe.so", true}, {"", dir + "/oss_probe.dll", true},
      {"", "oss_probe.so", false},       {":/nonexistent:" + dir, "oss_probe.so", true},
      {dir, "oss_probe.DLL", true},      {dir, "missing.dll", false}};
#endif
  for (const auto &[path, file, loads] : cases) {
    path.empty() ? unsetenv("KORVO_LANGUAGE_PATH") : setenv("KORVO_LANGUAGE_PATH", path.c_str(), 1);
    intptr_t handle = 0;
    const uint16_t st = oss_load_library(file.c_str(), &handle, "test", 7);
    EXPECT_EQ(st == OSS_OK, loads) << path << " | " << file;
    EXPECT_TRUE(st == OSS_OK || handle == 0);
    if (st != OSS_OK) continue;
    void *entry = nullptr;
    ASSERT_EQ(oss_get_function_address(handle, "get_resource", &entry, "test", 8), OSS_OK);
    EXPECT_STREQ(reinterpret_cast<const char *(*)()>(entry)(), "probe");
    void *none = &entry;
    EXPECT_EQ(oss_get_function_address(handle, "GetStringResource", &none, "test", 9),
              OSS_E_NO_SYMBOL);
    EXPECT_EQ(none, &entry) << "address untouched on failure";
    EXPECT_EQ(oss_unload_library(handle, "test", 10), OSS_OK);
  }
  unsetenv("KORVO_LANGUAGE_PATH");
  trace_lines.clear();
  intptr_t handle = 0;
  EXPECT_EQ(oss_load_library("no-such-library.dll", &handle, "I18N/korstrng", 42), OSS_E_NOT_FOUND);
  ASSERT_EQ(trace_lines.size(), 1u);
  EXPECT_EQ(trace_lines[0].rfind("I18N/korstrng:42: oss_load_library: ", 0), 0u) << trace_lines[0];
  EXPECT_NE(trace_lines[0].find("no-such-library"), std::string::npos) << "the loader's own reason";
  EXPECT_EQ(trace_lines[0].back(), '\n');
  EXPECT_EQ(trace_lines[0].find('\r'), std::string::npos) << "a system message's line end is cut";
  EXPECT_EQ(oss_load_library(nullptr, &handle, "m", 1), OSS_E_ARGUMENT);
  EXPECT_EQ(oss_load_library("x", nullptr, "m", 1), OSS_E_ARGUMENT);
  // The locale's name is read by the current-locale step of the localised
  // texts' chain (below); a name that does not fit leaves the area empty.
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(oss_setlocale(0, 0, "test", 1), OSS_OK);
  char tiny[2] = "x";
  EXPECT_NE(oss_getlocale(1, tiny, sizeof tiny, "test", 3), OSS_OK);
  EXPECT_STREQ(tiny, "");
  unsetenv("LC_ALL");
  std::setlocale(LC_ALL, "C");
  oss_set_trace_func(nullptr, "test", __LINE__);
}

const std::string kGermanNotFound =
    "(KOR0301) Für dieses Produkt ist keine Sprachbibliothek in der gewünschten Sprache "
    "installiert.";
const std::string kFixedNotFound =
    "(KOR0301) Cannot find language library (language not installed for product).";

class I18n : public korutl_test::LanguageStore {
 protected:
  // Builds the tree from "product version language file" registrations and
  // "setting section name value" settings, separated by ';'.
  static void reg(const std::string &entries) {
    std::istringstream in(entries);
    for (std::string a, b, c, d; in >> a >> b >> c >> d;) {
      if (d.back() == ';') d.pop_back();
      ASSERT_TRUE(a == "setting" ? KORVOSaveSetting("Halcyra", b.c_str(), c.c_str(), d.c_str()) == 1
                                 : KORVOCfgRegisterLanguageFile(a.c_str(), b.c_str(), c.c_str(),
                                                                d.c_str()) == 0)
          << a << " " << b;
    }
  }
  std::string p20(const char *language, const char *key = "ORR_LANGUAGE") {
    return text("\\localhost\\P\\2.0", language, key);
  }
};

// Language names are mapped and shortened; the library gets the identifier
// as passed and the requested language.
TEST_F(I18n, LanguageNamesWhatTheLibraryIsAskedOwnTextsAndEachStepOfTheChain) {
  // "en_US" is never asked for under that name.
  reg("P 2.0 en orr_en.dll; P 2.0 en_US orr_de.dll; P 2.0 fr-CA orr_fr.dll");
  EXPECT_EQ(p20("en_US.ISO8859-1"), "English");
  EXPECT_EQ(p20("fr_CA@euro"), "Français");
  // Escaped identifiers name the same version, cached or not.
  EXPECT_EQ(text("\\h\\P\\2%2E0", "EN", "ORR_LANGUAGE"), "English");
  EXPECT_EQ(p20(std::string(96, 'e').c_str()), kFixedNotFound);
  reg("Default Default Default lang_echo.dll");
  EXPECT_EQ(text(nullptr, "German", "K"), "(null)|German|K");
  EXPECT_EQ(text("localhost\\", nullptr, "K"), "localhost\\|Default|K");
  // Instance levels form the key path below the version.
  reg("P 1.0\\i1\\sub de lang_echo.dll");
  EXPECT_EQ(text("\\h\\P\\1.0\\i1\\sub", "de", "K"), "\\h\\P\\1.0\\i1\\sub|de|K");
  reg("P 2.0 German orr_de.dll; P 2.0 Default orr_en.dll");
  EXPECT_EQ(p20("German", "NO_SUCH_KEY"), "<null>");  // the library's null is the result
  EXPECT_EQ(KORVOLoadI18NStringEx(cache_, "\\h\\P\\2.0", "German", nullptr), nullptr);
  EXPECT_EQ(KORVOLoadI18NStringEx(nullptr, "\\h\\P\\2.0", "German", "ORR_LANGUAGE"), nullptr);
  reg("Halcyra 2.2.1 English hal_en.dll; Halcyra 2.2.1 French hal_fr.dll; Halcyra 2.2.1 Default "
      "hal_de.dll");
  EXPECT_STREQ(KORVOLoadI18NString(nullptr, "HAL_LANGUAGE"), "Deutsch");
  reg("setting Global Language French");
  EXPECT_STREQ(KORVOLoadI18NString("", "HAL_LANGUAGE"), "Français");
  EXPECT_STREQ(KORVOLoadI18NString("English", "HAL_LANGUAGE"), "English");
  KORVOFiniteI18NStrings();  // a later call starts a new cache
  EXPECT_STREQ(KORVOLoadI18NString("english", "HAL_LANGUAGE"), "English");
  // Each case builds a tree in which exactly one step of the chain can find
  // a library for German texts of product P, version 2.0. Linux only: on
  // Windows the current-locale step finds a library under the system
  // locale's name (English under Wine), which the cases assume absent.
#if !defined(_WIN32)
  // The tree (registrations and settings), the language asked for, the text.
  const std::tuple<const char *, const char *, std::string> cases[] = {
      // a: the exact version.
      {"P 2.0 German orr_de.dll; P 3.0 German orr_fr.dll", "German", "Deutsch"},
      // b: the highest version in numeric order, but not with Use_Strict_Version.
      {"P 2.9 German orr_fr.dll; P 2.10 German orr_de.dll", "German", "Deutsch"},
      {"P 3.0 German orr_de.dll; Halcyra 2.2.1 German hal_de.dll; "
       "setting Products\\P Use_Strict_Version 1",
       "German", kGermanNotFound},
      // c: the Default language, also in the version b settled on.
      {"P 2.0 Default orr_en.dll", "German", "English"},
      {"P 3.0 Default orr_fr.dll; P 1.0 German orr_de.dll", "German", "Français"},
      // d: the current locale, C.UTF-8 as C-UTF-8, C-UTF, then C.
      {"P 2.0 C orr_fr.dll", "German", "Français"},
      // e: a library named after the language.
      {"", "orr_de", "Deutsch"},
      // f: the global language.
      {"P 2.0 French orr_fr.dll; setting Global Language French", "German", "Français"},
      // Not found: Halcyra's text in the requested language, else a fixed one.
      {"Halcyra 2.2.1 German hal_de.dll; P 2.0 English orr_en.dll", "German", kGermanNotFound},
      {"", "German", kFixedNotFound},
  };
  setenv("LC_ALL", "C.UTF-8", 1);
  for (const auto &[tree, language, expected] : cases) {
    SCOPED_TRACE(std::string(tree) + " / " + language);
    TearDown();
    SetUp();
    reg(tree);
    EXPECT_EQ(p20(language), expected);
  }
  unsetenv("LC_ALL");
  std::setlocale(LC_ALL, "C");
#endif
}

// The library's own requests after another process changed the tree:
// Halcyra's identifier names version 2.2.1.3, for which the tree registers
// nothing, so the search in other versions settles each request; the
// korutl command changes the tree between two calls, and the next call
// gives what the whole chain gives on the changed tree.
TEST_F(I18n, OwnRequestsFollowChangesMadeByAnotherProcess) {
#if defined(_WIN32) || !defined(KORUTL_TOOL_FILE)
  GTEST_SKIP() << "needs the korutl command, and a locale step that finds nothing (Linux)";
#else
  const std::string root = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra";
  const std::string halcyra = root + "\\Products\\Halcyra";
  // The language asked (null: the global one), the change in .reg lines,
  // the text before and after it.
  const std::tuple<const char *, std::string, std::string, std::string> cases[] = {
      {"English", "[" + halcyra + "\\Versions\\2.2.1.3\\Languages]\n\"English\"=\"hal_fr.dll\"",
       "English", "Français"},
      {"English", "[-" + halcyra + "\\Versions\\2.2.1\\Languages]", "English", kFixedNotFound},
      {"German", "[" + halcyra + "]\n\"Use_Strict_Version\"=\"1\"", "Deutsch", kFixedNotFound},
      {nullptr, "[" + root + "\\Global]\n\"Language\"=\"German\"", "English", "Deutsch"},
  };
  for (const auto &[language, change, before, after] : cases) {
    SCOPED_TRACE(change);
    TearDown();
    SetUp();
    reg("Halcyra 2.2.1 English hal_en.dll; Halcyra 2.2.1 German hal_de.dll; setting Global "
        "Language English");
    const auto own_text = [language = language] {
      const char *t = KORVOLoadI18NString(language, "HAL_LANGUAGE");
      return std::string(t != nullptr ? t : "<null>");
    };
    for (int call = 0; call < 2; ++call) EXPECT_EQ(own_text(), before);
    std::ofstream(scratch("change.reg")) << "Windows Registry Editor Version 5.00\n\n"
                                         << change << "\n";
    ASSERT_EQ(korutl_test::run_tool({"reg", "import", scratch("change.reg")}).status, 0);
    for (int call = 0; call < 2; ++call) EXPECT_EQ(own_text(), after);
  }
#endif
}

// Whether the language library `stem` (orr_en, ...) is loaded.
bool is_loaded(const std::string &stem) {
  const std::string path = KORUTL_LANGUAGE_DIR "/" + stem;
#if defined(_WIN32)
  return GetModuleHandleA((path + ".dll").c_str()) != nullptr;
#else
  void *h = dlopen((path + ".so").c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (h != nullptr) dlclose(h);
  return h != nullptr;
#endif
}

TEST_F(I18n, BrokenLibrariesAreSkippedWithATraceLine) {
#if defined(_WIN32)
  GTEST_SKIP() << "Linux only: its broken libraries are made as Linux shared objects";
#endif
  std::ofstream(scratch("broken.so")) << "not a shared object\n";
  const std::string dir = std::filesystem::path(scratch("broken.so")).parent_path().string();
  setenv("KORVO_LANGUAGE_PATH", (dir + ":" + korutl_test::kLanguagePath).c_str(), 1);
  reg("P 2.0 German broken.dll; P 2.0 French missing.dll; P 2.0 Italian lang_without_entry.dll; P "
      "2.0 Default orr_en.dll");
  trace_lines.clear();
  oss_set_trace_func(collect_trace, "t", __LINE__);
  for (const char *language : {"German", "French", "Italian"})
    EXPECT_EQ(p20(language), "English") << language;
  oss_set_trace_func(nullptr, "t", __LINE__);
  // broken.dll is found as broken.so by the ".dll" -> ".so" retry: its
  // trace line tells that damage, not the missing broken.dll. A missing
  // entry point is traced as well.
  const auto line_with = [](const char *text) {
    for (const std::string &line : trace_lines)
      if (line.find(text) != std::string::npos) return line;
    return std::string("<none>");
  };
  EXPECT_NE(line_with("broken").find("broken.so"), std::string::npos) << line_with("broken");
  EXPECT_EQ(line_with("broken").find("No such file"), std::string::npos) << line_with("broken");
  EXPECT_NE(line_with("get_resource").find("oss_get_function_address"), std::string::npos);
  EXPECT_EQ(KORVOStackLength(cache_), 1);  // only the Default library was kept
}

TEST_F(I18n, FinalisationUnloadsEveryLibrary) {
  reg("P 2.0 English orr_en.dll; P 2.0 German orr_de.dll; P 2.0 French orr_fr.dll");
  for (const char *language : {"English", "German", "French", "german"})
    EXPECT_NE(p20(language), "<null>");
  EXPECT_EQ(KORVOStackLength(cache_), 3);
  for (const char *name : {"orr_en", "orr_de", "orr_fr"}) EXPECT_TRUE(is_loaded(name)) << name;
  KORVOFiniteI18n(&cache_);
  EXPECT_EQ(cache_, nullptr);
  for (const char *name : {"orr_en", "orr_de", "orr_fr"}) EXPECT_FALSE(is_loaded(name)) << name;
  KORVOFiniteI18n(&cache_);  // nothing left: does nothing
  KORVOFiniteI18n(nullptr);
}

// Many threads load texts through one cache at once, misses and hits
// mixed, and the library's own cache is created by whichever call comes
// first.
using I18nConcurrency = I18n;

TEST_F(I18nConcurrency, ThreadsShareOneCache) {
  reg("Halcyra 2.2.1 English hal_en.dll; Halcyra 2.2.1 German hal_de.dll; Halcyra 2.2.1 French "
      "hal_fr.dll; Orrery 2.10 German orr_de.dll");
  const std::tuple<const char *, const char *, const char *, const char *> requests[] = {
      {"\\localhost\\Halcyra\\2.2.1", "English", "HAL_LANGUAGE", "English"},
      {"\\localhost\\Halcyra\\2.2.1", "German", "HAL_LANGUAGE", "Deutsch"},
      {"\\localhost\\Halcyra\\2.2.1", "French", "HAL_LANGUAGE", "Français"},
      {"\\localhost\\Orrery\\2.10\\main", "German", "ORR_LANGUAGE", "Deutsch"},
      {"\\localhost\\Orrery\\3", "German", "ORR_LANGUAGE", "Deutsch"},  // found in 2.10
      {nullptr, "German", "HAL_LANGUAGE", "Deutsch"},                   // own cache
  };
  constexpr int kThreads = 8;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < 300; ++i) {
        const auto &[object_id, language, key, expected] =
            requests[static_cast<size_t>(t + i) % std::size(requests)];
        const char *text = object_id != nullptr
                               ? KORVOLoadI18NStringEx(cache_, object_id, language, key)
                               : KORVOLoadI18NString(language, key);
        if (text == nullptr || std::string(text) != expected) wrong.fetch_add(1);
      }
    });
  for (std::thread &t : threads) t.join();
  EXPECT_EQ(wrong.load(), 0);
  // Four libraries, perhaps loaded more than once by threads that missed
  // at the same moment; every record stays until the cache ends.
  EXPECT_GE(KORVOStackLength(cache_), 4);
  EXPECT_LE(KORVOStackLength(cache_), 4 * kThreads);
}

}  // namespace
