// Streams of the console verbs; see console_streams.h.
#include "verbs/console_streams.h"

#include <poll.h>

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

bool zvkRetryAfter(int error, FILE *stream, short events)
{
    if (error == EINTR) return true;
    if (error != EAGAIN) return false;
    pollfd wait{fileno(stream), events, 0};
    poll(&wait, 1, 100);
    return true;
}

void zvkWriteText(FILE *stream, const void *text, size_t length)
{
    const char *next = static_cast<const char *>(text);
    while (length > 0) {
        errno = 0;
        size_t written = fwrite_unlocked(next, 1, length, stream);
        next += written;
        length -= written;
        if (written > 0 && !ferror_unlocked(stream)) continue;
        if (!zvkRetryAfter(errno, stream, POLLOUT)) return;
        clearerr_unlocked(stream);
    }
}

void zvkFlushLocked(FILE *stream)
{
    StreamLock lock(stream);
    fflush_unlocked(stream);
}

void zvkFlushMessagesBeforeRead()
{
    if (_zvkProccom && zvkBoundStream(_zvkProccom->msgs) == stderr) zvkFlushLocked(stderr);
}

void zvkFlushOutputBeforeRead()
{
    if (!_zvkProccom || zvkBoundStream(_zvkProccom->sysout) == stdout || zvkBoundStream(_zvkProccom->conOut) == stdout)
        zvkFlushLocked(stdout);
}
