// Entries for a host that embeds COBOL: it starts the runtime before any program runs, leaves its
// own routines for stop, abort and messages, and begins run units of its own, nested or for a
// transaction.
#include <cstdlib>

#include "frame/run_unit.h"
#include "frame/storage.h"
#include "frame/trace.h"

namespace {

bool runtimeStarted() { return _zvkProccom && _zvkProccom->programOptions; }

// On behalf of a host: the runtime is "preinit", and what the host stores in a free record stays
// there for the next run unit.
bool startForHost()
{
    if (!runtimeStarted()) InitCobolRte(nullptr);
    return _zvkProccom;
}

// A free record, made if all are in use.
Runcom *ensureFreeRecord()
{
    if (_zvkProccom->freeru) return _zvkProccom->freeru;
    // Made without a run unit around it: it installs no signal handlers until it becomes one.
    return _zvkProccom->freeru = zvkMakeRunUnitRecord();
}

} // namespace

void _zvkCOBOLInit(uint32_t function, ZvkHostRoutine stop, uint32_t *rc, uint64_t token)
{
    if ((function != 1 || !stop) && function != 9 && function != 10) {
        *rc = 1;
        return;
    }
    *rc = 0;
    if (!startForHost()) return;
    if (function == 9) {
        _zvkTxmnRunUnit(0, nullptr, 0);
        if (Runcom *runcom = zvkCurrentRuncom()) runcom->abrt = reinterpret_cast<ZvkHostRoutine>(token);
        return;
    }
    if (function == 1 && !_zvkProccom->runcom) RunUnitInit(nullptr);
    Runcom *runcom = zvkCurrentOrFreeRuncom();
    if (!runcom) return;
    if (function == 10) {
        runcom->context = token;
        return;
    }
    runcom->stop = stop;
    runcom->token = token;
}

extern "C" void ZVKCOBOLINIT(uint32_t, ZvkHostRoutine, uint32_t *, uint64_t) __attribute__((alias("_zvkCOBOLInit")));

void _zvkCOBOLInit1(int32_t function, ZvkHostRoutine stop, uint32_t *rc, uint64_t token, ZvkMessageRoutine msg,
                    ZvkHostRoutine abrt, uint64_t context)
{
    *rc = function != 1;
    if (function != 1 || !startForHost()) return;
    Runcom *next = ensureFreeRecord();
    if (!next) return;
    next->stop = stop;
    next->token = token;
    next->msg = msg;
    next->abrt = abrt;
    next->context = context;
}

void _zvkCOBOLHostInit(uint32_t *rc)
{
    if (!runtimeStarted()) {
        startForHost();
        *rc = 0;
    } else if (_zvkProccom->txmn || _zvkProccom->jvc) {
        *rc = 1;
    }
    // Started already and no container: *rc stays as the caller left it, on purpose.
}

void _zvkCOBOLLink(void)
{
    if (runtimeStarted() || startForHost()) RunUnitInit(kHostMarker);
}

void _zvk_cpm_init(ZvkMessageRoutine msg, uint64_t context)
{
    if (!runtimeStarted()) InitCobolRte(kHostMarker);
    if (!_zvkProccom) return;
    ZVK_TRACE("_zvk_cpm_init: PID %d Proccom @%p Runcom @%p txmn %d reason=%d\n", _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(_zvkProccom->runcom), _zvkProccom->txmn, 1000);
    _zvkProccom->txmn++;
    _zvkTxmnRunUnit(0, msg, context);
}

void _zvkTxmnRunUnit(uint64_t, ZvkMessageRoutine msg, uint64_t context)
{
    if (!zvkCurrentOrFreeRuncom()) {
        setenv("__COBOL_TXMN_CONTAINER", "1", 1);
        InitCobolRte(kHostMarker);
        if (!_zvkProccom) return;
    }
    Runcom *parent = _zvkProccom->runcom;
    RunUnitInit(kHostMarker);
    Runcom *runcom = _zvkProccom->runcom;
    if (!runcom || runcom == parent) return;
    runcom->context = context;
    runcom->msg = msg;
    if (parent)
        // The process id is missing from this line, and stays so.
        ZVK_TRACE("_zvkTxmnRunUnit: EXEC TXMN LINK: PID Proccom @%p Runcom @%p  Parent @%p\n",
                  static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), static_cast<void *>(parent));
    else
        ZVK_TRACE("_zvkTxmnRunUnit: TXMN transaction: PID %d Proccom @%p Runcom @%p  Parent @%p\n", _zvkProccom->pid,
                  static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), static_cast<void *>(runcom->parent));
}
