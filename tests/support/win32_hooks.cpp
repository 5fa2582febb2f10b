// Set-up that every Windows test program (and the korutl command built for
// the tests) runs before main:
// - Message boxes are answered as the Linux build answers them: caption and
//   text go to standard error and KORVO_MESSAGEBOX_ANSWER ("yes" or "no",
//   else no) is the answer, so a test never waits for a click and can drive
//   both answers. The program's and korutl.dll's imports of MessageBoxA are
//   pointed at that stand-in.
// - KORUTL_TEST_HKLM names a key under HKEY_CURRENT_USER that the process
//   sees in place of HKEY_LOCAL_MACHINE (tests/support/temp_store.h).
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int WINAPI answer_box(HWND, LPCSTR text, LPCSTR caption, UINT type) {
  std::fprintf(stderr, "%s\n%s\n", caption != nullptr ? caption : "", text != nullptr ? text : "");
  std::fflush(stderr);
  if ((type & 0xF) != MB_YESNO) return IDOK;
  const char *answer = std::getenv("KORVO_MESSAGEBOX_ANSWER");
  return answer != nullptr && std::strcmp(answer, "yes") == 0 ? IDYES : IDNO;
}

// Points every import slot of `module` that holds `original` at `replacement`.
void redirect_imports(HMODULE module, void *original, void *replacement) {
  if (module == nullptr || original == nullptr) return;
  auto *base = reinterpret_cast<BYTE *>(module);
  const auto *dos = reinterpret_cast<IMAGE_DOS_HEADER *>(base);
  const auto *nt = reinterpret_cast<IMAGE_NT_HEADERS *>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY &dir = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (dir.VirtualAddress == 0) return;
  for (auto *imp = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR *>(base + dir.VirtualAddress);
       imp->Name != 0; ++imp) {
    for (auto *slot = reinterpret_cast<IMAGE_THUNK_DATA *>(base + imp->FirstThunk);
         slot->u1.Function != 0; ++slot) {
      if (reinterpret_cast<void *>(slot->u1.Function) != original) continue;
      DWORD old = 0;
      VirtualProtect(&slot->u1.Function, sizeof slot->u1.Function, PAGE_READWRITE, &old);
      slot->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
      VirtualProtect(&slot->u1.Function, sizeof slot->u1.Function, old, &old);
    }
  }
}

struct Hooks {
  Hooks() {
    void *box = reinterpret_cast<void *>(GetProcAddress(LoadLibraryA("user32.dll"), "MessageBoxA"));
    void *stand_in = reinterpret_cast<void *>(&answer_box);
    redirect_imports(GetModuleHandleA(nullptr), box, stand_in);
    redirect_imports(GetModuleHandleA("korutl.dll"), box, stand_in);
    if (const char *scratch = std::getenv("KORUTL_TEST_HKLM"); scratch != nullptr && *scratch) {
      HKEY key = nullptr;
      if (RegCreateKeyExA(HKEY_CURRENT_USER, scratch, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                          nullptr) == ERROR_SUCCESS) {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, key);
        RegCloseKey(key);
      }
    }
  }
} hooks;

}  // namespace
