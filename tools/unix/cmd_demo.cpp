// korutl demo [--quiet] [--store FILE] [--sample FILE]: the library at work
// on the sample tree, step by step (see demo.h). The store is a temporary
// one unless KORVO_REGISTRY or --store names one: the demo never writes to
// the user's own store unasked.
#include <dirent.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/unix/store_file.h"
#include "tools/commands.h"
#include "tools/install_data.h"
#include "tools/output.h"
#include "tools/unix/demo.h"

namespace korutl_tool {

namespace {

struct DemoOptions {
  bool quiet = false;
  std::string store;
  std::string sample;
};

// A fresh folder holding the temporary store, removed again afterwards.
class TemporaryStore {
 public:
  TemporaryStore() {
    const char *tmp = std::getenv("TMPDIR");
    std::string pattern =
        std::string(tmp != nullptr && *tmp == '/' ? tmp : "/tmp") + "/korutl-demo-XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) dir_ = pattern;
  }
  ~TemporaryStore() {
    if (dir_.empty()) return;
    if (DIR *d = opendir(dir_.c_str())) {
      while (const dirent *e = readdir(d))
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
          unlink((dir_ + "/" + e->d_name).c_str());
      closedir(d);
    }
    rmdir(dir_.c_str());
  }
  TemporaryStore(const TemporaryStore &) = delete;
  TemporaryStore &operator=(const TemporaryStore &) = delete;
  std::string path() const { return dir_.empty() ? "" : dir_ + "/registry.db"; }

 private:
  std::string dir_;
};

int run_demo(const DemoOptions &opt) {
  std::string store = opt.store;
  const char *env_store = std::getenv("KORVO_REGISTRY");
  if (store.empty() && env_store != nullptr && *env_store != '\0') store = env_store;
  TemporaryStore temporary;
  const bool is_temporary = store.empty();
  if (is_temporary) store = temporary.path();
  if (store.empty()) {
    fail("demo: cannot create a temporary folder for the store");
    return exit_failed;
  }
  setenv("KORVO_REGISTRY", store.c_str(), 1);
  // A server URI may carry a password: the server is not named here.
  const std::string shown_store =
      korutl::store::is_server_uri(store) ? "the server of KORVO_REGISTRY" : store;

  demo::Report report(opt.quiet);
  demo::Context context{report, opt.sample, ""};
  if (context.sample.empty())
    context.sample = installed_data(KORUTL_INSTALL_DATADIR "/halcyra-sample.reg");
  context.language_dir = installed_data(KORUTL_INSTALL_LANGDIR);
  if (!opt.quiet) {
    std::printf("korutl demo: store %s%s\n", shown_store.c_str(),
                is_temporary ? " (temporary, removed afterwards)" : "");
    std::printf("korutl demo: sample tree %s\n",
                context.sample.empty() ? "(not found)" : context.sample.c_str());
  }
  demo::run_steps(context);
  return report.finish(is_temporary ? "temporary" : shown_store);
}

void add_demo_command(CLI::App &app) {
  static DemoOptions opt;
  auto *cmd = app.add_subcommand(
      "demo",
      "Show the library at work on the sample tree, step by step; exit 0 when every step "
      "gave the expected answer");
  cmd->add_flag("-q,--quiet", opt.quiet, "Print only a one-line summary");
  cmd->add_option("--store", opt.store,
                  "Store file to import the sample into (default: KORVO_REGISTRY if set, else a "
                  "temporary store)");
  cmd->add_option("--sample", opt.sample, "The sample tree (.reg) to import")
      ->check(CLI::ExistingFile);
  cmd->callback([] { exit_code = run_demo(opt); });
}

}  // namespace

KORUTL_TOOL_COMMAND("demo", add_demo_command);

}  // namespace korutl_tool
