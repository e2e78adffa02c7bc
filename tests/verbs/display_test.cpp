// Catches: a number's text that is wrong in digits, sign, exponent or width; items shown after an
// invalid one, or not shown after a null one; lines of threads that mix; text of one device in the
// file of another; a message that overtakes the text before it; a process that dies of a full disk,
// a closed pipe or a device that is missing; text that signals, or pipes that do
// not wait, tear.
#include <cfloat>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <quadmath.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

#include "kvr2/console.h"
#include "support/child.h"
#include "support/guarded.h"
#include "verbs/console_fixture.h"

namespace {

constexpr uint32_t kFloat = ZVK_DISPLAY_FLOAT, kText = ZVK_DISPLAY_TEXT, kSigned = ZVK_DISPLAY_SIGNED_BINARY,
                   kUnsigned = ZVK_DISPLAY_UNSIGNED_BINARY;

DisplayItem text(const std::string &value) { return {value.data(), value.size(), 0, kText, 0}; }

void display(std::vector<DisplayItem> items, uint8_t device = ZVK_DISPLAY_SYSOUT, uint8_t options = 0)
{
    DisplayRequest request{static_cast<int32_t>(items.size()), device, options, '.', 0};
    _zvkcDisplay(&request, items.data());
}

// The text of one item, through the capture hook; "!" for an invalid one.
std::string captured(const void *address, uint64_t size, uint64_t width, uint32_t kind, char point = '.')
{
    static FILE *nowhere = fopen("/dev/null", "w");
    freshConsole();
    _zvkProccom->sysout = nowhere;
    DisplayItem item{address, size, width, kind, 0};
    DisplayRequest request{1, ZVK_DISPLAY_SYSOUT, 0, static_cast<uint8_t>(point), 0};
    uint8_t buffer[2048];
    _zvkDebugBuf = buffer;
    _zvkDebugBufLen = 0;
    _zvkcDisplay(&request, &item);
    _zvkDebugBuf = nullptr;
    EXPECT_EQ(item.width, _zvkDebugBufLen);
    return {reinterpret_cast<char *>(buffer), _zvkDebugBufLen};
}

template <class T>
std::string binary(T value, uint64_t width)
{
    GuardedItem item(sizeof value);
    memcpy(item.data(), &value, sizeof value);
    return captured(item.data(), sizeof value, width, std::is_signed_v<T> ? kSigned : kUnsigned);
}

template <class T>
std::string floating(T value, uint64_t width, char point = '.')
{
    GuardedItem item(sizeof value);
    memcpy(item.data(), &value, sizeof value);
    return captured(item.data(), sizeof value, width, kFloat, point);
}

TEST(DisplayText, BinaryNumbers)
{
    EXPECT_EQ(binary<int32_t>(12345, 9), "000012345");
    EXPECT_EQ(binary<int32_t>(-12345, 5), "-12345");
    EXPECT_EQ(binary<int32_t>(-12345, 3), "-345"); // digits in front are lost
    EXPECT_EQ(binary<int16_t>(-1, 4), "-0001");
    EXPECT_EQ(binary<int8_t>(-128, 3), "-128");
    EXPECT_EQ(binary<uint8_t>(200, 3), "200");
    EXPECT_EQ(binary<uint16_t>(65535, 5), "65535");
    EXPECT_EQ(binary<int64_t>(INT64_MIN, 19), "-9223372036854775808");
    EXPECT_EQ(binary<uint64_t>(UINT64_MAX, 20), "18446744073709551615");
    EXPECT_EQ(binary<uint64_t>(7, 30), "000000000000000000000000000007");
    EXPECT_EQ(binary<int32_t>(-5, 0), "-");
    const int32_t four = -70000;
    const int64_t eight = 1234567890123;
    EXPECT_EQ(captured(&four, 3, 5, kSigned), "-70000"); // 3 bytes are in 4
    EXPECT_EQ(captured(&eight, 5, 13, kUnsigned), "1234567890123");
    EXPECT_EQ(captured(&eight, 8, 4, kUnsigned), "0123");
    EXPECT_LE(captured(&eight, 8, 1u << 20, kUnsigned).size(), 1024u);
}

TEST(DisplayText, FloatingPointNumbers)
{
    EXPECT_EQ(floating(1.5, 4), " .1500E 01");
    EXPECT_EQ(floating(0.15, 4), " .1500E 00");
    EXPECT_EQ(floating(0.015, 4), " .1500E-01");
    EXPECT_EQ(floating(-1.5f, 7), "-.1500000E 01");
    EXPECT_EQ(floating(0.0, 3), " .000E 01");
    EXPECT_EQ(floating(1e99, 2), " .10E 100");
    EXPECT_EQ(floating(1e-100, 2), " .10E-99");
    EXPECT_EQ(floating(1e-10, 2), " .10E-09");
    EXPECT_EQ(floating(DBL_MAX, 17), " .17976931348623157E 309");
    EXPECT_EQ(floating(2.25, 3, ','), " ,225E 01");
    EXPECT_EQ(floating(7.0, 1), " .7E 01");
    __float128 third = 1;
    third /= 3;
    EXPECT_EQ(floating(third, 34), " .3333333333333333333333333333333333E 00");
    EXPECT_EQ(floating(-third, 34), "-.3333333333333333333333333333333333E 00");
    __float128 large = 1;
    for (int i = 0; i < 4000; i++) large *= 10;
    EXPECT_EQ(floating(large, 5), " .10000E 4001");
    for (uint64_t width : {0ull, 1000ull, 5000ull, ~0ull}) EXPECT_LE(floating(1.5, width).size(), 1024u);
}

TEST(DisplayText, NoNumbersAndInfinities)
{
    EXPECT_EQ(floating(-std::numeric_limits<double>::infinity(), 9), "Infinity");
    EXPECT_EQ(floating(std::numeric_limits<float>::infinity(), 9), "Infinity");
    EXPECT_EQ(floating(-std::numeric_limits<double>::quiet_NaN(), 9), "NaN");
    __float128 infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(floating(infinite, 9), "Infinity");
    EXPECT_EQ(floating(infinite - infinite, 9), "NaN");
    EXPECT_EQ(captured(nullptr, 4, 4, 99), "(NULL)");
}

ChildRun inConsole(const std::function<void()> &body, ChildOptions options = {})
{
    for (const char *name : {"SYSOUT", "SYSLIST", "SYSLST", "SYSPUNCH", "SYSPCH", "SYSIN", "SYSIPT", "CONSOLE",
                             "COBOUTDIR", "COBOL_DISPLAY_FLUSH"})
        options.env.insert(options.env.begin(), {name, std::nullopt});
    return runChild(
        [&] {
            signal(SIGPIPE, SIG_IGN); // as it is in a run unit
            freshConsole();
            body();
        },
        options);
}

TEST(Display, ItemsAndLineEnd)
{
    int32_t number = -42;
    ChildRun run = inConsole([&] {
        display({text("A="),
                 {&number, 4, 3, kSigned, 0},
                 {nullptr, 5, 5, kText, 0},
                 {"xyz", 3, 0, 4, 0},
                 {"!", 1, 0, 5, 0}});
        display({});
        display({text("no end")}, ZVK_DISPLAY_CONSOLE, ZVK_DISPLAY_NO_ADVANCING);
        display({}, ZVK_DISPLAY_SYSOUT, ZVK_DISPLAY_NO_ADVANCING);
        display({text("|")});
        DisplayRequest negative{-5, ZVK_DISPLAY_SYSOUT, 0, '.', 0};
        _zvkcDisplay(&negative, nullptr);
    });
    EXPECT_EQ(run.out, "A=-042(NULL)xyz!\n\nno end|\n\n");
    EXPECT_EQ(run.err, "");
}

TEST(Display, AnInvalidItemEndsTheStatementAndIsReportedAfterIt)
{
    for (auto [kind, size] :
         {std::pair<uint32_t, uint64_t>{0, 4}, {6, 4}, {8, 4}, {kSigned, 0}, {kUnsigned, 9}, {kFloat, 10}}) {
        ChildRun run = inConsole([kind = kind, size = size] {
            setvbuf(stdout, nullptr, _IONBF, 0);
            display({text("before "), {"datadatadata", size, 4, kind, 0}, text("behind")});
        });
        EXPECT_EQ(run.out, "before \n") << kind;
        EXPECT_NE(run.err.find("ZVK170"), std::string::npos) << kind;
    }
}

TEST(Display, DevicesThatAreMissing)
{
    ChildRun run = inConsole([] { display({text("card")}, ZVK_DISPLAY_SYSPUNCH); });
    EXPECT_EQ(run.out, "card\n");
    EXPECT_NE(run.err.find("ZVK168"), std::string::npos);
    for (uint8_t device : {0, 4, 255}) {
        run = inConsole([device] { display({text("nothing")}, device); });
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("ZVK169"), std::string::npos);
    }
}

TEST(Display, EachDeviceHasItsFile)
{
    TemporaryDirectory directory;
    ChildOptions options;
    options.directory = directory.path();
    options.env = {{"SYSLIST", "./list"}, {"SYSPCH", "./cards"}, {"CONSOLE", "./console"}};
    for (int round = 0; round < 2; round++) {
        ChildRun run = inConsole(
            [] {
                display({text("list")}, ZVK_DISPLAY_SYSOUT);
                display({text("card")}, ZVK_DISPLAY_SYSPUNCH);
                display({text("console")}, ZVK_DISPLAY_CONSOLE);
            },
            options);
        EXPECT_EQ(run.out + run.err, "");
    }
    EXPECT_EQ(readFile(directory.file("list")), "list\nlist\n");
    EXPECT_EQ(readFile(directory.file("cards")), "card\n"); // written anew, the others are added to
    EXPECT_EQ(readFile(directory.file("console")), "console\nconsole\n");

    chmod(directory.file("list").c_str(), 0);
    options.env = {{"SYSOUT", "/no/such/directory/file"}, {"SYSPUNCH", "/no/such/directory/file"}};
    ChildRun run = inConsole(
        [] {
            display({text("falls back")});
            display({text("card")}, ZVK_DISPLAY_SYSPUNCH);
        },
        options);
    EXPECT_EQ(run.out, "falls back\ncard\n");
    EXPECT_NE(run.err.find("ZVK168"), std::string::npos);
}

TEST(Display, AFullDiskAndAClosedPipeAreBorneInSilence)
{
    ChildOptions options;
    options.env = {{"SYSOUT", "/dev/full"}, {"COBOL_DISPLAY_FLUSH", "1"}};
    ChildRun run = inConsole(
        [] {
            std::string large(100000, 'x');
            for (int i = 0; i < 3; i++) display({text("lost"), text(large), text("lost as well")});
            fputs("alive", stderr);
        },
        options);
    EXPECT_EQ(run.err, "alive");
    EXPECT_EQ(run.status, 0);
    run = inConsole([] {
        int ends[2];
        if (pipe(ends) != 0) exit(3);
        close(ends[0]);
        _zvkProccom->sysout = fdopen(ends[1], "w");
        setvbuf(_zvkProccom->sysout, nullptr, _IONBF, 0);
        for (int i = 0; i < 3; i++) display({text("nobody reads"), text("this")});
        fputs("alive", stderr);
    });
    EXPECT_EQ(run.err, "alive");
    EXPECT_EQ(run.status, 0);
}

// Displays 500 lines into a pipe whose reader is slower. Exits with 4 where bytes are missing.
void displayToASlowReader(bool buffered, bool blocking)
{
    int ends[2];
    if (pipe(ends) != 0 || (!blocking && fcntl(ends[1], F_SETFL, O_NONBLOCK) != 0)) exit(3);
    _zvkProccom->sysout = fdopen(ends[1], "w");
    if (!buffered) setvbuf(_zvkProccom->sysout, nullptr, _IONBF, 0);
    sigset_t timer;
    sigemptyset(&timer);
    sigaddset(&timer, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &timer, nullptr); // the writer is to be interrupted, not the reader
    std::string line(1000, 'x'), all;
    std::thread reader([&] {
        char buffer[4096];
        for (ssize_t got; (got = read(ends[0], buffer, sizeof buffer)) > 0;) {
            all.append(buffer, static_cast<size_t>(got));
            usleep(200);
        }
    });
    pthread_sigmask(SIG_UNBLOCK, &timer, nullptr);
    for (int i = 0; i < 500; i++) display({text(line)});
    pthread_sigmask(SIG_BLOCK, &timer, nullptr);
    fcntl(ends[1], F_SETFL, 0);
    fclose(_zvkProccom->sysout);
    _zvkProccom->sysout = nullptr;
    reader.join();
    if (all.size() != 500 * 1001) exit(4);
}

TEST(Display, ABusyPipeIsWaitedFor)
{
    ChildRun run = inConsole([] {
        displayToASlowReader(false, false);
        displayToASlowReader(true, false);
    });
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Display, ATimerOfTheHostLosesNothing)
{
    ChildRun run = inConsole([] {
        struct sigaction ignoring {};
        ignoring.sa_handler = [](int) {};
        sigaction(SIGALRM, &ignoring, nullptr); // without SA_RESTART
        itimerval often{{0, 100}, {0, 100}};
        setitimer(ITIMER_REAL, &often, nullptr);
        displayToASlowReader(true, true);
        displayToASlowReader(false, true);
    });
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Display, FlushesWhenAskedTo)
{
    for (const char *value : {"1", "1x", "0", "yes", ""}) {
        ChildOptions options;
        options.env = {{"COBOL_DISPLAY_FLUSH", value}};
        ChildRun run = inConsole(
            [] {
                display({text("shown")});
                display({}, ZVK_DISPLAY_SYSOUT, ZVK_DISPLAY_NO_ADVANCING);
                syscall(SYS_exit_group, 0); // what is still buffered is lost; _exit saves it under a sanitizer
            },
            options);
        EXPECT_EQ(run.out, *value == '1' ? "shown\n" : "") << value;
    }
}

TEST(Display, MessagesStandBeforeTheText)
{
    ChildRun run = inConsole([] {
        dup2(1, 2); // both into one pipe, to see the order
        setvbuf(stderr, nullptr, _IOFBF, 4096);
        setvbuf(stdout, nullptr, _IONBF, 0);
        _zvkProccom->msgs = stderr;
        fputs("message ", stderr);
        display({text("text")});
    });
    EXPECT_EQ(run.out, "message text\n");
}

TEST(Display, TheCaptureTakesTheFirstItemOnly)
{
    ChildRun run = inConsole([] {
        uint8_t buffer[16] = "..............";
        _zvkDebugBuf = buffer;
        display({text("first"), text("second")});
        _zvkDebugBuf = nullptr;
        printf("[%.8s %u]", reinterpret_cast<char *>(buffer), _zvkDebugBufLen);
    });
    EXPECT_EQ(run.out, "\n[first... 5]");
}

TEST(Display, LinesOfThreadsStayWhole)
{
    TemporaryDirectory directory;
    ChildOptions options;
    options.env = {{"SYSOUT", directory.file("out")}};
    ChildRun run = inConsole(
        [] {
            std::vector<std::thread> threads;
            for (int id = 0; id < 8; id++)
                threads.emplace_back([id] {
                    std::string piece(37, static_cast<char>('a' + id));
                    for (int i = 0; i < 500; i++) display({text(piece), text(piece), text(piece)});
                });
            for (std::thread &each : threads) each.join();
        },
        options);
    EXPECT_EQ(run.status, 0) << run.err;
    std::string all = readFile(directory.file("out"));
    ASSERT_EQ(all.size(), 8u * 500 * 112);
    for (size_t at = 0; at < all.size(); at += 112) {
        ASSERT_EQ(all.find_first_not_of(all[at], at), at + 111);
        ASSERT_EQ(all[at + 111], '\n');
    }
}

} // namespace
