// The current run unit, and how run units start. What the records mean is in kvr2/run_unit.h.
#pragma once

#include "kvr2/run_unit.h"

// The run unit that is active, or null.
inline Runcom *zvkCurrentRuncom() { return _zvkProccom ? _zvkProccom->runcom : nullptr; }

// The current run unit, or the free record that the next one will take; null without a Proccom.
inline Runcom *zvkCurrentOrFreeRuncom()
{
    if (!_zvkProccom) return nullptr;
    return _zvkProccom->runcom ? _zvkProccom->runcom : _zvkProccom->freeru;
}

// The run unit that terminations act on. A record that has just been put on the free list and is
// still being finished counts before the current one, because a second attempt to end it must find
// its `ru_term`.
inline Runcom *zvkActingRuncom()
{
    if (!_zvkProccom) return nullptr;
    Runcom *free = _zvkProccom->freeru;
    if (!_zvkProccom->runcom || (free && (free->flags & ZVK_RUNCOM_RU_TERM))) return free;
    return _zvkProccom->runcom;
}

// The library's constructor and what it leaves behind (library_load.cpp).
void zvk_init();

// Starts the runtime: environment, options, floating-point traps, program cache. Null: on behalf of
// a host ("preinit"). A non-null marker that is no program (kHostMarker) starts it as for a
// program.
void InitCobolRte(PCB *pcb);

// A new record that is no run unit yet; null after message 907.
Runcom *zvkMakeRunUnitRecord();

// Starts a run unit: takes or makes a Runcom and makes it current. `pcb` is for the trace only.
void RunUnitInit(PCB *pcb);

// Stands for "a program" where a host starts something and there is no PCB; never dereferenced.
inline PCB *const kHostMarker = reinterpret_cast<PCB *>(~uintptr_t{0});

// The value of Runcom.main for a run unit made for a host with no program yet.
inline PCB *const kWrapperStub = reinterpret_cast<PCB *>(~uintptr_t{0});

inline bool zvkHasProgram(const PCB *main) { return main && main != kWrapperStub; }

// Takes back one entry of a program from its own count and the run unit's, neither below 0. The
// caller holds enterMutex.
inline void zvkCountExit(int32_t *entries, Runcom *runcom)
{
    if (*entries > 0) --*entries;
    if (runcom && runcom->active > 0) runcom->active--;
}
