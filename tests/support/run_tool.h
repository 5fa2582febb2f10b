// Runs the built korutl command for the tests: each argument is passed as
// one word, standard input comes from a file (none: empty input), and
// standard output and standard error are collected together. The command
// inherits the test's environment, so a test sets variables with setenv.
#ifndef KORUTL_TESTS_SUPPORT_RUN_TOOL_H
#define KORUTL_TESTS_SUPPORT_RUN_TOOL_H

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temp_store.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/wait.h>
#endif

namespace korutl_test {

struct ToolRun {
  int status;       // exit status, -1 when the command did not exit normally
  std::string out;  // standard output and standard error together
};

#if defined(_WIN32)
// One word quoted so that the C runtime's argument parser gives it back:
// backslashes double only where a quote follows them.
inline std::string quoted(const std::string &word) {
  std::string out = "\"";
  size_t backslashes = 0;
  for (const char c : word) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    out.append(c == '"' ? backslashes * 2 + 1 : backslashes, '\\');
    backslashes = 0;
    out += c;
  }
  return out.append(backslashes * 2, '\\') + "\"";
}

inline int run_process(std::string line, const std::string &input, std::string &out) {
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  HANDLE read = nullptr, write = nullptr;
  if (!CreatePipe(&read, &write, &inherit, 0)) return -1;
  SetHandleInformation(read, HANDLE_FLAG_INHERIT, 0);
  HANDLE in = CreateFileA(input.empty() ? "NUL" : input.c_str(), GENERIC_READ, FILE_SHARE_READ,
                          &inherit, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  STARTUPINFOA si{};
  si.cb = sizeof si;
  si.dwFlags = STARTF_USESTDHANDLES;
  si.hStdInput = in;
  si.hStdOutput = si.hStdError = write;
  PROCESS_INFORMATION pi{};
  const BOOL started =
      CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi);
  // Only the child holds the write end now: reading ends when it exits.
  CloseHandle(write);
  CloseHandle(in);
  DWORD code = static_cast<DWORD>(-1);
  if (started) {
    char buf[4096];
    DWORD n = 0;
    while (ReadFile(read, buf, sizeof buf, &n, nullptr) && n > 0) out.append(buf, n);
    WaitForSingleObject(pi.hProcess, INFINITE);
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hProcess);
    CloseHandle(pi.hThread);
  }
  CloseHandle(read);
  return static_cast<int>(code);
}
#else
inline std::string quoted(const std::string &word) {
  std::string out = "'";
  for (const char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}
#endif

inline ToolRun run_tool([[maybe_unused]] const std::vector<std::string> &args,
                        [[maybe_unused]] const std::string &input = "") {
  ToolRun r{-1, {}};
#ifdef KORUTL_TOOL_FILE
  std::string line = quoted(KORUTL_TOOL_FILE);
  for (const std::string &a : args) line += " " + quoted(a);
#if defined(_WIN32)
  r.status = run_process(line, input, r.out);
#else
  line += " < " + (input.empty() ? std::string("/dev/null") : quoted(input)) + " 2>&1";
  FILE *p = popen(line.c_str(), "r");
  if (p == nullptr) return r;
  char buf[4096];
  for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) r.out.append(buf, n);
  const int st = pclose(p);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
#endif
#endif
  return r;
}

// A temporary store for tests of the command; skipped when the command is
// not built in this configuration.
class ToolStore : public TempStore {
 protected:
  void SetUp() override {
#ifndef KORUTL_TOOL_FILE
    GTEST_SKIP() << "the korutl command is not built in this configuration";
#endif
    TempStore::SetUp();
  }
  // A file of the test's scratch folder holding `content`.
  std::string input(const std::string &name, const std::string &content) const {
    std::ofstream(scratch(name), std::ios::binary) << content;
    return scratch(name);
  }
};

// ToolStore holding the sample tree, with the sample language libraries on
// the search path.
class SampleTool : public ToolStore {
 protected:
  void SetUp() override {
    ToolStore::SetUp();
    if (IsSkipped()) return;
    setenv("KORVO_LANGUAGE_PATH", KORUTL_LANGUAGE_DIR, 1);
    ASSERT_EQ(run_tool({"reg", "import", KORUTL_SOURCE_DIR "/examples/halcyra-sample.reg"}).status,
              0);
  }
  void TearDown() override {
    unsetenv("KORVO_LANGUAGE_PATH");
    ToolStore::TearDown();
  }
  // Runs the blank-separated words of `line`, with `in` as standard input;
  // checks the status, and the output when `out` is given.
  std::string expect(const std::string &line, int status, const char *out = nullptr,
                     const std::string &in = "") {
    std::istringstream split(line);
    const std::vector<std::string> args{std::istream_iterator<std::string>(split), {}};
    const auto r = run_tool(args, in.empty() ? "" : input("in", in));
    EXPECT_EQ(r.status, status) << line << "\n" << r.out;
    EXPECT_EQ(r.out, out != nullptr ? out : r.out) << line;
    return r.out;
  }
};

}  // namespace korutl_test

#endif
