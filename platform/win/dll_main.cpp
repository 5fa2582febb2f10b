// Entry point of korutl.dll. The library keeps no per-thread state, so it
// asks not to be called for every thread that starts or ends; loading runs
// no other initialisation.
#include "platform/win32.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(instance);
  return TRUE;
}
