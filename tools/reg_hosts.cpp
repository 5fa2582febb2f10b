// korutl reg hosts: the hosts whose trees a shared store holds.
#include <cstdio>
#include <string>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/reg_report.h"
#include "tools/reg_values.h"
#include "tools/reg_verbs.h"

namespace korutl_tool {

namespace reg_host_verbs {

struct HostsArgs {
  bool json = false;
};

void run_hosts(const HostsArgs &a) {
  std::vector<std::string> hosts;
  const uint16_t rc = collect_names(hosts, [](rsv_name_func take, void *context) {
    return rsv_list_hosts(take, context, kRegModule, __LINE__);
  });
  if (rc != RSV_OK) return fail_call(rc, "cannot list the hosts");
  if (a.json) {
    JsonWriter json;
    json.begin_object().key("hosts").begin_array();
    for (const std::string &host : hosts) json.string(host);
    json.end_array().end_object().finish();
    return;
  }
  for (const std::string &host : hosts) std::printf("%s\n", host.c_str());
}

void add_hosts(CLI::App &reg) {
  static HostsArgs a;
  CLI::App *verb = add_reg_verb(
      reg, "hosts", "List the hosts whose trees the store holds: reg hosts [--json]",
      "A store file holds this machine's tree alone; a PostgreSQL store one tree per host "
      "(a host's role sees its own). --json writes {\"hosts\": [NAME]}. Exit status 0 listed, "
      "1 the store failed, 2 usage.");
  verb->add_flag("--json", a.json, "Write JSON");
  on_run(verb, [] { run_hosts(a); });
}

}  // namespace reg_host_verbs

void add_reg_host_verbs(CLI::App &reg, const RegGlobals &) { reg_host_verbs::add_hosts(reg); }

}  // namespace korutl_tool
