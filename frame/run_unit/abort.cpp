// The end after a failure.
#include <csetjmp>
#include <csignal>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_end.h"
#include "frame/trace.h"
#include "kvr2/termination.h"

void zvkEndByAbort()
{
    signal(SIGABRT, SIG_DFL);
    sigset_t abortOnly;
    sigemptyset(&abortOnly);
    sigaddset(&abortOnly, SIGABRT);
    pthread_sigmask(SIG_UNBLOCK, &abortOnly, nullptr);
    raise(SIGABRT);
    _exit(128 + SIGABRT);
}

void _zvkAbort(int32_t cored)
{
    Runcom *runcom = zvkCurrentOrFreeRuncom();
    if (!runcom) return;
    sigjmp_buf epilogue; // the record will be gone when it is needed
    memcpy(&epilogue, &runcom->jmp, sizeof epilogue);
    bool monitored = _zvkProccom->txmn;
    bool isMain = pthread_equal(pthread_self(), _zvkProccom->mainThread);
    ZVK_TRACE("_zvkAbort: PID %d Proccom @%p Runcom @@%p  reason=%d  signal=%u  abort=%u  stop=@%p  abrt=@%p  jmp=@%p  "
              "main %d cored %d\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), kEndAbort,
              (_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) != 0, (_zvkProccom->flags & ZVK_ABORT_IN_PROGRESS) != 0,
              reinterpret_cast<void *>(runcom->stop), reinterpret_cast<void *>(runcom->abrt),
              static_cast<void *>(runcom->jmp), isMain, cored);
    _zvkProccom->flags |= ZVK_ABORT_IN_PROGRESS;
    if (!cored && zvkWantsCore()) {
        zvkTraceCore();
        if (!monitored) cored = static_cast<int32_t>(zvkMakeCore());
    }
    if (ZvkRoutine hook = _zvkProccom->abortHook) {
        _zvkProccom->abortHook = nullptr;
        hook();
    }
    TermCobolRte(kEndAbort);
    if (monitored) siglongjmp(epilogue, 6);
    if (!isMain) pthread_exit(reinterpret_cast<void *>(-1));
    if (cored == 1) {
        zvkForbidCore();
        signal(SIGABRT, SIG_DFL);
    }
    // From within a signal's handler SIGABRT is blocked, and the handler's own signal would end the
    // process before it.
    sigset_t abortOnly;
    sigemptyset(&abortOnly);
    sigaddset(&abortOnly, SIGABRT);
    pthread_sigmask(SIG_UNBLOCK, &abortOnly, nullptr);
    raise(SIGABRT);
    zvkEndByAbort(); // the program ignores the signal, or its handler came back
}
