// The routines in a file's slots while the verb makes no sense: they give it its status with no
// test of the file's state in compiled code.
//
// A closed file's READ slot holds _zvkReadError; a file that is open for INPUT has _zvkWriteError
// in its WRITE slot, and so on. Each routine looks at what the file is doing, picks the status,
// stores it and goes the way of all failures, _zvkCallUseProc.
#include "fileio/file_status.h"
#include "kvr2/fileio.h"

namespace {

struct Outcome {
    uint16_t status;
    uint32_t fs2;
};

constexpr Outcome kBroken{30, 5};

bool openIn(const FCB *fcb, int modes) { return fcb->mode & modes; }

Outcome openOutcome(const FCB *fcb, const FIB *)
{
    if (fcb->lastCloseOptions & ZVK_CLOSE_LOCK) return {38, 16};
    if (fcb->mode) return {41, 17};
    return kBroken;
}

Outcome readOutcome(const FCB *fcb, const FIB *fib)
{
    bool keyed = fib->organization & (ZVK_FILE_INDEXED | ZVK_FILE_RELATIVE);
    bool sequential = fib->accessMode & ZVK_FILE_ACCESS_SEQUENTIAL;
    if (!openIn(fcb, ZVK_OPEN_INPUT)) return {47, 9};
    if (!(fcb->state & ZVK_FILE_ABSENT)) return kBroken;
    if (keyed && !(fcb->statement & ZVK_STATEMENT_NEXT) && !sequential) return {23, 29};
    if (fcb->lastVerb == ZVK_VERB_START && !(fcb->state & ZVK_FILE_POSITION_VALID)) return {46, 29};
    if (fcb->lastVerb == ZVK_VERB_READ && !(fcb->state & ZVK_FILE_READ_VALID)) return {46, 29};
    return {10, 29};
}

Outcome writeOutcome(const FCB *fcb, const FIB *fib)
{
    bool sequential = fib->accessMode & ZVK_FILE_ACCESS_SEQUENTIAL;
    if (openIn(fcb, ZVK_OPEN_IO) && sequential && !(fib->organization & ZVK_FILE_LINE_SEQUENTIAL)) return {92, 29};
    if (openIn(fcb, ZVK_OPEN_OUTPUT)) return kBroken;
    return {48, 30};
}

Outcome changeOutcome(const FCB *fcb, const FIB *) { return openIn(fcb, ZVK_OPEN_IO) ? kBroken : Outcome{49, 30}; }

Outcome startOutcome(const FCB *fcb, const FIB *)
{
    if (!openIn(fcb, ZVK_OPEN_INPUT | ZVK_OPEN_IO)) return {47, 29};
    if (fcb->state & ZVK_FILE_ABSENT) return {23, 29};
    return kBroken;
}

Outcome unlockOutcome(const FCB *fcb, const FIB *) { return fcb->mode ? kBroken : Outcome{42, 9}; }

void fail(FCB *fcb, IPCB *element, uint8_t verb, Outcome (*outcomeOf)(const FCB *, const FIB *),
          uint32_t clearedState = 0)
{
    const FIB *fib = zvkFibOf(fcb, element);
    fcb->currentVerb = verb;
    Outcome outcome = outcomeOf(fcb, fib);
    zvkSetStatus(fcb, outcome.status, outcome.fs2);
    fcb->state &= ~clearedState;
    if (!(fcb->closeOptions & ZVK_CLOSE_NO_USE)) {
        zvkStoreStatus(fcb, fib);
        zvkResetFeedback(fib);
        _zvkCallUseProc(fcb, 0, element);
    }
    fcb->lastVerb = verb;
}

} // namespace

void _zvkOpenError(FCB *fcb, IPCB *element) { fail(fcb, element, ZVK_VERB_OPEN, openOutcome); }
void _zvkReadError(FCB *fcb, IPCB *element) { fail(fcb, element, ZVK_VERB_READ, readOutcome, ZVK_FILE_READ_VALID); }
void _zvkWriteError(FCB *fcb, IPCB *element) { fail(fcb, element, ZVK_VERB_WRITE, writeOutcome); }
void _zvkRewriteError(FCB *fcb, IPCB *element) { fail(fcb, element, ZVK_VERB_REWRITE, changeOutcome); }
void _zvkStartError(FCB *fcb, IPCB *element)
{
    fail(fcb, element, ZVK_VERB_START, startOutcome, ZVK_FILE_POSITION_VALID);
}
void _zvkDeleteError(FCB *fcb, IPCB *element) { fail(fcb, element, ZVK_VERB_DELETE, changeOutcome); }
void _zvkUnlockError(FCB *fcb, IPCB *element) { fail(fcb, element, ZVK_VERB_UNLOCK, unlockOutcome); }

void _zvkCloseError(FCB *fcb, IPCB *element)
{
    if (fcb->state & ZVK_FILE_ABSENT) {
        fcb->state &= ~ZVK_FILE_ABSENT;
        zvkSetStatus(fcb, 0, 0);
    } else if (!fcb->mode) {
        zvkSetStatus(fcb, 42, 9);
    } else {
        zvkSetStatus(fcb, kBroken.status, kBroken.fs2);
    }
    _zvkGenericClose(fcb, element, 0);
}
