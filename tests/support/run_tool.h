// Runs the built korutl command for the tests and collects what it prints.
#ifndef KORUTL_TESTS_SUPPORT_RUN_TOOL_H
#define KORUTL_TESTS_SUPPORT_RUN_TOOL_H

#include <cstdio>
#include <string>

#if defined(_WIN32)
#include "tests/support/win32_process.h"
#else
#include <sys/wait.h>
#endif

namespace korutl_test {

struct ToolRun {
  int status;       // exit status, -1 when the command did not exit normally
  std::string out;  // standard output and standard error together
};

// `args` is read as a POSIX shell reads words: quote what needs quoting.
// `env` is a prefix of VAR=value assignments for this run only (may be
// empty). On Windows the words are passed without a shell (win32_process.h).
inline ToolRun run_tool(const std::string &args, const std::string &env = "") {
#ifdef KORUTL_TOOL_FILE
  const std::string tool = KORUTL_TOOL_FILE;
#else
  const std::string tool;  // built without the tool
#endif
  ToolRun r{-1, {}};
#if defined(_WIN32)
  if (!tool.empty()) r.status = run_process(tool, args, env, r.out);
#else
  const std::string cmd =
      tool.empty() ? env + " false " + args : env + " '" + tool + "' " + args + " 2>&1";
  FILE *p = popen(cmd.c_str(), "r");
  if (p == nullptr) return r;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
  const int st = pclose(p);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
#endif
  return r;
}

}  // namespace korutl_test

#endif
