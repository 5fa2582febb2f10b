#include "tools/cfg_tree.h"

#include <strings.h>

#include "korutl.h"
#include "siblings/rsv/rsv.h"
#include "tools/reg_tree.h"
#include "tools/reg_values.h"

namespace korutl_tool {

namespace {

void print_product(std::FILE *out, const std::string &product, const std::string &indent) {
  std::fprintf(out, "%s%s\n", indent.c_str(), product.c_str());
  uint16_t count = 0;
  char **versions = KORVOCfgGetProductVersions(product.c_str(), &count);
  for (const std::string &version : take_name_list(versions, count)) {
    std::fprintf(out, "%s  version %s\n", indent.c_str(), version.c_str());
    const std::string instances_key =
        kProducts + "\\" + product + "\\Versions\\" + version + "\\Instances";
    char **instances = KORVOCfgGetVersionInstances(product.c_str(), version.c_str(), &count);
    for (const std::string &instance : take_name_list(instances, count)) {
      std::fprintf(out, "%s    instance %s\n", indent.c_str(), instance.c_str());
      const std::string agents_key = instances_key + "\\" + instance + "\\Agents";
      std::vector<std::string> agents;
      list_names(agents_key, korutl::NameKind::subkey, agents, kRegModule);
      for (const std::string &agent : agents) {
        std::fprintf(out, "%s      agent %s\n", indent.c_str(), agent.c_str());
        print_reg_values(out, agents_key + "\\" + agent, indent + "        ");
      }
    }
  }
}

}  // namespace

std::vector<std::string> take_name_list(char **list, uint16_t count) {
  std::vector<std::string> names;
  if (list == nullptr) return names;
  for (uint16_t i = 0; i < count; ++i) names.emplace_back(list[i]);
  KORVOCfgFreeProductVersions(list);
  return names;
}

std::vector<std::string> cfg_products() {
  std::vector<std::string> products;
  list_names(kProducts, korutl::NameKind::subkey, products, kRegModule);
  return products;
}

bool print_cfg_tree(std::FILE *out, const std::string &product, const std::string &indent) {
  bool found = false;
  for (const std::string &name : cfg_products()) {
    if (!product.empty() && strcasecmp(name.c_str(), product.c_str()) != 0) continue;
    print_product(out, name, indent);
    found = true;
  }
  return found;
}

}  // namespace korutl_tool
