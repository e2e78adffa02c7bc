// The mutex around start and end of run units; see run_unit_mutex.h.
#include "frame/run_unit/run_unit_mutex.h"

static thread_local bool heldHere;

void zvkEnterRunUnitMutex()
{
    // A file's CLOSE at a run unit's end that calls exit or STOP RUN comes back here through the
    // library's end, in the thread that holds the mutex already.
    if (!heldHere) zvkLock(&runUnitMutex);
    heldHere = true;
    zvkRearmRunUnitMutex();
}

void zvkRearmRunUnitMutex()
{
    if (heldHere && _zvkProccom) _zvkProccom->abortHook = zvkAbandonRunUnitMutex;
}

void zvkLeaveRunUnitMutex()
{
    if (_zvkProccom && _zvkProccom->abortHook == zvkAbandonRunUnitMutex) _zvkProccom->abortHook = nullptr;
    if (!heldHere) return;
    heldHere = false;
    zvkUnlock(&runUnitMutex);
}

void zvkAbandonRunUnitMutex()
{
    if (!heldHere) return;
    heldHere = false;
    zvkUnlock(&runUnitMutex);
}
