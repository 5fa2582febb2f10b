/*
 * libkorshm - the family's shared-memory library: spin locks.
 *
 * A lock is named by a 32-bit handle that shm_spin_alloc fills in. It
 * admits one holder at a time and is NOT re-entrant: a thread that holds a
 * lock and asks for it again gets SHM_E_HELD at once instead of waiting for
 * itself forever. A waiter spins briefly with a pause instruction, then
 * yields the processor between tries, so a long-held lock does not burn a
 * core. Every call takes a trace position (source module, line) last.
 */
#ifndef KORUTL_SIBLINGS_SHM_H
#define KORUTL_SIBLINGS_SHM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Exported from korshm.dll on Windows, imported by everyone else there. */
#if defined(_WIN32)
#if defined(korshm_EXPORTS)
#define SHM_API __declspec(dllexport)
#else
#define SHM_API __declspec(dllimport)
#endif
#else
#define SHM_API __attribute__((visibility("default")))
#endif

/* Statuses. */
#define SHM_OK 0
#define SHM_E_ARGUMENT 1   /* null handle address or a handle that names no lock */
#define SHM_E_NO_MEMORY 2  /* no room for another lock */
#define SHM_E_HELD 3       /* the calling thread already holds this lock */
#define SHM_E_NOT_HOLDER 4 /* unlock by a thread that does not hold the lock */

/* Interface version; libkorutl references it so that it loads only beside
 * this library generation. */
SHM_API extern const int32_t SHM_V22;

/* Creates a lock and stores its handle (never 0) in *lock. `kind`,
 * `spin_limit` and `flags` are accepted for the family's callers (which pass
 * 0, -1, 0) and do not change the lock's behaviour. */
SHM_API int32_t shm_spin_alloc(uint32_t *lock, int32_t kind, int32_t spin_limit, int32_t flags,
                               const char *module, int32_t line);

/* Destroys a lock that nobody holds; its handle may be handed out again.
 * SHM_E_NO_MEMORY (the lock stays as it was) when the list of free
 * handles cannot grow. */
SHM_API int32_t shm_spin_free(uint32_t lock, const char *module, int32_t line);

/* Waits until the lock is free and takes it. `flags` (0) is accepted. */
SHM_API int32_t shm_spin_lock(uint32_t lock, int32_t flags, const char *module, int32_t line);

/* Releases a lock the calling thread holds. */
SHM_API int32_t shm_spin_unlock(uint32_t lock, const char *module, int32_t line);

#ifdef __cplusplus
}
#endif

#endif
