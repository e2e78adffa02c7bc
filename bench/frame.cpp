// The frame's hot paths: program entry and exit, the dynamic CALL of a loaded program, start and
// end of a run unit.
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <string>
#include <unistd.h>

#include "kvr2/kvr2.h"
#include "support/compiled_program.h"

namespace {

void mainEntry() {}

// One main program and 100 programs with names of 8 bytes in its run unit, each a shared object
// that COBPATH led to. They are in the process's global scope as well, which is where dlsym has to
// look for a name whose object it is not told.
struct World {
    CompiledProgram main{"MAIN", mainEntry};
    char names[100][9];

    World()
    {
        const std::string directory = "/tmp/kvr2-bench-" + std::to_string(getpid());
        const std::string build = "mkdir -p " + directory + " && cd " + directory +
                                  " && for i in $(seq -w 0 99); do echo \"int PROGRM$i(void) { return 1; }\" > p.c &&"
                                  " cc -shared -fPIC -nostdlib -o PROGRM$i.so p.c || exit 1; done";
        if (system(build.c_str()) != 0) abort();
        setenv("COBRTOPT", "TRAP=OFF", 1);
        setenv("COBPATH", directory.c_str(), 1);
        _zvkPgmInit(&main.pcb);
        for (int i = 0; i < 100; i++) {
            snprintf(names[i], sizeof names[i], "PROGRM%02d", i);
            call(i);
            if (!dlopen((directory + "/" + names[i] + ".so").c_str(), RTLD_NOW | RTLD_GLOBAL)) abort();
        }
        if (system(("rm -r " + directory).c_str()) != 0) abort();
    }

    uint64_t *call(int i)
    {
        uint32_t failures = 0;
        return _zvkDynLd(nullptr, 8, reinterpret_cast<uint8_t *>(names[i]), &main.pcb, nullptr, &failures);
    }
};

World &world()
{
    static auto *made = new World;
    return *made;
}

void entryAndExit(benchmark::State &state)
{
    world();
    static CompiledProgram program("SUB", mainEntry);
    for (auto _ : state) {
        _zvkPgmInit(&program.pcb);
        _zvkPgmExit(&program.ipcb[0].ent);
    }
}
BENCHMARK(entryAndExit)->Name("program entry and exit/ours");

void threeMutexPairs(benchmark::State &state)
{
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    for (auto _ : state)
        for (int i = 0; i < 3; i++) {
            pthread_mutex_lock(&mutex);
            pthread_mutex_unlock(&mutex);
        }
}
BENCHMARK(threeMutexPairs)->Name("program entry and exit/peer:3 mutex lock and unlock pairs");

void dynamicCall(benchmark::State &state)
{
    World &w = world();
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(w.call(i));
        i = i == 99 ? 0 : i + 1;
    }
}
BENCHMARK(dynamicCall)->Name("dynamic CALL of a loaded program/ours");

void dlsymCall(benchmark::State &state)
{
    World &w = world();
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(dlsym(RTLD_DEFAULT, w.names[i]));
        i = i == 99 ? 0 : i + 1;
    }
}
BENCHMARK(dlsymCall)->Name("dynamic CALL of a loaded program/peer:dlsym");

// In a run unit of its own inside the world's: start with one program, end. The flushes at the end
// go to the bit bucket.
void runUnit(benchmark::State &state)
{
    world();
    static CompiledProgram program("UNIT", mainEntry);
    for (auto _ : state) {
        _zvkCOBOLLink();
        _zvkPgmInit(&program.pcb);
        _zvkPgmTerm(&program.pcb);
    }
}
BENCHMARK(runUnit)->Name("run unit, start and end/ours");

void forkChild(benchmark::State &state)
{
    for (auto _ : state) {
        pid_t child = vfork();
        if (child == 0) _exit(0);
        benchmark::DoNotOptimize(child);
    }
}
BENCHMARK(forkChild)->Name("run unit, start and end/peer:vfork and exit");

} // namespace

BENCHMARK_MAIN();
