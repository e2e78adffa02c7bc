// Faults these tests are there to catch: an ending that ends the wrong thing, twice, or not at all;
// a lost exit status; control that does not come back to the epilogue or to the host; host routines
// called out of turn; an abort that hangs on a mutex or leaves no SIGABRT; programs not reset; what
// is left allocated when the runtime has ended.
#include <csignal>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

#include "kvr2/kvr2.h"
#include "support/child.h"
#include "support/compiled_program.h"
#include "support/require.h"

using std::string;

namespace {

void entry() {}
void otherEntry() {}

bool contains(const string &text, const string &part) { return text.find(part) != string::npos; }

TEST(Termination, ReturnGobackAndStopRun)
{
    ChildRun run = runChild([] {
        CompiledProgram main("MAIN", entry), sub("SUB", otherEntry);
        REQUIRE(compiledMain(main, [&] { compiledCall(sub, [] {}); }) == 0);
        REQUIRE(!_zvkProccom->runcom && !sub.pcb.lle && sub.ipcb[0].ent == 0);

        REQUIRE(compiledMain(main, [] { _zvkRunUnitTerm(17); }) == 17);
        REQUIRE(compiledMain(main, [] { _zvkRunUnitTerm(0); }) == 255);
        // STOP RUN in a called program unwinds over it; the sub's count and the main mark are
        // reset.
        REQUIRE(compiledMain(main, [&] { compiledCall(sub, [] { _zvkRunUnitTerm(4); }); }) == 4);
        REQUIRE(sub.ipcb[0].ent == 0 && main.ipcb[0].ent == 0 && !main.pcb.lle && !sub.pcb.lle && !_zvkProccom->runcom);
        // A called program's own GOBACK through _zvkPgmTerm does not end the run unit.
        REQUIRE(compiledMain(main, [&] {
                    _zvkPgmInit(&sub.pcb);
                    _zvkPgmTerm(&sub.pcb);
                    REQUIRE(_zvkProccom->runcom && sub.pcb.lle);
                }) == 0);
        REQUIRE(_zvkProccom->freeru->id == 5 && !_zvkProccom->freeru->link);
    });
    EXPECT_GOOD(run);
}

TEST(Termination, NestedRunUnitResumesTheOuterOne)
{
    ChildRun run = runChild([] {
        CompiledProgram outer("OUTER", entry), inner("INNER", otherEntry);
        REQUIRE(compiledMain(outer, [&] {
                    Runcom *first = _zvkProccom->runcom;
                    _zvkCOBOLLink();
                    REQUIRE(compiledMain(inner, [] { _zvkRunUnitTerm(8); }) == 8);
                    REQUIRE(_zvkProccom->runcom == first && first->main == &outer.pcb && outer.pcb.lle &&
                            !inner.pcb.lle);
                }) == 0);
        REQUIRE(!_zvkProccom->runcom);
    });
    EXPECT_GOOD(run);
}

TEST(Termination, CancelTakesInactiveProgramsOnly)
{
    ChildRun run = runChild([] {
        CompiledProgram main("MAIN", entry), sub("SUB", otherEntry, 1), bound("BOUND", otherEntry);
        auto cancel = [&](const char *name, int32_t *names = nullptr) {
            return _zvkCancel(names, static_cast<int64_t>(strlen(name)),
                              reinterpret_cast<uint8_t *>(const_cast<char *>(name)), &main.pcb);
        };
        _zvkPgmInit(&main.pcb);
        _zvkPgmInit(&sub.pcb);
        REQUIRE(cancel("SUB") == 1 && sub.ipcb[0].ent == 1 && sub.pcb.lle);
        _zvkPgmExit(&sub.ipcb[0].ent);
        sub.ipcb[0].status = sub.ipcb[1].status = 0xFFFFFFFF;
        sub.ipcb[1].ent = 3;
        REQUIRE(cancel("sub") == 0 && sub.pcb.lle);
        REQUIRE(cancel("SUB  ") == 0 && !sub.pcb.lle && sub.ipcb[0].status == 0x3FFFFFFF &&
                sub.ipcb[1].status == 0x3FFFFFFF);
        REQUIRE(sub.ipcb[1].ent == 0);
        // The next CALL registers it afresh.
        sub.pcb.upsi = nullptr;
        _zvkPgmInit(&sub.pcb);
        REQUIRE(sub.pcb.lle && sub.pcb.lle->pcb == &sub.pcb && sub.pcb.upsi && sub.ipcb[0].ent == 1);
        REQUIRE(cancel("NOBODY") == 0 && cancel("") == 0 && cancel("   ") == 0);

        // A bound name is found in the caller's own table: row 1, element 1 of the caller's array.
        struct {
            int32_t count = 1, element = 1, length = 4, offset = 0;
            char text[4] = {'S', 'E', 'L', 'F'};
        } names;
        main.pcb.flag |= ZVK_PCB_FOLD_NAMES;
        REQUIRE(cancel("self", &names.count) == 1);
        _zvkPgmExit(&main.ipcb[0].ent);
        main.ipcb[0].status = 0xC0000001;
        REQUIRE(cancel("self", &names.count) == 0 && main.ipcb[0].status == 1);

        sub.ipcb[0].nested = -1;
        _zvkCloseReset(&sub.ipcb[0].ent);
        REQUIRE(sub.ipcb[0].ent == 1);
        sub.ipcb[0].nested = 0;
        _zvkCloseReset(&sub.ipcb[0].ent);
        REQUIRE(sub.ipcb[0].ent == 0 && sub.pcb.lle);
    });
    EXPECT_GOOD(run);
}

void stopRoutine(uint64_t token) { printf("stop %d\n", static_cast<int>(token)); }
void abortRoutine(uint64_t token) { printf("abort %d\n", static_cast<int>(token)); }

TEST(Termination, HostRoutinesEndTheProcess)
{
    auto hosted = [](void (*body)()) {
        return runChild([=] {
            uint32_t rc = 0;
            _zvkCOBOLInit1(1, stopRoutine, &rc, 42, nullptr, abortRoutine, 0);
            CompiledProgram program("HOSTED", entry);
            _zvkPgmInit(&program.pcb);
            body();
            printf("back\n");
            fflush(stdout);
            _exit(0);
        });
    };
    ChildRun run = hosted([] { _zvkRunUnitTerm(9); });
    EXPECT_EQ(run.out, "stop 42\n");
    EXPECT_EQ(run.status, 9);
    run = hosted([] { _zvkCleanUp(); });
    EXPECT_EQ(run.out, "stop 42\n");
    EXPECT_EQ(run.status, 6);
    run = hosted([] { _zvkAbort(0); });
    EXPECT_EQ(run.out, "abort 42\n");
    EXPECT_EQ(run.status, 19);
    run = hosted([] {
        uint32_t rc = 9;
        ZVKCOBOLTERM(2, &rc);
        REQUIRE(rc == 1 && _zvkProccom->runcom);
        ZVKCOBOLTERM(9, &rc);
        REQUIRE(rc == 0 && _zvkProccom && !_zvkProccom->runcom);
    });
    EXPECT_EQ(run.out, "back\n") << "_zvkCOBOLTerm takes the stop routine away first";
    run = hosted([] {
        uint32_t rc = 9;
        _zvkCOBOLTerm(1, &rc);
        REQUIRE(rc == 0 && !_zvkProccom);
        _zvkCOBOLTerm(1, &rc);
        REQUIRE(rc == 0 && !_zvkGetJmpBuffer());
    });
    EXPECT_EQ(run.out, "back\n");
}

TEST(Termination, RuntimeStartsAgainAfterItsEnd)
{
    ChildRun run = runChild([] {
        for (int round = 0; round < 3; round++) {
            CompiledProgram main("MAIN", entry);
            REQUIRE(compiledMain(main, [] {}) == 0);
            uint32_t rc = 9;
            _zvkCOBOLTerm(1, &rc);
            REQUIRE(!_zvkProccom);
        }
    });
    EXPECT_GOOD(run);
    EXPECT_TRUE(contains(run.err, "Delayed Init!\n"));
}

TEST(Termination, MonitorsGetControlBack)
{
    ChildRun run = runChild([] {
        CompiledProgram task("TASK", entry);
        _zvk_cpm_init(nullptr, 0);
        int status = compiledMain(task, [] { _zvk_cpm_exit(); });
        REQUIRE(status == 1 && _zvkProccom && !_zvkProccom->runcom && _zvkProccom->txmn == 0);
        _zvk_cpm_init(nullptr, 0);
        REQUIRE(compiledMain(task, [] { _zvk_cpm_cancel(); }) == 0);
        REQUIRE(_zvkProccom->txmn == 0);
        // A fatal message in a task comes back to its epilogue with 6; the runtime is over then.
        _zvk_cpm_init(nullptr, 0);
        REQUIRE(compiledMain(task, [] { ZVKABEND(); }) == 6);
        REQUIRE(!_zvkProccom);
    });
    EXPECT_GOOD(run);
}

TEST(Termination, FatalMessagesAndAborts)
{
    auto main = [](void (*body)(), std::vector<std::pair<string, std::optional<string>>> env = {}) {
        return runChild(
            [=] {
                CompiledProgram program("MAIN", entry);
                compiledMain(program, body);
            },
            {.env = env});
    };
    ChildRun run = main([] { ZVKABEND(); });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_TRUE(contains(run.err, "ZVK901S")) << run.err;
    run = main([] { _zvkAbort(0); });
    EXPECT_EQ(run.signal, SIGABRT);

    // Another thread's abort ends that thread and the runtime, not the process.
    run = main([] {
        std::thread([] { ZVKABEND(); }).join();
        _exit(_zvkProccom ? 1 : 5);
    });
    EXPECT_EQ(run.status, 5) << run.err;

    // Inside a program's start the run-unit mutex is held; the abort must not wait for it.
    run = runChild([] {
        CompiledProgram program("WINDOWED", entry);
        program.pcb.yearWindow = -3000;
        _zvkPgmInit(&program.pcb);
    });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_FALSE(run.timedOut);
}

int bottom = 0; // not known to the compiler

__attribute__((noinline, noclone)) int descend(int depth)
{
    if (depth == bottom) {
        ZVKABEND();
        return 0;
    }
    int below = descend(depth - 1);
    asm volatile("" ::: "memory"); // no loop in the place of the calls
    return below + depth;
}

// A traceback begins with the program's own frames, and a recursion takes two lines.
TEST(Termination, TracebacksAreTheProgramsOwn)
{
    ChildRun run = runChild([] {
        CompiledProgram main("MAIN", entry);
        _zvkPgmInit(&main.pcb);
        descend(40);
    });
    size_t begin = run.err.find("  Traceback:\n"), end = run.err.find("--- End of call chain");
    ASSERT_NE(begin, string::npos);
    string frames = run.err.substr(begin, end - begin);
    EXPECT_FALSE(contains(frames.substr(0, frames.find('\n', 14)), "libkvr2")) << frames;
    EXPECT_TRUE(contains(frames, "    ... 39 times\n") || contains(frames, "    ... 40 times\n")) << frames;
}

// What a program has made of SIGABRT does not matter to a fatal message.
TEST(Termination, FatalMessagesNeverComeBack)
{
    for (void (*handler)(int) : {SIG_IGN, +[](int) {}})
        for (bool trapped : {false, true}) {
            ChildRun run = runChild(
                [&] {
                    CompiledProgram main("MAIN", entry);
                    _zvkPgmInit(&main.pcb);
                    signal(SIGABRT, handler);
                    ZVKABEND();
                    puts("came back");
                },
                {.env = {{"COBRTOPT", trapped ? "TRAP=ON" : "TRAP=OFF"}}});
            EXPECT_EQ(run.signal, SIGABRT) << run.status;
            EXPECT_EQ(run.out, "");
        }
    ChildRun without = runChild([] {
        uint32_t rc;
        CompiledProgram main("MAIN", entry);
        _zvkPgmInit(&main.pcb);
        _zvkCOBOLTerm(1, &rc);
        REQUIRE(!_zvkProccom);
        uint8_t name[] = "NOBODY";
        _zvkDynLd(nullptr, 6, name, &main.pcb, nullptr, nullptr); // after the runtime's end
        puts("came back");
    });
    EXPECT_EQ(without.signal, SIGABRT);
    EXPECT_TRUE(contains(without.err, "ZVK096") || contains(without.err, "Message number is 96")) << without.err;
}

// The trace of a STOP RUN in a run unit that a host made.
TEST(Termination, TraceOfAHostsRunUnitNamesTheStub)
{
    ChildRun run = runChild([] {
        uint32_t rc;
        ZVKCOBOLINIT(
            1, [](uint64_t) {}, &rc, 0);
        _zvkProccom->debug = 2;
        if (sigsetjmp(*static_cast<sigjmp_buf *>(_zvkGetJmpBuffer()), 1) == 0) {
            _zvkProccom->runcom->stop = nullptr;
            _zvkRunUnitTerm(0);
        }
    });
    EXPECT_TRUE(contains(run.err, "siglongjmp() to current wrapper stub via")) << run.err;
}

// CLOSE of a file at a run unit's end that ends the process, or stops the run, or fails for good:
// the file is closed once, and the end goes on without it.
TEST(Termination, ACloseThatDoesNotComeBack)
{
    static int closes;
    for (const char *way : {"exit", "stop run", "message"}) {
        ChildRun run = runChild([&] {
            static FCB file;
            static FIB fib;
            static const char *does;
            does = way;
            static FCB *files[] = {&file};
            static FIB *fibs[] = {&fib};
            CompiledProgram main("MAIN", entry);
            main.ipcb[0].files = files;
            main.ipcb[0].fileCount = 1;
            main.pcb.fibs = fibs;
            int status = compiledMain(main, [] {
                file.mode = ZVK_OPEN_INPUT;
                file.close = [](FCB *, IPCB *) {
                    printf("close %d ", ++closes);
                    if (*does == 'e') exit(5);
                    if (*does == 's') _zvkRunUnitTerm(6);
                    ZVKABEND();
                };
            });
            exit(status);
        });
        EXPECT_FALSE(run.timedOut) << way;
        EXPECT_TRUE(run.status == 5 || run.status == 6 || run.signal == SIGABRT) << way << run.status;
        EXPECT_EQ(run.out, "close 1 ") << way;
    }
}

// CANCEL runs a USE procedure that enters a program: no lock is held over it.
TEST(Termination, CancelClosesWithoutALock)
{
    ChildRun run = runChild([] {
        static CompiledProgram main("MAIN", entry), other("OTHER", otherEntry), sub("SUB", entry);
        static FCB file;
        static FIB fib;
        static FCB *files[] = {&file};
        static FIB *fibs[] = {&fib};
        sub.ipcb[0].files = files;
        sub.ipcb[0].fileCount = 1;
        sub.pcb.fibs = fibs;
        _zvkPgmInit(&main.pcb);
        compiledCall(sub, [] {});
        file.mode = ZVK_OPEN_INPUT;
        file.close = [](FCB *closed, IPCB *) {
            compiledCall(other, [] {});
            closed->mode = 0;
        };
        uint8_t name[] = "SUB";
        REQUIRE(_zvkCancel(nullptr, 3, name, &main.pcb) == 0 && file.mode == 0);
        _zvkPgmTerm(&main.pcb);
    });
    EXPECT_GOOD(run);
}

// A host that starts and ends the runtime over and over keeps its descriptors.
TEST(Termination, StreamsOfTheLibraryAreClosedAtTheRuntimesEnd)
{
    TemporaryDirectory directory;
    ChildRun run = runChild(
        [] {
            auto lowestFree = [] {
                int free = dup(0);
                close(free);
                return free;
            };
            int before = 0;
            for (int i = 0; i < 20; i++) {
                CompiledProgram main("MAIN", entry);
                _zvkPgmInit(&main.pcb);
                DisplayRequest request{};
                request.itemCount = 1;
                request.device = ZVK_DISPLAY_SYSOUT;
                DisplayItem item{"text", 4, 4, ZVK_DISPLAY_TEXT, 0};
                _zvkcDisplay(&request, &item);
                uint32_t rc;
                _zvkCOBOLTerm(1, &rc);
                if (i == 2) before = lowestFree();
            }
            REQUIRE(lowestFree() == before);
        },
        {.env = {{"SYSOUT", directory.file("out")}, {"COBMSGS", directory.file("msgs")}}});
    EXPECT_GOOD(run);
}

TEST(Termination, CoreFiles)
{
    TemporaryDirectory directory;
    auto dump = [&](unsigned long limit, const char *name) {
        return runChild(
            [&] {
                rlimit core{limit, RLIM_INFINITY};
                setrlimit(RLIMIT_CORE, &core);
                CompiledProgram program("DUMPER", entry);
                _zvkPgmInit(&program.pcb);
                printf("%u %u", ZVKDUMP(), 0u);
                fflush(stdout);
                _exit(0);
            },
            {.env = {{"COBCORE", directory.file(name)}}, .directory = directory.path()});
    };
    EXPECT_EQ(dump(0, "none%").out.substr(0, 1), "0") << "a core size limit of 0 forbids it";
    rlimit hard{};
    getrlimit(RLIMIT_CORE, &hard);
    if (hard.rlim_max == 0) GTEST_SKIP() << "this machine's hard limit forbids core files";
#ifndef KVR2_SANITIZED
    ChildRun quoted = dump(RLIM_INFINITY, "a b;touch proof;%");
    EXPECT_NE(access(directory.file("proof").c_str(), F_OK), 0) << "COBCORE's value went to the shell as a command";
    EXPECT_TRUE(!contains(quoted.err, "Created core file") || contains(quoted.err, directory.file("a b;touch proof;")))
        << quoted.err;
    ChildRun run = dump(RLIM_INFINITY, "made%");
    EXPECT_TRUE(contains(run.out + run.err, "Created core file: " + directory.file("made.DUMPER.")) ||
                contains(run.out + run.err, "Create core file failed: "))
        << run.out << run.err;
#endif
}

} // namespace
