// Core files: a dump of the process by gcore, which lets it live on.
//
// COBCORE names the file, with the patterns of output names; without it the name is "core" and the
// process id. A limit of zero on core files means none.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/shell_word.h"
#include "frame/device_streams.h"
#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_end.h"
#include "frame/trace.h"
#include "kvr2/termination.h"

namespace {

bool coreForbidden()
{
    rlimit limit{};
    return getrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_cur == 0;
}

// The core files' name without the process id, which gcore adds.
void coreName(char (&name)[4096])
{
    const char *value = environmentText("COBCORE");
    snprintf(name, sizeof name, "%s", expandOutputName(value ? value : "core%", 1, "core"));
    if (char *dot = strrchr(name, '.')) *dot = 0;
}

} // namespace

void zvkForbidCore()
{
    rlimit limit{};
    getrlimit(RLIMIT_CORE, &limit);
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_CORE, &limit);
}

uint32_t zvkMakeCore()
{
    if (coreForbidden()) return 0;
    // Not on the stack: a signal's alternate stack has no room for them. A process that dumps in
    // two threads at once gets two core files at most, one of them perhaps under a mixed name.
    static char name[4096], word[4 * sizeof name + 3]; // a name of quotes only grows fourfold
    static char command[sizeof word + 128];
    coreName(name);
    quoteShellWord(name, word, sizeof word);
    auto pid = static_cast<unsigned>(getpid());
    snprintf(command, sizeof command, "/usr/bin/gcore -o %s %u 1>/dev/null 2>&1\n", word, pid);
    // gcore runs as a child of ours; where only ancestors may trace a process, it has to be let.
    prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY, 0, 0, 0);
    errno = 0;
    fflush(stderr);
    fflush(stdout);
    int status = system(command);
    int error = errno;
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : status;
    bool made = !(static_cast<unsigned>(code) > 1 && error != ECHILD);
    if (made)
        fprintf(stderr, "Created core file: %s.%u\n", name, pid);
    else
        fprintf(stderr, "Create core file failed: %x - %d %s\n", static_cast<unsigned>(code), error, strerror(error));
    fflush(stderr);
    fflush(stdout);
    return made;
}

void zvkTraceCore()
{
    Runcom *runcom = zvkActingRuncom();
    ZVK_TRACE("_zvkCore: PID %d Proccom @%p Runcom @@%p  reason=%d  signal=%u  abort=%u  txmn %d\n", _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), kEndAbort,
              (_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) != 0, (_zvkProccom->flags & ZVK_ABORT_IN_PROGRESS) != 0,
              _zvkProccom->txmn);
}

uint32_t ZVKDUMP(void)
{
    if (!_zvkProccom) return 0;
    zvkTraceCore();
    return _zvkProccom->txmn ? _zvkProccom->txmn : zvkMakeCore();
}

uint32_t _zvkCore(void)
{
    if (!_zvkProccom) return 0;
    zvkTraceCore();
    return _zvkProccom->txmn ? 0 : zvkMakeCore();
}
