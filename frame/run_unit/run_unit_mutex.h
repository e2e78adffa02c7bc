// The mutex around start and end of run units, and how an abort from inside gets out of it.
//
// Whoever aborts while it holds this mutex would wait for itself when the abort ends the run unit.
// So `Proccom.abortHook` is set to a routine that releases the mutex for as long as it is held.
// Another thread's abort must not release it: the routine looks at who holds it.
#pragma once

#include "frame/locks.h"

void zvkEnterRunUnitMutex();
void zvkLeaveRunUnitMutex();

// Sets the hook again after something inside has cleared it; does nothing in a thread that does not
// hold the mutex.
void zvkRearmRunUnitMutex();

// The abort hook: releases the mutex if this thread holds it.
void zvkAbandonRunUnitMutex();

// Holds the mutex for a scope, with the abort hook set, unless the process counts as
// single-threaded.
class RunUnitMutexGuard {
public:
    RunUnitMutexGuard() : held_(!zvkSingleThreaded())
    {
        if (held_) zvkEnterRunUnitMutex();
    }
    ~RunUnitMutexGuard()
    {
        if (held_) zvkLeaveRunUnitMutex();
    }
    RunUnitMutexGuard(const RunUnitMutexGuard &) = delete;
    RunUnitMutexGuard &operator=(const RunUnitMutexGuard &) = delete;

private:
    bool held_;
};
