// Streams of the console verbs; see console_streams.h.
#include "verbs/console_streams.h"

#include "frame/device_streams.h"

namespace {

// Without a run-time library there are only the standard streams.
FILE *bound(FILE *Proccom::*member, uint8_t letter, FILE *standard)
{
    if (!_zvkProccom) return standard;
    if (!zvkBoundStream(_zvkProccom->*member)) openDeviceStream(letter);
    FILE *stream = zvkBoundStream(_zvkProccom->*member);
    return stream ? stream : standard;
}

} // namespace

FILE *zvkConsoleInput() { return bound(&Proccom::conIn, 'A', stdin); }
FILE *zvkConsoleOutput() { return bound(&Proccom::conOut, 'D', stdout); }
FILE *zvkSysin() { return bound(&Proccom::sysin, 'I', stdin); }
FILE *zvkSysout() { return bound(&Proccom::sysout, 'O', stdout); }
FILE *zvkSyspunch() { return bound(&Proccom::syspunch, 'P', nullptr); }

void zvkFlushMessagesBeforeRead()
{
    if (_zvkProccom && zvkBoundStream(_zvkProccom->msgs) == stderr) zvkFlushLocked(stderr);
}

void zvkFlushOutputBeforeRead()
{
    if (!_zvkProccom || zvkBoundStream(_zvkProccom->sysout) == stdout || zvkBoundStream(_zvkProccom->conOut) == stdout)
        zvkFlushLocked(stdout);
}
