// Loading a program by its name: COBPATH, the system's search rules, the entry symbol, and making
// room when memory runs out.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include "base/environment.h"
#include "frame/messages.h"
#include "frame/programs/program_table.h"
#include "frame/storage.h"
#include "frame/trace.h"

namespace {

enum LoadResult { kLoaded = 0, kBroken = 1, kNoMemory = 3, kNoEntry = 5, kNotFound = 7 };

constexpr size_t kPathSize = 1024;
constexpr char kContainerSuffix[] = ".tqxcob"; // programs prepared for a transaction monitor

// COBPATH as terminated strings, ended by an empty one: so an empty part of the variable ends the
// search there.
const char *searchDirectories()
{
    if (_zvkProccom->cobpath) return _zvkProccom->cobpath;
    const char *value = environmentText("COBPATH");
    if (!value) value = ".";
    size_t length = strlen(value);
    char *parsed = static_cast<char *>(_zvkMalloc(length + 2, 907, 0));
    if (!parsed) return "";
    for (size_t i = 0; i < length; i++) parsed[i] = value[i];
    for (size_t i = 0; i < length; i++)
        if (parsed[i] == ':') parsed[i] = 0;
    parsed[length] = parsed[length + 1] = 0;
    _zvkProccom->cobpath = parsed;
    return parsed;
}

// Unloads the least recently used program of the process-wide table. True if that made room worth
// another try.
bool evict()
{
    HashTable *table = _zvkProccom->plle;
    if (HashTable_IsEmpty(table) || !table->mruTail) return false;
    HashEntry *oldest = table->mruTail;
    LLE *lle = static_cast<LLE *>(oldest->value);
    bool wasLoaded = lle->load;
    zvkUnloadProgram(lle);
    // A run unit that is active may refer to the entry; it stays, empty.
    if (!_zvkProccom->runcom) HashTable_Delete(table, nullptr, oldest->key, oldest->keyLength);
    return wasLoaded || !_zvkProccom->runcom;
}

// dlopen, with another try after each eviction. While a run unit is active there is one eviction
// only, or the same entry would be found again.
void *open(const char *path)
{
    for (;;) {
        errno = 0;
        dlerror();
        void *handle = dlopen(path, RTLD_NOW);
        if (handle || errno != ENOMEM) return handle;
        bool again = evict();
        if (!again) return nullptr;
        if (_zvkProccom->runcom) return dlopen(path, RTLD_NOW);
    }
}

// The loader's words, unless they are that no such object was found: those begin with the name that
// was asked for, while a library that the object needs and that is missing has its own name there.
void keepRefusal(ZvkRefusal *refusal, const char *path, const char *loaderText)
{
    constexpr char notThere[] = ": cannot open shared object file: No such file or directory";
    size_t length = strlen(path);
    if (strncmp(loaderText, path, length) == 0 && strcmp(loaderText + length, notThere) == 0) return;
    snprintf(refusal->text, sizeof refusal->text, "%s", loaderText);
}

int openFailure(const char *path, ZvkRefusal *refusal)
{
    int error = errno;
    const char *loaderText = dlerror();
    if (loaderText) {
        ZVK_TRACE("CPM: dlopen(%s) error: %d %s\n", path, error, loaderText);
        keepRefusal(refusal, path, loaderText);
    }
    return error == ENOMEM ? kNoMemory : kNotFound;
}

// The first "%s%c%s<suffix>" over the directories that may be read and executed; false if there is
// none.
bool findIn(const char *directory, const char *name, const char *suffix, char *path)
{
    int length = snprintf(path, kPathSize, "%s%c%s%s", directory, '/', name, suffix);
    return length > 0 && static_cast<size_t>(length) < kPathSize && access(path, R_OK | X_OK) == 0;
}

bool findInDirectories(const char *name, char *path)
{
    const char *directories = searchDirectories();
    if (_zvkProccom->txmn)
        for (const char *directory = directories; *directory; directory += strlen(directory) + 1)
            if (findIn(directory, name, kContainerSuffix, path) || findIn(directory, name, ".so", path)) return true;
    for (const char *directory = directories; *directory; directory += strlen(directory) + 1)
        if (findIn(directory, name, "", path) || findIn(directory, name, ".so", path)) return true;
    return false;
}

int openProgram(const char *name, void **handle, ZvkRefusal *refusal)
{
    char path[kPathSize];
    if (findInDirectories(name, path)) {
        *handle = open(path);
        if (*handle) return kLoaded;
        ZVK_TRACE("_zvk_cpm: Failed to locate %s in COBPATH (%s)\n", name, searchDirectories());
        return openFailure(path, refusal);
    }
    if (_zvkProccom->txmn) {
        snprintf(path, sizeof path, "%s%s", name, kContainerSuffix);
        *handle = open(path);
        if (*handle) return kLoaded;
    }
    *handle = open(name);
    if (*handle) return kLoaded;
    ZVK_TRACE("_zvk_cpm: Failed to locate %s in default search\n", name);
    return openFailure(name, refusal);
}

ZvkRoutine findEntry(void *handle, const char *name)
{
    const char *const candidates[] = {name, _zvkProccom->txmn ? "_zvk_cobol_main" : nullptr, "main", "_start"};
    for (const char *candidate : candidates) {
        if (!candidate) continue;
        if (void *address = dlsym(handle, candidate)) return reinterpret_cast<ZvkRoutine>(address);
    }
    return nullptr;
}

// Clears what an entry knows of its program's own storage.
void forgetProgram(LLE *lle)
{
    if (lle->pcb) lle->pcb->lle = nullptr;
    lle->entry = nullptr;
    lle->pcb = nullptr;
    lle->ipcb = nullptr;
}

// While an object is closed, an entry whose program lies in it has this bit.
constexpr uint32_t kMayGo = 0x80000000u;

// Calls `visit` with every entry that any table holds.
template <class Visit>
void forEachProgram(Visit visit)
{
    auto visitTable = [&](HashTable *table) {
        if (!table) return;
        for (HashEntry *entry = HashTable_Next(table, nullptr); entry; entry = HashTable_Next(table, entry))
            if (LLE *lle = zvkProgramOf(entry)) visit(lle);
    };
    visitTable(_zvkProccom->plle);
    for (Runcom *runcom = _zvkProccom->runcom; runcom; runcom = runcom->parent) visitTable(runcom->plle);
}

// Closes an object and clears the entries of all programs that went with it: an object may hold
// several, and each registered itself under its own name. The object stays while someone else holds
// it, such as the run unit around the one that ends; its programs may be in use there, and stay.
// The result is that of dlclose.
int closeObject(void *handle)
{
    link_map *object = nullptr;
    char name[PATH_MAX] = "";
    if (dlinfo(handle, RTLD_DI_LINKMAP, &object) == 0) snprintf(name, sizeof name, "%s", object->l_name);
    forEachProgram([&](LLE *lle) {
        Dl_info info;
        link_map *holder = nullptr;
        if (lle->pcb && dladdr1(lle->pcb, &info, reinterpret_cast<void **>(&holder), RTLD_DL_LINKMAP) &&
            holder == object)
            lle->flags |= kMayGo;
    });

    errno = 0;
    dlerror();
    int result = dlclose(handle);
    bool stays = result != 0;
    if (void *still = !stays && *name ? dlopen(name, RTLD_LAZY | RTLD_NOLOAD) : nullptr) {
        stays = true;
        dlclose(still);
    }

    forEachProgram([&](LLE *lle) {
        if (!(lle->flags & kMayGo)) return;
        lle->flags &= ~kMayGo;
        if (stays) return;
        lle->entry = nullptr;
        lle->pcb = nullptr; // and not its fields: they are gone
        lle->ipcb = nullptr;
    });
    return result;
}

} // namespace

int zvkLoadProgram(LLE *lle, ZvkRefusal *refusal)
{
    char name[161];
    refusal->text[0] = 0;
    snprintf(name, sizeof name, "%.*s", static_cast<int>(lle->nameLength), lle->name);
    void *handle = nullptr;
    int result = openProgram(name, &handle, refusal);
    if (handle) {
        lle->entry = findEntry(handle, name);
        if (lle->entry) {
            lle->load = handle;
            lle->flags |= ZVK_LLE_LOADED;
            return kLoaded;
        }
        errno = 0;
        dlerror();
        if (dlclose(handle) != 0) fprintf(stderr, "CPM: dlclose(%s) error: %d %s\n", name, errno, dlerror());
        lle->flags &= ~static_cast<uint32_t>(ZVK_LLE_LOADED);
        result = kNoEntry;
    }
    ZVK_TRACE("_zvk_cpm: Failed to load %s  load %p  entry %p\n", name, handle, reinterpret_cast<void *>(lle->entry));
    lle->load = nullptr;
    return result;
}

void zvkUnloadProgram(LLE *lle)
{
    forgetProgram(lle);
    if (!lle->load || !(lle->flags & ZVK_LLE_LOADED)) return;
    if (closeObject(lle->load) != 0) {
        int error = errno;
        if (const char *text = dlerror())
            fprintf(stderr, "CPM: dlclose(%p) for %.*s error: %d %s\n", lle->load, static_cast<int>(lle->nameLength),
                    lle->name ? lle->name : "", error, text);
    }
    lle->load = nullptr;
}
