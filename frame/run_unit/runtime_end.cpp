// The end of the runtime: all run units, the catalog, all records. The process can start it again
// afterwards.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "frame/locks.h"
#include "frame/message_calls.h"
#include "frame/programs/program_table.h"
#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_end.h"
#include "frame/run_unit/run_unit_mutex.h"
#include "frame/signals.h"
#include "frame/storage.h"
#include "frame/thread_record.h"
#include "frame/trace.h"
#include "frame/upcalls.h"
#include "frame/whole_writes.h"

namespace {

void traceTerm(const char *who, uint32_t reason)
{
    Runcom *runcom = zvkActingRuncom();
    ZVK_TRACE("%s: PID %d Proccom @%p  Runcom @%p  reason=%d  signal=%u  abort=%u  stop=@%p  abrt=@%p  jmp=@%p\n", who,
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), reason,
              (_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) != 0, (_zvkProccom->flags & ZVK_ABORT_IN_PROGRESS) != 0,
              reinterpret_cast<void *>(runcom->stop), reinterpret_cast<void *>(runcom->abrt),
              static_cast<void *>(runcom->jmp));
}

void endThisThread()
{
    if (!zvkThreadScratch(-1)) return;
    if (zvkAbandonSort()) msg::sortStillActive();
    zvkReleaseThreadRecord();
}

void endRunUnits(uint32_t reason)
{
    // A record that an abort caught on its way to the free list is finished as far as it will be.
    if (_zvkProccom->freeru) _zvkProccom->freeru->flags &= static_cast<uint8_t>(~ZVK_RUNCOM_RU_TERM);
    while (Runcom *runcom = _zvkProccom->runcom) {
        Runcom *parent = runcom->parent;
        RunUnitTerm(reason, 19);
        if (!_zvkProccom) return;
        _zvkProccom->runcom = parent;
    }
}

// A run unit that a signal ended under a monitor kept its handlers. They read the tables that are
// freed next.
void restoreLeftSignals()
{
    for (Runcom *runcom = _zvkProccom->freeru; runcom; runcom = runcom->link) {
        if (!(runcom->flags & ZVK_RUNCOM_SIG)) continue;
        runcom->flags &= static_cast<uint8_t>(~ZVK_RUNCOM_SIG);
        zvkSignalRestore();
    }
}

void freeRecords()
{
    bool inSignal = _zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS;
    if (!inSignal) restoreLeftSignals();
    while (Runcom *runcom = _zvkProccom->freeru) {
        _zvkProccom->freeru = runcom->link;
        HashTable_Destroy(runcom->externalFiles);
        HashTable_Destroy(runcom->externalVars);
        HashTable_Destroy(runcom->plle);
        if (!inSignal) _zvkcfree(runcom->signals); // the handler that is running still reads its table
        _zvkcfree(runcom);
    }
}

template <class Text>
void release(Text *&text)
{
    free(text);
    text = nullptr;
}

// Streams that the library opened for device names are closed, or a host that starts the runtime
// again and again would run out of descriptors. The standard streams belong to the process.
void closeStreams()
{
    FILE *bound[] = {_zvkProccom->sysin, _zvkProccom->sysout, _zvkProccom->msgs,
                     _zvkProccom->conIn, _zvkProccom->conOut, _zvkProccom->syspunch};
    for (size_t i = 0; i < std::size(bound); i++) {
        FILE *stream = bound[i];
        bool seen = std::find(bound, bound + i, stream) != bound + i;
        if (!stream || seen || stream == stdin) continue;
        zvkFlushLocked(stream);
        if (stream != stdout && stream != stderr) fclose(stream);
    }
    _zvkProccom->sysin = _zvkProccom->sysout = _zvkProccom->msgs = nullptr;
    _zvkProccom->conIn = _zvkProccom->conOut = _zvkProccom->syspunch = nullptr;
    for (uint64_t &word : _zvkProccom->spareWords) word = 0;
}

} // namespace

void TermCobolRte(uint32_t reason)
{
    if (!_zvkProccom || !zvkCurrentOrFreeRuncom()) return;
    traceTerm("TermCobolRte", reason);
    traceTerm("TermCobolThd", reason);
    endThisThread();
    _zvkProccom->flags &= static_cast<uint8_t>(~ZVK_TRACK_STORAGE);
    _zvkProccom->abortHook = nullptr;
    endRunUnits(reason);
    if (!_zvkProccom) return;
    zvkAbandonRunUnitMutex(); // a host's end of a run unit that was over already left it held
    zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
    freeRecords();
    zvkSignalStackRelease();
    closeStreams();
    if (_zvkProccom->codePageHook) reinterpret_cast<ZvkRoutine>(_zvkProccom->codePageHook)(); // closes the converters
    release(_zvkProccom->installDir);
    release(_zvkProccom->libDir);
    release(_zvkProccom->cobpath);
    release(_zvkProccom->tempDir);
    zvkUnloadModules();
    _zvk_cpm_destroy();
    HashTable_Destroy(_zvkProccom->plle);
    _zvkProccom->plle = nullptr;
    zvkDeleteThreadKey();
    ZVK_TRACE("TermCobolRte: returning...\n");
    bool plainTrace = _zvkProccom->debug == 1;
    int pid = _zvkProccom->pid;
    _zvkcfree(_zvkProccom);
    _zvkProccom = nullptr;
    if (plainTrace) fprintf(stderr, "RTE Terminated... PID %d Proccom %p\n", pid, static_cast<void *>(nullptr));
}

__attribute__((destructor)) static void zvk_fini()
{
    if (!_zvkProccom) return;
    int pid = _zvkProccom->pid;
    void *proccom = _zvkProccom;
    bool tracing = zvkTracing();
    if (tracing) fprintf(stderr, "zvk_fini: PID %d Proccom @%p\n", pid, proccom);
    TermCobolRte(kEndUnload);
    if (tracing) fprintf(stderr, "zvk_fini: PID %d Proccom @%p\n", pid, static_cast<void *>(_zvkProccom));
}
