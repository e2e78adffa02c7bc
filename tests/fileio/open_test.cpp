// Faults these tests are there to catch: a name taken from the wrong place, a prefix not seen or
// seen where there is none, a command run by a name, the wrong module for a file, statuses stored
// in the wrong form or not at all, a USE procedure not called or called out of turn, EXTERNAL files
// that are not shared or whose differences pass.
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "kvr2/kvr2.h"
#include "support/child.h"
#include "support/compiled_file.h"
#include "support/require.h"

using std::string;

namespace {

void entry() {}

// A file in a program of its own, which the test enters when it likes.
struct File {
    CompiledProgram program;
    FileRecords records;
    FCB &own = records.fcb;
    FIB &fib = records.laidOut.fib;
    FCB *&fcb = records.fcbCell;
    FIB *&fibCell = records.fibCell;
    uint8_t *&areaCell = records.areaCell;
    uint8_t *area = areaCell;
    uint8_t *status = records.status, *feedback = records.feedback;
    void *use[5] = {};

    // Like the program's records, a file's stay until the process ends.
    static File &make(const string &name, const string &assigned, uint8_t attributes = ZVK_FILE_ASSIGN_LITERAL)
    {
        return *new File(name, assigned, attributes);
    }

    File(const string &name, const string &assigned, uint8_t attributes)
        : program(name, entry), records(assigned, {.longest = 100, .shortest = 0})
    {
        own = {}; // the library fills it
        memset(feedback, '?', sizeof records.feedback);
        fib.attributes = attributes;
        fib.feedbackBase = &records.feedbackCell;
        fib.feedbackLength = sizeof records.feedback;
        records.into(program);
    }
    void assign(const string &assigned) { records.assign(assigned); }
    void start() { _zvkPgmInit(&program.pcb); }
    string open(uint16_t mode = ZVK_OPEN_INPUT)
    {
        fcb->requestedMode = mode;
        fcb->open(fcb, program.ipcb.data());
        return state();
    }
    string close(uint16_t options = 0)
    {
        fcb->closeOptions = options;
        fcb->close(fcb, program.ipcb.data());
        return state();
    }
    string verb(FileVerb slot)
    {
        slot(fcb, program.ipcb.data(), nullptr);
        return state();
    }
    string state() const { return string(status, status + 2); }
};

// The folder with the fake module under all the modules' names.
ChildOptions withModules(TemporaryDirectory &directory)
{
    const string module = string(getenv("KVR2_BUILD_DIR")) + "/lib/fake_module.so";
    for (const char *name : {"stl", "lsq", "rsd", "wbrm", "psx"})
        if (symlink(module.c_str(), directory.file(string("zvkrf") + name + "_64r.so").c_str()) != 0) abort();
    return {.env = {{"LD_LIBRARY_PATH", directory.path()}, {"COBRTOPT", "TRAP=OFF"}}, .directory = directory.path()};
}

// Opens one assignment and closes it again; the module's own words are the output.
KVR2_PIECE(open_once)
{
    const char *attributes = getenv("TEST_ATTRIBUTES"), *organization = getenv("TEST_ORGANIZATION");
    File &file = File::make("OPENER", getenv("TEST_NAME"),
                            static_cast<uint8_t>(attributes ? atoi(attributes) : ZVK_FILE_ASSIGN_LITERAL));
    if (organization) file.fib.organization = static_cast<uint8_t>(atoi(organization));
    file.start();
    const char *mode = getenv("TEST_MODE");
    string status = file.open(mode ? static_cast<uint16_t>(strtol(mode, nullptr, 16)) : uint16_t{ZVK_OPEN_INPUT});
    printf(" %s", status.c_str());
    if (file.fcb->mode) printf(" %s", file.close().c_str());
    REQUIRE(file.fcb->open == _zvkGenericOpen);
}

struct Opening : testing::Test {
    TemporaryDirectory directory;
    ChildOptions options = withModules(directory);

    string openIt(const string &name, std::vector<std::pair<string, std::optional<string>>> env = {})
    {
        ChildOptions each = options;
        each.env.emplace_back("TEST_NAME", name);
        for (auto &variable : env) each.env.push_back(variable);
        ChildRun run = runPiece("open_once", each);
        EXPECT_EQ(run.signal, 0) << run.err;
        return run.out;
    }
};

TEST_F(Opening, NamesAndPrefixes)
{
    writeFile(directory.file("text"), "plain text of more than twenty-eight bytes");
    writeFile(directory.file("stl"), string("01234567STL") + string(40, 0));
    writeFile(directory.file("vfs"), string(24, 'x') + "vfs" + string(10, 0));
    writeFile(directory.file("empty"), "");
    EXPECT_EQ(openIt("absent"), "open stl 'absent' 8000; 00close absent; 00");
    EXPECT_EQ(openIt("absent   "), "open stl 'absent' 8000; 00close absent; 00");
    EXPECT_EQ(openIt("text"), "open jgt 'text' 8000; 00close text; 00");
    EXPECT_EQ(openIt("stl"), "open stl 'stl' 8000; 00close stl; 00");
    EXPECT_EQ(openIt("vfs"), "open psx 'vfs' 8000; 00close vfs; 00");
    EXPECT_EQ(openIt("empty"), "open stl 'empty' 8000; 00close empty; 00");
    EXPECT_EQ(openIt("empty", {{"VFS_NO_FORCE_FS", "1"}}), "open jgt 'empty' 8000; 00close empty; 00");
    EXPECT_EQ(openIt("absent", {{"COBRTOPT", "FS=RSD"}}), "open rsd 'absent' 8000; 00close absent; 00");
    EXPECT_EQ(openIt("absent", {{"TEST_ORGANIZATION", "64"}}), "open lsq 'absent' 8000; 00close absent; 00");
    EXPECT_EQ(openIt("rsd-x"), "open rsd 'x' 8000; 00close x; 00");
    EXPECT_EQ(openIt("RAW-x-y"), "open wbr 'x-y' 8000; 00close x-y; 00");
    EXPECT_EQ(openIt("stl-/a/b"), "open stl '/a/b' 8000; 00close /a/b; 00");
    EXPECT_EQ(openIt("xyz-data"), " 96") << "a prefix that no file system has";
    EXPECT_EQ(openIt("yes-data"), "open stl 'yes-data' 8000; 00close yes-data; 00")
        << "no prefix by the letters behind y";
    EXPECT_EQ(openIt("hdk-data"), " 96");
    EXPECT_EQ(openIt("   "), " 95");
    EXPECT_EQ(openIt("stl-   "), " 95") << "a prefix, and no name behind it";
    EXPECT_EQ(openIt("stl-"), "open stl 'stl-' 8000; 00close stl-; 00") << "the dash is the last character";
    EXPECT_EQ(openIt("."), " 93") << "a directory cannot be read";
    EXPECT_EQ(openIt("$TEST_WORDS", {{"TEST_WORDS", "a b"}}), " 95");
    EXPECT_EQ(openIt("$TEST_WORDS", {{"TEST_WORDS", "one"}}), "open stl 'one' 8000; 00close one; 00");
    EXPECT_EQ(openIt("~", {{"HOME", "/nohome"}}), "open stl '/nohome' 8000; 00close /nohome; 00");
    EXPECT_EQ(openIt("$(touch ran)`touch ran`"),
              "open stl '$(touch ran)`touch ran`' 8000; 00close $(touch ran)`touch ran`; 00");
    EXPECT_NE(access(directory.file("ran").c_str(), F_OK), 0) << "a name ran a command";
    // What the system's own expansion does not survive.
    for (const char *name : {"$[$@]", "0[$[$@", "$((${@}))", "$[${x-$@}]", "$(())", "x$[$NOTHING]"})
        EXPECT_EQ(openIt(name), string("open stl '") + name + "' 8000; 00close " + name + "; 00");
    string nest;
    for (int depth = 0; depth < 30000; ++depth) nest += "$[";
    EXPECT_EQ(openIt(nest).substr(0, 15), "open stl '$[$[$");
    EXPECT_EQ(openIt(string(8000, 'n')).substr(0, 22), "open stl 'nnnnnnnnnnnn");
    EXPECT_EQ(openIt("DD", {{"TEST_ATTRIBUTES", "32"}, {"DD", "lsq-/x"}}), "open lsq '/x' 8000; 00close /x; 00");
    EXPECT_EQ(openIt("DD", {{"TEST_ATTRIBUTES", "32"}, {"DD", ""}}), "open stl 'DD' 8000; 00close DD; 00");
    ASSERT_EQ(mkfifo(directory.file("fifo").c_str(), 0600), 0);
    EXPECT_EQ(openIt("fifo"), "open stl 'fifo' 8000; 00close fifo; 00") << "no wait for a writer";
    int writer = open(directory.file("fifo").c_str(), O_RDWR);
    EXPECT_EQ(openIt("fifo"), "open stl 'fifo' 8000; 00close fifo; 00") << "nor for what a writer has not written yet";
    close(writer);
}

// Any text may be an assignment: the characters that mean something, at every place, in names short
// and longer than any path.
KVR2_PIECE(open_many)
{
    File &file = File::make("OPENER", "x");
    file.start();
    std::mt19937 random(9);
    const char alphabet[] = "::~$ /.-()a+01*`'\"\\{}lsq\xC3";
    for (int i = 0; i < 4000; i++) {
        string name(i % 100 ? 1 + random() % 24 : 4000 + random() % 500, 'a');
        for (char &c : name) c = alphabet[random() % (sizeof alphabet - 1)];
        if (i % 2) name.insert(random() % name.size(), "g(+1)");
        file.assign(name);
        file.fib.attributes = i % 3 ? ZVK_FILE_ASSIGN_ITEM : ZVK_FILE_ASSIGN_ENVIRONMENT;
        setenv("x", name.c_str(), 1);
        if (i % 3 == 0) file.assign("x");
        string status = file.open(i % 5 ? ZVK_OPEN_INPUT : ZVK_OPEN_OUTPUT);
        REQUIRE(status == "00" || status == "33" || status == "93" || status == "95" || status == "96");
        if (file.fcb->mode) REQUIRE(file.close() == "00");
    }
    REQUIRE(access("ran", F_OK) != 0);
}

TEST_F(Opening, AnyTextMayBeAnAssignment)
{
    ChildRun run = runPiece("open_many", options);
    EXPECT_EQ(run.status, 0) << run.signal << run.err.substr(run.err.size() > 2000 ? run.err.size() - 2000 : 0);
}

TEST_F(Opening, ConcatenationsAndGenerations)
{
    EXPECT_EQ(openIt("a:b"), "open stl 'a' 8000; 00close a; 00");
    EXPECT_EQ(openIt("a:b", {{"TEST_MODE", "4000"}}), " 33") << "37 within a concatenation";
    EXPECT_EQ(openIt(":"), " 33");
    string group = directory.file("g");
    ASSERT_EQ(GDG_Create(group.data(), 10, 0, 0, "sys"), 0);
    EXPECT_EQ(openIt("g"), " 33") << "a group with no generations";
    EXPECT_EQ(openIt("g(+1)", {{"TEST_MODE", "4000"}}), "open stl 'g.g0001v00' 4000; 00close g.g0001v00; 00");
    writeFile(directory.file("g.g0001v00"), "");
    EXPECT_EQ(openIt("g(0)"), "open stl 'g.g0001v00' 8000; 00close g.g0001v00; 00");
}

TEST_F(Opening, StatusesOfTheModuleGoToTheProgram)
{
    EXPECT_EQ(openIt("x", {{"FAKE_STATUS", "35"}}), "open stl 'x' 8000; 35");
    EXPECT_EQ(openIt("x", {{"FAKE_INIT", "30"}}), " 30");
    EXPECT_EQ(openIt("x", {{"FAKE_STATUS", "5"}}), "open stl 'x' 8000; 05close x; 00");
    ChildOptions none = options;
    none.env[0].second = "/nowhere";
    none.env.emplace_back("TEST_NAME", "x");
    ChildRun run = runPiece("open_once", none);
    EXPECT_EQ(run.out, " 96");
    EXPECT_NE(run.err.find("dlopen(zvkrfstl_64r.so) error "), string::npos);
}

int useCalls;
void useProcedure(uint64_t, uint64_t, void *argument, uint64_t mode)
{
    useCalls++;
    REQUIRE(argument == &useCalls && mode == ZVK_OPEN_INPUT);
}

TEST(FileVerbs, WithoutSenseGiveTheirStatus)
{
    ChildRun run = runChild([] {
        File &file = File::make("CLOSED", "x");
        file.start();
        FCB *fcb = file.fcb;
        REQUIRE(fcb->fib == &file.fib && fcb->record == file.area + 32 && *reinterpret_cast<FCB **>(file.area) == fcb);
        REQUIRE(file.verb(fcb->read) == "47" && string(file.feedback, file.feedback + 8) == "000000  ");
        REQUIRE(fcb->fs2 == 9 && fcb->lastVerb == ZVK_VERB_READ);
        REQUIRE(file.verb(fcb->write) == "48" && file.verb(fcb->rewrite) == "49" &&
                file.verb(fcb->deleteRecord) == "49");
        REQUIRE(file.verb(fcb->start) == "47" && file.close() == "42");
        file.fib.shareMode = ZVK_FILE_STATUS_EBCDIC | ZVK_FILE_FEEDBACK_EBCDIC;
        file.verb(fcb->read);
        REQUIRE(file.status[0] == 0xF4 && file.status[1] == 0xF7 && file.feedback[0] == 0xF0 &&
                file.feedback[6] == 0x40);
        file.fib.shareMode = ZVK_FILE_STATUS_NATIONAL;
        file.verb(fcb->read);
        REQUIRE(memcmp(file.status,
                       "4\0"
                       "7",
                       4) == 0);
        file.fib.shareMode = 0;
        // Open for INPUT in a way that leaves the library's routines: an OPTIONAL file that was
        // absent.
        fcb->mode = ZVK_OPEN_INPUT;
        fcb->state |= ZVK_FILE_ABSENT;
        fcb->lastVerb = ZVK_VERB_OPEN;
        REQUIRE(file.verb(fcb->read) == "10" && file.verb(fcb->read) == "46");
        file.fib.organization = ZVK_FILE_INDEXED;
        file.fib.accessMode = 0;
        REQUIRE(file.verb(fcb->read) == "23" && file.verb(fcb->start) == "23" && file.verb(fcb->write) == "48");
        REQUIRE(file.close() == "00" && fcb->mode == 0);
        fcb->lastCloseOptions = ZVK_CLOSE_LOCK;
        _zvkOpenError(fcb, nullptr);
        REQUIRE(file.state() == "38");
    });
    EXPECT_GOOD(run);
}

TEST(FileVerbs, UseProceduresAndTheEndWithoutThem)
{
    ChildRun run = runChild([] {
        File &file = File::make("USES", "x");
        file.start();
        struct {
            void (*routine)(uint64_t, uint64_t, void *, uint64_t);
            void *argument;
        } use{useProcedure, &useCalls};
        file.use[0] = &use;
        file.fcb->useTable = file.use;
        file.fcb->mode = ZVK_OPEN_INPUT;
        file.verb(file.fcb->write);
        REQUIRE(useCalls == 1);
        file.fcb->status = 23;
        file.fcb->statement = ZVK_STATEMENT_INVALID_KEY;
        _zvkCallUseProc(file.fcb, 0, nullptr);
        file.fcb->status = 10;
        file.fcb->statement = ZVK_STATEMENT_AT_END;
        _zvkCallUseProc(file.fcb, 0, nullptr);
        REQUIRE(useCalls == 1);
        file.fcb->closeOptions = ZVK_CLOSE_NO_USE;
        file.verb(file.fcb->write);
        REQUIRE(useCalls == 1);
        file.fcb->mode = 0;
    });
    EXPECT_GOOD(run);
    run = runChild([] {
        File &file = File::make("BLIND", "x");
        file.fib.statusBase = nullptr;
        file.fib.feedbackBase = nullptr;
        file.start();
        file.fcb->status = 23;
        _zvkCallUseProc(file.fcb, 0, nullptr); // below 30: silent
        fputs("silent\n", stderr);
        file.verb(file.fcb->read);
    });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_LT(run.err.find("silent\n"), run.err.find("ZVK200S  READ of file DATA-FILE failed with file status 47."));
}

// The texts of a library's own failures are variants of message 201; a variant without a text says
// nothing.
TEST(FileVerbs, TextsOfMessage200)
{
    for (auto [variant, text] : {std::pair{51u, "47. No file system could be found or loaded for the file."},
                                 {60u, "47. Its name is"},
                                 {0u, "47. The file is not open for INPUT or I-O."}}) {
        ChildRun run = runChild([variant = variant] {
            File &file = File::make("BLIND", "x");
            file.fib.statusBase = nullptr;
            file.fib.feedbackBase = nullptr;
            file.start();
            file.fcb->status = 47;
            file.fcb->currentVerb = ZVK_VERB_READ;
            file.fcb->fileName = strdup("/data/x");
            _zvkCallUseProc(file.fcb, variant, &file.program.ipcb[0]);
        });
        EXPECT_EQ(run.signal, SIGABRT);
        string out = run.err;
        for (size_t at; (at = out.find(" \n")) != string::npos;) out.erase(at, 1);
        for (char &c : out) c = c == '\n' ? ' ' : c; // the text is wrapped
        for (size_t at; (at = out.find("  ")) != string::npos;) out.erase(at, 1);
        EXPECT_NE(out.find(text), string::npos) << variant << out;
        EXPECT_NE(out.find("Its name is /data/x. It is assigned to x. Program BLIND."), string::npos) << out;
        EXPECT_EQ(out.find("Cannot find"), string::npos) << out;
    }
}

TEST(ExternalFiles, AreSharedAndMustAgree)
{
    ChildRun run = runChild([] {
        File &first = File::make("FIRST", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL),
             &second = File::make("SECOND", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL);
        first.start();
        second.start();
        REQUIRE(first.fcb == second.fcb && first.fcb != &first.own && memcmp(first.fcb->eyecatcher, "FCB", 3) == 0);
        REQUIRE(first.areaCell == first.fcb->recordArea && second.areaCell == first.areaCell);
        REQUIRE(second.verb(second.fcb->read) == "47" &&
                first.state() == "??"); // each program has its own status field
    });
    EXPECT_GOOD(run);
    run = runChild([] {
        File &first = File::make("FIRST", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL),
             &second = File::make("SECOND", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL);
        second.fib.maxRecord = 80;
        second.fib.organization = ZVK_FILE_INDEXED;
        first.start();
        second.start();
    });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_NE(run.err.find("ZVK075S"), string::npos) << run.err;
    for (const char *word : {"DATA-FILE", "SECOND", "ORGANIZATION,"})
        EXPECT_NE(run.err.find(word), string::npos) << word;
}

// A statement says which of its program's files it means. The run unit's end has no statement: it
// meets the file in one of its programs, with the number that it has in another, longer one.
TEST(ExternalFiles, AreClosedAsTheFileOfTheProgramThatIsMet)
{
    ChildRun run = runChild([] {
        File &first = File::make("FIRST", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL),
             &second = File::make("SECOND", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL);
        first.start();
        second.start();
        first.fcb->mode = ZVK_OPEN_INPUT;
        first.fcb->state |= ZVK_FILE_ABSENT;
        first.fcb->index = 0x1000000;
        _zvkCleanUp();
        REQUIRE((first.state() == "00") != (second.state() == "00")); // its own status field, and no other
    });
    EXPECT_GOOD(run);
}

// A program that is gone takes its assignment with it; the closed file still has a name to tell.
TEST(ExternalFiles, KeepTheirNameWhenTheProgramThatClosedThemIsGone)
{
    ChildRun run = runChild([] {
        File &first = File::make("FIRST", "data/x  ", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL),
             &second = File::make("SECOND", "data/x  ", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL);
        first.start();
        second.start();
        second.fcb->mode = ZVK_OPEN_INPUT;
        second.fcb->state |= ZVK_FILE_ABSENT;
        REQUIRE(second.close() == "00");
        for (File *file : {&first, &second}) memset(file->fib.assignment, '?', file->fib.assignmentLength);
        REQUIRE(strcmp(first.fcb->fileName, "data/x  ") == 0);
    });
    EXPECT_GOOD(run);
}

// Of LINAGE it is the block that has to agree; the flags of its parts do not count by themselves.
TEST(ExternalFiles, LinageAgreesByItsBlock)
{
    for (int difference : {0, 1, 2, 3}) {
        ChildRun run = runChild([difference] {
            struct Block {
                FIB fib;
                FileLinageGroup groups[4];
            };
            File *files[2];
            for (int i = 0; i < 2; i++) {
                File &file =
                    *(files[i] = &File::make(i ? "SECOND" : "FIRST", "x", ZVK_FILE_ASSIGN_LITERAL | ZVK_FILE_EXTERNAL));
                auto *block = new Block{};
                file.fib.linage = ZVK_FILE_LINAGE | ZVK_FILE_LINAGE_TOP;
                file.fib.linageOffset = sizeof(FIB);
                if (i && difference == 1) file.fib.linage |= ZVK_FILE_LINAGE_FOOTING;
                if (i && difference == 2) file.fib.linage = 0;
                block->fib = file.fib;
                for (FileLinageGroup &group : block->groups) group.value = i && difference == 3 ? 61 : 60;
                file.fibCell = &block->fib;
                file.start();
            }
            REQUIRE(files[0]->fcb == files[1]->fcb);
        });
        EXPECT_EQ(run.signal, difference < 2 ? 0 : SIGABRT) << difference;
        if (difference >= 2) {
            EXPECT_NE(run.err.find("LINAGE NAME/VALUE"), string::npos) << run.err;
        }
    }
}

} // namespace
