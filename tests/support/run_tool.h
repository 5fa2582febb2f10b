// Runs the built korutl command for the tests and collects what it prints.
#ifndef KORUTL_TESTS_SUPPORT_RUN_TOOL_H
#define KORUTL_TESTS_SUPPORT_RUN_TOOL_H

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace korutl_test {

struct ToolRun {
  int status;       // exit status, -1 when the command did not exit normally
  std::string out;  // standard output and standard error together
};

// `args` is passed through the shell: quote what needs quoting. `env` is a
// prefix of VAR=value assignments for this run only (may be empty).
inline ToolRun run_tool(const std::string &args,
                        const std::string &env = "") {
#ifdef KORUTL_TOOL_FILE
  const std::string cmd = env + " '" KORUTL_TOOL_FILE "' " + args + " 2>&1";
#else
  const std::string cmd = env + " false " + args;  // built without the tool
#endif
  ToolRun r{-1, {}};
  FILE *p = popen(cmd.c_str(), "r");
  if (p == nullptr) return r;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
  const int st = pclose(p);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
  return r;
}

}  // namespace korutl_test

#endif
