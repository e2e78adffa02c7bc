// SORT and MERGE: the statement between the compiled program and the sort engine.
//
// With files on both sides one call does it all. Otherwise the statement lives across calls, and
// what it needs later is kept in the thread's record:
//
//     INPUT PROCEDURE    op 1 prepares the buffer; RELEASE fills it; op 3 runs the engine
//     USING              op 1 or 2 runs the engine at once
//     OUTPUT PROCEDURE   the engine leaves its result in the buffer, if all was there anyway, or in
//                      a spill file; RETURN hands it out
//     GIVING             the engine writes the files
//
// `active` is set while the engine runs, and only then: an op 11 that meets it stops the sort under
// its feet.
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "kvr2/sort.h"

#include "frame/message_calls.h"
#include "frame/run_unit.h"
#include "frame/storage.h"
#include "frame/thread_record.h"
#include "frame/upcalls.h"
#include "sort/engine_load.h"
#include "sort/failure.h"
#include "sort/spill_file.h"

namespace {

constexpr int16_t kFailure = 16;

// The statement's arguments. With a procedure on either side they are kept in the thread's record
// until the engine runs; a sort with files on both sides leaves that alone, so that it can stand
// inside the INPUT PROCEDURE of another one.
struct Arguments {
    const SortRecordDesc *desc;
    const void *fourth;
    const char *fifth;
    const SortFileList *usingList;
    const SortFileList *givingList;
    const uint64_t *eighth;
};

// Where the engine's input comes from and its output goes to.
struct EngineRun {
    SortIoRecord input{};
    SortIoRecord output{};
    SortControlRecord control{};
};

void prepareControl(EngineRun *run, const SortVerbBlock *block, const ZvkThreadRecord *record)
{
    run->control.engineFlags = block ? block->engineFlags : record->engineFlags;
    run->control.tempDir = _zvkProccom->tempDir;
    run->control.errnoOut = &run->control.errnoValue;
    run->control.program = block ? block->program : nullptr;
}

void listFiles(SortIoRecord *side, const SortFileList *list)
{
    side->count = list ? list->count : 0;
    side->files = list ? list->files : nullptr;
}

uint32_t fileCount(const SortFileList *list) { return list ? list->count : 0; }
uint32_t fileCount(const void *list) { return fileCount(static_cast<const SortFileList *>(list)); }

// The engine's own errors have texts with the reason and the file; any other, and those of a
// catalog that has no such texts, the general one.
void writeFailureMessage(const SortVerbBlock *block, uint32_t errorWord, const SortSides &sides)
{
    char name[161] = "";
    if (const PCB *program = block->program; program && program->name)
        snprintf(name, sizeof name, "%.*s", static_cast<int>(program->nameLength < 160 ? program->nameLength : 160),
                 program->name);
    char file[600];
    zvkDescribeSortFailure(errorWord, sides, file, sizeof file);
    if (errorWord && errorWord <= ZVK_SORT_EREQUEST && zvkHasMessage(26, errorWord))
        msg::sortFailedBecause(errorWord, name, block->lineNumber, errorWord, file);
    else
        msg::sortFailed(name, block->lineNumber, errorWord);
}

// A sort that failed has told so; RETURN then finds the end of the data at once.
void leaveNothingToReturn(ZvkThreadRecord *record)
{
    zvkDropSpill(record);
    record->fill = 0;
}

// The result of a statement: SORT-RETURN, message, error number.
void finish(const SortVerbBlock *block, ZvkThreadRecord *record, int16_t result, uint32_t errorWord,
            const SortSides &sides = {})
{
    if (block) {
        if (block->sortReturn) *block->sortReturn = result;
        if (result != 0 && block->messageOff == 0) writeFailureMessage(block, errorWord, sides);
    }
    // The message may have ended the run unit, and this record with it.
    if (_zvkProccom && zvkThreadScratch(-1) == record) record->sortErrno = errorWord;
}

int16_t runEngine(SortEngine engine, int32_t op, ZvkThreadRecord *record, const Arguments &arguments,
                  const EngineRun &run)
{
    if (record->active) msg::sortInsideSort();
    uint64_t format;
    memcpy(&format, arguments.desc, sizeof format);
    SortEighth eighth{};
    if (arguments.eighth) memcpy(&eighth, arguments.eighth, sizeof eighth);
    record->active = 1;
    int32_t result = engine(op, format, arguments.desc->recordLength, arguments.fourth, arguments.fifth, eighth,
                            run.input, run.output, run.control);
    // A routine of a file that the engine called may have ended the runtime.
    if (_zvkProccom && zvkThreadScratch(-1) == record) record->active = 0;
    return static_cast<int16_t>(result);
}

bool prepareBuffer(ZvkThreadRecord *record)
{
    if (!record->buffer) record->buffer = static_cast<uint8_t *>(zvkAlloc(kSortBufferBytes));
    if (!record->spillPath) record->spillPath = static_cast<char *>(zvkAlloc(kSpillPathBytes));
    if (!record->buffer || !record->spillPath) {
        zvkNoStorage();
        return false;
    }
    // The file of a result that was not returned to its end stays: nothing but its end removes it.
    zvkCloseSpill(record);
    record->spillPath[0] = 0;
    record->capacity = kSortBufferBytes;
    record->fill = 0;
    record->fileOffset = 0;
    record->cursor = record->buffer;
    return true;
}

void saveArguments(ZvkThreadRecord *record, const SortVerbBlock *block, const Arguments &arguments)
{
    record->recordDesc = arguments.desc;
    record->fourthArg = arguments.fourth;
    record->fifthArg = arguments.fifth;
    record->usingList = arguments.usingList;
    record->givingList = arguments.givingList;
    record->eighthArg = arguments.eighth;
    record->engineFlags = block ? block->engineFlags : 0;
    record->verbBlock = block;
}

Arguments savedArguments(const ZvkThreadRecord *record)
{
    return {static_cast<const SortRecordDesc *>(record->recordDesc),
            record->fourthArg,
            static_cast<const char *>(record->fifthArg),
            static_cast<const SortFileList *>(record->usingList),
            static_cast<const SortFileList *>(record->givingList),
            static_cast<const uint64_t *>(record->eighthArg)};
}

// Ops 1 and 2.
void startSort(SortEngine engine, int32_t op, const SortVerbBlock *block, ZvkThreadRecord *record,
               const Arguments &arguments)
{
    EngineRun run;
    prepareControl(&run, block, record);
    listFiles(&run.input, arguments.usingList);
    listFiles(&run.output, arguments.givingList);
    if (!(run.input.count && run.output.count)) {
        if (!prepareBuffer(record)) return finish(block, record, kFailure, 0);
        saveArguments(record, block, arguments);
        if (run.input.count == 0) { // RELEASE comes next
            if (block && block->sortReturn) *block->sortReturn = 0;
            return;
        }
        if (!zvkNameSpillFile(record, Spill::Output)) return finish(block, record, kFailure, 0);
        unlink(record->spillPath); // left by a process of that number that came to grief
        run.output.path = record->spillPath;
    }
    int16_t result = runEngine(engine, op, record, arguments, run);
    if (!_zvkProccom || zvkThreadScratch(-1) != record) return;
    if (run.output.path) record->fill = -1;
    char output[kSpillPathBytes];
    snprintf(output, sizeof output, "%s", run.output.path ? run.output.path : "");
    if (result != 0 && run.output.path) leaveNothingToReturn(record);
    finish(block, record, result, run.control.errnoValue,
           {arguments.usingList, arguments.givingList, nullptr, output, arguments.fifth});
}

// Returns the engine's error number for what went wrong, or 0.
uint32_t makeFilesEmpty(const SortFileList *list, const SortVerbBlock *block)
{
    IPCB *element = block && block->program ? block->program->ipcb : nullptr;
    uint32_t error = 0;
    for (uint32_t i = 0; i < fileCount(list); i++) {
        FCB *fcb = list->files[i];
        fcb->requestedMode = ZVK_OPEN_OUTPUT;
        fcb->open(fcb, element);
        if (!_zvkProccom) return error; // a USE procedure has ended the run unit
        if (fcb->status > 9) {
            error = ZVK_SORT_EOPENOUT;
            continue;
        }
        fcb->close(fcb, element);
        if (fcb->status > 9) error = ZVK_SORT_EWRITE;
    }
    return error;
}

// Names input and output of the engine after an INPUT PROCEDURE. `inPath` receives the spilled
// input, null if nothing was spilled.
bool prepareRun(ZvkThreadRecord *record, EngineRun *run, char **inPath)
{
    bool spilled = record->spillPath[0];
    *inPath = nullptr;
    if (spilled) {
        *inPath = static_cast<char *>(zvkAlloc(kSpillPathBytes));
        if (!*inPath) {
            zvkNoStorage();
            return false;
        }
        memcpy(*inPath, record->spillPath, kSpillPathBytes);
    }
    if (fileCount(record->givingList)) {
        listFiles(&run->output, static_cast<const SortFileList *>(record->givingList));
        record->spillPath[0] = 0; // there is nothing to RETURN
    } else if (!spilled) {
        run->output.bytes = static_cast<uint32_t>(record->fill);
        run->output.memory = record->buffer;
        record->capacity = static_cast<uint64_t>(record->fill);
        record->cursor = record->buffer;
    } else {
        if (!zvkNameSpillFile(record, Spill::Output)) return false;
        unlink(record->spillPath);
        run->output.path = record->spillPath;
    }
    if (!run->output.memory) {
        record->capacity = kSortBufferBytes;
        record->fileOffset = 0;
    }
    run->input.path = *inPath;
    run->input.bytes = static_cast<uint32_t>(record->fill);
    run->input.memory = record->buffer;
    return true;
}

// Op 3.
void runSort(SortEngine engine, const SortVerbBlock *block, ZvkThreadRecord *record)
{
    if (!record->buffer || !record->recordDesc || record->fill < 0)
        return finish(block, record, kFailure, 0); // no INPUT PROCEDURE before
    EngineRun run;
    char *inPath;
    prepareControl(&run, block, record);
    if (!record->spillPath[0] && record->fill == 0) { // nothing was released: no sort, but GIVING files come into being
        if (fileCount(record->givingList) == 0) record->capacity = 0;
        uint32_t error = makeFilesEmpty(static_cast<const SortFileList *>(record->givingList), block);
        if (!_zvkProccom || zvkThreadScratch(-1) != record) return;
        if (error)
            return finish(block, record, kFailure, error,
                          {nullptr, savedArguments(record).givingList, nullptr, nullptr, nullptr});
        if (block && block->sortReturn) *block->sortReturn = 0;
        return;
    }
    bool ready = prepareRun(record, &run, &inPath);
    int16_t result = ready ? runEngine(engine, ZVK_SORT_START, record, savedArguments(record), run) : kFailure;
    char input[kSpillPathBytes], output[kSpillPathBytes];
    snprintf(input, sizeof input, "%s", inPath ? inPath : "");
    snprintf(output, sizeof output, "%s", run.output.path ? run.output.path : "");
    if (inPath) {
        unlink(inPath);
        free(inPath);
    }
    if (!_zvkProccom || zvkThreadScratch(-1) != record) return;
    record->fill = -1;
    record->cursor = record->buffer;
    record->verbBlock = block;
    if (result != 0) leaveNothingToReturn(record);
    const Arguments saved = savedArguments(record);
    finish(block, record, result, run.control.errnoValue, {nullptr, saved.givingList, input, output, saved.fifth});
}

void endSorts()
{
    if (!_zvkProccom) return;
    auto *record = static_cast<ZvkThreadRecord *>(zvkThreadScratch(-1));
    if (!record) return;
    SortEngine engine = zvkLoadedSortEngine();
    // `active` stays: whoever ends the run unit tells the user that the sort was not complete.
    if (record->active == 1 && engine)
        engine(ZVK_SORT_END, 0, 0, nullptr, nullptr, SortEighth{}, SortIoRecord{}, SortIoRecord{}, SortControlRecord{});
    zvkCloseSortEngine();
}

} // namespace

void zvkReportReturnFailure(ZvkThreadRecord *record, uint32_t error)
{
    finish(static_cast<const SortVerbBlock *>(record->verbBlock), record, kFailure, error);
}

namespace {

void cutAtBlank(char *text)
{
    char *blank = text ? strchr(text, ' ') : nullptr;
    if (blank) *blank = 0;
}

} // namespace

void _zvkSortMerge(int32_t op, SortVerbBlock *block, SortRecordDesc *desc, void *fourth, char *fifth,
                   SortFileList *usingList, SortFileList *givingList, uint64_t *eighth)
{
    if (op == ZVK_SORT_END) return endSorts();
    if (!_zvkProccom) return;
    SortEngine engine = zvkSortEngine();
    if (!engine) return;
    auto *record = static_cast<ZvkThreadRecord *>(zvkThreadScratch(0));
    if (!record) return;
    record->tempDir = _zvkProccom->tempDir;

    switch (op) {
    case ZVK_SORT_START:
    case ZVK_SORT_MERGE:
        cutAtBlank(fifth);
        return startSort(engine, op, block, record, {desc, fourth, fifth, usingList, givingList, eighth});
    case ZVK_SORT_RUN:
        return runSort(engine, block, record);
    case ZVK_SORT_FAILED:
        return finish(block, record, kFailure, 0);
    default:
        return finish(block, record, 0, 0);
    }
}

bool zvkAbandonSort()
{
    _zvkSortMerge(ZVK_SORT_END, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    auto *record = _zvkProccom ? static_cast<ZvkThreadRecord *>(zvkThreadScratch(-1)) : nullptr;
    return record && record->active;
}
