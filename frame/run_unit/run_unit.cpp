// Start of a run unit.
//
// A run-unit record is taken from the free list, where the constructor puts a first one and each
// ended run unit puts its own, or made anew when run units are nested. A host may have stored its
// routines in the free record already; they are kept only where a host started the runtime.
#include "frame/run_unit.h"

#include <cstring>

#include "frame/messages.h"
#include "frame/programs/program_table.h"
#include "frame/signals.h"
#include "frame/storage.h"
#include "frame/trace.h"

namespace {

bool startedByHost() { return (_zvkProccom->flags & ZVK_PREINIT) || _zvkProccom->txmn || _zvkProccom->jvc; }

Runcom *takeFreeRecord()
{
    Runcom *record = _zvkProccom->freeru;
    _zvkProccom->freeru = record->link;
    record->id = _zvkProccom->runUnitCount++;
    // The second run unit of a process shows that it will see more of them: from now on programs
    // stay loaded.
    if (record->id == 2 && _zvkProccom->cache >= 2 && !_zvkProccom->runcom) zvkStartProgramCache();
    if (!startedByHost()) {
        memset(&record->jmp, 0, sizeof record->jmp);
        record->context = 0;
        record->stop = nullptr;
        record->abrt = nullptr;
        record->reservedWord = 0;
        record->msg = nullptr;
        record->token = 0;
    }
    return record;
}

} // namespace

Runcom *zvkMakeRunUnitRecord()
{
    auto *record = static_cast<Runcom *>(_zvkcalloc(1, sizeof(Runcom)));
    ZvkSignalRow *signals = record ? zvkNewSignalTable() : nullptr;
    if (!signals) {
        _zvkcfree(record);
        zvkNoStorage();
        return nullptr;
    }
    memcpy(record->eyecatcher, "RUNCOM  ", 8);
    record->signals = signals;
    record->id = _zvkProccom->runUnitCount++;
    return record;
}

namespace {

void trapSignals(Runcom *record)
{
    if (!(_zvkProccom->runtimeOptions & ZVK_OPTION_TRAP) || (record->flags & ZVK_RUNCOM_SIG)) return;
    record->flags |= ZVK_RUNCOM_SIG;
    zvkFillSignalTable(record->signals);
    zvkSignalInstall(record->signals, nullptr, reinterpret_cast<ZvkSignalRoutine>(_zvkSignal));
}

} // namespace

void RunUnitInit(PCB *pcb)
{
    Runcom *record = _zvkProccom->freeru ? takeFreeRecord() : zvkMakeRunUnitRecord();
    if (!record) return;
    Runcom *prior = _zvkProccom->runcom;
    record->main = (_zvkProccom->flags & ZVK_PREINIT) && !prior ? kWrapperStub : nullptr;
    record->flags &= static_cast<uint8_t>(~ZVK_RUNCOM_RU_TERM);
    if (_zvkProccom->freeru) _zvkProccom->freeru->flags &= static_cast<uint8_t>(~ZVK_RUNCOM_RU_TERM);
    record->link = prior;
    record->parent = prior;
    _zvkProccom->flags &= static_cast<uint8_t>(~(ZVK_ABORT_IN_PROGRESS | ZVK_SIGNAL_IN_PROGRESS));
    _zvkProccom->runcom = record;
    ZVK_TRACE("RunUnitInit: PID %d Proccom @%p Runcom @%p  PLLE @%p  id=%d  sig=%d  pcb=@%p  main=@%p txmn=%d\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(record),
              static_cast<void *>(record->plle), record->id, record->flags & ZVK_RUNCOM_SIG, static_cast<void *>(pcb),
              static_cast<void *>(record->main), _zvkProccom->txmn);
    if (record->id == 0) return; // the constructor's spare record is no run unit yet

    trapSignals(record);
    record->errCount = _zvkProccom->errCount;
    memcpy(record->upsi, _zvkProccom->upsi, sizeof record->upsi);
    record->active = 0;
    record->randomSeed = 1;
    record->century = 80;
    record->storage = nullptr;
    record->reservedCount[0] = record->reservedCount[1] = 0;
    if (record->plle) {
        record->plle->parent = _zvkProccom->plle; // the process-wide table may be younger
    } else {
        record->plle = zvkNewProgramTable();
        if (!record->plle) zvkNoStorage();
    }
}
