// Loading of the sort engine; see engine_load.h.
//
// Not locked: the first sorts of several threads may all load it. The loader counts, and all of them find the same entry.
#include "sort/engine_load.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include "fileio/file_systems.h"
#include "frame/messages.h"
#include "frame/run_unit.h"

namespace {

constexpr char kEngine[] = "libvortlite_64r.so";

SortEngine entry;
void *handle;

SortEngine findEntry(void *library)
{
    void *symbol = dlvsym(library, "sortmerge", "KVR2_6.1.0");
    if (!symbol) symbol = dlsym(library, "sortmerge");
    return reinterpret_cast<SortEngine>(symbol);
}

void chooseTempDir()
{
    const char *directory = getenv("TMPDIR");
    if (!directory || !*directory || access(directory, W_OK) != 0) directory = ".";
    free(_zvkProccom->tempDir);
    _zvkProccom->tempDir = strdup(directory);
    if (!_zvkProccom->tempDir) zvkNoStorage();
}

} // namespace

SortEngine zvkSortEngine()
{
    if (!entry || !handle) {
        void *library = zvkLoadModule(kEngine, RTLD_NOW, _zvkProccom->libDir, _zvkProccom->installDir);
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
            dlclose(library);
            return nullptr;
        }
        handle = library;
        entry = found;
        chooseTempDir();
    }
    // The runtime was ended and started again: its record is a new one.
    if (!_zvkProccom->tempDir) chooseTempDir();
    return entry;
}

SortEngine zvkLoadedSortEngine() { return entry; }

void zvkCloseSortEngine()
{
    if (handle) dlclose(handle);
    handle = nullptr;
}
