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

// A word of a command text, or one of the operators "|", "<", ">".
struct ShellWord {
  std::string text;
  bool op = false;
};

// Words of `text`: blanks separate; '...' keeps everything; "..." keeps
// everything but \" \\ \$ \`; a backslash outside quotes keeps the next
// character; unquoted |, < and > are operators.
inline std::vector<ShellWord> shell_words(const std::string &text) {
  std::vector<ShellWord> words;
  std::string word;
  bool in_word = false;
  const auto end_word = [&] {
    if (in_word) words.push_back({std::move(word), false});
    word.clear();
    in_word = false;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ' ' || c == '\t' || c == '\n') {
      end_word();
    } else if (c == '|' || c == '<' || c == '>') {
      end_word();
      words.push_back({std::string(1, c), true});
    } else if (c == '\'') {
      in_word = true;
      while (++i < text.size() && text[i] != '\'') word += text[i];
    } else if (c == '"') {
      in_word = true;
      while (++i < text.size() && text[i] != '"') {
        if (text[i] == '\\' && i + 1 < text.size() &&
            std::string("\"\\$`").find(text[i + 1]) != std::string::npos)
          ++i;
        word += text[i];
      }
    } else {
      in_word = true;
      word += c == '\\' && i + 1 < text.size() ? text[++i] : c;
    }
  }
  end_word();
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

// One program of a pipeline with its redirections.
struct Stage {
  std::string line;     // the command line
  std::string in, out;  // files for "<" and ">", empty when not redirected
};

inline HANDLE open_redirect(const std::string &path, bool for_write) {
  const std::string name = path == "/dev/null" ? "NUL" : path;
  return CreateFileA(name.c_str(), for_write ? GENERIC_WRITE : GENERIC_READ,
                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                     for_write ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Starts one program with exactly these three handles inherited.
inline HANDLE start_stage(std::string line, HANDLE in, HANDLE out, HANDLE err) {
  for (HANDLE h : {in, out, err}) SetHandleInformation(h, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  STARTUPINFOA si{};
  si.cb = sizeof si;
  si.dwFlags = STARTF_USESTDHANDLES;
  si.hStdInput = in;
  si.hStdOutput = out;
  si.hStdError = err;
  PROCESS_INFORMATION pi{};
  const BOOL started =
      CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi);
  for (HANDLE h : {in, out, err}) SetHandleInformation(h, HANDLE_FLAG_INHERIT, 0);
  if (!started) return nullptr;
  CloseHandle(pi.hThread);
  return pi.hProcess;
}

// Runs `program` with the words of `args` (which may go on with "| program
// args" stages and "< file", "> file" redirections), the VAR=value words of
// `env` added to the environment, and returns the last program's exit code
// (-1 when a program could not start). The last program's standard output
// and every standard error go to `out`.
inline int run_process(const std::string &program, const std::string &args, const std::string &env,
                       std::string &out) {
  std::vector<Stage> stages{{command_line_word(program), {}, {}}};
  const std::vector<ShellWord> words = shell_words(args);
  for (size_t i = 0; i < words.size(); ++i) {
    const ShellWord &w = words[i];
    if (w.op && w.text == "|") {
      stages.push_back({});
    } else if (w.op && i + 1 < words.size()) {
      (w.text == "<" ? stages.back().in : stages.back().out) = words[++i].text;
    } else {
      std::string &line = stages.back().line;
      line += (line.empty() ? "" : " ") + command_line_word(w.text);
    }
  }
  // The children inherit the environment as it is at CreateProcess.
  std::vector<std::pair<std::string, std::string>> saved;
  for (const ShellWord &w : shell_words(env)) {
    const size_t eq = w.text.find('=');
    if (eq == std::string::npos) continue;
    const std::string name = w.text.substr(0, eq);
    char old[32767];
    const DWORD n = GetEnvironmentVariableA(name.c_str(), old, sizeof old);
    saved.emplace_back(name, n > 0 && n < sizeof old ? std::string(old, n) : std::string("\x01"));
    SetEnvironmentVariableA(name.c_str(), w.text.substr(eq + 1).c_str());
  }
  HANDLE collect_read = nullptr, collect_write = nullptr;
  int status = -1;
  if (CreatePipe(&collect_read, &collect_write, nullptr, 0)) {
    std::vector<HANDLE> processes;
    HANDLE next_in = GetStdHandle(STD_INPUT_HANDLE);
    bool next_in_ours = false;
    bool started = true;
    for (size_t i = 0; i < stages.size(); ++i) {
      const Stage &st = stages[i];
      HANDLE in = next_in;
      bool in_ours = next_in_ours;
      if (!st.in.empty()) {
        if (in_ours) CloseHandle(in);
        in = open_redirect(st.in, false);
        in_ours = true;
      }
      HANDLE stage_out = collect_write, pipe_read = nullptr;
      bool out_ours = false;
      if (!st.out.empty()) {
        stage_out = open_redirect(st.out, true);
        out_ours = true;
      } else if (i + 1 < stages.size() && CreatePipe(&pipe_read, &stage_out, nullptr, 0)) {
        out_ours = true;
      }
      HANDLE process = start_stage(st.line, in, stage_out, collect_write);
      if (process != nullptr) {
        processes.push_back(process);
      } else {
        started = false;
      }
      if (in_ours) CloseHandle(in);
      if (out_ours) CloseHandle(stage_out);
      next_in = pipe_read != nullptr ? pipe_read : GetStdHandle(STD_INPUT_HANDLE);
      next_in_ours = pipe_read != nullptr;
    }
    if (next_in_ours) CloseHandle(next_in);
    CloseHandle(collect_write);
    char buf[4096];
    DWORD n = 0;
    while (ReadFile(collect_read, buf, sizeof buf, &n, nullptr) && n > 0) out.append(buf, n);
    CloseHandle(collect_read);
    for (HANDLE p : processes) {
      WaitForSingleObject(p, INFINITE);
      DWORD code = 0;
      if (p == processes.back() && started && GetExitCodeProcess(p, &code))
        status = static_cast<int>(code);
      CloseHandle(p);
    }
  }
  for (const auto &[name, value] : saved)
    SetEnvironmentVariableA(name.c_str(), value == "\x01" ? nullptr : value.c_str());
  return status;
}

}  // namespace korutl_test

#endif
