// Faults these tests are there to catch: a program that is registered twice or not at all; a second
// run unit that inherits what belonged to the first; fields of the PCB set for a compiler that does
// not know them; a year window resolved wrongly; host values lost or leaking into a run unit that
// is not the host's; counts that drift; the trace lines.
#include <csignal>
#include <ctime>
#include <string>
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

LLE *programOf(HashEntry *found) { return static_cast<LLE *>(found->parent ? found->parent->value : found->value); }

HashEntry *find(const string &name)
{
    return HashTable_Find(_zvkProccom->runcom->plle, nullptr, name.data(), name.size(), 0, 1);
}

TEST(RunUnit, FirstProgramStartsEverythingTheSecondOnlyRegisters)
{
    ChildRun run = runChild(
        [] {
            REQUIRE(_zvkProccom && string(_zvkProccom->eyecatcher) == "PROCCOM");
            REQUIRE(!_zvkProccom->runcom && _zvkProccom->freeru && _zvkProccom->freeru->id == 0 &&
                    !_zvkProccom->programOptions);
            CompiledProgram main("MAIN-PGM", entry), sub("SUB", otherEntry);
            main.pcb.flag = ZVK_OPTION_CHECK | ZVK_OPTION_DEBUG;
            _zvkPgmInit(&main.pcb);
            Runcom *runcom = _zvkProccom->runcom;
            REQUIRE(runcom && runcom->id == 1 && runcom->main == &main.pcb && runcom->active == 1 &&
                    runcom->century == 80 && _zvkProccom->firstEntry == 1);
            REQUIRE(runcom->randomSeed == 1 && string(runcom->upsi, runcom->upsi + 8) == "11000000" &&
                    runcom->errCount == 7);
            REQUIRE((main.pcb.flag & ZVK_PCB_MAIN) && !(main.pcb.flag & ZVK_OPTION_CHECK) &&
                    (main.pcb.flag & ZVK_OPTION_DEBUG));
            REQUIRE(main.pcb.upsi == runcom->upsi && main.pcb.pgmWord == &_zvkProccom->pgmWord &&
                    main.ipcb[0].pcb == &main.pcb);
            LLE *lle = programOf(find("MAIN-PGM"));
            REQUIRE(lle == main.pcb.lle && lle->pcb == &main.pcb && lle->ipcb == main.ipcb.data() &&
                    lle->entry == entry && !lle->load);

            sub.pcb.version[2] = 0; // 5.1.0 does not know the program word
            _zvkPgmInit(&sub.pcb);
            _zvkPgmInit(&sub.pcb);
            REQUIRE(_zvkProccom->runcom == runcom && !(sub.pcb.flag & ZVK_PCB_MAIN) && !sub.pcb.pgmWord &&
                    sub.ipcb[0].ent == 2);
            REQUIRE(runcom->active == 3 && runcom->plle->entries == 2);
            for (int i = 0; i < 5; i++) _zvkPgmExit(&sub.ipcb[0].ent);
            REQUIRE(sub.ipcb[0].ent == 0 && runcom->active == 0);
        },
        {.env = {{"COBRTOPT", "UPSI=11000000,ERRCOUNT=7,CHECK=OFF"}}});
    EXPECT_GOOD(run);
}

TEST(RunUnit, ProgramsOfOneNameAreToldApartByTheirEntry)
{
    ChildRun run = runChild([] {
        CompiledProgram first("SAME", entry), second("SAME", otherEntry), rebound("SAME", entry);
        _zvkPgmInit(&first.pcb);
        _zvkPgmInit(&second.pcb);
        REQUIRE(first.pcb.lle != second.pcb.lle && second.pcb.lle->entry == otherEntry);
        REQUIRE(second.pcb.upsi == _zvkProccom->runcom->upsi);
    });
    EXPECT_GOOD(run);
}

TEST(RunUnit, NextRunUnitStartsAfresh)
{
    ChildRun run = runChild([] {
        CompiledProgram main("MAIN", entry);
        REQUIRE(compiledMain(main, [] {
                    Runcom *runcom = _zvkProccom->runcom;
                    runcom->upsi[0] = '1';
                    runcom->errCount = 9;
                    runcom->century = 20;
                    runcom->randomSeed = 99;
                    runcom->token = 5;
                }) == 0);
        REQUIRE(!_zvkProccom->runcom && _zvkProccom->freeru && !main.pcb.lle && !(main.pcb.flag & ZVK_PCB_MAIN));
        REQUIRE(_zvkProccom->cache == 2 && !_zvkProccom->plle);
        _zvkPgmInit(&main.pcb);
        Runcom *runcom = _zvkProccom->runcom;
        REQUIRE(runcom->id == 2 && runcom->upsi[0] == '0' && runcom->errCount == 0 && runcom->century == 80 &&
                runcom->randomSeed == 1);
        REQUIRE(runcom->token == 0 && runcom->active == 1);
        for (const char *byte = reinterpret_cast<char *>(runcom->jmp);
             byte < reinterpret_cast<char *>(runcom->jmp) + 200; byte++)
            REQUIRE(*byte == 0);
        // The second run unit turned the program cache on; its own table, made before, looks
        // through to it.
        REQUIRE(_zvkProccom->cache == 1 && _zvkProccom->plle && runcom->plle->parent == _zvkProccom->plle);
    });
    EXPECT_GOOD(run);
}

string yearWindowOf(int version, int window)
{
    ChildRun run = runChild([&] {
        CompiledProgram main("WINDOWED", entry);
        main.pcb.version[0] = static_cast<uint8_t>(version / 100);
        main.pcb.version[1] = static_cast<uint8_t>(version / 10 % 10);
        main.pcb.version[2] = static_cast<uint8_t>(version % 10);
        main.pcb.yearWindow = window;
        _zvkPgmInit(&main.pcb);
        printf("%d %d %s", main.pcb.yearWindow, _zvkProccom->currentYear, main.pcb.pgmWord ? "word" : "no word");
    });
    size_t message = run.err.find("ZVK");
    return run.signal ? "signal " + run.err.substr(message == string::npos ? 0 : message, 7) : run.out;
}

TEST(RunUnit, YearWindows)
{
    time_t now = time(nullptr);
    int year = localtime(&now)->tm_year + 1900;
    string current = std::to_string(year);
    EXPECT_EQ(yearWindowOf(511, 9999), "9999 0 word");
    EXPECT_EQ(yearWindowOf(511, -30), std::to_string(year - 30) + " " + current + " word");
    EXPECT_EQ(yearWindowOf(219, -30), "-30 0 no word") << "compilers before 2.2.0 have no year window";
    EXPECT_EQ(yearWindowOf(220, -30), std::to_string(year - 30) + " " + current + " no word");
    EXPECT_EQ(yearWindowOf(511, 1950), "1950 " + current + " word");
    EXPECT_EQ(yearWindowOf(511, 1800), "signal ZVK241S");
    EXPECT_EQ(yearWindowOf(511, -2000), "signal ZVK240S");
}

void stopRoutine(uint64_t) {}
void abortRoutine(uint64_t) {}
void messageRoutine(int32_t, const char *, const char *, uint32_t, uint64_t) {}

TEST(RunUnit, HostValuesReachTheNextRunUnit)
{
    ChildRun run = runChild([] {
        uint32_t rc = 9;
        _zvkCOBOLInit1(2, stopRoutine, &rc, 1, messageRoutine, abortRoutine, 2);
        REQUIRE(rc == 1 && !_zvkProccom->programOptions);
        _zvkCOBOLInit1(1, stopRoutine, &rc, 11, messageRoutine, abortRoutine, 22);
        REQUIRE(rc == 0 && _zvkProccom->programOptions && (_zvkProccom->flags & ZVK_PREINIT) &&
                _zvkProccom->cache == 0);
        CompiledProgram sub("SUB", entry);
        _zvkPgmInit(&sub.pcb);
        Runcom *runcom = _zvkProccom->runcom;
        REQUIRE(runcom->stop == stopRoutine && runcom->abrt == abortRoutine && runcom->msg == messageRoutine);
        REQUIRE(runcom->token == 11 && runcom->context == 22);
        // The entry began this run unit, so its program is the main program, and its end the end.
        REQUIRE(runcom->main == &sub.pcb && (sub.pcb.flag & ZVK_PCB_MAIN));
        runcom->stop = nullptr;
        _zvkPgmTerm(&sub.pcb);
        REQUIRE(!_zvkProccom->runcom);

        _zvkCOBOLInit1(1, nullptr, &rc, 0, nullptr, nullptr, 0);
        CompiledProgram main("MAIN", entry);
        REQUIRE(compiledMain(main, [] { _zvkRunUnitTerm(3); }) == 3); // STOP RUN finds an armed buffer
        REQUIRE(!_zvkProccom->runcom);
    });
    EXPECT_GOOD(run);

    run = runChild([] {
        uint32_t rc = 9;
        ZVKCOBOLINIT(1, stopRoutine, &rc, 7);
        Runcom *hosts = _zvkProccom->runcom;
        CompiledProgram sub("SUB", entry);
        _zvkPgmInit(&sub.pcb);
        // A run unit that was there before has no main program: what is called in it does not end
        // it.
        REQUIRE(hosts->main && hosts->main != &sub.pcb && !(sub.pcb.flag & ZVK_PCB_MAIN));
        _zvkPgmTerm(&sub.pcb);
        REQUIRE(_zvkProccom->runcom == hosts);
        hosts->stop = nullptr;
    });
    EXPECT_GOOD(run);

    // A record that is only parked for the next run unit installs no handlers.
    run = runChild([] {
        CompiledProgram main("MAIN", entry);
        _zvkPgmInit(&main.pcb);
        struct sigaction before, after;
        sigaction(SIGSEGV, nullptr, &before);
        uint32_t rc = 9;
        _zvkCOBOLInit1(1, nullptr, &rc, 0, nullptr, nullptr, 0);
        REQUIRE(_zvkProccom->freeru && _zvkProccom->runcom);
        _zvkPgmTerm(&main.pcb);
        _zvkCOBOLTerm(1, &rc);
        sigaction(SIGSEGV, nullptr, &after);
        REQUIRE(before.sa_sigaction != after.sa_sigaction);
    });
    EXPECT_GOOD(run);

    run = runChild([] {
        uint32_t rc = 9;
        ZVKCOBOLINIT(2, stopRoutine, &rc, 1);
        REQUIRE(rc == 1);
        ZVKCOBOLINIT(1, stopRoutine, &rc, 7);
        REQUIRE(rc == 0 && _zvkProccom->runcom && _zvkProccom->runcom->stop == stopRoutine &&
                _zvkProccom->runcom->token == 7);
        Runcom *outer = _zvkProccom->runcom;
        _zvkCOBOLInit(10, nullptr, &rc, 77);
        REQUIRE(rc == 0 && outer->context == 77);
        _zvkCOBOLLink();
        REQUIRE(_zvkProccom->runcom != outer && _zvkProccom->runcom->parent == outer && !_zvkProccom->runcom->main);
        _zvkCleanUp();
        REQUIRE(_zvkProccom->runcom == outer);
        rc = 55;
        _zvkCOBOLHostInit(&rc);
        REQUIRE(rc == 55);
        outer->stop = nullptr;
    });
    EXPECT_GOOD(run);
}

TEST(RunUnit, MonitorsStartTransactions)
{
    ChildRun run = runChild([] {
        _zvk_cpm_init(messageRoutine, 5);
        Runcom *outer = _zvkProccom->runcom;
        REQUIRE(outer && outer->msg == messageRoutine && outer->context == 5 && _zvkProccom->txmn == 1);
        _zvkTxmnRunUnit(0, messageRoutine, 6);
        REQUIRE(_zvkProccom->runcom->parent == outer && _zvkProccom->runcom->context == 6);
        uint32_t rc = 0;
        _zvkCOBOLHostInit(&rc);
        REQUIRE(rc == 1);
    });
    EXPECT_GOOD(run);

    run = runChild(
        [] {
            CompiledProgram main("MAIN", entry);
            _zvkPgmInit(&main.pcb);
            REQUIRE(_zvkProccom->txmn == 1 && _zvkProccom->jvc == 3 && _zvkProccom->firstEntry == 0 &&
                    _zvkProccom->cache == 1);
            REQUIRE(_zvkProccom->flags & ZVK_TRACK_STORAGE);
        },
        {.env = {{"__COBOL_JVC_CONTAINER", "3"}}});
    EXPECT_GOOD(run);
}

TEST(RunUnit, EntryUnderTheMutexMakesOthersWaitAndSaysSo)
{
    ChildRun run = runChild([] {
        CompiledProgram main("MAIN", entry), locked("LOCKED", entry);
        locked.pcb.flag = ZVK_PCB_ENTER_LOCKED;
        _zvkPgmInit(&main.pcb);
        _zvkPgmInit(&locked.pcb);
        REQUIRE(locked.ipcb[0].ent == 1);
        std::thread other([&] { _zvkPgmInit(&main.pcb); });
        usleep(100000);
        _zvkPgmEnterUnlock();
        other.join();
        REQUIRE(main.ipcb[0].ent == 2 && _zvkProccom->runcom->active == 3);
    });
    EXPECT_GOOD(run);
    EXPECT_NE(run.err.find("pthread_mutex_trylock rc 16 "), string::npos) << run.err;
}

KVR2_PIECE(traced_run)
{
    CompiledProgram main("TRACED", entry), sub("SUB", otherEntry);
    compiledMain(main, [&] {
        compiledCall(sub, [] {});
        compiledCall(sub, [] {});
    });
}

TEST(RunUnit, TraceTellsTheLifeOfARunUnit)
{
    ChildRun run = runPiece("traced_run", {.env = {{"__ZVKDEBUG", "0"}, {"COBRTOPT", "CHECK"}}});
    EXPECT_EQ(run.status, 0);
    size_t at = 0;
    for (const char *line : {"COBOL run-time library",
                             "zvk_init: PID ",
                             "RunUnitInit: PID ",
                             "id=0  sig=0  pcb=@",
                             "zvk_init: PID ",
                             "InitCobolRte: PID ",
                             "jvc=0  txmn=0  preinit=0  cache=2\nCOBRTOPT=CHECK\n",
                             "RunUnitInit: PID ",
                             "id=1  sig=0",
                             "_zvkPgmInit: PID ",
                             "Name=TRACED\n",
                             "_zvkGetJmpBuffer: returning jmp_buf (0x",
                             "current run unit (TRACED) 0x",
                             "Name=SUB\n",
                             "_zvkPgmInit: subsequent usage PCB 0x",
                             "_zvkPgmTerm: PID ",
                             "RunUnitTerm: PID ",
                             "RunUnitTerm: returning due to",
                             "_zvkPgmTerm: 0x",
                             "return to COBOL epilogue of TRACED ru_term 0",
                             "zvk_fini: PID ",
                             "TermCobolRte: PID ",
                             "TermCobolThd: PID ",
                             "TermCobolRte: returning...\nRTE Terminated... PID "}) {
        if (string(line) == "RunUnitTerm: returning due to") line = "returning due to <= COBOLterm";
        size_t found = run.err.find(line, at);
        ASSERT_NE(found, string::npos) << line << " not behind byte " << at << " of\n" << run.err;
        at = found;
    }
}

} // namespace
