// STOP with a literal: the operator reads it, and answers with a line for the program to go on.
#include "frame/message_calls.h"
#include "kvr2/console.h"
#include "verbs/console_streams.h"

namespace {

void show(FILE *stream, const uint8_t *text, uint64_t length)
{
    StreamLock lock(stream);
    zvkWriteText(stream, text, length);
    zvkWriteText(stream, "\n", 1);
}

// Reads a line and drops it. Returns what a failed read left in errno, else 0. Unlike ACCEPT it
// does not retry: a signal ends the wait.
int waitForLine(FILE *stream)
{
    StreamLock lock(stream);
    clearerr_unlocked(stream);
    int c;
    do {
        c = getc_unlocked(stream);
    } while (c != '\n' && c != EOF);
    if (c != EOF || !ferror_unlocked(stream)) return 0;
    int error = errno;
    clearerr_unlocked(stream);
    return error;
}

} // namespace

extern "C" void _zvkcStopLiteral(uint64_t length, const uint8_t *text)
{
    FILE *input = zvkSysin(), *output = zvkSysout();
    show(output, text, length);
    if (input == stdin) {
        zvkFlushMessagesBeforeRead();
        zvkFlushOutputBeforeRead();
    }
    int error = waitForLine(input);
    if (error) msg::readFailed("STOP", error);
}
