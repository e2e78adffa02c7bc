// Faults these tests are there to catch: a program looked for in the wrong place or order, an entry
// symbol missed, a name cut or folded wrongly, a failure reported to the wrong address, programs
// loaded twice by two threads, unloaded while cached or left loaded when not, leaks over many
// calls.
#include <atomic>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "kvr2/kvr2.h"
#include "support/child.h"
#include "support/compiled_program.h"
#include "support/pattern.h"
#include "support/require.h"

using std::string;

namespace {

void entry() {}

// Compiles `source` into a shared object.
void build(const string &path, const string &source)
{
    writeFile(path + ".c", source);
    ChildRun run = runCommand({"cc", "-shared", "-fPIC", "-nostdlib", "-o", path, path + ".c"});
    ASSERT_EQ(run.status, 0) << run.err;
}

struct Programs : testing::Test {
    static TemporaryDirectory *directory;
    static void SetUpTestSuite()
    {
        directory = new TemporaryDirectory;
        build(directory->file("NAMED.so"), "int NAMED(void) { return 1; }");
        build(directory->file("PLAIN"), "int PLAIN(void) { return 2; }");
        build(directory->file("MAINONLY.so"), "int main(void) { return 3; }");
        build(directory->file("STARTONLY.so"), "int _start(void) { return 4; }");
        build(directory->file("NOENTRY.so"), "int x;");
        build(directory->file("TASK.tqxcob"), "int _zvk_cobol_main(void) { return 5; } int main(void) { return 6; }");
        build(directory->file("libnobody.so"), "int nobody;");
        writeFile(directory->file("NEEDY.c"), "int NEEDY(void) { return 7; }");
        ASSERT_EQ(
            runCommand({"cc", "-shared", "-fPIC", "-nostdlib", "-Wl,--no-as-needed", "-o", directory->file("NEEDY.so"),
                        directory->file("NEEDY.c"), "-L" + directory->path(), "-lnobody"})
                .status,
            0);
        unlink(directory->file("libnobody.so").c_str());
        writeFile(directory->file("BROKEN.so"), "not a shared object");
        ASSERT_EQ(runCommand({"chmod", "755", directory->file("BROKEN.so")}).status, 0);
    }
    static void TearDownTestSuite() { delete directory; }
};
TemporaryDirectory *Programs::directory;

struct Caller {
    CompiledProgram main{"MAIN", entry};
    uint32_t failures = 1; // as a CALL with ON EXCEPTION passes it

    Caller() { _zvkPgmInit(&main.pcb); }
    // What the called program returns, or -1 when the CALL failed.
    int call(const string &name)
    {
        uint32_t before = failures;
        uint64_t *found =
            _zvkDynLd(nullptr, static_cast<int64_t>(name.size()),
                      reinterpret_cast<uint8_t *>(const_cast<char *>(name.data())), &main.pcb, nullptr, &failures);
        if (failures != before) return -1;
        REQUIRE(found && found[0] && found[1] == 0);
        return reinterpret_cast<int (*)()>(found[0])();
    }
};

ChildOptions where(const string &path) { return {.env = {{"COBPATH", path}, {"COBRTOPT", "TRAP=OFF"}}}; }

TEST_F(Programs, AreFoundAndTheirEntryToo)
{
    ChildRun run = runChild(
        [] {
            Caller caller;
            REQUIRE(caller.call("NAMED") == 1 && caller.call("NAMED   ") == 1 &&
                    caller.call(string("NAMED\0\0", 7)) == 1);
            REQUIRE(caller.call("PLAIN") == 2 && caller.call("MAINONLY") == 3 && caller.call("STARTONLY") == 4);
            REQUIRE(caller.call("NOENTRY") == -1 && caller.call("BROKEN") == -1 && caller.call("NOWHERE") == -1);
            REQUIRE(caller.call("") == -1 && caller.call("    ") == -1 && caller.call("TASK") == -1 &&
                    caller.call("named") == -1);
            REQUIRE(caller.failures == 8);
            REQUIRE(caller.call(string(4000, 'X')) == -1);
            caller.main.pcb.flag |= ZVK_PCB_FOLD_NAMES;
            REQUIRE(caller.call("named") == 1);
            REQUIRE(_zvkProccom->runcom->plle->entries == 5);
        },
        where("/nowhere:" + directory->path()));
    EXPECT_GOOD(run);

    run = runChild([] { REQUIRE(Caller().call("NAMED") == -1); }, where("/nowhere::" + directory->path()));
    EXPECT_GOOD(run) << "an empty part ends the search";

    ChildOptions here = where("");
    here.directory = directory->path();
    here.env[0].second.reset();
    run = runChild([] { REQUIRE(Caller().call("NAMED") == 1); }, here);
    EXPECT_GOOD(run) << "COBPATH unset is the working directory";
}

TEST_F(Programs, UnderAMonitorItsOwnFormComesFirst)
{
    ChildOptions options = where(directory->path());
    options.env.emplace_back("__COBOL_TXMN_CONTAINER", "1");
    ChildRun run = runChild(
        [] {
            Caller caller;
            REQUIRE(caller.call("TASK") == 5 && caller.call("NAMED") == 1);
        },
        options);
    EXPECT_GOOD(run);
}

TEST_F(Programs, BoundNamesAnswerFromTheCallersTable)
{
    ChildRun run = runChild(
        [] {
            Caller caller;
            struct {
                int32_t count = 2, first[3] = {1, 2, 0}, second[3] = {2, 5, 2};
                char texts[7] = {'U', 'P', 'N', 'A', 'M', 'E', 'D'};
            } names;
            uint64_t entries[2] = {111, 222};
            auto call = [&](const char *name) {
                return reinterpret_cast<uint64_t>(_zvkDynLd(&names.count, static_cast<int64_t>(strlen(name)),
                                                            reinterpret_cast<uint8_t *>(const_cast<char *>(name)),
                                                            &caller.main.pcb, entries, &caller.failures));
            };
            REQUIRE(call("UP") == 111 && call("NAMED ") == 222);
            names.count = 1;
            REQUIRE(call("NAMED") > 222);
        },
        where(directory->path()));
    EXPECT_GOOD(run);
}

TEST_F(Programs, FailureWithoutOnExceptionIsMessage96WithItsCause)
{
    auto fail = [&](const char *name) {
        return runChild(
            [=] {
                Caller caller;
                caller.failures = 0;
                caller.call(name);
            },
            where(directory->path()));
    };
    for (const char *name : {"", "NOWHERE", "NOENTRY"}) {
        ChildRun run = fail(name);
        EXPECT_EQ(run.signal, SIGABRT) << name;
        EXPECT_NE(run.err.find("ZVK096C"), string::npos) << run.err;
    }
    EXPECT_NE(fail("NOWHERE").err.find("NOWHERE"), string::npos);
    EXPECT_NE(fail("NOWHERE").err, fail("NOENTRY").err) << "the causes have texts of their own";
    // What is there and refused is told from what is not there, with the loader's reason.
    auto flat = [&](const char *name) { return oneLine(fail(name).err); };
    EXPECT_NE(flat("NOWHERE").find("it was not found"), string::npos);
    EXPECT_NE(flat("BROKEN").find("BROKEN was found but cannot be loaded. The loader says:"), string::npos);
    EXPECT_NE(flat("BROKEN").find("too short"), string::npos) << flat("BROKEN");
    EXPECT_NE(flat("NEEDY").find("libnobody.so: cannot open shared object file"), string::npos) << flat("NEEDY");
}

TEST_F(Programs, CacheKeepsProgramsBetweenRunUnits)
{
    auto loadedAfter = [&](const char *mode) {
        ChildOptions options = where(directory->path());
        options.env.emplace_back("COBOL_CPM_CACHE", mode);
        ChildRun run = runChild(
            [] {
                CompiledProgram main("MAIN", entry);
                for (int i = 0; i < 2; i++) {
                    compiledMain(main, [&] {
                        uint8_t name[] = "NAMED";
                        uint32_t failures = 0;
                        _zvkDynLd(nullptr, 5, name, &main.pcb, nullptr, &failures);
                    });
                    void *handle = dlopen((Programs::directory->file("NAMED.so")).c_str(), RTLD_NOW | RTLD_NOLOAD);
                    printf("%s ", handle ? "loaded" : "gone");
                    if (handle) dlclose(handle);
                }
                printf("%d", _zvkProccom->cache);
            },
            options);
        return run.status == 0 ? run.out : run.err;
    };
    EXPECT_EQ(loadedAfter("1"), "loaded loaded 1");
    EXPECT_EQ(loadedAfter("0"), "gone gone 0");
    EXPECT_EQ(loadedAfter("2"), "gone loaded 1") << "the second run unit turns it on";
    EXPECT_EQ(loadedAfter("on"), "loaded loaded 1");
    EXPECT_EQ(loadedAfter("OFF"), "gone gone 0");
    EXPECT_EQ(loadedAfter("yes"), "loaded loaded 1");
    EXPECT_EQ(loadedAfter("?"), "gone loaded 1");
}

TEST_F(Programs, CacheEntries)
{
    ChildOptions options = where(directory->path());
    options.env.emplace_back("COBOL_CPM_CACHE", "1");
    ChildRun run = runChild(
        [] {
            {
                Caller caller;
                REQUIRE(caller.call("NAMED") == 1 && caller.call("PLAIN") == 2);
                REQUIRE(_zvkProccom->plle->entries == 2 && _zvkProccom->runcom->plle->entries == 3);
                ZVK_CPM_STATS();
                _zvkPgmTerm(&caller.main.pcb);
            }
            REQUIRE(ZVK_CPM_UNLOAD("NOBODY") == 0 && ZVK_CPM_UNLOAD("NAMED") == 1 && _zvkProccom->plle->entries == 1);
            ZVK_CPM_UNLOAD_ALL();
            REQUIRE(_zvkProccom->plle->entries == 0);
            _zvk_cpm_print();
            ZVK_CPM_DISABLE();
            REQUIRE(_zvkProccom->cache == 0 && string(getenv("COBOL_CPM_CACHE")) == "0");
            ZVK_CPM_ENABLE();
            REQUIRE(_zvkProccom->cache == 1 && string(getenv("COBOL_CPM_CACHE")) == "1");
            Caller again;
            REQUIRE(again.call("NAMED") == 1);
        },
        options);
    EXPECT_GOOD(run);
    EXPECT_NE(run.err.find("COBOL is Active\nExternal Programs - Cache\nHash table at: "), string::npos) << run.err;
    EXPECT_NE(run.err.find("COBOL is Inactive\nExternal Programs - Cache\n"), string::npos);
}

// An object of two compiled programs. WRITER has an EXTERNAL file and calls HELPER, which
// registers itself under its own name.
void buildTwoPrograms(const string &path)
{
    writeFile(path + ".c", R"(
#include <stdio.h>
#include "kvr2/kvr2.h"
static FIB fib = {.name = "SHARED-FILE", .attributes = ZVK_FILE_EXTERNAL, .index = 1, .maxRecord = 80};
static FCB own, *files[] = {&own};
static FIB *fibs[] = {&fib};
static IPCB writerBlocks[1], helperBlocks[1];
static PCB writer = {.ipcb = writerBlocks, .name = "WRITER", .nameLength = 6, .fibs = fibs};
static PCB helper = {.ipcb = helperBlocks, .name = "HELPER", .nameLength = 6};
int WRITER(void)
{
    writerBlocks[0].entry = (ZvkRoutine)WRITER;
    writerBlocks[0].files = files;
    writerBlocks[0].fileCount = 1;
    helperBlocks[0].entry = (ZvkRoutine)(void *)helperBlocks;
    _zvkPgmInit(&writer);
    _zvkPgmInit(&helper);
    int good = files[0] != &own && files[0]->recordArea && ((FCB **)files[0]->recordArea)[0] == files[0] &&
               writer.upsi == _zvkProccom->runcom->upsi;
    files[0]->recordLength = 7; // writes into the run unit's own record
    _zvkPgmExit(&helperBlocks[0].ent);
    _zvkPgmExit(&writerBlocks[0].ent);
    return good;
}
)");
    ChildRun run = runCommand(
        {"cc", "-shared", "-fPIC", "-I", string(getenv("KVR2_SOURCE_DIR")) + "/include", "-o", path, path + ".c"});
    ASSERT_EQ(run.status, 0) << run.err;
}

TEST_F(Programs, CachedProgramsAreRegisteredInEachRunUnit)
{
    buildTwoPrograms(directory->file("WRITER.so"));
    ChildOptions options = where(directory->path());
    options.env.emplace_back("COBOL_CPM_CACHE", "1");
    ChildRun run = runChild(
        [] {
            for (int i = 0; i < 4; i++) {
                Caller caller;
                REQUIRE(caller.call("WRITER") == 1 && caller.call("WRITER") == 1);
                _zvkPgmTerm(&caller.main.pcb);
            }
        },
        options);
    EXPECT_GOOD(run);
}

// Unloading forgets all programs of the object, and the EXTERNAL file outlives the program that
// named it first.
TEST_F(Programs, UnloadingAnObjectForgetsAllItsPrograms)
{
    buildTwoPrograms(directory->file("WRITER.so"));
    ChildOptions options = where(directory->path());
    options.env.emplace_back("COBOL_CPM_CACHE", "1");
    ChildRun run = runChild(
        [] {
            Caller caller;
            REQUIRE(caller.call("WRITER") == 1);
            REQUIRE(ZVK_CPM_UNLOAD("WRITER") == 1);
            REQUIRE(!dlopen(Programs::directory->file("WRITER.so").c_str(), RTLD_NOW | RTLD_NOLOAD));
            HashEntry *helper = HashTable_Find(_zvkProccom->runcom->plle, nullptr, "HELPER", 6, 0, 0);
            REQUIRE(helper && !static_cast<LLE *>(helper->value)->pcb);
            HashTable_Dump(_zvkProccom->runcom->externalFiles);
            HashEntry *file = HashTable_Find(_zvkProccom->runcom->externalFiles, nullptr, "SHARED-FILE", 11, 0, 0);
            REQUIRE(file && static_cast<FCB *>(file->value)->recordLength == 7);
            _zvkPgmTerm(&caller.main.pcb);
        },
        options);
    EXPECT_GOOD(run);
    EXPECT_NE(run.err.find("-SHARED-FILE"), string::npos) << run.err;
}

// Without a cache each run unit loads for itself. The object goes with the last of them.
TEST_F(Programs, ANestedRunUnitsEndLeavesTheOuterOnesPrograms)
{
    buildTwoPrograms(directory->file("WRITER.so"));
    ChildOptions options = where(directory->path());
    options.env.emplace_back("COBOL_CPM_CACHE", "0");
    ChildRun run = runChild(
        [] {
            string path = Programs::directory->file("WRITER.so");
            Caller outer;
            REQUIRE(outer.call("WRITER") == 1);
            _zvkCOBOLLink();
            Caller inner;
            REQUIRE(inner.call("WRITER") >= 0); // its registration is the outer run unit's
            _zvkPgmTerm(&inner.main.pcb);
            REQUIRE(outer.call("WRITER") == 1);
            HashEntry *helper = HashTable_Find(_zvkProccom->runcom->plle, nullptr, "HELPER", 6, 0, 0);
            REQUIRE(helper && static_cast<LLE *>(helper->value)->pcb && !(static_cast<LLE *>(helper->value)->flags));
            _zvkPgmTerm(&outer.main.pcb);
            REQUIRE(!dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD));
        },
        options);
    EXPECT_GOOD(run);
}

TEST_F(Programs, TwoThreadsLoadAProgramOnce)
{
    ChildRun run = runChild(
        [] {
            Caller caller;
            std::vector<std::thread> threads;
            std::atomic<int> sum = 0;
            for (int i = 0; i < 8; i++)
                threads.emplace_back([&] {
                    uint8_t name[] = "NAMED";
                    uint32_t failures = 1;
                    uint64_t *found = _zvkDynLd(nullptr, 5, name, &caller.main.pcb, nullptr, &failures);
                    sum += reinterpret_cast<int (*)()>(found[0])();
                });
            for (std::thread &thread : threads) thread.join();
            REQUIRE(sum == 8 && _zvkProccom->runcom->plle->entries == 2);
            _zvkPgmTerm(&caller.main.pcb);
            // One dlopen, one dlclose: nothing holds it any more.
            REQUIRE(!dlopen((Programs::directory->file("NAMED.so")).c_str(), RTLD_NOW | RTLD_NOLOAD));
        },
        where(directory->path()));
    EXPECT_GOOD(run);
}

TEST(ManyPrograms, LeakNothing)
{
    constexpr int kPrograms = 1000, kCalls = 10000;
    TemporaryDirectory directory;
    build(directory.file("P.so"), "int main(void) { return 7; }");
    string object = readFile(directory.file("P.so"));
    for (int i = 0; i < kPrograms; i++) writeFile(directory.file("P" + std::to_string(i) + ".so"), object);
    ASSERT_EQ(runCommand({"sh", "-c", "chmod 755 *.so"}, {.directory = directory.path()}).status, 0);
    ChildRun run = runChild(
        [] {
            auto call = [](CompiledProgram &main, int number) {
                string name = "P" + std::to_string(number);
                uint32_t failures = 1;
                uint64_t *found = _zvkDynLd(nullptr, static_cast<int64_t>(name.size()),
                                            reinterpret_cast<uint8_t *>(name.data()), &main.pcb, nullptr, &failures);
                REQUIRE(failures == 1 && reinterpret_cast<int (*)()>(found[0])() == 7);
                REQUIRE(_zvkCancel(nullptr, static_cast<int64_t>(name.size()), reinterpret_cast<uint8_t *>(name.data()),
                                   &main.pcb) == 0);
            };
            for (int unit = 0; unit < 2; unit++) {
                CompiledProgram main("MAIN", entry);
                compiledMain(main, [&] {
                    for (int i = 0; i < kCalls / 2; i++) call(main, i * 7 % kPrograms);
                });
                ZVK_CPM_UNLOAD_ALL();
            }
            string maps = readFile("/proc/self/maps");
            REQUIRE(maps.find("/P1.so") == string::npos && maps.find("/P999.so") == string::npos);
            uint32_t rc = 0;
            _zvkCOBOLTerm(1, &rc);
        },
        where(directory.path()));
    EXPECT_GOOD(run);
}

} // namespace
