// DISPLAY.
//
// One statement is one hold of its stream's lock, over all items and the line end: lines of several
// threads stay whole. Messages are issued outside it.
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "frame/device_streams.h"
#include "frame/message_calls.h"
#include "verbs/console_streams.h"
#include "verbs/display_text.h"

extern "C" {
uint8_t *_zvkDebugBuf;
uint32_t _zvkDebugBufLen;
}

namespace {

// COBOL_DISPLAY_FLUSH is asked for once a process; threads that race come to the same answer.
bool flushesEveryDisplay()
{
    enum : uint8_t { Unknown, Flush, NoFlush };
    static std::atomic<uint8_t> answer{Unknown};
    uint8_t known = answer.load(std::memory_order_relaxed);
    if (known == Unknown) {
        const char *value = environmentText("COBOL_DISPLAY_FLUSH");
        known = value && *value == '1' ? Flush : NoFlush;
        answer.store(known, std::memory_order_relaxed);
    }
    return known == Flush;
}

// Null: there is no such device.
FILE *streamOf(uint8_t device)
{
    switch (device) {
    case ZVK_DISPLAY_SYSOUT:
        return zvkSysout();
    case ZVK_DISPLAY_CONSOLE:
        return zvkConsoleOutput();
    case ZVK_DISPLAY_SYSPUNCH:
        if (FILE *punch = zvkSyspunch()) return punch;
        msg::noPunchFile();
        return stdout;
    default:
        return nullptr;
    }
}

// Writes the items; false: one is invalid, and those after it are not shown.
bool writeItems(FILE *stream, const DisplayRequest &request, DisplayItem *items)
{
    char buffer[kDisplayBuffer];
    for (int32_t i = 0; i < request.itemCount; i++) {
        const char *text = zvkDisplayText(items[i], static_cast<char>(request.decimalPoint), buffer);
        if (!text) return false;
        if (uint8_t *capture = _zvkDebugBuf) {
            memcpy(capture, text, items[i].width);
            _zvkDebugBufLen = static_cast<uint32_t>(items[i].width);
            return true;
        }
        zvkWriteText(stream, text, items[i].width);
    }
    return true;
}

} // namespace

extern "C" void _zvkcDisplay(const DisplayRequest *request, DisplayItem *items)
{
    FILE *stream = streamOf(request->device);
    if (!stream) {
        msg::noSuchDevice();
        return;
    }
    // A message that was printed earlier stands before this text.
    if (stream == stdout && _zvkProccom && zvkBoundStream(_zvkProccom->msgs) == stderr) zvkFlushLocked(stderr);

    StreamLock lock(stream);
    bool valid = writeItems(stream, *request, items);
    if (!(request->options & ZVK_DISPLAY_NO_ADVANCING)) zvkWriteText(stream, "\n", 1);
    if (flushesEveryDisplay()) zvkFlushWhole(stream);
    lock.release();
    if (!valid) msg::invalidDisplayItem();
}
