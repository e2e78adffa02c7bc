// The dynamic CALL and the program cache's entries.
#include "kvr2/program_manager.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "frame/locks.h"
#include "frame/message_calls.h"
#include "frame/programs/bound_names.h"
#include "frame/programs/program_table.h"
#include "frame/thread_record.h"
#include "frame/trace.h"

namespace {

// Why a CALL failed; the message's variant is this less one.
enum Cause { kNoAddress = 0, kNoStorage = 3, kBlankName = 6, kNotFound = 7, kRefused = 8 };

// What _zvkDynLd hands to compiled code, in this thread's scratch.
uint64_t *callResult(ZvkRoutine entry)
{
    auto *record = static_cast<uint64_t *>(zvkThreadScratch(2 * sizeof(uint64_t)));
    if (!record) return nullptr;
    record[0] = reinterpret_cast<uint64_t>(entry);
    record[1] = 0;
    return record;
}

// Finds or loads the program; null with *cause and *refusal set.
ZvkRoutine resolve(const char *name, uint32_t length, const PCB *caller, int *cause, ZvkRefusal *refusal)
{
    HashState state{};
    bool locked = false;
    *cause = kNoAddress;
    if (HashEntry *found = zvkFindProgram(name, length, &state, &locked, caller, "CALL"))
        return zvkProgramOf(found)->entry;

    // programMutex stays held over the load, so that two threads that call one program load it
    // once.
    LLE lle{};
    lle.name = name;
    lle.nameLength = length;
    *cause = zvkLoadProgram(&lle, refusal);
    ZvkRoutine entry = nullptr;
    if (*cause == 0) {
        if (zvkAddProgram(&lle, nullptr, ZVK_ADD_PROCESS)) {
            entry = lle.entry;
        } else {
            zvkUnloadProgram(&lle);
            *cause = kNoStorage;
        }
    }
    if (locked) zvkUnlockPrograms();
    return entry;
}

void reportFailure(char *name, size_t nameSize, int cause, const ZvkRefusal &refusal)
{
    if (cause == kNoAddress) {
        // All bits of the control word are set here, which among others is string mode: the text
        // goes into a buffer and nothing is shown.
        zvkWriteMsg(96, ~uint32_t{0}, name, nameSize, name, name, 0);
        return;
    }
    // Found and refused is "not found" to the program, but not to the operator.
    if (cause == kNotFound && refusal.text[0] && zvkHasMessage(96, kRefused - 1))
        msg::callRefused(name, name, 0, refusal.text);
    else
        msg::callFailed(static_cast<uint32_t>(cause - 1), name, name, 0);
}

// The cache mode that a value of COBOL_CPM_CACHE asks for.
uint32_t cacheModeOf(const char *value, uint32_t present)
{
    char first = value[0];
    if (strchr("1AaEeSsTtYy", first)) return 1;
    if (strchr("0DdFfNn", first)) return 0;
    if (first == 'O' || first == 'o') {
        if (value[1] == 'N' || value[1] == 'n') return 1;
        if (value[1] == 'F' || value[1] == 'f') return 0;
        return present;
    }
    return 2;
}

void emptyCache()
{
    HashTable *table = _zvkProccom ? _zvkProccom->plle : nullptr;
    HashEntry *entry = table ? HashTable_Next(table, nullptr) : nullptr;
    while (entry) {
        HashEntry *next = HashTable_Next(table, entry);
        zvkUnloadProgram(static_cast<LLE *>(entry->value));
        // While a run unit is active its table may refer to the entry; it stays, empty.
        if (!_zvkProccom->runcom) HashTable_Delete(table, nullptr, entry->key, entry->keyLength);
        entry = next;
    }
}

void printState() { fprintf(stderr, "COBOL is %s\n", _zvkProccom && _zvkProccom->runcom ? "Active" : "Inactive"); }

} // namespace

uint64_t *_zvkDynLd(int32_t *names, int64_t length, uint8_t *name, PCB *caller, uint64_t *entries, uint32_t *failures)
{
    uint32_t size = zvkCallNameLength(name, length);
    // The name is used where it stands; a copy is made only where it has to be folded, or reported.
    char copy[ZVK_CALL_NAME_MAX + 1];
    auto *text = reinterpret_cast<const char *>(name);
    if (zvkFoldsNames(caller)) {
        zvkCopyCallName(name, size, caller, copy);
        text = copy;
    }
    int cause = kBlankName;
    ZvkRefusal refusal;
    refusal.text[0] = 0;
    bool active = zvkCurrentRuncom() && zvkCurrentRuncom()->plle;
    if (size && !active) {
        cause = kNotFound; // before any run unit, or after the runtime's end, no program can be found
    } else if (size) {
        int32_t row = zvkBoundNameRow(names, text, size);
        if (row >= 0) return reinterpret_cast<uint64_t *>(entries[row]);
        if (ZvkRoutine entry = resolve(text, size, caller, &cause, &refusal)) return callResult(entry);
    }
    if (failures && *failures) {
        ++*failures; // the program has an ON EXCEPTION phrase and looks at this count
    } else {
        zvkCopyCallName(name, size, caller, copy);
        reportFailure(copy, sizeof copy, cause, refusal);
    }
    return callResult(nullptr);
}

uint32_t _zvk_cpm_create(void)
{
    if (!_zvkProccom) return 0;
    if (const char *mode = environmentText("COBOL_CPM_CACHE")) {
        _zvkProccom->cache = cacheModeOf(mode, _zvkProccom->cache);
    } else if (const char *size = environmentText("COB_CPM_SIZE_MAX")) {
        // The number itself bounds nothing: zero or not zero is all that counts.
        _zvkProccom->cache = strtol(size, nullptr, 0) != 0;
    }
    return _zvkProccom->cache;
}

void _zvk_cpm_destroy(void) { emptyCache(); }

void _zvk_cpm_enable(void)
{
    if (_zvkProccom) _zvkProccom->cache = 1;
    setenv("COBOL_CPM_CACHE", "1", 1);
}

void _zvk_cpm_disable(void)
{
    emptyCache();
    if (_zvkProccom) _zvkProccom->cache = 0;
    setenv("COBOL_CPM_CACHE", "0", 1);
}

int32_t _zvk_cpm_unload(const char *name)
{
    HashTable *table = _zvkProccom ? _zvkProccom->plle : nullptr;
    if (!table || !name) return 0;
    size_t length = strlen(name);
    HashEntry *entry = HashTable_Find(table, nullptr, name, length, 0, 0);
    if (!entry) return 0;
    zvkUnloadProgram(static_cast<LLE *>(entry->value));
    if (!_zvkProccom->runcom) HashTable_Delete(table, nullptr, name, length);
    return 1;
}

void _zvk_cpm_unload_all(void) { emptyCache(); }

void _zvk_cpm_stats(void)
{
    printState();
    if (!_zvkProccom || !_zvkProccom->plle) return;
    fputs("External Programs - Cache\n", stderr);
    HashTable_Stats(_zvkProccom->plle);
}

void _zvk_cpm_print(void)
{
    _zvk_cpm_stats();
    if (_zvkProccom && _zvkProccom->plle) HashTable_Dump(_zvkProccom->plle);
}

#define ALIAS(type, name, target) extern "C" type name __attribute__((alias(target)))
ALIAS(void, ZVK_CPM_ENABLE(void), "_zvk_cpm_enable");
ALIAS(void, ZVK_CPM_DISABLE(void), "_zvk_cpm_disable");
ALIAS(int32_t, ZVK_CPM_UNLOAD(const char *), "_zvk_cpm_unload");
ALIAS(void, ZVK_CPM_UNLOAD_ALL(void), "_zvk_cpm_unload_all");
ALIAS(void, ZVK_CPM_STATS(void), "_zvk_cpm_stats");
