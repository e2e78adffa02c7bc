// The message writer.
//
// A message is composed in the process's buffer, or, where another message is under way, in storage
// of its own; it is wrapped to the terminal and sent to the message stream or to the host's
// routine. Its severity decides whether the caller gets control back. All output is flushed to disk
// around it: a message must be there before the next statement runs, because often there is no next
// statement.
#include "frame/message_calls.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/device_streams.h"
#include "frame/messages/message_catalog.h"
#include "frame/messages/message_wrap.h"
#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_end.h"
#include "frame/signals/traceback.h"
#include "frame/streams/stream_sync.h"
#include "frame/trace.h"
#include "frame/whole_writes.h"
#include "kvr2/termination.h"

namespace {

constexpr uint32_t kNoCatalog = 994, kNoBuffer = 993, kSignal = 995, kExit = 901;
constexpr size_t kTextColumn = 9;
constexpr unsigned kStringWidth = 255;
constexpr char kNotFoundDefault[] = "2 Cannot find message %d in %s";
constexpr char kExitDefaults[2][64] = {"  ZVK901S Program exits due to severe or critical error.",
                                       "  ZVK901S Program exits: more than ERRCOUNT errors occurred."};

enum Ending : int32_t { kGoesOn = 0, kSevere = 1, kTooManyErrors = -1 };

// Kept free after a message's own text for what must not be lost: its line end, the line ZVK901S,
// the empty line.
constexpr size_t kTail = 80;

// The text while it is composed: never longer than its storage.
struct Composer {
    char *text;
    size_t size;
    size_t length;

    void add(const char *format, va_list args)
    {
        if (length + 1 >= size) return;
        int wanted = vsnprintf(text + length, size - length, format, args);
        if (wanted > 0) length = std::min(length + static_cast<size_t>(wanted), size - 1);
    }
    void addf(const char *format, ...)
    {
        va_list args;
        va_start(args, format);
        add(format, args);
        va_end(args);
    }
    void blanksTo(size_t column)
    {
        while (length < column && length + 1 < size) text[length++] = ' ';
        text[length] = 0;
    }
};

// Where one message is composed. The process has one buffer, which a second message at the same
// time (another thread's, or one that a host's message routine leads to) must not touch: it gets
// storage on its own stack, small enough for the stack of a signal handler. Without a catalog there
// is no buffer, and the few texts that are shown then are short.
struct MessageStorage {
    char own[4096];
    bool shared;
    size_t size;
    char *text;

    MessageStorage()
    {
        shared = messageSettings.buffer && !__atomic_test_and_set(&inUse, __ATOMIC_ACQUIRE);
        text = shared ? messageSettings.buffer : own;
        size = shared ? messageSettings.bufferSize : sizeof own;
        text[0] = 0;
    }
    ~MessageStorage() { release(); }
    void release()
    {
        if (shared) __atomic_clear(&inUse, __ATOMIC_RELEASE);
        shared = false;
    }
    MessageStorage(const MessageStorage &) = delete;
    MessageStorage &operator=(const MessageStorage &) = delete;

    static bool inUse;
};
bool MessageStorage::inUse;

int severityOf(const char *text)
{
    int digit = text[0] - '0';
    return digit < 0 || digit > 3 ? 3 : digit;
}

FILE *messageStream()
{
    if (!_zvkProccom) return stderr;
    if (!zvkBoundStream(_zvkProccom->msgs)) openDeviceStream('M');
    FILE *stream = zvkBoundStream(_zvkProccom->msgs);
    return stream ? stream : stderr;
}

void syncOutputs()
{
    zvkSyncStream(stderr);
    zvkSyncStream(stdout);
    if (!_zvkProccom) return;
    zvkSyncStream(zvkBoundStream(_zvkProccom->sysout));
    zvkSyncStream(zvkBoundStream(_zvkProccom->conOut));
}

// Prefix, number, severity letter if it is known yet, blanks up to the text.
size_t writeHeading(Composer &out, uint32_t number)
{
    out.addf("%.3s%3.3d", messageSettings.prefix, static_cast<int>(number));
    return out.length;
}

// What is after the heading where there is no catalog, or no buffer: why, with the message's
// number.
uint32_t explainLack(Composer &out, uint32_t number)
{
    if (!zvkCatalogIsOpen()) {
        out.addf("Cannot find message catalog %s in NLSPATH. Message number is %d. ", kCatalogName,
                 static_cast<int>(number));
        return kNoCatalog;
    }
    if (!messageSettings.buffer) {
        out.addf(messageSettings.noSpaceText, static_cast<int>(number), kCatalogName);
        out.addf(" ");
        return kNoBuffer;
    }
    return number;
}

// Puts the text of a message, and the severity's letter in its column; returns the severity.
int composeText(Composer &out, uint32_t number, uint32_t variant, size_t letterColumn, va_list *args)
{
    const char *text = messageSettings.buffer ? zvkCatalogText(number, variant) : nullptr;
    bool found = text;
    if (!found) text = zvkCatalogText(kNoCatalog, 0);
    if (!text) text = kNotFoundDefault;
    int severity = severityOf(text);
    if (letterColumn && out.length == letterColumn) {
        out.addf("%c", messageSettings.severityLetters[severity]);
        out.blanksTo(kTextColumn);
    }
    if (found)
        out.add(text + 2, *args);
    else
        out.addf(text + 2, static_cast<int>(number), kCatalogName);
    return severity;
}

// Counts a warning against the run unit's budget.
Ending spendBudget(int severity)
{
    Runcom *runcom = zvkCurrentRuncom();
    if (!runcom || !runcom->errCount || severity != 1) return kGoesOn;
    if (runcom->errCount == 1) return kTooManyErrors;
    runcom->errCount--;
    return kGoesOn;
}

const char *exitText(Ending ending)
{
    uint32_t variant = ending == kSevere ? 0 : 1;
    const char *text = messageSettings.buffer ? zvkCatalogText(kExit, variant) : nullptr;
    // Behind the first two characters, as of any text: the line begins with "ZVK", which is what a
    // monitor's routine is told of.
    return (text ? text : kExitDefaults[variant]) + 2;
}

unsigned lineWidth(bool toString)
{
    if (toString) return kStringWidth;
    return _zvkProccom ? _zvkProccom->winStderr.columns : 0;
}

void copyResult(const Composer &out, char *result, uint32_t size)
{
    if (!result || !size) return;
    size_t length = out.length;
    while (length && (out.text[length - 1] == ' ' || out.text[length - 1] == '\n')) length--;
    if (length > size - 1) length = size - 1;
    memcpy(result, out.text, length);
    result[length] = 0;
}

// A monitor gets a message line by line; only a later line of its own heading says that the run
// unit ends.
void sendLines(const Composer &out, Runcom *runcom, Ending ending)
{
    for (const char *line = out.text; *line;) {
        const char *end = strchrnul(line, '\n');
        if (end != line) {
            ZVK_TRACE("_zvkWriteStderr: call TXMN msg routine...\n");
            bool exits = ending == kSevere && line != out.text && strncmp(line, "ZVK", 3) == 0;
            runcom->msg(exits, "QRNB", line, static_cast<uint32_t>(end - line), runcom->token);
            ZVK_TRACE("_zvkWriteStderr: back...\n");
            syncOutputs();
        }
        line = *end ? end + 1 : end;
    }
}

void send(const Composer &out, FILE *stream, Ending ending)
{
    Runcom *runcom = zvkCurrentOrFreeRuncom();
    if (runcom && runcom->msg) {
        if (_zvkProccom->txmn && !_zvkProccom->jvc) {
            sendLines(out, runcom, ending);
        } else {
            ZVK_TRACE("_zvkWriteStderr: call msg routine...\n");
            runcom->msg(ending, "QRNB", out.text, static_cast<uint32_t>(out.length), runcom->token);
            ZVK_TRACE("_zvkWriteStderr: back...\n");
            syncOutputs();
        }
        return;
    }
    zvkWriteText(stream, out.text, out.length);
}

uint32_t writeToString(uint32_t number, uint32_t control, va_list *args)
{
    auto *result = va_arg(*args, char *);
    auto size = va_arg(*args, uint32_t);
    MessageStorage storage;
    Composer out{storage.text, storage.size, 0};
    composeText(out, number, control & 0xFF, 0, args);
    out.addf("\n");
    if (messageSettings.singleByte) out.length = zvkWrapText(out.text, out.size, lineWidth(true));
    // The message stream is left alone: a lock that stayed with this thread would stop every other
    // thread's next message.
    copyResult(out, result, size);
    return 0;
}

uint32_t writeToStream(uint32_t number, uint32_t control, va_list *args)
{
    MessageStorage storage;
    Composer out{storage.text, storage.size, 0};
    size_t letterColumn = writeHeading(out, number);
    uint32_t shown = explainLack(out, number);
    out.size -= kTail;
    int severity = composeText(out, shown, control & 0xFF, letterColumn, args);
    out.size += kTail;
    out.addf("\n");

    if (control & ZVK_MSG_SEVERE) severity = 2;
    if (control & ZVK_MSG_INFORM) severity = 0;
    Ending ending = severity > 1 ? kSevere : spendBudget(severity);

    syncOutputs();
    FILE *stream = messageStream();
    flockfile(stream);
    if (ending != kGoesOn) {
        if (!(control & ZVK_MSG_NO_TRACEBACK)) zvkTraceback(0, stream);
        out.addf("%s\n", exitText(ending));
    }
    if (messageSettings.singleByte) out.length = zvkWrapText(out.text, out.size, lineWidth(false));
    out.addf("\n");
    send(out, stream, ending);
    syncOutputs();
    zvkSyncStream(stream);
    funlockfile(stream);
    if (number == kSignal) {
        funlockfile(stream); // the signal's own lock, which its caller took; see run_unit_signal.cpp
        return 0xFFFFFFFF;
    }
    if (ending == kGoesOn) return 0;
    storage.release();
    _zvkAbort(0);
    // The abort comes back only where there is no runtime, so nothing to end but the process.
    zvkEndByAbort();
}

} // namespace

uint32_t writeERRmsg(uint32_t number, uint32_t control, uint64_t, va_list *args)
{
    if (control == ZVK_MSG_OPEN_CATALOG)
        zvkOpenCatalog();
    else if (control == ZVK_MSG_CLOSE_CATALOG)
        zvkCloseCatalog();
    else
        return control & ZVK_MSG_TO_STRING ? writeToString(number, control, args)
                                           : writeToStream(number, control, args);
    return 0;
}

uint32_t _zvkWriteERRmsg(uint32_t number, uint32_t control, ...)
{
    va_list args;
    va_start(args, control);
    uint32_t result = writeERRmsg(number, control, 0, &args);
    va_end(args);
    return result;
}

uint32_t zvkWriteMsg(uint32_t number, uint32_t control, ...) __attribute__((alias("_zvkWriteERRmsg")));

void ZVKABEND(void) { msg::programExits(); }
extern "C" void ZVKABORT(void) __attribute__((alias("ZVKABEND")));

void _Dmr_issue_Mod_ErrMsg(void) { msg::argumentNotPositive("MOD"); }
void _Dmr_issue_Rem_ErrMsg(void) { msg::argumentNotPositive("REM"); }
void _Dmr_char_msg(void) { msg::noSuchCharacter("CHAR"); }
void _Dmr_ord_msg(void) { msg::argumentOutOfRange("ORD"); }
