// The calls that led to a failure; see traceback.h.
#include "frame/signals/traceback.h"

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/shell_word.h"
#include "frame/streams/stream_sync.h"

namespace {

constexpr int kMaxFrames = 132;

void flushAll(FILE *stream)
{
    zvkSyncStream(stream);
    if (stream != stderr) zvkSyncStream(stderr);
    if (stream != stdout) zvkSyncStream(stdout);
    fflush(nullptr);
}

// One frame as backtrace_symbols shows it, "object(function+offset) [0xaddress]", and the source
// line of the address.
void printWithLine(const char *symbol, FILE *stream)
{
    fprintf(stream, "%s\n", symbol);
    const char *bracket = strrchr(symbol, '[');
    if (!bracket) return;
    uintptr_t address = strtoul(bracket + 1, nullptr, 16);
    Dl_info info;
    if (!dladdr(reinterpret_cast<void *>(address), &info) || !info.dli_fname) return;
    char object[4096];
    if (!quoteShellWord(info.dli_fname, object, sizeof object)) return;
    char command[sizeof object + 128];
    int length = snprintf(command, sizeof command, "/usr/bin/addr2line -a -f -C -s -p -e %s 0x%lx 2>/dev/null\n",
                          object, static_cast<unsigned long>(address - reinterpret_cast<uintptr_t>(info.dli_fbase)));
    if (length < 0 || static_cast<size_t>(length) >= sizeof command) return;
    fflush(stream);
    if (system(command) == -1) return;
    fflush(stdout);
}

const void *objectOf(const void *address)
{
    Dl_info info;
    return dladdr(address, &info) ? info.dli_fbase : nullptr;
}

void printFrames(void *const *frames, int count, FILE *stream)
{
    char **symbols = zvkTracebackWantsLines() ? backtrace_symbols(frames, count) : nullptr;
    for (int i = 0; i < count;) {
        if (symbols) {
            printWithLine(symbols[i], stream);
            fflush(stream);
        } else {
            backtrace_symbols_fd(frames + i, 1, fileno(stream));
        }
        int times = 1;
        while (i + times < count && frames[i + times] == frames[i]) times++;
        i += times;
        if (times == 1) continue;
        fprintf(stream, "    ... %d times\n", times);
        fflush(stream);
    }
    free(symbols);
}

} // namespace

int zvkOwnFrames(void *const *frames, int count)
{
    const void *library = objectOf(reinterpret_cast<const void *>(&zvkTraceback));
    int own = 0;
    while (own < count && objectOf(frames[own]) == library) own++;
    return own == count ? 0 : own;
}

bool zvkTracebackWantsLines()
{
    const char *value = environmentText("traceback_lines");
    return value && *value != '0';
}

void zvkTraceback(uint64_t, FILE *stream)
{
    if (!stream) stream = stderr;
    flushAll(stream);
    void *frames[kMaxFrames];
    int count = backtrace(frames, kMaxFrames);
    if (count > 0) {
        fputs("  Traceback:\n", stream);
        fflush(stream);
        int own = zvkOwnFrames(frames, count);
        printFrames(frames + own, count - own, stream);
    }
    fputs("    --- End of call chain ---\n", stream);
    flushAll(stream);
}
