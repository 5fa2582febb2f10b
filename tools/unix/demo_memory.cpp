// Demo step: a few allocations through the memory shell and its report.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

// KORVOPrintMemoryTable writes to standard output; the demo captures it
// to indent it (and to keep it out of --quiet).
std::string memory_report(const char *title, uint32_t &listed) {
  std::fflush(stdout);
  std::FILE *capture = std::tmpfile();
  const int saved = dup(STDOUT_FILENO);
  if (capture == nullptr || saved < 0 || dup2(fileno(capture), STDOUT_FILENO) < 0) {
    if (capture != nullptr) std::fclose(capture);
    if (saved >= 0) close(saved);
    listed = KORVOPrintMemoryTable(title);
    return "";
  }
  listed = KORVOPrintMemoryTable(title);
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  std::string text;
  std::rewind(capture);
  char buf[4096];
  for (size_t n; (n = std::fread(buf, 1, sizeof buf, capture)) > 0;) text.append(buf, n);
  std::fclose(capture);
  return text;
}

void memory_shell(Context &c) {
  void *a = mmalloc(100, __LINE__, "demo_memory.cpp");
  void *b = mcalloc(4, 64, __LINE__, "demo_memory.cpp");
  void *d = mmalloc(4000, __LINE__, "demo_memory.cpp");
  c.report.call("mmalloc(100), mcalloc(4, 64), mmalloc(4000)",
                a && b && d ? "three blocks" : "null");
  mfree(b);
  c.report.call("mfree(the mcalloc block)", "done");
  uint32_t listed = 0;
  const std::string report = memory_report("korutl demo", listed);
  mfree(a);
  mfree(d);
  c.report.call("KORVOPrintMemoryTable(\"korutl demo\")",
                std::to_string(listed) + " blocks listed");
  if (listed == 0 && report.find("Memory shell turned off") != std::string::npos) {
    const char *env = std::getenv("KORVO_MEMORY_SHELL");
    c.report.unavailable(
        env != nullptr && std::strcmp(env, "0") == 0
            ? "KORVO_MEMORY_SHELL=0 turns the memory shell off for this process"
            : "this library was built with the memory shell off (build with "
              "-DKORUTL_MEMORY_SHELL_ON=ON, the shell-on preset, to see its report)");
    return;
  }
  if (!c.report.quiet()) {
    for (size_t start = 0; start < report.size();) {
      const size_t nl = report.find('\n', start);
      const std::string line =
          report.substr(start, nl == std::string::npos ? std::string::npos : nl - start);
      if (!line.empty()) c.report.line("  " + line);
      start = nl == std::string::npos ? report.size() : nl + 1;
    }
  }
  c.report.expect(a && b && d && listed == 2 && report.find("Size:   100") != std::string::npos &&
                      report.find("Size:  4000") != std::string::npos,
                  "the two live blocks, 100 and 4000 bytes, in the report");
}

}  // namespace

KORUTL_DEMO_STEP(130, "Allocations through the memory shell and its report", memory_shell);

}  // namespace korutl_tool::demo
