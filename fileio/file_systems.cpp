// The file systems; see file_systems.h.
#include "fileio/file_systems.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

#include "base/environment.h"
#include "frame/module_load.h"
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

bool zvkReadyFileSystem(ZvkFileSystem *system)
{
    if (system->init) return true;
    void *handle = zvkLoadModule(system->module, RTLD_NOW, _zvkProccom->libDir, _zvkProccom->installDir);
    if (!handle) return false;
    dlerror();
    auto init = reinterpret_cast<FileModuleInit>(dlsym(handle, "_IO_Init"));
    if (!init) {
        if (environmentHas("VFS_DEBUG_OPEN"))
            fprintf(stderr, "dlsym(_IO_Init) in %s error=%s\n", system->module, dlerror());
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
