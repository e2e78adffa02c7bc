// The file systems; see file_systems.h.
#include "fileio/file_systems.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include "frame/run_unit.h"
#include "frame/upcalls.h"

namespace {

ZvkFileSystem systems[14] = {
    {"", "", nullptr, nullptr, nullptr},
    {"jgt", "zvkrfstl_64r.so", nullptr, nullptr, nullptr},
    {"hdk", "zvkrfhdk_64r.so", nullptr, nullptr, nullptr},
    {"psx", "zvkrfpsx_64r.so", nullptr, nullptr, nullptr},
    {"lsq", "zvkrflsq_64r.so", nullptr, nullptr, nullptr},
    {"stl", "zvkrfstl_64r.so", nullptr, nullptr, nullptr},
    {"rsd", "zvkrfrsd_64r.so", nullptr, nullptr, nullptr},
    {"wbr", "zvkrfwbrm_64r.so", nullptr, nullptr, nullptr},
    {"rql", "zvkrfrql_64r.so", nullptr, nullptr, nullptr},
    {"pip", "zvkrfpipe_64r.so", nullptr, nullptr, nullptr},
    {"sok", "zvkrfsocket_64r.so", nullptr, nullptr, nullptr},
    {"mqu", "zvkrfmqueue_64r.so", nullptr, nullptr, nullptr},
    {"plx", "", nullptr, nullptr, nullptr},
    {"???", "", nullptr, nullptr, nullptr},
};

struct FurtherPrefix {
    char prefix[4];
    uint8_t code;
};
constexpr FurtherPrefix kFurtherPrefixes[] = {
    {"qvr", kJgt}, {"nat", kLsq}, {"str", kRsd}, {"raw", kWbr}, {"fif", kPip}};

// FILESYS knows these; all else means "plx".
constexpr FurtherPrefix kOptionCodes[] = {{"plx", kPlx}, {"wbr", kWbr}, {"rsd", kRsd}, {"psx", kPsx}, {"stl", kStl},
                                          {"lsq", kLsq}, {"hdk", kHdk}, {"rql", kRql}, {"jgt", kJgt}, {"nat", kLsq}};

void *loadPath(const char *directory, const char *between, const char *file, int flags)
{
    char path[PATH_MAX];
    int length = snprintf(path, sizeof path, "%s%s%s", directory, between, file);
    if (length < 0 || static_cast<size_t>(length) >= sizeof path || access(path, R_OK | X_OK) != 0) return nullptr;
    return dlopen(path, flags);
}

// `directory` plus the file; a "profiled" folder that has none that loads is followed by its
// parent.
void *loadFrom(const char *directory, const char *file, int flags)
{
    if (!directory || !*directory) return nullptr;
    if (void *handle = loadPath(directory, "", file, flags)) return handle;
    constexpr char profiled[] = "/profiled";
    char parent[PATH_MAX];
    size_t end = strlen(directory);
    while (end && directory[end - 1] == '/') end--;
    if (end < sizeof profiled - 1 || end >= sizeof parent ||
        memcmp(directory + end - (sizeof profiled - 1), profiled, sizeof profiled - 1) != 0)
        return nullptr;
    end -= sizeof profiled - 1;
    memcpy(parent, directory, end);
    parent[end] = 0;
    return loadPath(parent, "/", file, flags);
}

} // namespace

ZvkFileSystem *zvkFileSystem(uint8_t code) { return code < 14 ? &systems[code] : &systems[kNoFileSystem]; }

int zvkCodeOfPrefix(const char *prefix, size_t length)
{
    if (length != 3) return -1;
    char lower[4] = {};
    for (size_t i = 0; i < 3; i++) lower[i] = static_cast<char>(tolower(static_cast<unsigned char>(prefix[i])));
    for (uint8_t code = kJgt; code <= kUseDefault; code++)
        if (memcmp(lower, systems[code].prefix, 3) == 0) return code;
    for (const FurtherPrefix &further : kFurtherPrefixes)
        if (memcmp(lower, further.prefix, 3) == 0) return further.code;
    return -1;
}

uint8_t zvkDefaultCode()
{
    for (const FurtherPrefix &option : kOptionCodes)
        if (memcmp(_zvkProccom->fileSystem, option.prefix, 3) == 0) return option.code;
    memcpy(_zvkProccom->fileSystem, "plx", 3);
    return kPlx;
}

void *zvkLoadModule(const char *file, int flags, const char *libDir, const char *installDir)
{
    void *handle = loadFrom(libDir, file, flags);
    if (!handle) handle = dlopen(file, flags);
    if (!handle) handle = loadFrom(installDir, file, flags);
    if (!handle) handle = dlopen(file, flags);
    if (!handle) fprintf(stderr, "dlopen(%s) error %s\n", file, dlerror());
    return handle;
}

bool zvkReadyFileSystem(ZvkFileSystem *system)
{
    if (system->init) return true;
    void *handle = zvkLoadModule(system->module, RTLD_NOW, _zvkProccom->libDir, _zvkProccom->installDir);
    if (!handle) return false;
    dlerror();
    auto init = reinterpret_cast<FileModuleInit>(dlsym(handle, "_IO_Init"));
    if (!init) {
        const char *debug = getenv("VFS_DEBUG_OPEN");
        if (debug && *debug) fprintf(stderr, "dlsym(_IO_Init) in %s error=%s\n", system->module, dlerror());
        dlclose(handle);
        return false;
    }
    auto table = reinterpret_cast<FileModuleTable>(dlsym(handle, "vfs"));
    system->operations = table ? table() : nullptr;
    system->handle = handle;
    system->init = init;
    return true;
}

void zvkUnloadModules()
{
    for (ZvkFileSystem &system : systems) {
        if (!system.handle) continue;
        // The database client behind "rql" does not bear being unloaded.
        if (strcmp(system.prefix, "rql") != 0) dlclose(system.handle);
        system.handle = nullptr;
        system.init = nullptr;
        system.operations = nullptr;
    }
}
