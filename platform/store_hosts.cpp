// Host names and the host a thread works on, the same on every platform;
// which hosts a store holds is the store's own answer (unix/store_dispatch.cpp,
// win/store_hosts.cpp).
#include "platform/store_hosts.h"

#include <cstdlib>

#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace korutl::store {

namespace {

// The host named with use_host; empty: KORVO_HOST or the machine's name.
thread_local std::string chosen_host;

std::string machine_name() {
  char name[256] = {};
#if defined(_WIN32)
  DWORD size = sizeof name;
  if (!GetComputerNameExA(ComputerNameDnsHostname, name, &size)) return "";
#else
  if (gethostname(name, sizeof name - 1) != 0) return "";
#endif
  return name;
}

bool is_host_char(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_';
}

}  // namespace

bool fold_host_name(std::string_view name, std::string &folded) {
  if (name.empty() || name.size() > max_host_length) return false;
  folded.assign(name);
  for (char &c : folded) {
    if (!is_host_char(c)) return false;
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return true;
}

bool thread_host(std::string &host, std::string &why) {
  if (!chosen_host.empty()) {
    host = chosen_host;
    return true;
  }
  if (const char *env = std::getenv("KORVO_HOST"); env != nullptr && *env != '\0') {
    if (fold_host_name(env, host)) return true;
    why = "KORVO_HOST is not a host name (letters, digits, '-', '.', '_')";
    return false;
  }
  // The machine's name does not change while the process runs.
  static const std::string machine = machine_name();
  if (fold_host_name(machine, host)) return true;
  why = "the machine's host name cannot be read; set KORVO_HOST";
  return false;
}

// Only the thread's own choice is kept here; whether the store may hold
// that host is the caller's (use_host's) to decide first.
void choose_thread_host(std::string folded) { chosen_host = std::move(folded); }

}  // namespace korutl::store
