// Faults these tests are there to catch: a message that is lost, mangled or sent to the wrong
// place; a run that goes on after a severe error, or ends at a warning; wrapping that loses text or
// runs over its storage; a missing, broken or hostile catalog that takes the program down; inserts
// that do not fit their text.
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <nl_types.h>
#include <string>
#include <thread>
#include <unistd.h>

#include "frame/device_streams.h"
#include "frame/message_calls.h"
#include "frame/messages/message_catalog.h"
#include "frame/messages/message_wrap.h"
#include "frame/run_unit.h"
#include "frame/signals/traceback.h"
#include "support/child.h"
#include "support/compiled_program.h"
#include "support/pattern.h"
#include "support/require.h"

using std::string;

// A catalog that is installed in the system is none of ours.
extern "C" nl_catd __real_catopen(const char *name, int flags);
extern "C" nl_catd __wrap_catopen(const char *name, int flags);
nl_catd __wrap_catopen(const char *name, int flags)
{
    return strncmp(name, "/usr/share/locale/", 18) == 0 ? reinterpret_cast<nl_catd>(-1) : __real_catopen(name, flags);
}

namespace {

bool contains(const string &text, const string &part) { return text.find(part) != string::npos; }

string wrapped(const string &text, unsigned width, size_t room = 1000)
{
    std::vector<char> storage(text.size() + 1 + room);
    strcpy(storage.data(), text.c_str());
    size_t length = zvkWrapText(storage.data(), storage.size(), width);
    EXPECT_EQ(length, strlen(storage.data()));
    return storage.data();
}

TEST(MessageWrap, BreaksAtBlanksUnderTheText)
{
    const string line = "ZVK171I  Run-time option FOO is not known and is ignored. Check COBRTOPT.";
    EXPECT_EQ(wrapped(line + "\n", 72),
              "ZVK171I  Run-time option FOO is not known and is ignored. Check\n         COBRTOPT.\n");
    EXPECT_EQ(wrapped(line, static_cast<unsigned>(line.size())), line) << "a line of exactly the width stays";
    EXPECT_EQ(wrapped(line, static_cast<unsigned>(line.size() - 1)).find('\n'), line.rfind(' '));
    for (unsigned width : {0u, 10u, 17u, 257u, 65535u}) EXPECT_EQ(wrapped(line, width), line) << "counts as 80";
    EXPECT_EQ(wrapped("123456789 123456789 1234=6789", 26), "123456789 123456789 1234\n          =6789");
    EXPECT_EQ(wrapped("123456789 123456789   123456789", 20), "123456789 123456789 \n        123456789")
        << "dropped blanks come off the indent";
    EXPECT_EQ(wrapped(string(30, 'x'), 20),
              string(18, 'x') + "\n" + string(10, ' ') + string(8, 'x') + "\n" + string(10, ' ') + "xxxx")
        << "a break in front of column 18 gives way to a hard one";
    EXPECT_EQ(wrapped(line, 40, 3), line) << "no room for the insertion";
    for (unsigned width = 18; width < 60; width++) {
        string out = wrapped(string(300, 'a') + " " + string(50, 'b') + "=" + line + line, width, 2000);
        size_t column = 0;
        for (char c : out) {
            column = c == '\n' ? 0 : column + 1;
            ASSERT_LE(column, width);
        }
    }
}

TEST(MessageCatalog, TextsMustFitTheirInserts)
{
    EXPECT_TRUE(zvkTextFits("plain 100%% text", ""));
    EXPECT_TRUE(zvkTextFits("%s and %d", "sd"));
    EXPECT_TRUE(zvkTextFits("%s", "sd"));
    EXPECT_TRUE(zvkTextFits("%d to %d", "ll")); // the low half of a long integer
    EXPECT_TRUE(zvkTextFits("%2$s then %1$d", "ds"));
    EXPECT_TRUE(zvkTextFits("%-10.5s %08x %ld %p", "sdlp"));
    for (const auto &[text, inserts] : {std::pair{"%s", ""},
                                        {"%s", "d"},
                                        {"%ld", "d"},
                                        {"%n", "p"},
                                        {"%*d", "dd"},
                                        {"%2$s", "ss"},
                                        {"%3$s", "ss"},
                                        {"%s %1$s", "ss"},
                                        {"%", "s"},
                                        {"%-", "s"},
                                        {"%f", "d"},
                                        {"%1000000d", "d"},
                                        {"%.1000000s", "s"},
                                        {"%99999999999$s", "s"},
                                        {"%0$s", "s"}})
        EXPECT_FALSE(zvkTextFits(text, inserts)) << text;
    for (const char *text : {"%s %d of 100%%", "%*.*s and %8.3f", "%2$s %1$ld"})
        EXPECT_TRUE(zvkTextFits(text, nullptr)) << "a site's own: " << text;
    for (const char *text : {"%n", "%s %hn", "%", "%l", "%!"}) EXPECT_FALSE(zvkTextFits(text, nullptr)) << text;
}

// One line of a test's catalog source; the control record comes by itself.
struct Catalog {
    TemporaryDirectory directory;
    explicit Catalog(const string &source)
    {
        writeFile(directory.file("test.msg"), source);
        ChildRun run = runCommand({"gencat", directory.file("kvr2run.cat"), directory.file("test.msg")});
        EXPECT_EQ(run.status, 0) << run.err;
    }
    ChildOptions options() const { return {.env = {{"NLSPATH", directory.file("%N")}}}; }
};

// Opens the catalog anew in a child, as NLSPATH has it there, and writes.
ChildRun writing(const ChildOptions &options, const std::function<void()> &body)
{
    return runChild(
        [&] {
            zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
            setlocale(LC_ALL, "C"); // of single bytes, so that lines are wrapped
            zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
            body();
        },
        options);
}

// The typed calls take the inserts of their texts and no others.
template <auto call, class... Inserts>
constexpr bool takes = std::is_invocable_v<decltype(call), Inserts..., uint32_t>;
static_assert(takes<msg::badYearWindow, const char *, int32_t, int32_t>);
static_assert(!takes<msg::badYearWindow, int32_t, const char *, int32_t>, "in the wrong order");
static_assert(!takes<msg::badYearWindow, const char *, int64_t, int32_t>, "of the wrong width");
static_assert(!takes<msg::badYearWindow, const char *, int32_t>, "one too few");
static_assert(takes<msg::optionOutOfRange, const char *, const char *, long, long>);
static_assert(!takes<msg::optionOutOfRange, const char *, const char *, int, int>);
static_assert(!takes<msg::unknownOption, std::nullptr_t, uint32_t, int>);
static_assert(!takes<msg::unknownOption, const uint8_t *>);

TEST(Messages, LineFormAndSeverity)
{
    ChildRun run = writing({}, [] { zvkWriteMsg(168, 0); });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "ZVK168W  No file is assigned to SYSPUNCH. The text goes to the standard output.\n\n");
    run = writing({}, [] { zvkWriteMsg(903, ZVK_MSG_NO_TRACEBACK); });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_EQ(run.err, "ZVK903S  A packed or zoned decimal item holds data that is no number.\n"
                       "ZVK901S Program exits due to severe or critical error.\n\n");
    run = writing({}, [] { zvkWriteMsg(168, ZVK_MSG_SEVERE); });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_LT(run.err.find("  Traceback:\n"), run.err.find("    --- End of call chain ---\nZVK168W"));
    run = writing({}, [] { REQUIRE(zvkWriteMsg(96, ZVK_MSG_INFORM | 6, "LEDGER", "LEDGER", 0) == 0); });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err,
              "ZVK096C  Program LEDGER cannot be called: it was not found. Check the name and\n         COBPATH.\n\n");
    run = writing({}, [] {
        flockfile(stderr);
        REQUIRE(zvkWriteMsg(995, ZVK_MSG_NO_TRACEBACK | 1, "SIGSEGV", stderr) == 0xFFFFFFFF);
        std::thread([] { fputs("free", stderr); }).join(); // the second unlock gave the stream back
    });
    EXPECT_EQ(run.status, 0) << "message 995 comes back to the signal routine";
    EXPECT_TRUE(contains(run.err, "ZVK995C  ") && contains(run.err, "free"));
    run = writing({}, [] { _Dmr_ord_msg(); });
    EXPECT_TRUE(contains(run.err, "ZVK157S  FUNCTION ORD: "));
}

TEST(Messages, BudgetOfWarnings)
{
    ChildRun run = writing({}, [] {
        CompiledProgram main("MAIN");
        _zvkPgmInit(&main.pcb);
        _zvkProccom->runcom->errCount = 3;
        for (int i = 0; i < 3; i++) {
            fprintf(stderr, "%d\n", i);
            zvkWriteMsg(168, ZVK_MSG_NO_TRACEBACK);
        }
    });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_TRUE(contains(run.err, "2\nZVK168W"));
    EXPECT_TRUE(contains(run.err, "\nZVK901S Program exits: more than ERRCOUNT errors occurred.\n"));
    EXPECT_EQ(run.err.find("ZVK901S"), run.err.rfind("ZVK901S"));
}

TEST(Messages, TextIntoABuffer)
{
    char text[20] = "";
    EXPECT_EQ(zvkWriteMsg(171, ZVK_MSG_TO_STRING, text, sizeof text, "FOO"), 0u);
    EXPECT_STREQ(text, "Run-time option FOO");
    EXPECT_EQ(zvkWriteMsg(903, ZVK_MSG_TO_STRING, text, 1), 0u) << "no ending";
    EXPECT_STREQ(text, "");
    char eras[400];
    zvkWriteMsg(216, ZVK_MSG_TO_STRING, eras, sizeof eras);
    EXPECT_STREQ(eras, "5 {明治} 1868 10 23 45 {大正} 1912 7 30 15 {昭和} 1926 12 25 64 "
                       "{平成} 1989 1 8 31 {令和} 2019 5 1 7981")
        << "six bytes a name, whatever the locale";
    zvkWriteMsg(216, ZVK_MSG_TO_STRING | 1, eras, sizeof eras);
    EXPECT_STREQ(eras, "1 {民國} 1912 1 1 8088");
}

TEST(Messages, NothingIsWrappedInAMultibyteLocale)
{
    ChildRun run = runChild([] {
        REQUIRE(setlocale(LC_ALL, "C.utf8"));
        zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
        zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
        zvkWriteMsg(96, ZVK_MSG_INFORM | 6, "LEDGER", "LEDGER", 0);
    });
    EXPECT_GOOD(run);
    EXPECT_TRUE(contains(run.err, "Check the name and COBPATH.\n"));
}

TEST(Messages, WithoutACatalog)
{
    TemporaryDirectory empty;
    writeFile(empty.file("kvr2run.cat"), "this is no catalog");
    for (const string &path : {string("/nowhere/%N"), empty.file("%N")}) {
        ChildRun run = writing({.env = {{"NLSPATH", path}}}, [] { zvkWriteMsg(168, ZVK_MSG_NO_TRACEBACK); });
        EXPECT_EQ(run.signal, SIGABRT) << "the text of 994 is severe";
        EXPECT_EQ(run.err, "ZVK168Cannot find message catalog kvr2run.cat in NLSPATH. Message number is 168. Cannot "
                           "find message 994 in "
                           "kvr2run.cat\nZVK901S Program exits due to severe or critical error.\n\n")
            << "and not wrapped: what the locale is like is not known without a catalog";
    }
    ChildRun unreadable = writing({.env = {{"NLSPATH", empty.path()}}}, [] { zvkWriteMsg(168, ZVK_MSG_INFORM); });
    EXPECT_TRUE(contains(unreadable.err, "Message number is 168.")) << "a directory is no catalog: " << unreadable.err;
    // After the runtime's end the 256 bytes on the stack have to do.
    ChildRun run = runChild([] {
        zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
        zvkWriteMsg(171, ZVK_MSG_INFORM, string(5000, 'x').c_str());
        char text[10];
        zvkWriteMsg(171, ZVK_MSG_TO_STRING, text, sizeof text, "FOO");
    });
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_LE(run.err.size(), 400u);
}

TEST(Messages, BrokenCatalogsAreHarmless)
{
    Catalog broken("$set 9999\n1 F ABC wxyz  0x10\n$set 168\n1 1 %n%s%s%s\n$set 171\n1 1 %s %s %s\n$set 903\n1\n$set "
                   "902\n1 9 text\n$set "
                   "993\n1 1 %d %f\n"
                   "$set 994\n1 0 gone %s\n$set 26\n1 1 %3$d %2$d %1$s\n");
    ChildRun run = writing(broken.options(), [] {
        zvkWriteMsg(168, 0);
        zvkWriteMsg(171, 0, "FOO");
        zvkWriteMsg(26, 0, "PGM", 7, 8);
        zvkWriteMsg(12345678, ZVK_MSG_INFORM);
        zvkWriteMsg(903, ZVK_MSG_INFORM);
        zvkWriteMsg(902, ZVK_MSG_INFORM | 255);
    });
    // 994 itself is broken here, so its default text serves, and that is severe.
    EXPECT_EQ(run.signal, SIGABRT) << run.err;
    EXPECT_TRUE(contains(run.err, "ABC168y  Cannot find message 168 in kvr2run.cat")) << run.err;
    run = writing(broken.options(), [] {
        zvkWriteMsg(26, 0, "PGM", 7, 8);
        zvkWriteMsg(902, ZVK_MSG_NO_TRACEBACK);
    });
    EXPECT_TRUE(contains(run.err, "ABC026x  8 7 PGM\n")) << run.err;
    EXPECT_TRUE(contains(run.err, "ABC902z  text\n")) << "a digit that is no severity counts as 3: " << run.err;

    // Any byte of the compiled catalog damaged, and any truncation: no crash, whatever is said.
    string whole = readFile(string(getenv("KVR2_BUILD_DIR")) + "/usr/share/locale/C/kvr2run.cat");
    ASSERT_GT(whole.size(), 1000u);
    TemporaryDirectory directory;
    ChildRun damaged = runChild([&] {
        setenv("NLSPATH", directory.file("%N").c_str(), 1);
        auto tryIt = [&](const string &content) {
            zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
            writeFile(directory.file("kvr2run.cat"), content);
            zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
            char text[200];
            for (uint32_t number : {12u, 96u, 903u, 994u})
                zvkWriteMsg(number, ZVK_MSG_TO_STRING, text, sizeof text, "A", "B", 3);
        };
        for (size_t at = 0; at < 4000; at += at < 64 ? 1 : 37) {
            string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ 0xFF);
            tryIt(changed);
            tryIt(whole.substr(0, at));
        }
    });
    EXPECT_EQ(damaged.status, 0) << damaged.err << "signal " << damaged.signal;
}

// Offsets that leave the file only by a little are those that the system follows without a look.
TEST(Messages, NoTextOfADamagedCatalogLeavesTheFile)
{
    string whole = readFile(string(getenv("KVR2_BUILD_DIR")) + "/usr/share/locale/C/kvr2run.cat");
    uint32_t head[3];
    ASSERT_GT(whole.size(), sizeof head);
    memcpy(head, whole.data(), sizeof head);
    const uint32_t entries = head[1] * head[2];
    const size_t texts = sizeof head + 24 * size_t{entries};
    ASSERT_GT(whole.size(), texts);
    TemporaryDirectory directory;
    ChildRun run = runChild([&] {
        setenv("NLSPATH", directory.file("%N").c_str(), 1);
        auto tryIt = [&](const string &content, bool sound) {
            zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
            writeFile(directory.file("kvr2run.cat"), content);
            zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
            REQUIRE(zvkCatalogIsOpen() == sound);
            char text[200];
            zvkWriteMsg(903, ZVK_MSG_TO_STRING, text, sizeof text);
        };
        tryIt(whole, true);
        const auto size = static_cast<uint32_t>(whole.size() - texts);
        for (uint32_t beyond = 0; beyond < 24 * entries; beyond += beyond < 16 ? 1 : 501) {
            string changed = whole;
            uint32_t offset = size + beyond;
            memcpy(&changed[sizeof head + 12 * size_t{beyond % entries} + 8], &offset, sizeof offset);
            tryIt(changed, false);
        }
        string unended = whole;
        unended.back() = 'x';
        tryIt(unended, false);
    });
    EXPECT_EQ(run.status, 0) << run.err << "signal " << run.signal;
}

// Every text of the catalog takes exactly the inserts that the library knows for it.
TEST(Messages, EveryTextIsFormatted)
{
    struct Row {
        uint32_t number;
        int32_t variant;
        const char *inserts;
    };
    static const Row rows[] = {
#include "message_inserts.inc"
    };
    size_t texts = 0;
    for (const Row &row : rows) {
        uint64_t values[6] = {};
        for (size_t i = 0; row.inserts[i]; i++)
            values[i] = row.inserts[i] == 's' ? reinterpret_cast<uint64_t>("SOME-NAME") : 4711;
        for (uint32_t variant = 0; variant < 100; variant++) {
            if (row.variant >= 0 && static_cast<uint32_t>(row.variant) != variant) continue;
            bool own = false; // a row of the variant's own goes before the set's
            for (const Row &other : rows)
                own |= row.variant < 0 && other.number == row.number && other.variant == static_cast<int32_t>(variant);
            if (own) continue;
            if (!zvkCatalogText(row.number, variant)) {
                EXPECT_FALSE(variant == 0 && row.variant < 0 && row.number != 201)
                    << row.number << " has no text that fits its inserts";
                continue;
            }
            char text[512] = "";
            zvkWriteMsg(row.number, ZVK_MSG_TO_STRING | variant, text, sizeof text, values[0], values[1], values[2],
                        values[3], values[4], values[5]);
            EXPECT_FALSE(contains(text, "Cannot find message") && row.number != 994) << row.number << ": " << text;
            EXPECT_GT(strlen(text), 10u) << row.number;
            texts++;
        }
    }
    EXPECT_GT(texts, 130u);
}

TEST(Messages, ALongInsertLeavesRoomForTheEnding)
{
    static const string option(9000, 'x');
    ChildRun run = writing({}, [] { zvkWriteMsg(171, ZVK_MSG_NO_TRACEBACK | ZVK_MSG_SEVERE, option.c_str()); });
    EXPECT_EQ(run.signal, SIGABRT);
    EXPECT_TRUE(contains(run.err, "x\nZVK901S Program exits due to severe or critical error.\n\n"));
    EXPECT_LE(run.err.size(), 4096u);
}

TEST(Messages, ASiteMayHaveNumbersOfItsOwn)
{
    Catalog own("$set 5000\n1 1 Order %d of %s: %.2f\n");
    ChildRun run = writing(own.options(), [] {
        REQUIRE(_zvkWriteERRmsg(5000, 0, 7, "LEDGER", 1.5) == 0);
        // Relative to the working directory, too.
        REQUIRE(chdir(getenv("NLSPATH") ? string(getenv("NLSPATH"), strlen(getenv("NLSPATH")) - 3).c_str() : "/") == 0);
        setenv("NLSPATH", "%N", 1);
        zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
        zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
        zvkWriteMsg(5000, 0, 8, "JOURNAL", 0.25);
    });
    EXPECT_EQ(run.err, "ZVK5000W Order 7 of LEDGER: 1.50\n\nZVK5000W Order 8 of JOURNAL: 0.25\n\n");
}

struct Sent {
    int32_t exiting;
    string text;
};
std::vector<Sent> sent;

void collect(int32_t exiting, const char *facility, const char *text, uint32_t length, uint64_t token)
{
    REQUIRE(string(facility) == "QRNB" && token == 77);
    sent.push_back({exiting, string(text, length)});
}

TEST(Messages, HostsRoutineGetsThem)
{
    ChildRun run = writing({}, [] {
        uint32_t rc = 0;
        _zvkCOBOLInit1(
            1, nullptr, &rc, 77, collect,
            [](uint64_t) {
                REQUIRE(sent.size() == 2 && sent[1].exiting == 1 && contains(sent[1].text, "ZVK901S"));
                _exit(3);
            },
            0);
        CompiledProgram sub("SUB");
        _zvkPgmInit(&sub.pcb);
        zvkWriteMsg(168, 0);
        REQUIRE(sent.size() == 1 && sent[0].exiting == 0 && contains(sent[0].text, "ZVK168W") &&
                sent[0].text.substr(sent[0].text.size() - 2) == "\n\n");
        zvkWriteMsg(903, ZVK_MSG_NO_TRACEBACK);
    });
    EXPECT_EQ(run.status, 3) << run.err;
    EXPECT_FALSE(contains(run.err, "ZVK168"));

    run = writing({}, [] {
        CompiledProgram task("TASK");
        _zvk_cpm_init(collect, 0);
        _zvkProccom->runcom->token = 77;
        static const string option(70, 'x'); // the jump to the epilogue destroys nothing
        REQUIRE(compiledMain(task, [] { zvkWriteMsg(171, ZVK_MSG_NO_TRACEBACK | ZVK_MSG_SEVERE, option.c_str()); }) ==
                6);
        REQUIRE(sent.size() >= 3 &&
                sent.back().text.substr(0, 7) == "ZVK901S"); // line by line, none of them a newline alone
        for (const Sent &line : sent) {
            REQUIRE(!contains(line.text, "\n") && !line.text.empty());
            REQUIRE(line.exiting == (&line == &sent.back()));
        }
    });
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Messages, MessageStreamIsAFileWhereCobmsgsSaysSo)
{
    TemporaryDirectory directory;
    ChildRun run =
        writing({.env = {{"COBMSGS", "log%"}, {"COBOUTDIR", directory.path()}}}, [] { zvkWriteMsg(168, 0); });
    EXPECT_EQ(run.err, "");
    std::optional<string> file =
        groupOf(run.out, "Creating COBMSGS file: (.*/log\\.[0-9]{8}\\.[0-9]{6}\\.[0-9]{6}[+-][0-9]{4}\\.[0-9]+)\n");
    ASSERT_TRUE(file) << run.out;
    EXPECT_TRUE(contains(readFile(*file), "ZVK168W"));
    run = writing({.env = {{"COBMSGS", "/nowhere/at/all"}}}, [] { zvkWriteMsg(168, 0); });
    EXPECT_TRUE(contains(run.err, "ZVK168W")) << "a file that cannot be opened leaves stderr";
    EXPECT_TRUE(contains(run.err, "ZVK183I  The file of COBMSGS, /nowhere/at/all, cannot be opened")) << run.err;
    run = writing({.env = {{"COBMSGS", "log%"}, {"COBOUTDIR", "/nowhere"}}}, [] { zvkWriteMsg(168, 0); });
    EXPECT_TRUE(contains(run.err, "ZVK168W"));
    EXPECT_EQ(run.out, "") << "no file is announced that is not there";
}

// A disk that was full for a while, say: a write that failed is no reason to be silent for good.
TEST(Messages, AStreamThatFailedOnceIsTriedAgain)
{
    ChildRun run = writing({}, [] {
        int own = dup(2), full = open("/dev/full", O_WRONLY);
        REQUIRE(own >= 0 && full >= 0 && dup2(full, 2) == 2);
        zvkWriteMsg(168, 0);
        REQUIRE(ferror(stderr) && dup2(own, 2) == 2);
        zvkWriteMsg(168, 0);
    });
    EXPECT_GOOD(run);
    EXPECT_TRUE(contains(run.err, "ZVK168W")) << run.err;
}

// Each device's file that cannot be opened is told of once, and the program goes on.
TEST(Messages, DeviceFilesThatCannotBeOpened)
{
    TemporaryDirectory directory;
    ChildRun run = writing({.env = {{"SYSOUT", "/nowhere/out"}, {"SYSIN", directory.file("absent")}}}, [] {
        for (int i = 0; i < 2; i++)
            for (uint8_t letter : {'O', 'I'}) openDeviceStream(letter);
    });
    EXPECT_GOOD(run);
    const string flat = oneLine(run.err);
    for (const string &told : {string("SYSOUT, /nowhere/out, cannot be opened: No such file or directory. Instead the "
                                      "standard output is used."),
                               "SYSIN, " + directory.file("absent") + ", cannot"}) {
        EXPECT_TRUE(contains(flat, told)) << told << "\n" << flat;
        EXPECT_EQ(flat.find(told), flat.rfind(told));
    }
}

TEST(Messages, NlspathMayNameADirectory)
{
    Catalog own("$set 5001\n1 1 Found in the directory.\n");
    for (const string &path : {own.directory.path(), "/nowhere:" + own.directory.path() + "/"}) {
        ChildRun run = writing({.env = {{"NLSPATH", path}}}, [] { zvkWriteMsg(5001, 0); });
        EXPECT_EQ(run.err, "ZVK5001W Found in the directory.\n\n") << path;
    }
}

TEST(Traceback, SourceLinesOfAnObjectOfAnyName)
{
    TemporaryDirectory directory;
    const string object = directory.file("it's $(touch trap).so");
    writeFile(directory.file("hop.c"), "void hop(void (*back)(void)) { back(); __asm__(\"\"); }\n");
    ChildRun built = runCommand({"cc", "-g", "-O0", "-shared", "-fPIC", "-o", object, directory.file("hop.c")});
    ASSERT_EQ(built.status, 0) << built.err;
    auto hop = [&] {
        void *handle = dlopen(object.c_str(), RTLD_NOW);
        REQUIRE(handle);
        reinterpret_cast<void (*)(void (*)())>(dlsym(handle, "hop"))([] { zvkTraceback(0, nullptr); });
    };
    ChildRun lines = runChild(hop, {.env = {{"traceback_lines", "1"}}, .directory = directory.path()});
    EXPECT_EQ(lines.status, 0);
    EXPECT_TRUE(contains(lines.out, "hop.c:1")) << lines.out << lines.err;
    EXPECT_TRUE(contains(lines.err, "  Traceback:\n") && contains(lines.err, "    --- End of call chain ---\n"));
    EXPECT_NE(access(directory.file("trap").c_str(), F_OK), 0) << "the shell must not read the object's name";
    for (const char *off : {"0", ""}) {
        ChildRun plain = runChild(hop, {.env = {{"traceback_lines", off}}});
        EXPECT_EQ(plain.out, "");
        EXPECT_TRUE(contains(plain.err, "(hop+0x")) << plain.err;
    }
}

// Eight threads write long messages at once; the texts may mix, nothing is written beyond them.
TEST(Messages, ManyThreadsAtOnce)
{
    ChildRun run = runChild(
        [] {
            const string name(1500, 'n'), value(1500, 'v');
            std::vector<std::thread> threads;
            for (int t = 0; t < 8; t++)
                threads.emplace_back([&] {
                    for (int i = 0; i < 200; i++)
                        zvkWriteMsg(181, ZVK_MSG_NO_TRACEBACK | ZVK_MSG_INFORM, value.c_str(), name.c_str());
                });
            for (std::thread &thread : threads) thread.join();
        },
        {.env = {{"COBMSGS", "/dev/null"}}});
    EXPECT_GOOD(run);
}

// A number beyond what a 64-bit integer holds is refused by message 182, with its own range.
TEST(Messages, RangesBeyond32Bits)
{
    ChildRun run = runChild(
        [] {
            uint32_t rc;
            _zvkCOBOLHostInit(&rc);
        },
        {.env = {{"COBRTOPT", "ERRCOUNT=99999999999999999999"}}});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("ZVK182I"), string::npos) << run.err;
}

} // namespace
