// Catches: input lines that are cut, joined or dropped wrongly in either mode; a target that is
// changed when nothing came, not padded, or padded in the wrong form; a prompt that is not visible
// before the read blocks; a failed read that is not reported; clock forms; a STOP that does not
// wait.
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kvr2/console.h"
#include "support/child.h"
#include "support/guarded.h"
#include "verbs/accept_clock.h"
#include "verbs/console_fixture.h"

namespace {

ChildRun inConsole(const std::function<void()> &body, const std::string &input = "", ChildOptions options = {})
{
    for (const char *name : {"SYSOUT", "SYSLIST", "SYSLST", "SYSIN", "SYSIPT", "CONSOLE"})
        options.env.insert(options.env.begin(), {name, std::nullopt});
    options.input = input;
    return runChild(
        [&] {
            freshConsole();
            _zvkProccom->runtimeOptions &= ~uint32_t{ZVK_OPTION_ACCEPT_NEW};
            body();
        },
        options);
}

// Accepts into an item of dots and prints it between brackets.
void acceptAndShow(size_t length, uint32_t flags = ZVK_ACCEPT_SYSIN)
{
    GuardedItem item(length);
    memset(item.data(), '.', length);
    _zvkcAccept(flags, static_cast<int64_t>(length), item.data());
    printf("[%.*s]", static_cast<int>(length), reinterpret_cast<char *>(item.data()));
}

void setLineMode() { _zvkProccom->runtimeOptions |= ZVK_OPTION_ACCEPT_NEW; }

TEST(Accept, ContinuousMode)
{
    auto run = inConsole(
        [] {
            acceptAndShow(4);
            acceptAndShow(3);
            acceptAndShow(4); // the input ends inside
            acceptAndShow(2); // and has ended
        },
        "AB\nCD\n\n\nEFG\nHI");
    EXPECT_EQ(run.out, "[ABCD][EFG][HI  ][..]");
    EXPECT_EQ(run.err, "");
}

TEST(Accept, LineMode)
{
    auto run = inConsole(
        [] {
            setLineMode();
            acceptAndShow(4);                     // padded
            acceptAndShow(4, ZVK_ACCEPT_CONSOLE); // an empty line leaves all as it was
            acceptAndShow(2);                     // the rest of the line is dropped
            acceptAndShow(2);                     // a line that fits exactly
            acceptAndShow(9);                     // no last newline
            acceptAndShow(2);
        },
        "AB\n\nCDEFG\nHI\nJ\xC3\xA4 K");
    EXPECT_EQ(run.out, "[AB  ][....][CD][HI][J\xC3\xA4 K    ][..]");
}

TEST(Accept, LengthsAndDbcsPadding)
{
    auto run = inConsole(
        [] {
            setLineMode();
            uint8_t item[4] = "...";
            _zvkcAccept(ZVK_ACCEPT_SYSIN, 0, item);
            _zvkcAccept(ZVK_ACCEPT_SYSIN, -4, item);
            printf("[%s]", item);
            _zvkProccom->ccsid = 47; // its DBCS blank is 0xA1 0x40
            acceptAndShow(6, ZVK_ACCEPT_SYSIN | ZVK_ACCEPT_DBCS);
            acceptAndShow(5, ZVK_ACCEPT_SYSIN | ZVK_ACCEPT_DBCS); // an odd rest
            _zvkProccom->ccsid = -1;                              // chosen now, EN_US
            acceptAndShow(4, ZVK_ACCEPT_SYSIN | ZVK_ACCEPT_DBCS);
            printf("%d", _zvkProccom->ccsid);
        },
        "AB\nCD\nEF\n");
    EXPECT_EQ(run.out, "[...][AB\xA1\x40\xA1\x40][CD   ][EF  ]8");
}

TEST(Accept, LongFieldsFromAFile)
{
    TemporaryDirectory directory;
    std::string line(1000, 'x'), all;
    for (int i = 0; i < 200; i++) all += line + "\n";
    writeFile(directory.file("in"), all);
    ChildOptions options;
    options.env = {{"SYSIPT", directory.file("in")}};
    auto run = inConsole([] { acceptAndShow(150000); }, "", options);
    EXPECT_EQ(run.out, "[" + std::string(150000, 'x') + "]");
    options.env = {{"SYSIN", directory.file("missing")}}; // falls back on stdin
    run = inConsole([] { acceptAndShow(3); }, "abc", options);
    EXPECT_EQ(run.out, "[abc]");
}

TEST(Accept, AFailedReadIsReported)
{
    TemporaryDirectory directory;
    ChildOptions options;
    options.env = {{"SYSIN", directory.path()}}; // a directory opens, but does not read
    auto run = inConsole([] { acceptAndShow(3); }, "", options);
    EXPECT_NE(run.err.find("ZVK200"), std::string::npos);
    run = inConsole(
        [] {
            uint64_t length = 3;
            uint16_t item[3];
            _zvkAcceptUnicode(0, &length, item);
        },
        "", options);
    EXPECT_NE(run.err.find("ZVK200"), std::string::npos);
    run = inConsole([] { _zvkcStopLiteral(4, reinterpret_cast<const uint8_t *>("stop")); }, "", options);
    EXPECT_NE(run.err.find("ZVK200"), std::string::npos);
    EXPECT_EQ(run.out.substr(0, 5), "stop\n");
}

// With the terminal's other end in hand: what the program shows before it waits, and what it reads.
TEST(Accept, FromATerminal)
{
    fflush(nullptr);
    int terminal = -1;
    pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        for (const char *name : {"SYSOUT", "SYSIN", "CONSOLE"}) unsetenv(name);
        freshConsole();
        setvbuf(stdout, nullptr, _IOFBF, 4096);
        std::string prompt = "Name?";
        DisplayItem item{prompt.data(), prompt.size(), 0, ZVK_DISPLAY_TEXT, 0};
        DisplayRequest request{1, ZVK_DISPLAY_SYSOUT, ZVK_DISPLAY_NO_ADVANCING, '.', 0};
        _zvkcDisplay(&request, &item);
        acceptAndShow(6);
        fflush(stdout);
        acceptAndShow(6); // what did not fit of the first line is gone
        fflush(stdout);
        _exit(0);
    }
    auto readUntil = [&](const std::string &wanted) {
        std::string seen;
        char buffer[256];
        while (seen.find(wanted) == std::string::npos) {
            ssize_t got = read(terminal, buffer, sizeof buffer);
            if (got <= 0) return false;
            seen.append(buffer, static_cast<size_t>(got));
        }
        return true;
    };
    alarm(600);
    EXPECT_TRUE(readUntil("Name?")); // shown though the line is not ended, or this waits for ever
    ASSERT_EQ(write(terminal, "overlong line\n", 14), 14);
    EXPECT_TRUE(readUntil("[overlo]"));
    ASSERT_EQ(write(terminal, "ok\n", 3), 3);
    EXPECT_TRUE(readUntil("[ok    ]"));
    alarm(0);
    int status = -1;
    waitpid(pid, &status, 0);
    EXPECT_EQ(status, 0);
    close(terminal);
}

void acceptNationalAndShow(uint64_t units, int32_t flags = 0)
{
    GuardedItem item(2 * units);
    for (uint64_t i = 0; i < 2 * units; i++) item.data()[i] = '.';
    _zvkAcceptUnicode(flags, &units, reinterpret_cast<uint16_t *>(item.data()));
    printf("[");
    fwrite(item.data(), 1, 2 * units, stdout);
    printf("]");
}

std::string wide(const char *narrow)
{
    std::string result;
    for (; *narrow; narrow++) result += std::string{*narrow, '\0'};
    return result;
}

TEST(AcceptNational, ModesAndDroppedLines)
{
    auto run = inConsole(
        [] {
            acceptNationalAndShow(3);
            acceptNationalAndShow(3); // short: the rest keeps its content
        },
        wide("A\nB\nC\nD"));
    EXPECT_EQ(run.out, "[" + wide("ABC") + "][" + wide("D") + "....]");
    run = inConsole(
        [] {
            setLineMode();
            acceptNationalAndShow(2);
            acceptNationalAndShow(2, ZVK_ACCEPT_CONSOLE);
            if (!_zvkProccom->sysout) exit(3); // bound as well
        },
        wide("ABCD\nXY"));
    EXPECT_EQ(run.status, 0);
    // The rest of the line is dropped up to the byte 0x0A: the zero after it is then the low byte
    // of the next unit.
    EXPECT_EQ(run.out, "[" + wide("AB") + "]" + std::string("[\0X\0Y]", 6));
}

TEST(AcceptClock, Forms)
{
    tm sunday{};
    sunday.tm_year = 124;
    sunday.tm_mon = 11;
    sunday.tm_mday = 29;
    sunday.tm_yday = 363;
    sunday.tm_hour = 7;
    sunday.tm_min = 8;
    sunday.tm_sec = 9;
    auto form = [&](uint32_t flags) { return std::string(zvkClockText(flags, sunday, 987654).text); };
    EXPECT_EQ(form(ZVK_ACCEPT_DATE), "241229");
    EXPECT_EQ(form(ZVK_ACCEPT_DATE | ZVK_ACCEPT_LONG_YEAR), "20241229");
    EXPECT_EQ(form(ZVK_ACCEPT_DAY), "24364");
    EXPECT_EQ(form(ZVK_ACCEPT_DAY | ZVK_ACCEPT_LONG_YEAR | ZVK_ACCEPT_TIME), "2024364");
    EXPECT_EQ(form(ZVK_ACCEPT_TIME | ZVK_ACCEPT_DAY_OF_WEEK), "07080998");
    EXPECT_EQ(form(ZVK_ACCEPT_DAY_OF_WEEK), "7");
    sunday.tm_wday = 3;
    EXPECT_EQ(form(ZVK_ACCEPT_DAY_OF_WEEK), "3");
    EXPECT_EQ(form(ZVK_ACCEPT_LONG_YEAR), "");
}

TEST(AcceptClock, CutsAndPads)
{
    auto accept = [](uint32_t flags, int64_t length) {
        char item[16] = "...............";
        _zvkcAccept(flags, length, reinterpret_cast<uint8_t *>(item));
        return std::string(item);
    };
    EXPECT_EQ(accept(ZVK_ACCEPT_DAY_OF_WEEK, 3).substr(1), "  ............");
    EXPECT_EQ(accept(ZVK_ACCEPT_TIME, 4).substr(4), "...........");
    EXPECT_EQ(accept(ZVK_ACCEPT_TIME, 4).find_first_not_of("0123456789"), 4u);
    EXPECT_EQ(accept(ZVK_ACCEPT_DATE, 0), "...............");
    EXPECT_EQ(accept(0, 5), "...............");
}

TEST(StopLiteral, ShowsAndWaitsForALine)
{
    auto run = inConsole(
        [] {
            _zvkcStopLiteral(6, reinterpret_cast<const uint8_t *>("mount!"));
            acceptAndShow(4);
            _zvkcStopLiteral(0, nullptr); // the input has ended
        },
        "a long answer\nnext");
    EXPECT_EQ(run.out, "mount!\n[next]\n");
    EXPECT_EQ(run.err, "");
}

} // namespace
