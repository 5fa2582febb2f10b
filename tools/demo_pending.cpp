// Demo steps whose library functions this build does not have yet.
#include "tools/demo.h"

namespace korutl_tool::demo {

namespace {

void configuration(Context &c) {
  c.report.unavailable("the configuration tree operations (KORVOCfg...) are not in this library yet");
}

void messages(Context &c) {
  c.report.unavailable("the localised texts (KORVOLoadI18NString...) are not in this library yet");
}

}  // namespace

KORUTL_DEMO_STEP(30, "Products, versions, instances and agents; latest value; agent key", configuration);
KORUTL_DEMO_STEP(80, "Localised messages in English, German and French; the fallback chain", messages);

}  // namespace korutl_tool::demo
