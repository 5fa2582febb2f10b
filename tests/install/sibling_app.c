/* A client of the sibling libraries' own headers, as installed below
 * include/korutl: their interface versions and a spin lock taken and given
 * back. Exits 0 when both libraries answer. */
#include <stdio.h>

#include <korutl/rsv.h>
#include <korutl/shm.h>

int main(void) {
  uint32_t lock = 0;
  if (RSV_V113 != 113 || SHM_V22 != 22) return 1;
  if (shm_spin_alloc(&lock, 0, -1, 0, "install", __LINE__) != SHM_OK) return 1;
  if (shm_spin_lock(lock, 0, "install", __LINE__) != SHM_OK ||
      shm_spin_unlock(lock, "install", __LINE__) != SHM_OK)
    return 1;
  shm_spin_free(lock, "install", __LINE__);
  printf("libkorrsv %d, libkorshm %d\n", (int)RSV_V113, (int)SHM_V22);
  return 0;
}
