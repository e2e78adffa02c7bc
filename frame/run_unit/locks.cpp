// The library's mutexes and the locking idiom; see locks.h.
#include "frame/locks.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

pthread_mutex_t enterMutex;
pthread_mutex_t runUnitMutex;
pthread_mutex_t programMutex;
pthread_mutex_t streamMutex;
pthread_mutex_t externalMutex;

// Ends the process where a mutex is beyond use; a store to address zero gives the signal handler
// the place.
[[noreturn]] static void crashHere()
{
    volatile int *volatile nowhere = nullptr;
    *nowhere = 0;
    __builtin_trap();
}

void zvkLock(pthread_mutex_t *mutex)
{
    int rc = pthread_mutex_trylock(mutex);
    if (rc == 0) return;
    // Contention shows on stderr on purpose: it is how a site learns that its threads queue here.
    fprintf(stderr, "pthread_mutex_trylock rc %d %d: %s\n", rc, errno, strerror(errno));
    if (pthread_mutex_lock(mutex) != 0) crashHere();
}

void zvkUnlock(pthread_mutex_t *mutex)
{
    int rc = pthread_mutex_unlock(mutex);
    if (rc == 0) return;
    fprintf(stderr, "pthread_mutex_unlock rc %d\n", rc);
    crashHere();
}
