// Start of the runtime: once per process, or again after its end, at the first program's entry or
// at a host's wish.
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fenv.h>

#include "base/environment.h"
#include "frame/options/options.h"
#include "frame/programs/program_table.h"
#include "frame/run_unit.h"
#include "frame/run_unit/library_load.h"
#include "frame/trace.h"

namespace {

void *libgcc; // kept open: the unwinder behind tracebacks and thread ends must not be loaded in the middle of a failure

void loadLibgcc()
{
    if (libgcc) return;
    libgcc = dlopen("libgcc_s.so.2", RTLD_NOW | RTLD_GLOBAL);
    if (!libgcc) libgcc = dlopen("libgcc_s.so.1", RTLD_NOW | RTLD_GLOBAL);
    if (!libgcc) fputs("Cannot load libgcc_s.so\n", stderr);
}

// The number in an environment variable, 1 for anything that reads as 0, and 0 for a variable that
// is unset or empty.
uint32_t levelFromEnvironment(const char *variable)
{
    const char *value = environmentText(variable);
    if (!value) return 0;
    auto level = static_cast<uint32_t>(strtol(value, nullptr, 0));
    return level ? level : 1;
}

void readContainers()
{
    if (uint32_t level = levelFromEnvironment("__COBOL_JVC_CONTAINER")) {
        _zvkProccom->jvc = level;
        _zvkProccom->txmn = 1;
    }
    if (levelFromEnvironment("__COBOL_TXMN_CONTAINER")) _zvkProccom->txmn = 1;
}

bool inContainer() { return _zvkProccom->txmn || _zvkProccom->jvc; }

void decideCaching(const PCB *pcb)
{
    if (!pcb) {
        _zvkProccom->flags |= ZVK_PREINIT;
        _zvkProccom->cache = 0;
        return;
    }
    _zvkProccom->cache = 2;
    if (!_zvkProccom->plle) _zvk_cpm_create();
    if (_zvkProccom->cache == 1 || (_zvkProccom->cache == 2 && inContainer())) zvkStartProgramCache();
}

} // namespace

void InitCobolRte(PCB *pcb)
{
    if (!_zvkProccom) {
        fputs("Delayed Init!\n", stderr);
        zvk_init();
        if (!_zvkProccom) return;
    }
    loadLibgcc();
    readContainers();
    decideCaching(pcb);
    ZVK_TRACE("InitCobolRte: PID %d Proccom @%p Runcom @%p jvc=%d  txmn=%d  preinit=%d  cache=%d\n", _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(_zvkProccom->runcom), _zvkProccom->jvc,
              _zvkProccom->txmn, (_zvkProccom->flags & ZVK_PREINIT) != 0, _zvkProccom->cache);
    const char *options = environmentValue("COBRTOPT");
    ZVK_TRACE("COBRTOPT=%s\n", options ? options : "");
    zvkParseOptions();
    feenableexcept(FE_DIVBYZERO);
    // Descriptors 0 and 1 both go into winStdout, on purpose.
    zvkReadWindowSize(0, &_zvkProccom->winStdout);
    zvkReadWindowSize(1, &_zvkProccom->winStdout);
    zvkReadWindowSize(2, &_zvkProccom->winStderr);
    if (environmentValue("CPM_CACHE")) zvkStartProgramCache();
    if (inContainer()) _zvkProccom->flags |= ZVK_TRACK_STORAGE;
    _zvkProccom->abortHook = nullptr;
}
