// Writes that signals and full pipes cannot tear; see whole_writes.h.
#include "frame/whole_writes.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <stdio_ext.h>

namespace {

void waitUntilWritable(FILE *stream)
{
    pollfd wait{fileno_unlocked(stream), POLLOUT, 0};
    if (wait.fd < 0) return; // a stream without descriptor
    while (poll(&wait, 1, -1) < 0 && errno == EINTR) continue;
}

} // namespace

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
        size_t piece = std::min<size_t>(length, PIPE_BUF);
        size_t room = std::min<size_t>(__fbufsize(stream), PIPE_BUF);
        errno = 0;
        if (__fpending(stream) + piece > room && !zvkFlushWhole(stream) && !zvkRetryAfter(errno, stream, POLLOUT))
            return;
        if (piece >= room || __flbf(stream)) waitUntilWritable(stream);

        errno = 0;
        size_t written = fwrite_unlocked(next, 1, piece, stream);
        next += written;
        length -= written;
        if (written == piece) continue;
        if (!zvkRetryAfter(errno, stream, POLLOUT)) return;
        clearerr_unlocked(stream);
    }
}

bool zvkFlushWhole(FILE *stream)
{
    if (__fpending(stream)) waitUntilWritable(stream);
    return fflush_unlocked(stream) == 0;
}

void zvkFlushLocked(FILE *stream)
{
    flockfile(stream);
    zvkFlushWhole(stream);
    funlockfile(stream);
}
