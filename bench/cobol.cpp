// The front end: what it makes beside the same by hand, and how long it takes to make it.
//
// The COBOL below is compiled once into modules, at -O2 as the C++ beside it is; they are called as
// any program calls them. The C++ peers work on the same kinds of items.
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <string>
#include <unistd.h>

#include "kvr2/decimal.h"
#include "kvr2/kvr2.h"
#include "support/compiled_program.h"

namespace {

constexpr const char *kSources[][2] = {{"LOOPS", R"(
       PROGRAM-ID. LOOPS.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A. 02 A-ROW OCCURS 120. 03 A-CELL PIC S9(9) COMP-5 OCCURS 120.
       01 B. 02 B-ROW OCCURS 120. 03 B-CELL PIC S9(9) COMP-5 OCCURS 120.
       01 I PIC S9(9) COMP-5.
       01 J PIC S9(9) COMP-5.
       01 K PIC S9(9) COMP-5.
       01 S PIC S9(9) COMP-5.
       01 MOST PIC S9(9) COMP-5 VALUE 120.
       01 HALF PIC S9(9) COMP-5 VALUE 61.
       PROCEDURE DIVISION.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > MOST
             AFTER J FROM 1 BY 1 UNTIL J > MOST
               MOVE 0 TO S
               PERFORM VARYING K FROM 1 BY 1 UNTIL K > HALF
                   COMPUTE S = S + A-CELL (I, K) + J
               END-PERFORM
               MOVE S TO B-CELL (I, J)
           END-PERFORM
           GOBACK.
)"},
                                       {"PRODUCTS", R"(
       PROGRAM-ID. PRODUCTS.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 I PIC S9(9) COMP-5.
       01 J PIC S9(9) COMP-5.
       01 K PIC S9(9) COMP-5.
       01 B PIC S9(9) BINARY.
       PROCEDURE DIVISION.
           MOVE 0 TO K B
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 1000
             AFTER J FROM 1 BY 1 UNTIL J > 1000
               COMPUTE K = I * J + K
               COMPUTE B = I * J + B
           END-PERFORM
           GOBACK.
)"},
                                       {"PERFORMS", R"(
       PROGRAM-ID. PERFORMS.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC S9(9) COMP-5.
       01 K PIC S9(9) COMP-5 VALUE 1.
       01 T. 02 C PIC S9(18) COMP-5 OCCURS 50.
       PROCEDURE DIVISION.
           PERFORM COUNT-ONE VARYING N FROM 1 BY 1 UNTIL N > 1000000
           GOBACK.
       COUNT-ONE.
           ADD N TO C (K)
           IF K < 50
               ADD 1 TO K
           ELSE
               MOVE 1 TO K
           END-IF.
)"},
                                       {"PACKEDS", R"(
       PROGRAM-ID. PACKEDS.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 AMOUNT PIC S9(9)V99 COMP-3 VALUE 1.25.
       01 TOTAL PIC S9(11)V99 COMP-3 VALUE 0.
       01 N PIC S9(9) COMP-5.
       PROCEDURE DIVISION.
           MOVE 0 TO TOTAL
           PERFORM VARYING N FROM 1 BY 1 UNTIL N > 100000
               ADD AMOUNT TO TOTAL
           END-PERFORM
           GOBACK.
)"},
                                       {"hello", R"(
       PROGRAM-ID. HELLO.
       PROCEDURE DIVISION.
           DISPLAY "HELLO".
)"}};

std::string folder() { return "/tmp/kvr2-bench-cobol-" + std::to_string(getpid()); }

void shell(const std::string &command)
{
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "failed: %s\n", command.c_str());
        std::abort();
    }
}

std::string compile(const std::string &words) { return "cd " + folder() + " && " KVRCOB " " + words + " >/dev/null"; }

// A source of so many lines: paragraphs of a few statements of all kinds.
void writeProgram(const std::string &name, int lines)
{
    std::ofstream out(folder() + "/" + name + ".cbl");
    out << "       IDENTIFICATION DIVISION.\n       PROGRAM-ID. " << name << ".\n       DATA DIVISION.\n"
        << "       WORKING-STORAGE SECTION.\n"
        << "       01 T. 02 E PIC 9(5)V99 COMP-3 OCCURS 50.\n       01 X PIC X(20).\n       01 Y PIC X(30).\n"
        << "       01 N PIC 9(4) COMP.\n       01 Z PIC ZZ,ZZ9.99.\n       PROCEDURE DIVISION.\n       MAIN-LINE.\n";
    const int paragraphs = (lines - 12) / 11;
    for (int i = 0; i < paragraphs; i++) out << "           PERFORM P" << i << ".\n";
    out << "           GOBACK.\n";
    for (int i = 0; i < paragraphs; i++)
        out << "       P" << i << ".\n           MOVE " << i % 50 + 1 << " TO N\n"
            << "           ADD 1.25 TO E (N)\n           IF E (N) > 100\n               MOVE \"LARGE\" TO X\n"
            << "           ELSE\n               MOVE E (N) TO Z\n           END-IF\n           MOVE X TO Y\n"
            << "           DISPLAY Y.\n";
}

struct World {
    CompiledProgram main{"MAIN", [] {}};

    World()
    {
        shell("mkdir -p " + folder());
        for (const auto &[name_, text] : kSources) std::ofstream(folder() + "/" + name_ + ".cbl") << text + 1;
        shell(compile("-O2 -m LOOPS.cbl PRODUCTS.cbl PERFORMS.cbl PACKEDS.cbl"));
        shell(compile("-O2 -o hello hello.cbl"));
        writeProgram("LARGE", 100000);
        writeProgram("MIDDLE", 3000);
        shell(compile("-S -o MIDDLE.c MIDDLE.cbl"));
        setenv("COBRTOPT", "TRAP=OFF", 1);
        _zvkPgmInit(&main.pcb);
    }
    ~World() { shell("rm -rf " + folder()); }
};

void begin() { static World world; }

using Entry = int64_t (*)();

Entry program(const char *name)
{
    begin();
    void *module = dlopen((folder() + "/" + name + ".so").c_str(), RTLD_NOW | RTLD_GLOBAL);
    auto entry = module ? reinterpret_cast<Entry>(dlsym(module, name)) : nullptr;
    if (!entry) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::abort();
    }
    return entry;
}

void called(benchmark::State &state, const char *name)
{
    Entry entry = program(name);
    for (auto _ : state) benchmark::DoNotOptimize(entry());
}

void loopsOurs(benchmark::State &state) { called(state, "LOOPS"); }
void productsOurs(benchmark::State &state) { called(state, "PRODUCTS"); }
void performsOurs(benchmark::State &state) { called(state, "PERFORMS"); }
void packedsOurs(benchmark::State &state) { called(state, "PACKEDS"); }

int32_t a[120][120], b[120][120];
int32_t most = 120, half = 61;

void loopsByHand(benchmark::State &state)
{
    benchmark::DoNotOptimize(most);
    benchmark::DoNotOptimize(half);
    for (auto _ : state) {
        for (int32_t i = 1; i <= most; i++)
            for (int32_t j = 1; j <= most; j++) {
                int32_t s = 0;
                for (int32_t k = 1; k <= half; k++) s = s + a[i - 1][k - 1] + j;
                b[i - 1][j - 1] = s;
            }
        benchmark::DoNotOptimize(&a);
        benchmark::DoNotOptimize(&b);
        benchmark::ClobberMemory();
    }
}

int32_t factor1, factor2, sum, cut; // as COBOL has them: static, and any call may see them

// A native item keeps the low 32 bits, a BINARY one its nine digits.
void productsByHand(benchmark::State &state)
{
    for (auto _ : state) {
        sum = cut = 0;
        for (factor1 = 1; factor1 <= 1000; factor1++)
            for (factor2 = 1; factor2 <= 1000; factor2++) {
                sum = static_cast<int32_t>(int64_t{factor1} * factor2 + sum);
                cut = static_cast<int32_t>((int64_t{factor1} * factor2 + cut) % 1000000000);
            }
        benchmark::DoNotOptimize(&sum);
        benchmark::DoNotOptimize(&cut);
        benchmark::ClobberMemory();
    }
}

int32_t k = 1;
int64_t c[50];
__attribute__((noinline)) void countOne(int32_t n)
{
    c[k - 1] += n;
    if (k < 50)
        k++;
    else
        k = 1;
}

void performsByHand(benchmark::State &state)
{
    for (auto _ : state)
        for (int32_t n = 1; n <= 1000000; n++) countOne(n);
}

// ADD of packed items as docs/abi.md has it: one call with the digits of result and operands, which
// the result must not overlap.
void packedsByHand(benchmark::State &state)
{
    begin();
    const uint8_t amount[6] = {0, 0, 0, 0, 0x12, 0x5C};
    uint8_t total[7], result[7];
    for (auto _ : state) {
        static const uint8_t zero[7] = {0, 0, 0, 0, 0, 0, 0x0C};
        memcpy(total, zero, sizeof total);
        for (int32_t n = 1; n <= 100000; n++)
            memcpy(total, _zvkcBCD_ADD_Pckd(total, amount, result, 13, 11, 13), sizeof total);
        benchmark::ClobberMemory();
    }
}

void command(benchmark::State &state, const std::string &line)
{
    begin();
    for (auto _ : state) shell(line);
}

void translateLarge(benchmark::State &state)
{
    begin();
    command(state, compile("-S -o LARGE.c LARGE.cbl"));
    state.counters["lines/s"] = benchmark::Counter(100000, benchmark::Counter::kIsIterationInvariantRate);
}
void translate(benchmark::State &state)
{
    begin();
    command(state, compile("-S -o MIDDLE.c MIDDLE.cbl"));
}
void compileC(benchmark::State &state)
{
    begin();
    command(state, "cd " + folder() + " && cc -w -O1 -fPIC -I " KVR2_INCLUDE " -c MIDDLE.c -o MIDDLE.o");
}
void runCached(benchmark::State &state)
{
    begin();
    setenv("XDG_CACHE_HOME", folder().c_str(), 1);
    shell(compile("run hello.cbl"));
    command(state, compile("run hello.cbl"));
}
void runPlain(benchmark::State &state)
{
    begin();
    command(state, "cd " + folder() + " && ./hello >/dev/null");
}

BENCHMARK(loopsOurs)->Name("kvrcob, nested loops over COMP-5 tables/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(loopsByHand)->Name("kvrcob, nested loops over COMP-5 tables/peer:C")->Unit(benchmark::kMicrosecond);
BENCHMARK(productsOurs)->Name("kvrcob, 1M of K = I * J + K, native and BINARY/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(productsByHand)
    ->Name("kvrcob, 1M of K = I * J + K, native and BINARY/peer:C with a remainder")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(performsOurs)->Name("kvrcob, 1M PERFORMs of a paragraph/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(performsByHand)->Name("kvrcob, 1M PERFORMs of a paragraph/peer:C calls")->Unit(benchmark::kMicrosecond);
BENCHMARK(packedsOurs)->Name("kvrcob, 100k ADD of COMP-3/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(packedsByHand)->Name("kvrcob, 100k ADD of COMP-3/peer:by hand")->Unit(benchmark::kMicrosecond);
BENCHMARK(translateLarge)->Name("kvrcob, 100k lines translated/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(translate)->Name("kvrcob, 3k lines translated/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(compileC)
    ->Name("kvrcob, 3k lines translated/peer:cc -O1 of the result")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(runCached)->Name("kvrcob run, the second time/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(runPlain)->Name("kvrcob run, the second time/peer:the program")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
