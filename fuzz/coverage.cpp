// Coverage from the compiler of the other builds for libFuzzer.
//
// That compiler calls __sanitizer_cov_trace_pc at every edge; libFuzzer wants an array of counters.
// An edge's counter is found by its address. The counters are shared with child processes, so a
// target may run an input in a process of its own.
#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>

extern "C" void __sanitizer_cov_8bit_counters_init(uint8_t *start, uint8_t *end);

namespace {

constexpr int kBits = 16;
constexpr size_t kCounters = size_t{1} << kBits;
uint8_t *counters;

// Before the initializers of anything that is instrumented.
[[gnu::constructor(101)]] void start()
{
    void *block = mmap(nullptr, kCounters, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) abort();
    counters = static_cast<uint8_t *>(block);
    __sanitizer_cov_8bit_counters_init(counters, counters + kCounters);
}

} // namespace

extern "C" void __sanitizer_cov_trace_pc()
{
    if (!counters) return;
    auto edge = reinterpret_cast<uint64_t>(__builtin_return_address(0)) * 0x9E3779B97F4A7C15u;
    uint8_t &counter = counters[edge >> (64 - kBits)];
    if (counter < 255) counter++;
}

// Comparisons of floating point, which libFuzzer does not follow.
extern "C" void __sanitizer_cov_trace_cmpf(float, float) {}
extern "C" void __sanitizer_cov_trace_cmpd(double, double) {}
