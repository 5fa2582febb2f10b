// Critical sections of the Win32 seam: recursive pthread mutexes.
#include "platform/win32.h"

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&section->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

void EnterCriticalSection(LPCRITICAL_SECTION section) { pthread_mutex_lock(&section->mutex); }

void LeaveCriticalSection(LPCRITICAL_SECTION section) { pthread_mutex_unlock(&section->mutex); }

void DeleteCriticalSection(LPCRITICAL_SECTION section) { pthread_mutex_destroy(&section->mutex); }
