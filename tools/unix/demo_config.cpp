// Demo steps on the configuration tree through the library's KORVOCfg*
// calls: listings in version order, the latest-value search, agent keys.
#include <cstdlib>
#include <string>
#include <vector>

#include "korutl.h"
#include "tools/cfg_tree.h"
#include "tools/reg_values.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

std::string joined(const std::vector<std::string> &names) {
  std::string text;
  for (const std::string &n : names) text += (text.empty() ? "" : ", ") + n;
  return text.empty() ? "(none)" : text;
}

// A text the library allocated, shown and released; "" stands for null.
std::string take_text(Report &r, const std::string &call, char *text) {
  const std::string shown = quoted(text);
  r.call(call, shown);
  const std::string value = text != nullptr ? text : "";
  std::free(text);
  return value;
}

void listings(Context &c) {
  uint16_t count = 0;
  char **version_list = KORVOCfgGetProductVersions("Orrery", &count);
  const auto versions = take_name_list(version_list, count);
  c.report.call("KORVOCfgGetProductVersions(\"Orrery\")", joined(versions));
  if (!c.report.expect(versions == std::vector<std::string>{"3", "2.10", "2.2.1"},
                       "versions in version order, greatest first: 3, 2.10, 2.2.1"))
    return;
  char **instance_list = KORVOCfgGetVersionInstances("Orrery", "3", &count);
  const auto instances = take_name_list(instance_list, count);
  c.report.call("KORVOCfgGetVersionInstances(\"Orrery\", \"3\")", joined(instances));
  if (!c.report.expect(instances == std::vector<std::string>{"lab"},
                       "version 3 has the instance lab"))
    return;
  c.report.line("korutl cfg tree:");
  const bool printed =
      c.report.quiet() ? cfg_products().size() >= 2 : print_cfg_tree(c.report.out(), "", "      ");
  c.report.expect(printed, "the products are in the store");
}

void latest_value(Context &c) {
  const std::string key = take_text(
      c.report, "KORVOCfgGetProductVersionLatestValue(\"Halcyra\", \"Languages\", \"German\")",
      KORVOCfgGetProductVersionLatestValue("Halcyra", "Languages", "German"));
  if (!c.report.expect(key == kProducts + "\\Halcyra\\Versions\\2.2.1\\Languages",
                       "the Languages key of Halcyra 2.2.1"))
    return;
  const std::string file = take_text(c.report, "KORVOCfgGetValue(that key, \"German\")",
                                     KORVOCfgGetValue(key.c_str(), "German"));
  if (!c.report.expect(file == "hal_de.dll", "the German library hal_de.dll")) return;
  const std::string strict =
      take_text(c.report, "KORVOCfgGetProductConfig(\"Orrery\", \"Use_Strict_Version\")",
                KORVOCfgGetProductConfig("Orrery", "Use_Strict_Version"));
  char *none = KORVOCfgGetProductVersionLatestValue("Orrery", "Languages", "English");
  const bool searched = none != nullptr;
  take_text(c.report,
            "KORVOCfgGetProductVersionLatestValue(\"Orrery\", \"Languages\", \"English\")", none);
  c.report.expect(strict == "1" && !searched,
                  "a strict product (Use_Strict_Version 1) is never searched");
}

void agent_key(Context &c) {
  const std::string key = take_text(c.report, "KORVOCfgLocateAgentKey(\"Orrery\", \"Probe\")",
                                    KORVOCfgLocateAgentKey("Orrery", "Probe"));
  if (!c.report.expect(key == kProducts + "\\Orrery\\Versions\\3\\Instances\\lab\\Agents\\Probe",
                       "the Probe agent of Orrery 3, instance lab (greatest version first)"))
    return;
  const std::string beta = take_text(c.report, "KORVOCfgGetAgentConfig(that key, \"Beta\")",
                                     KORVOCfgGetAgentConfig(key.c_str(), "Beta"));
  if (!c.report.expect(beta == "yes", "the agent has no Beta value: its version's, \"yes\""))
    return;
  const std::string older =
      take_text(c.report, "KORVOCfgLocateAgentKeyEx(\"Orrery\", \"2.10\", \"main\", \"Probe\")",
                KORVOCfgLocateAgentKeyEx("Orrery", "2.10", "main", "Probe"));
  c.report.expect(older == kProducts + "\\Orrery\\Versions\\2.10\\Instances\\main\\Agents\\Probe",
                  "the Probe agent of Orrery 2.10, instance main");
}

}  // namespace

KORUTL_DEMO_STEP(30, "Products, versions in version order, instances and agents as a tree",
                 listings);
KORUTL_DEMO_STEP(40, "Read a value with the latest-value search", latest_value);
KORUTL_DEMO_STEP(50, "Resolve an agent key and read an agent's value", agent_key);

}  // namespace korutl_tool::demo
