// Running a program on Windows the way the tests run it through the shell
// on Linux: the argument text is split into words by the POSIX shell's
// quoting rules, the words are quoted again for the Windows command line,
// and standard output and standard error are collected together.
#ifndef KORUTL_TESTS_SUPPORT_WIN32_PROCESS_H
#define KORUTL_TESTS_SUPPORT_WIN32_PROCESS_H

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace korutl_test {

// Words of `text`: blanks separate; '...' keeps everything; "..." keeps
// everything but \" \\ \$ \`; a backslash outside quotes keeps the next
// character.
inline std::vector<std::string> shell_words(const std::string &text) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ' ' || c == '\t' || c == '\n') {
      if (in_word) words.push_back(std::move(word));
      word.clear();
      in_word = false;
      continue;
    }
    in_word = true;
    if (c == '\'') {
      while (++i < text.size() && text[i] != '\'') word += text[i];
    } else if (c == '"') {
      while (++i < text.size() && text[i] != '"') {
        if (text[i] == '\\' && i + 1 < text.size() &&
            std::string("\"\\$`").find(text[i + 1]) != std::string::npos)
          ++i;
        word += text[i];
      }
    } else if (c == '\\' && i + 1 < text.size()) {
      word += text[++i];
    } else {
      word += c;
    }
  }
  if (in_word) words.push_back(std::move(word));
  return words;
}

// One word quoted so that the C runtime's argument parser gives it back.
inline std::string command_line_word(const std::string &word) {
  if (!word.empty() && word.find_first_of(" \t\n\"") == std::string::npos) return word;
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
  out.append(backslashes * 2, '\\');
  return out + "\"";
}

// Runs `program` with the words of `args`, the VAR=value words of `env`
// added to its environment, and returns its exit code (-1 when it could
// not start). Output goes to `out`.
inline int run_process(const std::string &program, const std::string &args,
                       const std::string &env, std::string &out) {
  std::string line = command_line_word(program);
  for (const std::string &w : shell_words(args)) line += " " + command_line_word(w);
  // The child inherits the environment as it is at CreateProcess.
  std::vector<std::pair<std::string, std::string>> saved;
  for (const std::string &w : shell_words(env)) {
    const size_t eq = w.find('=');
    if (eq == std::string::npos) continue;
    const std::string name = w.substr(0, eq);
    char old[32767];
    const DWORD n = GetEnvironmentVariableA(name.c_str(), old, sizeof old);
    saved.emplace_back(name, n > 0 && n < sizeof old ? std::string(old, n) : std::string("\x01"));
    SetEnvironmentVariableA(name.c_str(), w.substr(eq + 1).c_str());
  }
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  HANDLE read_end = nullptr, write_end = nullptr;
  int status = -1;
  if (CreatePipe(&read_end, &write_end, &inherit, 0)) {
    SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    si.hStdOutput = write_end;
    si.hStdError = write_end;
    PROCESS_INFORMATION pi{};
    const BOOL started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &si, &pi);
    CloseHandle(write_end);
    if (started) {
      char buf[4096];
      DWORD n = 0;
      while (ReadFile(read_end, buf, sizeof buf, &n, nullptr) && n > 0) out.append(buf, n);
      WaitForSingleObject(pi.hProcess, INFINITE);
      DWORD code = 0;
      if (GetExitCodeProcess(pi.hProcess, &code)) status = static_cast<int>(code);
      CloseHandle(pi.hProcess);
      CloseHandle(pi.hThread);
    }
    CloseHandle(read_end);
  }
  for (const auto &[name, value] : saved)
    SetEnvironmentVariableA(name.c_str(), value == "\x01" ? nullptr : value.c_str());
  return status;
}

}  // namespace korutl_test

#endif
