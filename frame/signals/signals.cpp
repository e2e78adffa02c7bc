// Trapping signals: the table, its installation, and the handler that explains a fault before
// anything else happens.
//
// Each run unit that traps signals installs a table of its own and pushes it on a stack; its end
// pops it and puts back what it found. The handler works with the table on top. It is not
// async-signal-safe in the strict sense, since it uses stdio: a program that fails gets the best
// report that can be had.
#include "frame/signals.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <execinfo.h>
#include <ucontext.h>
#include <unistd.h>

#include "frame/storage.h"

namespace {

struct Row {
    const char *name;
    int signal;
    uint32_t extraFlags;
    ZvkSignalClass signalClass;
    bool ignored;
};

constexpr Row kTemplate[] = {
    {"SIGHUP", SIGHUP, 0, kSignalDefault, false},
    {"SIGWINCH", SIGWINCH, 0, kSignalReturn, false},
    {"SIGINT", SIGINT, 0, kSignalDefault, false},
    {"SIGQUIT", SIGQUIT, 0, kSignalDefault, false},
    {"SIGTTIN", SIGTTIN, 0, kSignalDefault, false},
    {"SIGTTOU", SIGTTOU, 0, kSignalDefault, false},
    {"SIGTSTP", SIGTSTP, 0, kSignalDefault, false},
    {"SIGTERM", SIGTERM, 0, kSignalPass, false},
    {"SIGABRT", SIGABRT, 0, kSignalPass, false},
    {"SIGSEGV", SIGSEGV, SA_ONSTACK, kSignalPass, false},
    {"SIGILL", SIGILL, 0, kSignalPass, false},
    {"SIGFPE", SIGFPE, 0, kSignalPass, false},
    {"SIGBUS", SIGBUS, 0, kSignalPass, false},
    {"SIGSYS", SIGSYS, 0, kSignalPass, false},
    {"SIGPWR", SIGPWR, 0, kSignalPass, false},
    {"SIGSTKFLT", SIGSTKFLT, 0, kSignalPass, false},
    {"SIGSTKFLT", SIGSTKFLT, SA_ONSTACK, kSignalPass, false},
    {"SIGXCPU", SIGXCPU, 0, kSignalReturn, false},
    {"SIGXFSZ", SIGXFSZ, 0, kSignalReturn, false},
    {"SIGUSR1", SIGUSR1, 0, kSignalReturn, false},
    {"SIGUSR2", SIGUSR2, 0, kSignalReturn, false},
    {"SIGCONT", SIGCONT, 0, kSignalPass, false},
    {"SIGTRAP", SIGTRAP, 0, kSignalPass, false},
    {"SIGPIPE", SIGPIPE, 0, kSignalReturn, true},
    {"SIGIO", SIGIO, 0, kSignalReturn, true},
    {"?", 0, 0, kSignalPass, false}, // ends a table, and stands for a signal that is not in it
};
constexpr size_t kRows = sizeof kTemplate / sizeof *kTemplate;
static_assert(kRows * sizeof(ZvkSignalRow) == 8736);

ZvkSignalRow defaultTable[kRows];

// Tables now installed. More nested run units than this run with the handlers of the ones around
// them.
constexpr int kMaxTables = 64;
ZvkSignalRow *installed[kMaxTables];
int installedCount;
int refusedCount;

constexpr size_t kStackSize = 32768;
enum class AlternateStack { None, Foreign, Ours, Failed } stackState;
stack_t ourStack;

int cpuLimitCount;
int fileLimitCount;
sigjmp_buf classOneBuffer; // no row of the template jumps here; for a site's own table

ZvkSignalRow *topTable()
{
    if (installedCount) return installed[installedCount - 1];
    if (!defaultTable[0].signal) zvkFillSignalTable(defaultTable);
    return defaultTable;
}

void provideAlternateStack()
{
    if (stackState == AlternateStack::Ours || stackState == AlternateStack::Failed) return;
    stack_t inForce{};
    if (sigaltstack(nullptr, &inForce) == 0 && !(inForce.ss_flags & SS_DISABLE) && inForce.ss_size > kStackSize - 1) {
        stackState = AlternateStack::Foreign;
        return;
    }
    stackState = AlternateStack::Failed;
    ourStack = stack_t{};
    ourStack.ss_sp = calloc(1, kStackSize);
    ourStack.ss_size = kStackSize;
    if (!ourStack.ss_sp) return;
    if (sigaltstack(&ourStack, nullptr) == 0) {
        stackState = AlternateStack::Ours;
    } else {
        free(ourStack.ss_sp);
        ourStack.ss_sp = nullptr;
    }
}

bool alternateStackUsable()
{
    if (stackState == AlternateStack::Ours) return true;
    stack_t inForce{};
    return sigaltstack(nullptr, &inForce) == 0 && !(inForce.ss_flags & SS_DISABLE);
}

bool nearZero(const void *address) { return reinterpret_cast<uintptr_t>(address) <= 4095; }

const char *arithmeticFault(int code)
{
    switch (code) {
    case FPE_INTDIV:
        return "SIGFPE: Integer division by zero.\n";
    case FPE_INTOVF:
        return "SIGFPE: Integer overflow.\n";
    case FPE_FLTDIV:
        return "SIGFPE: BFP division by zero.\n";
    case FPE_FLTOVF:
        return "SIGFPE: BFP overflow.\n";
    case FPE_FLTUND:
        return "SIGFPE: BFP underflow.\n";
    case FPE_FLTRES:
        return "SIGFPE: BFP inexact results.\n";
    case FPE_FLTINV:
        return "SIGFPE: BFP invalid operation.\n";
    case FPE_FLTSUB:
        return "SIGFPE: BFP subscript out of range.\n";
    default:
        return nullptr;
    }
}

// Says on stderr what the signal means. False: nothing more is to be done about it.
bool explain(int signal, const siginfo_t *info)
{
    int code = info ? info->si_code : 0;
    void *address = info ? info->si_addr : nullptr;
    fflush(stdout);
    switch (signal) {
    case SIGILL:
        if (code == ILL_ILLOPC || nearZero(address))
            fprintf(stderr, "SIGILL: Likely call via NULL function pointer (%p).\n", address);
        else if (code == ILL_BADSTK)
            fprintf(stderr, "SIGILL: Internal stack error (%p).\n", address);
        break;
    case SIGFPE:
        if (const char *text = arithmeticFault(code))
            fputs(text, stderr);
        else
            fprintf(stderr, "SIGFPE: Other exception: %d.\n", code);
        break;
    case SIGSEGV:
        if (code != SEGV_MAPERR) break;
        if (nearZero(address))
            fprintf(stderr, "SIGSEGV: Likely NULL pointer dereference (%p).\n", address);
        else
            fprintf(stderr, "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (%p).\n", address);
        break;
    case SIGXCPU:
        if (++cpuLimitCount > 2) return false;
        fputs("SIGXCPU: `ulimit -t` exceeded, we may get killed.\n", stderr);
        break;
    case SIGXFSZ:
        if (++fileLimitCount > 1) return false;
        fputs("SIGXFSZ: `ulimit -f` exceeded, expect I/O errors\n", stderr);
        break;
    case SIGPWR:
        fputs("SIGPWR: Power failure imminent, we may get killed.\n", stderr);
        break;
    default:
        break;
    }
    return true;
}

// For a row without a routine: one line and the calls that led here.
void report(const ZvkSignalRow &row, int signal, const siginfo_t *info, void *location)
{
    if (signal == SIGTTIN || signal == SIGTTOU || signal == SIGWINCH) return;
    fflush(stdout);
    fflush(stderr);
    int code = info ? info->si_code : 0;
    fprintf(stderr, "\n PID %u PPID %u  Signal received: %d(%d) - %s (%s) at location %p\n",
            static_cast<unsigned>(getpid()), static_cast<unsigned>(getppid()), signal, code, row.name,
            strsignal(signal), location);
    void *frames[100];
    int count = backtrace(frames, 100);
    fputs("  Traceback:\n", stderr);
    fflush(stderr);
    backtrace_symbols_fd(frames, count, 2);
    fputs("    --- End of call chain ---\n", stderr);
    fflush(stderr);
}

void setDefault(int signal)
{
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
}

ZvkSignalRoutine ourHandler() { return reinterpret_cast<ZvkSignalRoutine>(default_sigrtn); }

// The action of before all installed tables: tables under this one found our own handler, which
// must not be passed on to.
struct sigaction outerAction(int signal, const ZvkSignalRow &row)
{
    struct sigaction action = row.previous;
    for (int i = installedCount - 2; i >= 0 && action.sa_sigaction == ourHandler(); i--)
        action = zvkSignalRow(installed[i], signal)->previous;
    if (action.sa_sigaction == ourHandler()) action.sa_handler = SIG_DFL;
    return action;
}

void passOn(int signal, siginfo_t *info, void *context, const ZvkSignalRow &row, int savedErrno)
{
    struct sigaction action = outerAction(signal, row);
    errno = savedErrno;
    if (action.sa_handler == SIG_IGN) return;
    if (action.sa_handler == SIG_DFL) {
        sigaction(signal, &action, nullptr);
        raise(signal);
    } else if (action.sa_flags & SA_SIGINFO) {
        action.sa_sigaction(signal, info, context);
    } else {
        action.sa_handler(signal);
    }
}

} // namespace

ZvkSignalRow *zvkNewSignalTable()
{
    auto *table = static_cast<ZvkSignalRow *>(_zvkcalloc(1, kRows * sizeof(ZvkSignalRow)));
    if (table) zvkFillSignalTable(table);
    return table;
}

void zvkFillSignalTable(ZvkSignalRow *table)
{
    memset(table, 0, kRows * sizeof *table);
    for (size_t i = 0; i < kRows; i++) {
        table[i].name = kTemplate[i].name;
        table[i].signal = kTemplate[i].signal;
        table[i].extraFlags = kTemplate[i].extraFlags;
        table[i].signalClass = kTemplate[i].signalClass;
        if (kTemplate[i].ignored)
            table[i].routine = reinterpret_cast<ZvkSignalRoutine>(reinterpret_cast<void *>(SIG_IGN));
    }
}

ZvkSignalRow *zvkSignalRow(ZvkSignalRow *table, int signal)
{
    while (table->signal && table->signal != signal) table++;
    return table;
}

void zvkSignalInstall(ZvkSignalRow *table, ZvkSignalRoutine handler, ZvkSignalRoutine routine)
{
    if (!table) {
        table = defaultTable;
        zvkFillSignalTable(table);
    }
    if (!handler) handler = ourHandler();
    if (installedCount == kMaxTables) {
        refusedCount++;
        return;
    }
    installed[installedCount++] = table;
    provideAlternateStack();

    struct sigaction common {};
    common.sa_sigaction = handler;
    common.sa_flags = SA_SIGINFO;
    sigemptyset(&common.sa_mask);
    for (ZvkSignalRow *row = table; row->signal; row++) sigaddset(&common.sa_mask, row->signal);

    for (ZvkSignalRow *row = table; row->signal; row++) {
        row->action = common;
        if (row->routine) row->action.sa_sigaction = row->routine;
        row->routine = routine;
        row->action.sa_flags |= static_cast<int>(row->extraFlags);
        if ((row->action.sa_flags & SA_ONSTACK) && !alternateStackUsable()) row->action.sa_flags &= ~SA_ONSTACK;
        int rc = sigaction(row->signal, &row->action, &row->previous);
        if (rc != 0) fprintf(stderr, "Error on sigaction(%d,...)=%d %d %s\n", row->signal, rc, errno, strerror(errno));
    }
}

void zvkSignalRestore()
{
    if (refusedCount) {
        refusedCount--;
        return;
    }
    if (!installedCount) return;
    ZvkSignalRow *table = installed[--installedCount];
    // From the last row to the first: a signal that is in two rows gets back what the first of
    // them found.
    size_t rows = 0;
    while (table[rows].signal) rows++;
    while (rows-- > 0) sigaction(table[rows].signal, &table[rows].previous, nullptr);
}

void zvkSignalStackRelease()
{
    if (stackState != AlternateStack::Ours) return;
    stack_t inForce{};
    if (sigaltstack(nullptr, &inForce) != 0 || inForce.ss_sp != ourStack.ss_sp || (inForce.ss_flags & SS_ONSTACK))
        return;
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    if (sigaltstack(&none, nullptr) != 0) {
        fprintf(stderr, "Loosing alternate signal stack %p\n", ourStack.ss_sp);
        stackState = AlternateStack::Failed;
        return;
    }
    free(ourStack.ss_sp);
    ourStack.ss_sp = nullptr;
    stackState = AlternateStack::None;
}

void *zvkSignalLocation(const void *context)
{
    if (!context) return nullptr;
    return reinterpret_cast<void *>(static_cast<const ucontext_t *>(context)->uc_mcontext.gregs[REG_RIP]);
}

void default_sigrtn(int signal, void *information, void *context)
{
    int savedErrno = errno;
    auto *info = static_cast<siginfo_t *>(information);
    ZvkSignalRow *row = zvkSignalRow(topTable(), signal);
    struct sigaction present;
    if (sigaction(signal, nullptr, &present) == 0 && !(present.sa_flags & SA_SIGINFO)) {
        // Someone has put a handler of another kind in our place: step back for good.
        if (row->signal) sigaction(signal, &row->action, nullptr);
        setDefault(signal);
        return;
    }
    if (!explain(signal, info)) {
        errno = savedErrno;
        return;
    }
    if (row->routine)
        row->routine(signal, info, context);
    else
        report(*row, signal, info, zvkSignalLocation(context));

    errno = savedErrno;
    switch (row->signalClass) {
    case kSignalReturn:
        return;
    case kSignalJump:
        siglongjmp(classOneBuffer, 666);
    case kSignalPass:
        passOn(signal, info, context, *row, savedErrno);
        return;
    case kSignalDefault:
        setDefault(signal);
        raise(signal);
        return;
    default:
        setDefault(SIGABRT);
        abort();
    }
}
