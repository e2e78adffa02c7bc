// Loading the library: the constructor makes the process record, one spare run-unit record and the
// way to the message catalog.
//
// The catalog is found through NLSPATH, which gets two entries in front: the place that belongs to
// where this library was loaded from, and the place of a system-wide installation. A library in
// /x/lib, /x/usr/lib or one of their "profiled" folders finds its catalogs under
// /x/usr/share/locale/%L/%N; one in any other folder beside itself.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "base/environment.h"
#include "frame/locale/locale_handles.h"
#include "frame/messages.h"
#include "frame/run_unit.h"
#include "frame/run_unit/banner.h"
#include "frame/run_unit/library_load.h"
#include "frame/storage.h"
#include "frame/trace.h"

namespace {

constexpr char kInstallDirectory[] = "/opt/tqx/cobol/rte/usr/lib/";
constexpr char kInstalledCatalogs[] = "/opt/tqx/cobol/rte/usr/share/locale/%L/%N";

void noHook() {}

uint32_t traceLevel()
{
    const char *value = environmentText("__ZVKDEBUG");
    if (!value) return 0;
    auto level = static_cast<uint32_t>(strtol(value, nullptr, 0));
    return level ? level : 1;
}

void traceInit()
{
    ZVK_TRACE("zvk_init: PID %d Proccom @%p Runcom @%p freeru @%p jvc=%d  txmn=%d  preinit=%d  cache=%d\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(_zvkProccom->runcom),
              static_cast<void *>(_zvkProccom->freeru), _zvkProccom->jvc, _zvkProccom->txmn,
              (_zvkProccom->flags & ZVK_PREINIT) != 0, _zvkProccom->cache);
}

bool makeProccom()
{
    auto *proccom = static_cast<Proccom *>(_zvkcalloc(1, sizeof(Proccom)));
    if (!proccom) {
        zvkNoStorage();
        return false;
    }
    memcpy(proccom->eyecatcher, "PROCCOM", 8);
    proccom->ccsid = -1;
    proccom->abortHook = noHook;
    proccom->pid = getpid();
    proccom->mainThread = pthread_self();
    proccom->threadKey = 0xFFFFFFFFu;
    proccom->debug = traceLevel();
    _zvkProccom = proccom;
    return true;
}

// The first record exists before any program does; a host may store its routines there.
void makeSpareRunUnit()
{
    RunUnitInit(nullptr);
    Runcom *spare = _zvkProccom->runcom;
    if (!spare) return;
    _zvkProccom->runcom = nullptr;
    spare->link = _zvkProccom->freeru;
    _zvkProccom->freeru = spare;
}

// Drops the last component of `path` if it is `component`, given with its "/".
bool dropComponent(char *path, const char *component)
{
    size_t length = strlen(path), tail = strlen(component);
    if (length < tail || strcmp(path + length - tail, component) != 0) return false;
    path[length - tail] = 0;
    return true;
}

// The directory of this library with its final "/", cut to `size` bytes; empty if it is not known.
void findLibraryDirectory(char *directory, size_t size)
{
    Dl_info info;
    directory[0] = 0;
    if (!dladdr(reinterpret_cast<void *>(zvk_init), &info) || !info.dli_fname) return;
    const char *slash = strrchr(info.dli_fname, '/');
    if (slash) snprintf(directory, size, "%.*s", static_cast<int>(slash - info.dli_fname + 1), info.dli_fname);
}

bool isPartOf(const char *list, const char *part)
{
    size_t length = strlen(part);
    for (const char *at = list; at; at = strchr(at, ':')) {
        if (*at == ':') at++;
        if (strncmp(at, part, length) == 0 && (at[length] == ':' || at[length] == 0)) return true;
    }
    return false;
}

void putInFrontOfNlspath(const char *entry)
{
    const char *present = environmentValue("NLSPATH");
    if (present && isPartOf(present, entry)) return;
    if (!present || !*present) {
        setenv("NLSPATH", entry, 1);
        return;
    }
    size_t size = strlen(entry) + strlen(present) + 2;
    char *extended = static_cast<char *>(malloc(size));
    if (!extended) return;
    snprintf(extended, size, "%s:%s", entry, present);
    setenv("NLSPATH", extended, 1);
    free(extended);
}

} // namespace

void zvkCatalogPath(const char *libraryDirectory, char *path, size_t size)
{
    snprintf(path, size, "%s", libraryDirectory);
    size_t length = strlen(path);
    if (length && path[length - 1] == '/') path[length - 1] = 0;

    bool inSystemTree = dropComponent(path, "/profiled");
    if (dropComponent(path, "/lib")) {
        dropComponent(path, "/usr");
        inSystemTree = true;
    } else if (dropComponent(path, "/usr")) {
        inSystemTree = true;
    }
    length = strlen(path);
    snprintf(path + length, size - length, "%s", inSystemTree ? "/usr/share/locale/%L/%N" : "/%L/%N");
}

void zvkReadWindowSize(int descriptor, ZvkWindowSize *into)
{
    static_assert(sizeof(ZvkWindowSize) == sizeof(winsize));
    ioctl(descriptor, TIOCGWINSZ, into);
}

// These two teach printf their number formats when they are loaded and cannot take that back. They
// stay in the process when this library is unloaded, or the host's next printf would call into
// nothing.
static void keepPrintfFormats()
{
    constexpr int kKeep = RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE;
    dlopen("libdfp.so.1", kKeep);
    dlopen("libquadmath.so.0", kKeep);
}

__attribute__((constructor)) void zvk_init()
{
    if (environmentValue("__ZVKDEBUG")) fprintf(stderr, "%s\n", kBanner);
    keepPrintfFormats();
    zvkAdoptEnvironmentLocale();
    if (!makeProccom()) return;
    traceInit();
    makeSpareRunUnit();

    char directory[PATH_MAX];
    char catalogs[PATH_MAX + 64];
    findLibraryDirectory(directory, sizeof directory);
    _zvkProccom->libDir = strdup(directory);
    _zvkProccom->installDir = strdup(kInstallDirectory);
    if (!_zvkProccom->libDir || !_zvkProccom->installDir) zvkNoStorage();
    zvkCatalogPath(directory, catalogs, sizeof catalogs);
    if (strcmp(catalogs, kInstalledCatalogs) != 0) putInFrontOfNlspath(kInstalledCatalogs);
    putInFrontOfNlspath(catalogs);

    zvkReadWindowSize(0, &_zvkProccom->winStdin);
    zvkReadWindowSize(1, &_zvkProccom->winStdout);
    zvkReadWindowSize(2, &_zvkProccom->winStderr);
    zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
    traceInit();
}
