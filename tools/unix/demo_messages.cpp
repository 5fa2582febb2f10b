// Demo steps on localised texts: one message in three languages from the
// sample language libraries, and a missing language with the configuration
// that tells which step of the fallback chain found a library instead.
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "korutl.h"
#include "tools/reg_values.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

// The language libraries are found through KORVO_LANGUAGE_PATH; the sample
// ones are used unless the caller set the variable.
bool use_sample_libraries(Context &c) {
  const char *path = std::getenv("KORVO_LANGUAGE_PATH");
  if (path == nullptr || *path == '\0') {
    if (!c.report.expect(!c.language_dir.empty(), "the sample language libraries were not found"))
      return false;
    setenv("KORVO_LANGUAGE_PATH", c.language_dir.c_str(), 1);
  }
  c.report.line(std::string("KORVO_LANGUAGE_PATH=") + std::getenv("KORVO_LANGUAGE_PATH"));
  return true;
}

std::string text_of(const char *text) { return text != nullptr ? text : ""; }

void three_languages(Context &c) {
  if (!use_sample_libraries(c)) return;
  struct Want {
    const char *language;
    const char *text;
  };
  bool all = true;
  for (const Want &w : {Want{"English", "(KOR0001) The Halcyra service has started."},
                        Want{"German", "(KOR0001) Der Halcyra-Dienst wurde gestartet."},
                        Want{"French", "(KOR0001) Le service Halcyra a démarré."}}) {
    const char *text = KORVOLoadI18NString(w.language, "HAL_SERVICE_STARTED");
    c.report.call(
        std::string("KORVOLoadI18NString(\"") + w.language + "\", \"HAL_SERVICE_STARTED\")",
        quoted(text));
    all = all && text_of(text) == w.text;
  }
  KORVOFiniteI18NStrings();
  c.report.expect(all, "the message in English, German and French");
}

// One registration the chain looks at, shown with what the store holds.
std::string registered(Report &r, const std::string &step, const std::string &key,
                       const char *name) {
  char *file = KORVOCfgGetValue(key.c_str(), name);
  const std::string value = text_of(file);
  r.call(step + " KORVOCfgGetValue(\"..." + key.substr(kProducts.size()) + "\", \"" + name + "\")",
         quoted(file));
  std::free(file);
  return value;
}

void fallback_chain(Context &c) {
  if (!use_sample_libraries(c)) return;
  KORVOStack *cache = nullptr;
  KORVOInitI18n(&cache);

  // Halcyra has no Spanish: step c, the language "Default" of the version.
  const std::string hal = kProducts + "\\Halcyra\\Versions\\2.2.1\\Languages";
  const char *id = "\\localhost\\Halcyra\\2.2.1";
  const std::string spanish =
      text_of(KORVOLoadI18NStringEx(cache, id, "Spanish", "HAL_SERVICE_STOPPED"));
  c.report.call(std::string("KORVOLoadI18NStringEx(cache, \"") + id +
                    "\", \"Spanish\", \"HAL_SERVICE_STOPPED\")",
                quoted(spanish.c_str()));
  const bool hal_a = !registered(c.report, "a.", hal, "Spanish").empty();
  const std::string hal_c = registered(c.report, "c.", hal, "Default");
  c.report.line("-> found by step c, the language \"Default\": " + hal_c);
  const bool hal_ok =
      spanish == "(KOR0002) The Halcyra service has stopped." && !hal_a && hal_c == "hal_en.dll";

  // Orrery 2.2.1 has no German, and Orrery is strict: steps a, c and e find
  // nothing, f (Halcyra's global language, English) finds orr_en.
  const std::string orr = kProducts + "\\Orrery\\Versions\\2.2.1\\Languages";
  const char *orr_id = "\\localhost\\Orrery\\2.2.1";
  const std::string german =
      text_of(KORVOLoadI18NStringEx(cache, orr_id, "German", "ORR_PROBE_STARTED"));
  c.report.call(std::string("KORVOLoadI18NStringEx(cache, \"") + orr_id +
                    "\", \"German\", \"ORR_PROBE_STARTED\")",
                quoted(german.c_str()));
  const bool orr_a = !registered(c.report, "a.", orr, "German").empty();
  char *strict = KORVOCfgGetProductConfig("Orrery", "Use_Strict_Version");
  c.report.call("b. KORVOCfgGetProductConfig(\"Orrery\", \"Use_Strict_Version\")",
                quoted(strict) + ": strict, steps b, d, g and i are left out");
  const bool orr_strict = text_of(strict) == "1";
  std::free(strict);
  const bool orr_c = !registered(c.report, "c.", orr, "Default").empty();
  struct stat st;
  const bool orr_e = stat((c.language_dir + "/German.so").c_str(), &st) == 0;
  c.report.line(std::string("e. a library German.dll (German.so) on KORVO_LANGUAGE_PATH: ") +
                (orr_e ? "present" : "none"));
  char global[1024];
  KORVOGetSetting("Halcyra", "Global", "Language", "", global);
  c.report.call("f. KORVOGetSetting(\"Halcyra\", \"Global\", \"Language\")", quoted(global));
  const std::string orr_f = registered(c.report, "f.", orr, global);
  c.report.line("-> found by step f, Halcyra's global language: " + orr_f);
  const bool orr_ok = german == "(ORR0010) The probe has started its round." && !orr_a &&
                      orr_strict && !orr_c && !orr_e && orr_f == "orr_en.dll";

  KORVOFiniteI18n(&cache);
  c.report.expect(hal_ok, "Halcyra in Spanish: the English text through \"Default\"") &&
      c.report.expect(orr_ok,
                      "Orrery 2.2.1 in German: the English text through Halcyra's global language");
}

}  // namespace

KORUTL_DEMO_STEP(80, "A localised message in English, German and French", three_languages);
KORUTL_DEMO_STEP(90, "A language that is missing: which step of the fallback chain found a library",
                 fallback_chain);

}  // namespace korutl_tool::demo
