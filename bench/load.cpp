// Loading the library, from dlopen to its return, catalog included. This program is not linked with
// it.
#include <benchmark/benchmark.h>
#include <ctime>
#include <dlfcn.h>

namespace {

void loadLibrary(benchmark::State &state)
{
    for (auto _ : state) {
        void *library = dlopen(KVR2_LIBRARY, RTLD_NOW);
        if (!library) {
            state.SkipWithError(dlerror());
            break;
        }
        state.PauseTiming();
        dlclose(library);
        state.ResumeTiming();
    }
}
BENCHMARK(loadLibrary)->Name("loading the library/ours")->UseRealTime();

void fiveMilliseconds(benchmark::State &state)
{
    for (auto _ : state) {
        timespec pause{0, 5000000};
        nanosleep(&pause, nullptr);
    }
}
BENCHMARK(fiveMilliseconds)->Name("loading the library/peer:a pause of 5 ms")->UseRealTime();

} // namespace

BENCHMARK_MAIN();
