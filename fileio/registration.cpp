// Registration of a program's files at its first entry: slots, record areas, and the sharing of
// EXTERNAL files.
//
// An EXTERNAL file has one FCB for the run unit, made by the library when the first program names
// it. Later programs get that FCB in place of their own, and their FIB is held against the first
// one's: any difference in an attribute ends the run, with the list of what differs. The first
// FIB is kept as a copy, with the tables that its offsets point to, because its program may be
// unloaded before the others.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fileio/file_slots.h"
#include "fileio/file_systems.h"
#include "frame/message_calls.h"
#include "frame/run_unit.h"
#include "frame/storage.h"
#include "frame/upcalls.h"
#include "kvr2/hash_table.h"

namespace {

constexpr size_t kAreaHeader = 32; // before the record data; its first word points back to the FCB
constexpr size_t kAreaExtra = 34;  // header, and two bytes after the record

void linkRecordArea(FCB *fcb, uint8_t *area)
{
    fcb->recordArea = area;
    fcb->record = area ? area + kAreaHeader : nullptr;
    const auto address = reinterpret_cast<uintptr_t>(fcb);
    if (area) memcpy(area, &address, sizeof address);
}

void registerOwn(FCB *fcb, FIB *fib)
{
    linkRecordArea(fcb, fib->recordArea ? *fib->recordArea : nullptr);
    fcb->index = fib->index;
    fcb->sharing = fib->sharing;
    fcb->maxRecord = fib->maxRecord;
    zvkInitSlots(fcb, fib);
}

void printFile(uint64_t, const HashEntry *entry)
{
    const auto *fcb = static_cast<const FCB *>(entry->value);
    fprintf(stderr, "\tName: %3.3s-%s\n", fcb->prefix, fcb->fib ? fcb->fib->name : "");
}

void freeFile(HashEntry *entry)
{
    auto *fcb = static_cast<FCB *>(entry->value);
    if (fcb->state & ZVK_FILE_NAME_ALLOCATED) free(fcb->fileName);
    _zvk_Concat_Free(fcb->concatenation);
    free(fcb->recordArea);
    free(fcb->fib);
    free(fcb);
    free(entry);
}

// Null without storage.
HashTable *externalFiles()
{
    Runcom *runcom = _zvkProccom->runcom;
    if (!runcom->externalFiles) {
        HashParams params{};
        params.print = printFile;
        params.free = freeFile;
        runcom->externalFiles = HashTable_Create(&params);
    }
    return runcom->externalFiles;
}

const uint8_t *at(const FIB *fib, uint32_t offset) { return reinterpret_cast<const uint8_t *>(fib) + offset; }

bool sameBytes(const FIB *a, uint32_t aOffset, const FIB *b, uint32_t bOffset, size_t size)
{
    if (!aOffset || !bOffset) return aOffset == bOffset;
    return memcmp(at(a, aOffset), at(b, bOffset), size) == 0;
}

const FileLinageGroup *linageOf(const FIB *fib)
{
    return reinterpret_cast<const FileLinageGroup *>(at(fib, fib->linageOffset));
}

bool sameLinageGroup(const FIB *a, const FIB *b, int group)
{
    const FileLinageGroup &left = linageOf(a)[group], &right = linageOf(b)[group];
    return memcmp(left.name, right.name, sizeof left.name) == 0 && left.value == right.value;
}

// The attributes in which two FIBs differ, as text; empty if they agree.
void describeDifferences(const FIB *a, const FIB *b, char (&list)[1024])
{
    list[0] = 0;
    size_t length = 0;
    auto add = [&](bool differs, const char *text) {
        if (differs) length += static_cast<size_t>(snprintf(list + length, sizeof list - length, "%s, ", text));
    };
    auto bits = [&](uint8_t left, uint8_t right, int mask) { return ((left ^ right) & mask) != 0; };
    add(a->code != b->code || memcmp(a->prefix, b->prefix, 3) != 0, "FILE SYSTEM");
    add(a->organization != b->organization, "ORGANIZATION");
    add(a->accessMode != b->accessMode, "ACCESS MODE");
    add(a->recordFormat != b->recordFormat, "RECORD FORMAT");
    add(a->maxRecord != b->maxRecord, "MAXIMUM RECORD LENGTH");
    add(a->minRecord != b->minRecord, "MINIMUM RECORD LENGTH");
    add(bits(a->attributes, b->attributes, ZVK_FILE_OPTIONAL), "OPTIONAL");
    add(bits(a->attributes, b->attributes,
             ZVK_FILE_ASSIGN_ENVIRONMENT | ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_ASSIGN_ITEM),
        "FILE ASSIGNMENT NAME");
    if (a->sharing || b->sharing) {
        add(bits(a->shareMode, b->shareMode, ZVK_FILE_SHARE_MASK), "SHARE MODE");
        add(bits(a->lockMode, b->lockMode, ZVK_FILE_LOCK_MASK), "LOCK MODE");
        add(bits(a->shareMode, b->shareMode, ZVK_FILE_LOCK_COUNT), "LOCK COUNT");
    }
    add(bits(a->linage, b->linage, ZVK_FILE_LINAGE_FOOTING), "LINAGE FOOTING");
    add(bits(a->linage, b->linage, ZVK_FILE_LINAGE_TOP), "LINAGE TOP");
    add(bits(a->linage, b->linage, ZVK_FILE_LINAGE_BOTTOM), "LINAGE BOTTOM");
    if ((a->linage & b->linage & ZVK_FILE_LINAGE) && a->linageOffset && b->linageOffset) {
        static const char *const titles[] = {"LINAGE NAME/VALUE", "LINAGE FOOTING NAME/VALUE", "LINAGE TOP NAME/VALUE",
                                             "LINAGE BOTTOM NAME/VALUE"};
        for (int group = 0; group < 4; group++) add(!sameLinageGroup(a, b, group), titles[group]);
    } else {
        add(bits(a->linage, b->linage, ZVK_FILE_LINAGE), "LINAGE NAME/VALUE");
    }
    add(a->keyCount != b->keyCount, "NUMBER OF KEYS");
    if (a->keyCount == b->keyCount && a->keyCount)
        add(!sameBytes(a, a->keysOffset, b, b->keysOffset, size_t{a->keyCount} * sizeof(FileKey)), "INDEXED KEY");
    add(!sameBytes(a, a->relativeKeyOffset, b, b->relativeKeyOffset, 36), "RELATIVE KEY");
    if (length >= 2) list[length - 2] = 0;
}

// Whether two FIBs agree; only if they do not, the list says in what. The footing and margins of a
// LINAGE file count by the block's values, not by their flags.
bool agree(const FIB *a, const FIB *b)
{
    constexpr size_t first = 8, last = 62;
    constexpr uint8_t shareBits = ZVK_FILE_SHARE_MASK | ZVK_FILE_LOCK_COUNT;
    if (memcmp(at(a, first), at(b, first), last - first + 1) != 0) return false;
    if ((a->sharing || b->sharing) &&
        (((a->shareMode ^ b->shareMode) & shareBits) || ((a->lockMode ^ b->lockMode) & ZVK_FILE_LOCK_MASK)))
        return false;
    if ((a->linage ^ b->linage) & ZVK_FILE_LINAGE) return false;
    if ((a->linage & ZVK_FILE_LINAGE) &&
        !sameBytes(a, a->linageOffset, b, b->linageOffset, 4 * sizeof(FileLinageGroup)))
        return false;
    return sameBytes(a, a->keysOffset, b, b->keysOffset, size_t{a->keyCount} * sizeof(FileKey)) &&
           sameBytes(a, a->relativeKeyOffset, b, b->relativeKeyOffset, 36) &&
           sameBytes(a, a->attributeOffset, b, b->attributeOffset, 8);
}

void requireAgreement(const FCB *shared, const FIB *fib, const PCB *pcb)
{
    if (agree(shared->fib, fib)) return;
    char list[1024], program[161];
    describeDifferences(shared->fib, fib, list);
    snprintf(program, sizeof program, "%.*s", static_cast<int>(pcb->nameLength), pcb->name);
    msg::externalFileDiffers(fib->name, program, list, ZVK_MSG_SEVERE);
}

constexpr size_t kRelativeKeySize = 36, kAttributeSize = 8;

// A FIB, the tables that it has offsets of and its assignment, in one block; null without storage.
FIB *copyOf(const FIB *fib)
{
    struct Piece {
        uint32_t FIB::*offset;
        size_t size;
    };
    const Piece pieces[] = {{&FIB::keysOffset, size_t{fib->keyCount} * sizeof(FileKey)},
                            {&FIB::relativeKeyOffset, kRelativeKeySize},
                            {&FIB::attributeOffset, kAttributeSize},
                            {&FIB::linageOffset, 4 * sizeof(FileLinageGroup)}};
    size_t size = sizeof(FIB);
    for (const Piece &piece : pieces) size += fib->*piece.offset ? (piece.size + 7) & ~size_t{7} : 0;
    size_t assigned = fib->assignment ? strnlen(fib->assignment, fib->assignmentLength) : 0;
    size += assigned + 1;
    auto *copy = static_cast<FIB *>(zvkCalloc(1, size));
    if (!copy) return nullptr;

    *copy = *fib;
    size_t next = sizeof(FIB);
    for (const Piece &piece : pieces) {
        if (!(fib->*piece.offset)) continue;
        memcpy(reinterpret_cast<uint8_t *>(copy) + next, at(fib, fib->*piece.offset), piece.size);
        copy->*piece.offset = static_cast<uint32_t>(next);
        next += (piece.size + 7) & ~size_t{7};
    }
    if (fib->assignment) {
        copy->assignment = reinterpret_cast<char *>(copy) + next;
        memcpy(copy->assignment, fib->assignment, assigned);
    }
    return copy;
}

// The run unit's FCB of an EXTERNAL file, with a FIB of its own; null without storage.
FCB *makeShared(const FIB *fib)
{
    auto *fcb = static_cast<FCB *>(zvkCalloc(1, sizeof(FCB)));
    auto *area = static_cast<uint8_t *>(zvkCalloc(1, size_t{fib->maxRecord} + kAreaExtra));
    FIB *copy = copyOf(fib);
    if (!fcb || !area || !copy) {
        free(fcb);
        free(area);
        free(copy);
        return nullptr;
    }
    linkRecordArea(fcb, area);
    memcpy(fcb->eyecatcher, "FCB", 3);
    fcb->sharing = 1;
    fcb->index = fib->index;
    fcb->maxRecord = fib->maxRecord;
    zvkInitSlots(fcb, copy);
    return fcb;
}

bool registerExternal(FCB *&fcb, FIB *fib)
{
    HashTable *table = externalFiles();
    if (!table) return false;
    size_t length = strnlen(fib->name, sizeof fib->name);
    if (HashEntry *found = HashTable_Find(table, nullptr, fib->name, length, 0, 0)) {
        fcb = static_cast<FCB *>(found->value);
    } else {
        FCB *made = makeShared(fib);
        if (!made) return false;
        if (!HashTable_Insert(table, nullptr, made->fib->name, length, made, 0, 0, 0)) {
            free(made->recordArea);
            free(made->fib);
            free(made);
            return false;
        }
        fcb = made;
    }
    if (fib->recordArea) *fib->recordArea = fcb->recordArea;
    fcb->state |= ZVK_FILE_FIB_OF_PROGRAM;
    return true;
}

// The error routines do not look at the statement's request.
FileVerb asVerb(FileOperation routine) { return reinterpret_cast<FileVerb>(reinterpret_cast<void *>(routine)); }

} // namespace

void zvkInitSlots(FCB *fcb, FIB *fib)
{
    fcb->fib = fib;
    uint8_t code = fib->organization == ZVK_FILE_LINE_SEQUENTIAL ? uint8_t{kLsq} : zvkDefaultCode();
    fcb->defaultCode = code;
    memcpy(fcb->defaultPrefix, zvkFileSystem(code)->prefix, 3);
    fcb->open = _zvkGenericOpen;
    fcb->close = _zvkCloseError;
    fcb->read = asVerb(_zvkReadError);
    fcb->write = asVerb(_zvkWriteError);
    fcb->rewrite = asVerb(_zvkRewriteError);
    fcb->start = asVerb(_zvkStartError);
    fcb->deleteRecord = asVerb(_zvkDeleteError);
    fcb->useProc = _zvkCallUseProc;
    if (fcb->sharing) fcb->unlock = asVerb(_zvkUnlockError);
}

void zvkSetFileName(FCB *fcb, char *name, bool allocated)
{
    if ((fcb->state & ZVK_FILE_NAME_ALLOCATED) && fcb->fileName != name) free(fcb->fileName);
    fcb->fileName = name;
    if (allocated)
        fcb->state |= ZVK_FILE_NAME_ALLOCATED;
    else
        fcb->state &= ~static_cast<uint32_t>(ZVK_FILE_NAME_ALLOCATED);
}

bool zvkRegisterFiles(int32_t count, FCB **fcbs, FIB **fibs)
{
    for (int32_t i = 0; fcbs && fibs && i < count; i++) {
        if (!fibs[i]) continue;
        if (fibs[i]->attributes & ZVK_FILE_EXTERNAL) {
            if (!registerExternal(fcbs[i], fibs[i])) return false;
        } else if (fcbs[i]) {
            registerOwn(fcbs[i], fibs[i]);
        }
    }
    return true;
}

void zvkCheckFiles(int32_t count, FCB **fcbs, FIB **fibs, const PCB *pcb)
{
    for (int32_t i = 0; fcbs && fibs && i < count; i++)
        if (fcbs[i] && fibs[i] && (fibs[i]->attributes & ZVK_FILE_EXTERNAL)) requireAgreement(fcbs[i], fibs[i], pcb);
}

bool zvkFileIsOpen(const FCB *file) { return file->mode != 0; }

bool zvkFileIsExternal(const FCB *file) { return file->fib && (file->fib->attributes & ZVK_FILE_EXTERNAL); }

// The index of an EXTERNAL file is its number in the program whose statement came last. The run
// unit's end closes it for another program: it gets the number that it has in that one's list, or
// its attributes would be looked for in another file's place, perhaps after the list's end.
static void becomeFileOf(const IPCB *element, FCB *file)
{
    if (!element || !(file->state & ZVK_FILE_FIB_OF_PROGRAM)) return;
    for (int32_t i = 0; element->files && i < element->fileCount; i++)
        if (element->files[i] == file) file->index = static_cast<uint32_t>(i) + 1;
}

// Set while a run unit's end closes the file; not part of the public record's states.
constexpr uint32_t kFileClosing = 0x00100000;

bool zvkFileIsClosing(const FCB *file) { return file->state & kFileClosing; }

void zvkCloseFile(FCB *file, IPCB *element, bool useProcedures)
{
    becomeFileOf(element, file);
    if (useProcedures) {
        if (file->close) file->close(file, element);
        return;
    }
    uint16_t before = file->closeOptions;
    file->closeOptions |= ZVK_CLOSE_NO_USE;
    file->state |= kFileClosing;
    if (file->close) file->close(file, element);
    file->state &= ~kFileClosing;
    if (!(before & ZVK_CLOSE_NO_USE)) file->closeOptions &= static_cast<uint16_t>(~ZVK_CLOSE_NO_USE);
}

void zvkForgetFailedOpen(FCB *file)
{
    if (!(file->state & ZVK_FILE_NAME_ALLOCATED) || zvkFileIsExternal(file)) return;
    zvkSetFileName(file, nullptr, false);
    _zvk_Concat_Free(file->concatenation);
    file->concatenation = nullptr;
}
