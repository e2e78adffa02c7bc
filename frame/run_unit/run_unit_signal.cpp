// What a run unit does at a signal: `_zvkSignal`, the routine of every row of the installed table.
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "frame/device_streams.h"
#include "frame/message_calls.h"
#include "frame/run_unit.h"
#include "frame/run_unit/library_load.h"
#include "frame/run_unit/run_unit_end.h"
#include "frame/signals.h"
#include "frame/signals/traceback.h"
#include "frame/streams/stream_sync.h"
#include "frame/trace.h"
#include "frame/upcalls.h"
#include "kvr2/termination.h"

namespace {

void readWindowSizesAgain()
{
    ZvkWindowSize none{};
    _zvkProccom->winStdin = _zvkProccom->winStdout = _zvkProccom->winStderr = none;
    zvkReadWindowSize(0, &_zvkProccom->winStdin);
    zvkReadWindowSize(1, &_zvkProccom->winStdout);
    zvkReadWindowSize(2, &_zvkProccom->winStderr);
}

bool programGoesOn(int signal)
{
    return signal == SIGCONT || signal == SIGUSR1 || signal == SIGUSR2 || signal == SIGXCPU || signal == SIGXFSZ;
}

// Reports a fatal signal; returns whether a core file was made. Entered with stderr locked, left
// without: the writer of message 995 gives up the message stream's lock once more than it takes it,
// and that is this lock where messages go to stderr. Otherwise the stream gets one for it.
int32_t reportFatal(const char *name, void *location)
{
    int32_t cored = 0;
    if (zvkWantsCore()) {
        zvkTraceCore();
        if (!_zvkProccom->txmn) cored = static_cast<int32_t>(zvkMakeCore());
        if (cored) zvkForbidCore();
    }
    zvkTraceback(0, stderr);
    if (!_zvkProccom->msgs) openDeviceStream('M');
    bool elsewhere = _zvkProccom->msgs != stderr;
    if (elsewhere) {
        // Whoever reads the message there wants to see where it happened.
        flockfile(_zvkProccom->msgs);
        zvkTraceback(0, _zvkProccom->msgs);
    }
    msg::endedBySignal(name, location, ZVK_MSG_NO_TRACEBACK);
    zvkSyncStream(_zvkProccom->msgs);
    if (elsewhere) funlockfile(stderr);
    return cored;
}

} // namespace

void _zvkSignal(int signal, void *, void *context)
{
    if (!_zvkProccom) return;
    Runcom *runcom = zvkActingRuncom();
    if (!runcom) return;
    if (_zvkProccom->flags & ZVK_ABORT_IN_PROGRESS) {
        // The SIGABRT that ends an abort.
        _zvkProccom->flags &= static_cast<uint8_t>(~ZVK_ABORT_IN_PROGRESS);
        return;
    }
    ZVK_TRACE("_zvkSignal: PID %d Proccom @%p Runcom @@%p signal=%u (%s) abort=%u  stop=@%p  abrt=@%p  jmp=@%p\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(runcom),
              static_cast<unsigned>(signal), strsignal(signal), 0u, reinterpret_cast<void *>(runcom->stop),
              reinterpret_cast<void *>(runcom->abrt), static_cast<void *>(runcom->jmp));
    if (_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) return;

    const ZvkSignalRow *row = zvkSignalRow(runcom->signals, signal);
    void *location = zvkSignalLocation(context);
    if (_zvkProccom->sysout == stdout || _zvkProccom->conOut == stdout) zvkSyncStream(stdout);

    flockfile(stderr);
    if (signal == SIGWINCH) {
        readWindowSizesAgain();
        funlockfile(stderr);
        return;
    }
    if (programGoesOn(signal)) {
        fprintf(stderr, "\n  Signal received: %d (%s)\n\n", signal, strsignal(signal));
        zvkTraceback(0, stderr);
        funlockfile(stderr);
        return;
    }

    _zvkProccom->flags |= ZVK_SIGNAL_IN_PROGRESS;
    zvkRemoveSpillFiles();
    int32_t cored = reportFatal(row->name, location);
    if (_zvkProccom->txmn) {
        ZvkTracedName name(runcom->main);
        ZVK_TRACE("_zvkSignal: TXMN - siglongjmp() to COBOL epilogue of %*.*s via @%p  run unit @%p\n",
                  ZVK_NAME_ARGS(name), static_cast<void *>(runcom->jmp), static_cast<void *>(runcom));
        siglongjmp(runcom->jmp, signal + 128);
    }
    if (!(_zvkProccom->runtimeOptions & ZVK_OPTION_TRAP_DUMP)) {
        _zvkAbort(cored);
        return;
    }
    if (!(_zvkProccom->runtimeOptions & ZVK_OPTION_TRAP_CORE)) {
        ZVK_TRACE("_zvkSignal: Abort_now\n");
        raise(SIGABRT);
        return;
    }
    if (cored) zvkForbidCore();
}
