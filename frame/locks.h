// The library's mutexes and the locking idiom.
//
// Five plain mutexes guard the frame's shared state. Under a transaction monitor (`Proccom.txmn`)
// the process counts as single-threaded and they are not taken: ZvkGuard has that rule in it. The
// order, where two are held at once, is runUnitMutex, programMutex, externalMutex, streamMutex;
// enterMutex is a leaf.
#pragma once

#include <pthread.h>

#include "kvr2/run_unit.h"

extern pthread_mutex_t enterMutex;    // IPCB.ent and Runcom.active
extern pthread_mutex_t runUnitMutex;  // start and end of run units
extern pthread_mutex_t programMutex;  // program tables
extern pthread_mutex_t streamMutex;   // binding of device streams
extern pthread_mutex_t externalMutex; // EXTERNAL data items

// Locks; a busy mutex is reported on stderr first, so that contention between threads can be seen.
// A mutex that cannot be locked at all means that memory is damaged, and crashes on the spot.
void zvkLock(pthread_mutex_t *mutex);
void zvkUnlock(pthread_mutex_t *mutex);

inline bool zvkSingleThreaded() { return _zvkProccom && _zvkProccom->txmn; }

// Holds a mutex for a scope, unless the process counts as single-threaded when the scope is
// entered.
class ZvkGuard {
public:
    explicit ZvkGuard(pthread_mutex_t *mutex) : mutex_(zvkSingleThreaded() ? nullptr : mutex)
    {
        if (mutex_) zvkLock(mutex_);
    }
    ~ZvkGuard() { release(); }
    void release()
    {
        if (mutex_) zvkUnlock(mutex_);
        mutex_ = nullptr;
    }
    ZvkGuard(const ZvkGuard &) = delete;
    ZvkGuard &operator=(const ZvkGuard &) = delete;

private:
    pthread_mutex_t *mutex_;
};
