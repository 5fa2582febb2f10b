// The spin locks of libkorshm: one holder, no re-entry, only the holder
// unlocks, and a freed handle names no lock.
#include <gtest/gtest.h>

#include <thread>

#include "siblings/shm/shm.h"

namespace {

TEST(SpinLock, HolderRules) {
  uint32_t lock = 0;
  ASSERT_EQ(shm_spin_alloc(&lock, 0, -1, 0, "test", __LINE__), SHM_OK);
  ASSERT_NE(lock, 0u);
  EXPECT_EQ(shm_spin_lock(lock, 0, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_lock(lock, 0, "test", __LINE__), SHM_E_HELD) << "no re-entry, no deadlock";
  int32_t other = -1;
  std::thread([&] { other = shm_spin_unlock(lock, "test", __LINE__); }).join();
  EXPECT_EQ(other, SHM_E_NOT_HOLDER);
  EXPECT_EQ(shm_spin_free(lock, "test", __LINE__), SHM_E_HELD);
  EXPECT_EQ(shm_spin_unlock(lock, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_free(lock, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_lock(lock, 0, "test", __LINE__), SHM_E_ARGUMENT);
  EXPECT_EQ(shm_spin_alloc(nullptr, 0, -1, 0, "test", __LINE__), SHM_E_ARGUMENT);
  EXPECT_EQ(shm_spin_lock(0, 0, "test", __LINE__), SHM_E_ARGUMENT);
}

TEST(SpinLock, ExcludesOtherThreads) {
  uint32_t lock = 0;
  ASSERT_EQ(shm_spin_alloc(&lock, 0, -1, 0, "test", __LINE__), SHM_OK);
  long counter = 0;  // plain: only the lock orders the increments
  std::thread threads[3];
  for (auto &t : threads) {
    t = std::thread([&] {
      for (int i = 0; i < 20000; ++i) {
        shm_spin_lock(lock, 0, "test", __LINE__);
        ++counter;
        shm_spin_unlock(lock, "test", __LINE__);
      }
    });
  }
  for (auto &t : threads) t.join();
  EXPECT_EQ(counter, 60000);
  EXPECT_EQ(shm_spin_free(lock, "test", __LINE__), SHM_OK);
}

}  // namespace
