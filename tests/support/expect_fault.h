// EXPECT_FAULT(statement): the statement dies of a memory fault. Under
// AddressSanitizer its SEGV handler reports the fault and exits instead of
// letting the signal kill the process, so there the report is matched.
#ifndef KORUTL_TEST_EXPECT_FAULT_H
#define KORUTL_TEST_EXPECT_FAULT_H

#include <gtest/gtest.h>

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

#endif
