// EXPECT_FAULT(statement): the statement dies of a memory fault.
// EXPECT_BREAKPOINT(statement, regex): it stops at a debugger breakpoint
// (DebugBreak) after writing output that matches regex.
//
// Linux: SIGSEGV and SIGTRAP. Under AddressSanitizer its SEGV handler
// reports the fault and exits instead of letting the signal kill the
// process, so there the report is matched. Windows: an access violation
// and a breakpoint exception; the child process ends with the exception
// code as its exit code instead of waiting for a debugger.
#ifndef KORUTL_TEST_EXPECT_FAULT_H
#define KORUTL_TEST_EXPECT_FAULT_H

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>

#include <cstdio>

namespace korutl_test {
inline LONG WINAPI exit_with_exception_code(EXCEPTION_POINTERS *e) {
  std::fflush(stdout);
  std::fflush(stderr);
  TerminateProcess(GetCurrentProcess(), e->ExceptionRecord->ExceptionCode);
  return EXCEPTION_EXECUTE_HANDLER;
}
}  // namespace korutl_test

#define KORUTL_EXPECT_EXCEPTION(statement, code, regex)                       \
  EXPECT_EXIT(                                                                \
      {                                                                       \
        SetUnhandledExceptionFilter(::korutl_test::exit_with_exception_code); \
        statement;                                                            \
      },                                                                      \
      ::testing::ExitedWithCode(static_cast<int>(code)), regex)
#define EXPECT_FAULT(statement) KORUTL_EXPECT_EXCEPTION(statement, EXCEPTION_ACCESS_VIOLATION, "")
#define EXPECT_BREAKPOINT(statement, regex) \
  KORUTL_EXPECT_EXCEPTION(statement, EXCEPTION_BREAKPOINT, regex)

#else
#include <csignal>

#if defined(__SANITIZE_ADDRESS__)
#define KORUTL_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORUTL_TEST_ASAN 1
#endif
#endif

#if defined(KORUTL_TEST_ASAN)
#define EXPECT_FAULT(statement) EXPECT_DEATH(statement, "SEGV")
#else
#define EXPECT_FAULT(statement) EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGSEGV), "")
#endif
#define EXPECT_BREAKPOINT(statement, regex) \
  EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGTRAP), regex)
#endif

#endif
