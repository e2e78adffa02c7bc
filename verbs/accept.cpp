// ACCEPT from a device, of alphanumeric, DBCS and national items.
//
// In line mode (a terminal, or the option ACCEPT=NEW) one input line fills the item: what is too
// long is dropped. In continuous mode newlines are nothing and reading goes on until the item is
// full:
//
//     input "AB\nCD\n", item of 4 bytes    line mode: "AB  "    continuous mode: "ABCD"
//
// The national form differs from the other in what it flushes, in how it drops the rest of a line
// (by bytes) and in that it does not pad. All of that is on purpose: programs know it so.
#include <cstring>
#include <poll.h>
#include <unistd.h>

#include "base/text_units.h"
#include "chardata/code_page_choice.h"
#include "frame/message_calls.h"
#include "kvr2/console.h"
#include "verbs/accept_clock.h"
#include "verbs/console_streams.h"

namespace {

// A byte, or EOF, of a locked stream; an interrupted read is tried again.
int readByte(FILE *stream)
{
    for (;;) {
        int c = getc_unlocked(stream);
        if (c != EOF || !ferror_unlocked(stream) || !zvkRetryAfter(errno, stream, POLLIN)) return c;
        clearerr_unlocked(stream);
    }
}

// How a character is read; EOF if the input ends in it.
template <class Unit>
int readUnit(FILE *stream)
{
    int low = readByte(stream);
    if constexpr (Unit::size == 1) return low;
    int high = low == EOF ? EOF : readByte(stream);
    return high == EOF ? EOF : low | high << 8;
}

// Fills the target with at most `length` characters; returns how many came, and in `error` what a
// failed read left.
template <class Unit>
int64_t readItem(FILE *stream, int64_t length, uint8_t *target, int &error)
{
    StreamLock lock(stream);
    clearerr_unlocked(stream);
    bool lineMode = isatty(fileno(stream)) == 1 || (_zvkProccom && _zvkProccom->runtimeOptions & ZVK_OPTION_ACCEPT_NEW);
    int64_t stored = 0;
    bool lineEnded = false;
    while (stored < length && !lineEnded) {
        int character = readUnit<Unit>(stream);
        if (character == EOF) break;
        if (character == '\n') {
            lineEnded = lineMode;
            continue;
        }
        target = putUnit<Unit>(target, static_cast<typename Unit::Code>(character));
        stored++;
    }
    if (lineMode && stored == length && !lineEnded)
        for (int c = 0; c != '\n' && c != EOF;) c = readByte(stream);
    if (ferror_unlocked(stream)) {
        error = errno;
        clearerr_unlocked(stream);
    }
    return stored;
}

void pad(uint8_t *rest, int64_t length, bool dbcs)
{
    if (!dbcs || length % 2 != 0) {
        memset(rest, ' ', static_cast<size_t>(length));
        return;
    }
    fillPairs(rest, static_cast<size_t>(length), zvkCurrentCodePageRow().dbcsBlank, ' ');
}

void reportFailure(int error)
{
    if (error) msg::readFailed("ACCEPT", error);
}

} // namespace

extern "C" {

void _zvkcAccept(uint32_t flags, int64_t length, uint8_t *target)
{
    if (length < 1) return;
    if (!(flags & (ZVK_ACCEPT_SYSIN | ZVK_ACCEPT_CONSOLE))) {
        zvkAcceptFromClock(flags, length, target);
        return;
    }
    FILE *stream = flags & ZVK_ACCEPT_CONSOLE ? zvkConsoleInput() : zvkSysin();
    if (stream == stdin) {
        zvkFlushMessagesBeforeRead();
        zvkFlushOutputBeforeRead();
    }
    int error = 0;
    int64_t stored = readItem<SingleByte>(stream, length, target, error);
    if (stored > 0 && stored < length) pad(target + stored, length - stored, flags & ZVK_ACCEPT_DBCS);
    reportFailure(error);
}

void _zvkAcceptUnicode(int32_t flags, const uint64_t *length, uint16_t *target)
{
    int32_t units = static_cast<int32_t>(*length);
    if (units < 1) return;
    FILE *stream = flags & ZVK_ACCEPT_CONSOLE ? zvkConsoleInput() : zvkSysin();
    zvkSysout(); // bound, though nothing is written
    if (stream == stdin) zvkFlushOutputBeforeRead();
    int error = 0;
    readItem<Utf16>(stream, units, reinterpret_cast<uint8_t *>(target), error);
    reportFailure(error);
}
}
