// Loading of the sort engine; see engine_load.h.
//
// Not locked: the first sorts of several threads may all load it. All of them find the same entry;
// the first one's handle and temporary directory stay.
#include "sort/engine_load.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include "base/environment.h"
#include "frame/messages.h"
#include "frame/module_load.h"
#include "frame/run_unit.h"

namespace {

constexpr char kEngine[] = "libvortlite_64r.so";

std::atomic<SortEngine> entry;
std::atomic<void *> handle;

SortEngine findEntry(void *library)
{
    void *symbol = dlvsym(library, "sortmerge", "KVR2_6.1.0");
    if (!symbol) symbol = dlsym(library, "sortmerge");
    return reinterpret_cast<SortEngine>(symbol);
}

void chooseTempDir()
{
    const char *directory = environmentText("TMPDIR");
    if (!directory || access(directory, W_OK) != 0) directory = ".";
    char *copy = strdup(directory), *none = nullptr;
    if (!copy)
        zvkNoStorage();
    else if (!__atomic_compare_exchange_n(&_zvkProccom->tempDir, &none, copy, false, __ATOMIC_ACQ_REL,
                                          __ATOMIC_ACQUIRE))
        free(copy);
}

SortEngine loadEngine()
{
    void *library = zvkLoadModule(kEngine, RTLD_NOW, _zvkProccom->libDir, _zvkProccom->installDir), *none = nullptr;
    if (!library) {
        dlopen(kEngine, RTLD_NOW); // the loader gives its text once, and the line before has it
        const char *text = dlerror();
        fprintf(stderr, "dlopen fail: %s\n", text ? text : kEngine);
        return nullptr;
    }
    SortEngine found = findEntry(library);
    if (!found) {
        const char *text = dlerror();
        fprintf(stderr, "dlsym fail: %s\n", text ? text : "sortmerge");
    } else {
        entry = found;
    }
    if (!found || !handle.compare_exchange_strong(none, library)) dlclose(library);
    return found;
}

} // namespace

SortEngine zvkSortEngine()
{
    SortEngine found = handle ? entry.load() : nullptr;
    if (!found) found = loadEngine();
    // It is missing before the first sort, and after the runtime was ended and started again.
    if (found && !__atomic_load_n(&_zvkProccom->tempDir, __ATOMIC_ACQUIRE)) chooseTempDir();
    return found;
}

SortEngine zvkLoadedSortEngine() { return entry; }

void zvkCloseSortEngine()
{
    if (void *library = handle.exchange(nullptr)) dlclose(library);
}
