// Where every failed verb ends: with INVALID KEY or AT END in the statement, in a USE procedure,
// silently in a program that looks at FILE STATUS, or in message 200, which ends a program that has
// no way to see the failure.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "fileio/file_status.h"
#include "frame/message_calls.h"
#include "frame/messages/message_catalog.h"
#include "kvr2/fileio.h"

namespace {

bool debugging() { return environmentHas("VFS_DEBUG_ERROR"); }

// The module's text for FS2, or null.
const char *moduleText(FCB *fcb)
{
    if (!fcb->moduleOperations) return nullptr;
    auto text = reinterpret_cast<FileText>(fcb->moduleOperations[ZVK_FILE_TEXT_SLOT]);
    return text ? text(fcb->moduleBuffer, fcb->fs2, 0, 1) : nullptr;
}

const char *verbText(int verb)
{
    switch (verb) {
    case ZVK_VERB_OPEN:
        return "OPEN";
    case ZVK_VERB_CLOSE:
        return "CLOSE";
    case ZVK_VERB_READ:
        return "READ";
    case ZVK_VERB_WRITE:
        return "WRITE";
    case ZVK_VERB_REWRITE:
        return "REWRITE";
    case ZVK_VERB_START:
        return "START";
    case ZVK_VERB_UNLOCK:
        return "UNLOCK";
    default:
        return "DELETE";
    }
}

struct UseProcedure {
    void (*routine)(uint64_t, uint64_t, void *argument, uint64_t mode);
    void *argument;
};

const UseProcedure *chooseUse(const FCB *fcb, int mode)
{
    if (!fcb->useTable) return nullptr;
    int entry = mode & ZVK_OPEN_INPUT    ? 0
                : mode & ZVK_OPEN_OUTPUT ? 1
                : mode & ZVK_OPEN_IO     ? 2
                : mode & ZVK_OPEN_EXTEND ? 3
                                         : 4;
    auto *use = static_cast<const UseProcedure *>(fcb->useTable[entry]);
    return use && use->routine ? use : nullptr;
}

// Which file it was: the name in force, what it was made from, and whose statement it is.
void appendWhere(char *text, size_t size, const FCB *fcb, const FIB *fib, const IPCB *element)
{
    size_t length = strlen(text);
    auto add = [&](const char *format, int most, const char *part) {
        if (length < size) length += static_cast<size_t>(snprintf(text + length, size - length, format, most, part));
    };
    int assigned = fib->assignment ? static_cast<int>(fib->assignmentLength) : 0;
    while (assigned && fib->assignment[assigned - 1] == ' ') assigned--;
    bool other = fcb->fileName && (static_cast<int>(strlen(fcb->fileName)) != assigned ||
                                   memcmp(fcb->fileName, fib->assignment, static_cast<size_t>(assigned)) != 0);
    if (fcb->fileName && *fcb->fileName) add(" Its name is %.*s.", 400, fcb->fileName);
    if (other && assigned) add(" It is assigned to %.*s.", assigned, fib->assignment);
    const PCB *pcb = element ? element->pcb : nullptr;
    if (pcb && pcb->name) add(" Program %.*s.", static_cast<int>(pcb->nameLength), pcb->name);
}

void reportAndEnd(const FCB *fcb, const FIB *fib, uint32_t variant, const IPCB *element, const char *fs2Text)
{
    char text[1024] = "";
    // The text of the failure; a module that has none leaves that of the file status. A variant
    // without a text says nothing: string mode would put "cannot find message" in its place.
    constexpr size_t kReason = 80;
    if (!variant && !fs2Text) variant = fcb->status;
    if (variant && zvkCatalogText(201, variant & 0xFF))
        zvkWriteMsg(201, variant | ZVK_MSG_TO_STRING | ZVK_MSG_INFORM, text, kReason);
    else if (fs2Text)
        snprintf(text, kReason, "%s", fs2Text);
    appendWhere(text, sizeof text, fcb, fib, element);
    const char *reason = text[0] == ' ' ? text + 1 : text;
    msg::fileFailed(verbText(fcb->currentVerb), fib->name, fcb->status, reason, ZVK_MSG_SEVERE);
}

} // namespace

void _zvkCallUseProc(FCB *fcb, uint32_t variant, IPCB *element)
{
    const FIB *fib = zvkFibOf(fcb, element);
    const uint8_t *statusField = zvkStatusField(fib);
    const char *fs2Text = moduleText(fcb);
    if (debugging())
        fprintf(stderr, "FS=%d:%d errno=%d verb=%x last=%x file=%s\nFS1=%2.2s FS2=%s\n", fcb->status, fcb->fs2, errno,
                fcb->currentVerb, fcb->lastVerb, fcb->fileName ? fcb->fileName : "",
                statusField ? reinterpret_cast<const char *>(statusField) : "  ", fs2Text ? fs2Text : "");
    if ((fcb->statement & ZVK_STATEMENT_INVALID_KEY) && fcb->status >= 20 && fcb->status <= 24) return;
    if (fcb->status == 10 && (fcb->statement & ZVK_STATEMENT_AT_END)) {
        if (debugging()) fputs("taking at end!\n", stdout);
        return;
    }

    bool opening = fcb->currentVerb == ZVK_VERB_OPEN;
    int mode = opening ? fcb->requestedMode : fcb->mode;
    if (const UseProcedure *use = chooseUse(fcb, mode)) {
        use->routine(0, 0, use->argument, static_cast<uint64_t>(mode));
        return;
    }
    if (statusField || zvkFeedbackField(fib) || fcb->status < 30) return;
    reportAndEnd(fcb, fib, variant, element, fs2Text);
}
