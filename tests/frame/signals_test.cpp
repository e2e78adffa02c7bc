// Faults these tests are there to catch: a signal that is not explained, explained as another, or
// ends what should go on; a handler that cannot run after a stack overflow; a report that is lost
// or loops; handlers left behind after the run unit's end; TRAP values taken for each other.
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <csignal>
#include <string>
#include <unistd.h>

#include "kvr2/kvr2.h"
#include "support/child.h"
#include "support/compiled_program.h"
#include "support/require.h"

using std::string;

namespace {

void entry() {}

bool contains(const string &text, const string &part) { return text.find(part) != string::npos; }

ChildRun mainThat(void (*body)(), std::vector<std::pair<string, std::optional<string>>> env = {})
{
    return runChild(
        [=] {
            CompiledProgram program("MAIN", entry);
            compiledMain(program, body);
        },
        {.env = env});
}

__attribute__((no_sanitize("all"))) void nullPointer()
{
    volatile int *volatile nowhere = nullptr;
    *nowhere = 1;
}

__attribute__((noinline, no_sanitize("all"))) int deep(int n)
{
    volatile char page[16384];
    page[0] = static_cast<char>(n);
    return n < 0 ? 0 : deep(n + 1) + page[0];
}
void stackOverflow() { deep(0); }

__attribute__((no_sanitize("all"))) void divideIntegers()
{
    volatile int zero = 0;
    volatile int result = 100 / zero;
    (void)result;
}

__attribute__((no_sanitize("all"))) void divideFloats()
{
    volatile double zero = 0;
    volatile double result = 1 / zero;
    (void)result;
}

TEST(Signals, CrashesAreExplainedAndEndTheRunUnit)
{
    struct Case {
        void (*body)();
        const char *explanation, *name;
    };
    const Case cases[] = {
        {nullPointer, "SIGSEGV: Likely NULL pointer dereference ((nil)).\n", "SIGSEGV"},
        {stackOverflow, "SIGSEGV: bad branch or `ulimit -s` may have been exceeded (0x", "SIGSEGV"},
        {divideIntegers, "SIGFPE: Integer division by zero.\n", "SIGFPE"},
        {divideFloats, "SIGFPE: BFP division by zero.\n", "SIGFPE"},
        {[] { raise(SIGTERM); }, "", "SIGTERM"},
        {[] { raise(SIGHUP); }, "", "SIGHUP"},
        {[] { raise(SIGPWR); }, "SIGPWR: Power failure imminent, we may get killed.\n", "SIGPWR"},
        {[] { raise(SIGSTKFLT); }, "", "SIGSTKFLT"},
    };
    for (const Case &each : cases) {
        ChildRun run = mainThat(each.body, {{"COBRTOPT", "TRAP=OLD"}});
        EXPECT_EQ(run.signal, SIGABRT) << each.name << " status " << run.status << run.err;
        EXPECT_TRUE(contains(run.err, each.explanation)) << run.err;
        size_t traceback = run.err.find("  Traceback:\n");
        size_t end = run.err.find("    --- End of call chain ---\n", traceback);
        size_t message = run.err.find("ZVK995C  ", end);
        EXPECT_TRUE(traceback != string::npos && end != string::npos && message != string::npos) << run.err;
        EXPECT_NE(run.err.find(each.name, message), string::npos) << run.err;
        EXPECT_NE(run.err.find("ZVK901S", message), string::npos) << run.err;
    }
}

TEST(Signals, SomeSignalsLetTheProgramGoOn)
{
    for (int signal : {SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGCONT}) {
        ChildRun run = runChild([=] {
            CompiledProgram program("MAIN", entry);
            REQUIRE(compiledMain(program, [=] { raise(signal); }) == 0);
        });
        EXPECT_GOOD(run);
        EXPECT_TRUE(contains(run.err, "\n  Signal received: " + std::to_string(signal) + " (")) << run.err;
        EXPECT_TRUE(contains(run.err, "    --- End of call chain ---\n"));
    }
    ChildRun run = mainThat([] {
        for (int i = 0; i < 4; i++) raise(SIGXCPU);
        raise(SIGXFSZ);
        raise(SIGXFSZ);
        raise(SIGWINCH);
    });
    EXPECT_EQ(run.status, 0);
    auto count = [&](const string &part) {
        int n = 0;
        for (size_t at = run.err.find(part); at != string::npos; at = run.err.find(part, at + 1)) n++;
        return n;
    };
    EXPECT_EQ(count("SIGXCPU: `ulimit -t` exceeded"), 2);
    EXPECT_EQ(count("  Signal received: 24"), 2) << "a third SIGXCPU is silent";
    EXPECT_EQ(count("SIGXFSZ: `ulimit -f` exceeded, expect I/O errors\n"), 1);

    run = mainThat([] {
        int ends[2];
        REQUIRE(pipe(ends) == 0 && close(ends[0]) == 0);
        REQUIRE(write(ends[1], "x", 1) == -1 && errno == EPIPE);
    });
    EXPECT_GOOD(run);
}

TEST(Signals, TrapOptionDecides)
{
    ChildRun run = mainThat(nullPointer, {{"COBRTOPT", "TRAP=OFF"}});
    EXPECT_EQ(run.signal, SIGSEGV);
    EXPECT_EQ(run.err, "");
    // A core file is asked for, but the limit forbids it; the abort goes on.
    run = mainThat(nullPointer, {{"COBRTOPT", "TRAP"}});
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_FALSE(contains(run.err, "core file"));
    // TRAP=DUMP does not abort in an orderly way: the signal goes on to its default.
    run = mainThat(nullPointer, {{"COBRTOPT", "TRAP=DUMP"}});
    EXPECT_EQ(run.signal, SIGSEGV);
    EXPECT_TRUE(contains(run.err, "ZVK995C"));
}

TEST(Signals, HandlersAreTakenBack)
{
    ChildRun run = runChild([] {
        struct sigaction before[32], present;
        const int signals[] = {SIGSEGV, SIGSTKFLT, SIGPIPE, SIGTERM, SIGUSR1, SIGABRT};
        for (int s : signals) sigaction(s, nullptr, &before[s]);
        CompiledProgram outer("OUTER", entry), inner("INNER", entry);
        compiledMain(outer, [&] {
            _zvkCOBOLLink();
            compiledMain(inner, [] { raise(SIGCONT); }); // passes over the outer run unit's table, not round in circles
            sigaction(SIGSEGV, nullptr, &present);
            REQUIRE(present.sa_sigaction == reinterpret_cast<void (*)(int, siginfo_t *, void *)>(default_sigrtn));
            REQUIRE(present.sa_flags & SA_ONSTACK);
        });
        for (int s : signals) {
            sigaction(s, nullptr, &present);
            REQUIRE(present.sa_handler == before[s].sa_handler);
        }
    });
    EXPECT_GOOD(run);

    // A program's own handler without SA_SIGINFO keeps its signal to itself from then on.
    run = mainThat([] {
        signal(SIGUSR1, [](int number) { default_sigrtn(number, nullptr, nullptr); });
        raise(SIGUSR1);
        struct sigaction present;
        sigaction(SIGUSR1, nullptr, &present);
        REQUIRE(present.sa_handler == SIG_DFL);
    });
    EXPECT_GOOD(run);
}

// A crash under a monitor leaves its run unit's handlers in place. The runtime's end takes back
// all that are left.
TEST(Signals, NoHandlerOutlivesTheTablesOfAMonitorsTasks)
{
    ChildRun run = runChild([] {
        struct sigaction before, present;
        sigaction(SIGSEGV, nullptr, &before);
        CompiledProgram outer("OUTER", entry), inner("INNER", entry), next("NEXT", entry);
        auto message = [](int32_t, const char *, const char *, uint32_t, uint64_t) {};
        _zvk_cpm_init(message, 0);
        _zvkPgmInit(&outer.pcb);
        _zvk_cpm_init(message, 0);
        _zvkPgmInit(&inner.pcb);
        if (!sigsetjmp(*static_cast<sigjmp_buf *>(_zvkGetJmpBuffer()), 1)) raise(SIGSEGV);
        _zvkPgmTerm(&inner.pcb);
        _zvkPgmTerm(&outer.pcb);
        _zvk_cpm_init(message, 0);
        _zvkPgmInit(&next.pcb);
        _zvkPgmTerm(&next.pcb);
        uint32_t rc = 9;
        _zvkCOBOLTerm(1, &rc);
        REQUIRE(rc == 0 && !_zvkProccom);
        sigaction(SIGSEGV, nullptr, &present);
        REQUIRE(present.sa_handler == before.sa_handler);
    });
    EXPECT_GOOD(run);
}

TEST(Signals, TracebackWithSourceLinesOnRequest)
{
    ChildRun run = mainThat([] { raise(SIGUSR2); }, {{"traceback_lines", "1"}});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(contains(run.err, "  Traceback:\n")) << run.err;
    EXPECT_TRUE(contains(run.out, "compiled_program.h:")) << run.out; // what addr2line says
    run = mainThat([] { raise(SIGUSR2); }, {{"traceback_lines", "0"}});
    EXPECT_FALSE(contains(run.out, "compiled_program.h:")) << run.out;
}

TEST(Signals, AnotherThreadsCrashAndASignalWithinTheReport)
{
    ChildRun run = runChild(
        [] {
            uint32_t rc = 0;
            // The host's message routine crashes again while the first crash is being reported.
            _zvkCOBOLInit1(
                1, nullptr, &rc, 0, [](int32_t, const char *, const char *, uint32_t, uint64_t) { raise(SIGUSR1); },
                nullptr, 0);
            CompiledProgram program("MAIN", entry);
            _zvkPgmInit(&program.pcb);
            nullPointer();
        },
        {.env = {{"COBRTOPT", "TRAP=OLD"}}});
    EXPECT_FALSE(run.timedOut);
    EXPECT_EQ(run.signal, SIGABRT) << run.err;
}

// The message of a signal is in the message file; so is the traceback that goes with it.
TEST(Signals, TheMessageFileGetsTheTracebackToo)
{
    TemporaryDirectory directory;
    ChildRun run = mainThat(nullPointer, {{"COBMSGS", directory.file("log")}});
    EXPECT_EQ(run.signal, SIGABRT);
    const string log = readFile(directory.file("log"));
    size_t traceback = log.find("  Traceback:\n"), message = log.find("ZVK995C  ");
    EXPECT_TRUE(traceback != string::npos && message != string::npos && traceback < message) << log;
    EXPECT_TRUE(contains(run.err, "  Traceback:\n"));
}

} // namespace
