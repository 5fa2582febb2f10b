// libkoross's loader on Windows: LoadLibraryA, GetProcAddress, FreeLibrary.
#include <windows.h>

#include <clocale>

#include "siblings/oss/loader.h"

namespace koross {
namespace {

// The system's message for the calling thread's last error.
std::string last_error_text(const std::string &what) {
  const DWORD code = GetLastError();
  char text[512] = "";
  const DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                 nullptr, code, 0, text, sizeof text, nullptr);
  std::string reason = what + ": ";
  reason += n > 0 ? std::string(text, n) : "error " + std::to_string(code);
  while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r')) reason.pop_back();
  return reason;
}

}  // namespace

const char kPathListSeparator = ';';
const char *const kDllStandIn = nullptr;

bool names_a_path(std::string_view name) {
  return name.find_first_of("/\\:") != std::string_view::npos;
}

void *open_library(const std::string &path, std::string &reason, bool &missing) {
  // The loader wants backslashes in a path.
  std::string native(path);
  for (char &c : native) c = c == '/' ? '\\' : c;
  HMODULE h = LoadLibraryA(native.c_str());
  if (h == nullptr) {
    missing = GetLastError() == ERROR_MOD_NOT_FOUND;
    reason = last_error_text(path);
  }
  return reinterpret_cast<void *>(h);
}

void *find_symbol(void *library, const char *name, std::string &reason) {
  FARPROC p = GetProcAddress(static_cast<HMODULE>(library), name);
  if (p == nullptr) reason = last_error_text(name);
  return reinterpret_cast<void *>(p);
}

bool close_library(void *library, std::string &reason) {
  if (FreeLibrary(static_cast<HMODULE>(library))) return true;
  reason = last_error_text("FreeLibrary");
  return false;
}

// The C runtime has no LC_MESSAGES; its character locale decides.
const char *message_locale() { return std::setlocale(LC_CTYPE, nullptr); }

}  // namespace koross
