// Loading of companions; see module_load.h.
#include "frame/module_load.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

namespace {

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

void *zvkLoadModule(const char *file, int flags, const char *libDir, const char *installDir)
{
    void *handle = loadFrom(libDir, file, flags);
    if (!handle) handle = dlopen(file, flags);
    if (!handle) handle = loadFrom(installDir, file, flags);
    if (!handle) handle = dlopen(file, flags);
    if (!handle) fprintf(stderr, "dlopen(%s) error %s\n", file, dlerror());
    return handle;
}
