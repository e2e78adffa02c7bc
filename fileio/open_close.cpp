// OPEN and CLOSE: what comes before a module's open and after its close.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "fileio/file_name.h"
#include "fileio/file_slots.h"
#include "fileio/file_status.h"
#include "fileio/file_systems.h"
#include "fileio/generation_catalogue.h"

namespace {

constexpr uint32_t kNoModuleText = 51; // variant of message 201: no file system could be found or loaded

bool debugging() { return environmentHas("VFS_DEBUG_OPEN"); }

const char *concatText(const FCB *fcb) { return fcb->state & ZVK_FILE_CONCATENATED ? "(concat)" : ""; }

const char *generationText(const FCB *fcb)
{
    return fcb->concatenation && !(fcb->state & ZVK_FILE_CONCATENATED) ? "(GDS)" : "";
}

const char *nameOf(const FCB *fcb) { return fcb->fileName ? fcb->fileName : ""; }

void traceOpen(const FCB *fcb, const FIB *fib)
{
    if (!debugging()) return;
    fprintf(stderr, "Opening %3.3s-%s as '%s' %s %s FS1=%2.2d FS2=%d\n", fcb->prefix, fib->name, nameOf(fcb),
            concatText(fcb), generationText(fcb), fcb->status, fcb->fs2);
}

// Name, file system and the name's form; status above 9 if the file cannot be opened.
void settleFile(FCB *fcb, const FIB *fib)
{
    bool laterVolume = fcb->concatenation && (fcb->state & ZVK_FILE_CONCATENATED) && fcb->fileName;
    if (laterVolume)
        zvkResolveVolume(fcb, fib);
    else
        zvkResolveName(fcb, fib);
    if (fcb->status <= 9 && fcb->code == kPlx) zvkChooseByFile(fcb);
    if (fcb->status <= 9) zvkAdaptName(fcb);
    if (fcb->concatenation) {
        fcb->defaultCode = static_cast<uint8_t>((fcb->defaultCode & 0xF0) | (fcb->code & 0x0F));
        memcpy(fcb->defaultPrefix, fcb->prefix, 3);
    }
    if ((fcb->state & ZVK_FILE_CONCATENATED) && fcb->status >= 11) fcb->status = 33;
}

// A LINAGE file's first page begins.
void beginPage(FCB *fcb, const FIB *fib)
{
    if (!(fib->linage & ZVK_FILE_LINAGE)) return;
    fcb->linagePage = fcb->linageBody;
    fcb->linageCounter = 1;
}

void markOpen(FCB *fcb, const FIB *fib)
{
    fcb->mode = fcb->requestedMode;
    fcb->requestedMode = 0;
    fcb->open = _zvkOpenError;
    beginPage(fcb, fib);
    fcb->state = (fcb->state & ~static_cast<uint32_t>(ZVK_FILE_READ_VALID)) | ZVK_FILE_POSITION_VALID;
    fcb->openMark = 2;
    if (fcb->status == 0 && (fcb->mode & ZVK_OPEN_STATUS_07)) fcb->status = 7;
    traceOpen(fcb, fib);
}

// One attempt: 0, or the variant of message 201 for a failure before the module, or -1 for one of
// the module's.
int64_t openOnce(FCB *fcb, IPCB *element, const FIB *fib)
{
    fcb->currentVerb = ZVK_VERB_OPEN;
    zvkSetStatus(fcb, 0, 0);
    fcb->mode = 0;
    settleFile(fcb, fib);
    if (fcb->status > 9) return kNoModuleText;
    ZvkFileSystem *system = zvkFileSystem(fcb->code);
    if (fcb->code == kNoFileSystem || !*system->module || !zvkReadyFileSystem(system)) {
        zvkSetStatus(fcb, 96, 2);
        return kNoModuleText;
    }
    fcb->moduleOperations = system->operations;
    system->init(fcb, element);
    if (fcb->status > 9) return -1;
    traceOpen(fcb, fib);
    fcb->moduleWord = 0;
    fcb->moduleFlag = 1;
    fcb->open(fcb, element);
    if (fcb->status > 9) return -1;
    markOpen(fcb, fib);
    return 0;
}

// A closed file has the name that it is assigned to. An EXTERNAL one may outlive the program that
// closes it, and an item may have got its name after registration: it has a copy of its own.
void takeAssignedName(FCB *fcb, const FIB *fib)
{
    bool external = fcb->state & ZVK_FILE_FIB_OF_PROGRAM;
    size_t length = fib->assignment ? strnlen(fib->assignment, fib->assignmentLength) : 0;
    char *copy = external && length ? strndup(fib->assignment, length) : nullptr;
    zvkSetFileName(fcb, copy ? copy : external ? fcb->fib->assignment : fib->assignment, copy);
}

// The first volume of an OPTIONAL concatenation is absent: goes on to the next name. False when
// there is none; then the whole of it is an absent file.
bool skipAbsentVolume(FCB *fcb, IPCB *element)
{
    if (!(fcb->state & ZVK_FILE_CONCATENATED) || !(fcb->state & ZVK_FILE_ABSENT) || fcb->status != 5) return false;
    uint16_t mode = fcb->mode;
    fcb->closeOptions |= ZVK_CLOSE_NEXT_VOLUME;
    fcb->close(fcb, element);
    const char *next = _zvk_Concat_Next(fcb->concatenation);
    char *copy = next ? strdup(next) : nullptr;
    if (!copy) {
        zvkSetStatus(fcb, 5, 0);
        fcb->state |= ZVK_FILE_ABSENT;
        fcb->open = _zvkOpenError;
        return false;
    }
    zvkSetFileName(fcb, copy, true);
    fcb->requestedMode = mode;
    return true;
}

} // namespace

void _zvkGenericOpen(FCB *fcb, IPCB *element)
{
    const FIB *fib = zvkFibOf(fcb, element);
    int64_t failure;
    do {
        failure = openOnce(fcb, element, fib);
    } while (failure == 0 && skipAbsentVolume(fcb, element));

    zvkStoreStatus(fcb, fib);
    zvkStoreFeedback(fcb, fib);
    if ((fcb->state & kGenerationMade) && fcb->status > 9 && fcb->fileName) zvkGdgTakeBack(fcb->fileName, fcb->prefix);
    fcb->state &= ~kGenerationMade;
    if (fcb->status > 9) {
        fcb->currentVerb = ZVK_VERB_OPEN;
        fcb->open = _zvkGenericOpen;
        _zvkCallUseProc(fcb, failure > 0 ? static_cast<uint32_t>(failure) : 0, element);
    }
    fcb->lastVerb = ZVK_VERB_OPEN;
}

void _zvkGenericClose(FCB *fcb, IPCB *element, uint32_t variant)
{
    FIB *fib = zvkFibOf(fcb, element);
    if (debugging())
        fprintf(stderr, "Closing %c%c%c-%s as '%s' %s %s FS1=%.2d FS2=%d\n", fcb->prefix[0], fcb->prefix[1],
                fcb->prefix[2], fib->name, nameOf(fcb), concatText(fcb), generationText(fcb), fcb->status, fcb->fs2);
    fcb->currentVerb = ZVK_VERB_CLOSE;
    takeAssignedName(fcb, fib);
    fcb->state &= ZVK_FILE_FIB_OF_PROGRAM | ZVK_FILE_CONCATENATED | ZVK_FILE_NAME_ALLOCATED;
    zvkInitSlots(fcb, fcb->fib);
    fcb->lastCloseOptions = fcb->closeOptions;
    free(fcb->moduleBuffer);
    free(fcb->moduleBuffer2);
    fcb->moduleBuffer = fcb->moduleBuffer2 = nullptr;
    if (fcb->closeOptions & ZVK_CLOSE_NEXT_VOLUME) {
        fcb->closeOptions &= static_cast<uint16_t>(~ZVK_CLOSE_NEXT_VOLUME);
        return;
    }
    fcb->state &= ~static_cast<uint32_t>(ZVK_FILE_CONCATENATED);
    _zvk_Concat_Free(fcb->concatenation);
    fcb->concatenation = nullptr;
    if (fcb->closeOptions & ZVK_CLOSE_LOCK) fcb->open = _zvkOpenError;
    fcb->lastVerb = ZVK_VERB_CLOSE;
    fcb->mode = 0;
    if (fcb->status < 30 && (fcb->closeOptions & ZVK_CLOSE_STATUS_07)) fcb->status = 7;
    zvkStoreStatus(fcb, fib);
    zvkStoreFeedback(fcb, fib);
    if (!(fcb->closeOptions & ZVK_CLOSE_NO_USE) && fcb->status > 9) _zvkCallUseProc(fcb, variant, element);
}
