// kvr2-file: looks at, copies, checks and mends the files of COBOL programs. kvr2-file.1 is its
// manual; the commands are in file_info.cpp, file_transfer.cpp (dump, load, copy), file_verify.cpp,
// file_rebuild.cpp, file_compact.cpp (also keys add and drop) and file_backup.cpp.
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <getopt.h>
#include <unistd.h>

#include "kvr2/kvr2.h"
#include "tools/file_tool.h"
#include "tools/record_layout.h"
#include "tools/stored_file.h"

namespace file_tool {

static bool progressIsShown;

void clearProgress()
{
    if (progressIsShown) fputs("\r\033[K", stderr);
    progressIsShown = false;
}

void say(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    clearProgress();
    fputs("kvr2-file: ", stderr);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
}

static int64_t milliseconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

Progress::Progress(const char *what, uint64_t total, bool wanted)
    : what_(what), total_(total), shown_(milliseconds()), visible_(wanted && isatty(2))
{
}

Progress::~Progress() { clearProgress(); }

void Progress::at(uint64_t done)
{
    done_ = done;
    if (!visible_ || done % 64 || milliseconds() - shown_ < 200) return;
    shown_ = milliseconds();
    progressIsShown = true;
    if (total_)
        fprintf(stderr, "\r%s %3llu%%", what_,
                static_cast<unsigned long long>(done >= total_ ? 100 : done * 100 / total_));
    else
        fprintf(stderr, "\r%s %llu", what_, static_cast<unsigned long long>(done));
}

namespace {

enum OptionBits : unsigned { kShape = 1, kText = 2, kForce = 4, kKey = 8, kCreate = 16, kOrder = 32 };

struct Command {
    const char *name, *operands, *help;
    size_t least, most; // operands
    unsigned options;
    int (*run)(const Arguments &arguments);
};

constexpr size_t kMany = 1000000;
constexpr unsigned long kLongestRecord = 16777216;

const Command kCommands[] = {
    {"info", "FILE...", "what a file is, and who has it open", 1, kMany, kShape, runInfo},
    {"dump", "FILE [TEXT]", "writes the records as text", 1, 2, kShape | kText | kForce | kOrder, runDump},
    {"load", "FILE [TEXT]", "writes records from text", 1, 2, kShape | kText | kForce | kKey | kCreate, runLoad},
    {"copy", "FROM TO", "into another file, file system or organization", 2, 2, kShape | kForce | kKey, runCopy},
    {"verify", "FILE...", "reads every record, key and page", 1, kMany, kShape, runVerify},
    {"rebuild", "FILE TO", "a new file of what is readable", 2, 2, kShape | kForce | kKey, runRebuild},
    {"compact", "FILE...", "gives free pages back", 1, kMany, 0, runCompact},
    {"backup", "FILE TO", "a copy, also while others write", 2, 2, kForce, runBackup},
    {"keys-add", "FILE", "adds alternate keys", 1, 1, kKey, runKeysAdd},
    {"keys-drop", "FILE NUMBER", "takes an alternate key away", 2, 2, 0, runKeysDrop},
};

void help()
{
    puts("Usage: kvr2-file COMMAND [OPTION...] FILE...\n\n"
         "Looks at, copies, checks and mends files of COBOL programs.\n\nCommands:");
    for (const Command &command : kCommands) {
        std::string name = command.name;
        if (size_t dash = name.find('-'); dash != name.npos) name[dash] = ' ';
        printf("  %-9s %-12s %s\n", name.c_str(), command.operands, command.help);
    }
    puts("\nA FILE is written as in ASSIGN: lsq-NAME, rsd-NAME, wbr-NAME, stl-NAME. A file of stl needs no\n"
         "prefix.\n\nOptions:\n"
         "  -t, --format=F        dump, load: lsq (default), rsd, csv or jsonl\n"
         "  -L, --layout=COPYBOOK dump, load: what the record is made of, for csv and jsonl; kvrcob reads it\n"
         "  -F, --fields=LIST     dump, load: NAME:LENGTH[:FORM],... of the record, for csv and jsonl;\n"
         "                        FORM x text, 9 or s9 zoned, p packed, b or sb binary, with decimals: p2\n"
         "  -x, --hex             csv, jsonl: records in hexadecimal digits\n"
         "  -k, --key=P:L[,P:L...][:d]\n"
         "                        a key from byte P (1 is the first) of L bytes, or of several such parts;\n"
         "                        d: with duplicates. --parts is the same\n"
         "  -o, --order=N         dump: in the order of alternate key N\n"
         "  -r, --record=N[-M]    length of the records, or shortest and longest\n"
         "  -O, --organization=O  sequential, relative or indexed\n"
         "  -c, --create          load: makes the file\n"
         "  -f, --force           writes over a file that exists\n"
         "  -h, --help            this text\n"
         "  -V, --version         the version\n"
         "\nExit status: 0 done, 1 failed, 2 wrong usage, 3 done, but something is damaged or was refused.");
}

bool parseRecord(const char *text, Shape *shape)
{
    char *end;
    unsigned long first = strtoul(text, &end, 10), second = first;
    if (*end == '-' && end[1]) second = strtoul(end + 1, &end, 10);
    bool good = !*end && end != text && second && first <= second && second <= kLongestRecord;
    if (!good) return say("--record: '%s' is no length", text), false;
    shape->shortest = static_cast<uint32_t>(first);
    shape->longest = static_cast<uint32_t>(second);
    return true;
}

bool parseKey(const char *text, Shape *shape)
{
    FileKey key{};
    uint64_t length = 0;
    const char *at = text;
    bool good = true, more = true;
    for (unsigned n = 0; good && more; ++n) {
        char *end;
        unsigned long position = strtoul(at, &end, 10), size = *end == ':' ? strtoul(end + 1, &end, 10) : 0;
        good = *at >= '0' && *at <= '9' && position && position <= kLongestRecord && size && size <= kLongestRecord &&
               n <= filesystems::kMostKeyParts;
        more = *end == ',';
        at = end + more;
        length += size;
        FileKey part{static_cast<uint32_t>(size), static_cast<uint32_t>(position - 1), 0, {}};
        if (!n)
            key = part;
        else if (good)
            shape->parts.push_back(part), ++key.reserved[0], key.flags = ZVK_FILE_KEY_PARTS;
    }
    if (!good || (*at && strcmp(at, ":d") != 0))
        return say("--key: '%s' is no POSITION:LENGTH[,POSITION:LENGTH...][:d]", text), false;
    key.length = static_cast<uint32_t>(length);
    if (*at) key.flags |= ZVK_FILE_KEY_DUPLICATES;
    shape->keys.push_back(key);
    return true;
}

bool parseOrganization(const char *text, Shape *shape)
{
    if (!strcmp(text, "sequential"))
        shape->organization = 0;
    else if (!strcmp(text, "relative"))
        shape->organization = ZVK_FILE_RELATIVE;
    else if (!strcmp(text, "indexed"))
        shape->organization = ZVK_FILE_INDEXED;
    else
        return say("--organization: '%s' is not sequential, relative or indexed", text), false;
    return true;
}

bool parseFormat(const char *text, Arguments *arguments)
{
    static const char *const names[] = {"lsq", "rsd", "csv", "jsonl"};
    for (int i = 0; i < 4; ++i)
        if (!strcmp(text, names[i])) return arguments->format = static_cast<Format>(i), true;
    return say("--format: '%s' is not lsq, rsd, csv or jsonl", text), false;
}

bool parseOrder(const char *text, Arguments *arguments)
{
    char *end;
    arguments->key = static_cast<uint32_t>(strtoul(text, &end, 10));
    return (!*end && end != text) || (say("--order: '%s' is no number of a key", text), false);
}

bool parseOption(int letter, Arguments *arguments)
{
    switch (letter) {
    case 't':
        return parseFormat(optarg, arguments);
    case 'F':
        return parseFields(optarg, &arguments->fields);
    case 'x':
        return arguments->hexadecimal = true;
    case 'k':
        arguments->shapeGiven = true;
        return parseKey(optarg, &arguments->shape);
    case 'o':
        return parseOrder(optarg, arguments);
    case 'r':
        arguments->shapeGiven = true;
        return parseRecord(optarg, &arguments->shape);
    case 'O':
        arguments->shapeGiven = true;
        return parseOrganization(optarg, &arguments->shape);
    case 'c':
        return arguments->create = true;
    case 'f':
        return arguments->force = true;
    case 'L':
        return readLayout(optarg, &arguments->fields);
    default:
        return false;
    }
}

unsigned bitOf(int letter)
{
    switch (letter) {
    case 't':
    case 'F':
    case 'L':
    case 'x':
        return kText;
    case 'k':
        return kKey;
    case 'o':
        return kOrder;
    case 'c':
        return kCreate;
    case 'f':
        return kForce;
    default:
        return kShape;
    }
}

} // namespace

static int run(int argc, char **argv)
{
    static const option options[] = {{"format", required_argument, nullptr, 't'},
                                     {"fields", required_argument, nullptr, 'F'},
                                     {"layout", required_argument, nullptr, 'L'},
                                     {"hex", no_argument, nullptr, 'x'},
                                     {"key", required_argument, nullptr, 'k'},
                                     {"parts", required_argument, nullptr, 'k'},
                                     {"order", required_argument, nullptr, 'o'},
                                     {"record", required_argument, nullptr, 'r'},
                                     {"organization", required_argument, nullptr, 'O'},
                                     {"create", no_argument, nullptr, 'c'},
                                     {"force", no_argument, nullptr, 'f'},
                                     {"help", no_argument, nullptr, 'h'},
                                     {"version", no_argument, nullptr, 'V'},
                                     {nullptr, 0, nullptr, 0}};
    Arguments arguments;
    unsigned given = 0;
    for (int letter; (letter = getopt_long(argc, argv, "t:F:L:xk:o:r:O:cfhV", options, nullptr)) != -1;) {
        if (letter == 'h') return help(), kDone;
        if (letter == 'V') return printf("kvr2-file %s\n", KVR2_FILE_VERSION), kDone;
        if (!parseOption(letter, &arguments)) return kUsage;
        given |= bitOf(letter);
    }
    std::string name = optind < argc ? argv[optind++] : "";
    if (name == "keys" && optind < argc) name += std::string("-") + argv[optind++];
    const Command *wanted = nullptr;
    for (const Command &command : kCommands)
        if (name == command.name) wanted = &command;
    if (!wanted) return say("%s; kvr2-file --help tells them", name.empty() ? "no command" : "no such command"), kUsage;
    arguments.names.assign(argv + optind, argv + argc);
    if (arguments.names.size() < wanted->least || arguments.names.size() > wanted->most)
        return say("%s takes %s", wanted->name, wanted->operands), kUsage;
    if (given & ~wanted->options) return say("%s does not take one of these options", wanted->name), kUsage;
    bool columns = arguments.format == Format::csv || arguments.format == Format::jsonLines;
    if (!columns && (arguments.hexadecimal || !arguments.fields.empty()))
        return say("--fields, --layout and --hex go with --format=csv or jsonl"), kUsage;
    return wanted->run(arguments);
}

} // namespace file_tool

int main(int argc, char **argv)
{
    signal(SIGXFSZ, SIG_IGN); // a write beyond the limit of file sizes is told as any other failure
    int outcome = file_tool::run(argc, argv);
    if (fflush(stdout) != 0 || ferror(stdout)) {
        file_tool::say("the output could not be written");
        outcome = file_tool::kFailed;
    }
    return outcome;
}
