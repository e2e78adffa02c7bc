// Faults these tests are there to catch: a keyword row with a wrong field, value or sense;
// spellings that the tokeniser does not fold together; the TRAP default applied although an option
// chose otherwise, or not applied; a refused value that leaves something else than the default;
// hostile option strings that crash the parse.
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "frame/options/options.h"
#include "frame/run_unit.h"
#include "support/child.h"

namespace {

constexpr uint32_t kAccept = 0x10000000, kCheck = 0x08000000, kDebug = 0x02000000;

struct Outcome {
    uint32_t program, runtime, errCount;
    std::string fileSystem, upsi;
    bool operator==(const Outcome &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Outcome &outcome)
{
    return out << std::hex << "program " << outcome.program << " runtime " << outcome.runtime << " errcount "
               << outcome.errCount << " fs '" << outcome.fileSystem << "' upsi '" << outcome.upsi << "'";
}

Outcome parse(const char *options)
{
    _zvkProccom->runtimeOptions = 0;
    memset(_zvkProccom->fileSystem, 0, sizeof _zvkProccom->fileSystem);
    if (options)
        setenv("COBRTOPT", options, 1);
    else
        unsetenv("COBRTOPT");
    zvkParseOptions();
    return {_zvkProccom->programOptions, _zvkProccom->runtimeOptions, _zvkProccom->errCount,
            std::string(_zvkProccom->fileSystem, strnlen(_zvkProccom->fileSystem, 3)),
            std::string(_zvkProccom->upsi, 8)};
}

const Outcome kDefaults{kCheck | kDebug, 0xC0000000, 0, "", "00000000"};

TEST(Options, KeywordsSetWhatTheyName)
{
    auto with = [](auto change) {
        Outcome outcome = kDefaults;
        change(outcome);
        return outcome;
    };
    auto runtime = [&](uint32_t value) { return with([&](Outcome &o) { o.runtime = value; }); };
    auto program = [&](uint32_t value) { return with([&](Outcome &o) { o.program = value; }); };
    auto fileSystem = [&](const char *name) { return with([&](Outcome &o) { o.fileSystem = name; }); };
    const std::pair<const char *, Outcome> cases[] = {
        {nullptr, kDefaults},
        {"", kDefaults},
        {",,,", kDefaults},
        {"FILEMODE(LARGE),FM=S,FILESYS,FS", kDefaults},
        {"ACCEPT", runtime(0xC0000000 | kAccept)},
        {"ACCEPT=NEW", runtime(0xC0000000 | kAccept)},
        {"ACCEPT,ACCEPT(OLD)", kDefaults},
        {"NOCHECK", program(kDebug)},
        {"CHECK=OFF", program(kDebug)},
        {"CHECK=OFF,CHECK", kDefaults},
        {"NODEBUG", program(kCheck)},
        {"debug(off)", program(kCheck)},
        {"TRAP=OLD", runtime(0x80000000)},
        {"TRAP=OLD,TRAP", runtime(0xC0000000)},
        {"TRAP=DUMP", runtime(0xE0000000)},
        {"TRAP=DUMP,TRAP=OFF", runtime(0x60000000)},
        {"TRAP=OFF", runtime(0)},
        {"TRAP=DUMP,TRAP=NEW", runtime(0xC0000000)},
        {" TRAP = OLD ", runtime(0x80000000)},
        {"TR\tAP(O LD)\n", runtime(0x80000000)},
        {"trap(off)accept", runtime(kAccept)},
        {"fs=nat", fileSystem("lsq")},
        {"fs=raw", fileSystem("wbr")},
        {"FILESYS:FILESYS=HDK:", fileSystem("hdk")},
        {"FS=STL,FS=PLXD", fileSystem("plx")},
        {"upsi(10000001)", with([](Outcome &o) { o.upsi = "10000001"; })},
        {"UPSI=11111111,UPSI", kDefaults},
        {"UPSI=", with([](Outcome &o) { o.upsi = std::string(8, '\0'); })},
        {"ERRCOUNT=25", with([](Outcome &o) { o.errCount = 25; })},
        {"ERRCOUNT=25,ERRCOUNT", kDefaults},
        {"ERRCOUNT=4294967297", with([](Outcome &o) { o.errCount = 1; })},
    };
    for (const auto &[options, expected] : cases) EXPECT_EQ(parse(options), expected) << (options ? options : "unset");
    for (const char *name : {"RQL", "PSX", "RSD", "JGT", "HDK", "STL", "LSQ", "WBR", "PLX"}) {
        std::string lower(name);
        for (char &c : lower) c = static_cast<char>(tolower(c));
        EXPECT_EQ(parse(("FS=" + std::string(name)).c_str()), fileSystem(lower.c_str()));
        EXPECT_EQ(parse(("FILESYS=" + std::string(name)).c_str()), fileSystem(lower.c_str()));
    }
}

TEST(Options, RefusedValuesAreReportedAndReplaced)
{
    const std::pair<const char *, const char *> cases[] = {
        {"UPSI=1", "ZVK173I"},
        {"UPSI=10000002", "ZVK174I"},
        {"ERRCOUNT=-1", "ZVK181I"},
        {"ERRCOUNT=7X", "ZVK181I"},
        {"ERRCOUNT=99999999999999999999", "ZVK182I"},
        {"FILESYS=ABC", "ZVK172I"},
        {"FOO=1", "ZVK171I"},
        {"FOO", "ZVK171I"},
        {"UPSIX=1", "ZVK171I"},
        {"CHECK=ON=OFF", "ZVK172I"},
    };
    for (const auto &[options, message] : cases) {
        ChildRun run = runChild([&] {
            Outcome outcome = parse(options);
            if (!(outcome == kDefaults)) exit(1);
        });
        EXPECT_EQ(run.status, 0) << options;
        EXPECT_NE(run.err.find(message), std::string::npos) << options << ": " << run.err;
    }
    ChildRun both = runChild([] {
        Outcome outcome = parse("FOO,ERRCOUNT=4,BAR=1,TRAP=OFF");
        if (outcome.errCount != 4 || outcome.runtime != 0) exit(1);
    });
    EXPECT_EQ(both.status, 0) << "the parse goes on behind a bad token";
}

TEST(Options, HostileStringsDoNotCrash)
{
    std::string many;
    for (int i = 0; i < 10000; i++) many += "TRAP=OLD,";
    EXPECT_EQ(parse(many.c_str()).runtime, 0x80000000u);

    ChildRun run = runChild([] {
        std::mt19937 random(20240607);
        for (size_t size : {size_t{1}, size_t{700}, size_t{65536}}) {
            std::string bytes(size, ' ');
            for (char &c : bytes) c = static_cast<char>(1 + random() % 255);
            parse(bytes.c_str());
        }
        parse("(((((");
        parse(")))))");
        parse("=");
        parse("ERRCOUNT==,UPSI=(,");
    });
    EXPECT_EQ(run.status, 0) << run.err.substr(run.err.size() > 2000 ? run.err.size() - 2000 : 0);
}

} // namespace
