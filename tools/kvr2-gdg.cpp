// kvr2-gdg: administration of generation data groups from the command line, over the library's own
// entries. kvr2-gdg.1 is its manual.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>

#include "kvr2/generations.h"

namespace {

constexpr int kFailed = 1, kUsage = 2;

struct Arguments {
    int limit = -1;
    int days = -1;
    int flags = -1; // ZVK_GDG_..., -1: not given
    const char *fileSystem = nullptr;
};

struct Command {
    const char *name;
    const char *help;
    bool takesAttributes;
    int (*run)(char *group, const Arguments &arguments);
};

const Command kCommands[] = {
    {"create", "make a group", true,
     [](char *group, const Arguments &a) { return GDG_Create(group, a.limit, a.days, a.flags, a.fileSystem); }},
    {"alter", "change a group's limit, days or flags", true,
     [](char *group, const Arguments &a) { return GDG_Alter(group, a.limit, a.days, a.flags, a.fileSystem); }},
    {"list", "show a group and its generations, oldest first", false,
     [](char *group, const Arguments &a) { return GDG_List(group, a.fileSystem); }},
    {"verify", "drop generations whose files are gone", false,
     [](char *group, const Arguments &a) { return GDG_Verify(group, a.fileSystem); }},
    {"rebuild", "make the catalogue anew from the files that are there", false,
     [](char *group, const Arguments &a) { return GDG_Rebuild(group, a.fileSystem); }},
    {"remove", "remove one generation, or a whole group", false,
     [](char *group, const Arguments &a) { return GDG_remove(group, a.fileSystem); }},
    {"unlink", "remove a group's catalogue and let its generations roll off", false,
     [](char *group, const Arguments &a) { return GDG_Unlink(group, a.fileSystem); }},
};

void help(FILE *stream)
{
    fputs("Usage: kvr2-gdg COMMAND [OPTION...] GROUP...\n\nAdministers generation data groups.\n\nCommands:\n", stream);
    for (const Command &command : kCommands) fprintf(stream, "  %-8s  %s\n", command.name, command.help);
    fputs("\nOptions:\n"
          "  -l, --limit=N        generations kept, 1 to 1000 (create: 255)\n"
          "  -D, --days=N         least age in days before a generation rolls off (create: 0)\n"
          "  -e, --empty          all generations roll off when the limit is exceeded\n"
          "  -E, --no-empty       only the oldest do\n"
          "  -s, --scratch        a generation that rolls off is deleted (create: so)\n"
          "  -S, --no-scratch     it stays\n"
          "  -f, --file-system=P  prefix of the file system: sys, plx, lsq, jgt, hdk, rql, ora\n"
          "  -h, --help           this text\n"
          "      --version        the release\n"
          "\nGROUP is a group's base name; for remove also a generation: base(0), base(-1), base.g0007v00.\n"
          "Exit status: 0 done, 1 failed for one of the groups, 2 wrong usage.\n",
          stream);
}

bool parseNumber(const char *text, int *number)
{
    char *end;
    long value = strtol(text, &end, 10);
    if (end == text || *end || value < 0 || value > 1000000) {
        fprintf(stderr, "kvr2-gdg: '%s' is no number\n", text);
        return false;
    }
    *number = static_cast<int>(value);
    return true;
}

// For "alter" a flag that is not given keeps its value only if none is given; "create" starts from
// Scratch alone.
void setFlag(Arguments &arguments, int flag, bool on)
{
    if (arguments.flags < 0) arguments.flags = ZVK_GDG_SCRATCH;
    arguments.flags = on ? arguments.flags | flag : arguments.flags & ~flag;
}

bool parseOptions(int argc, char **argv, Arguments &arguments, bool *helped)
{
    static const option options[] = {{"limit", required_argument, nullptr, 'l'},
                                     {"days", required_argument, nullptr, 'D'},
                                     {"empty", no_argument, nullptr, 'e'},
                                     {"no-empty", no_argument, nullptr, 'E'},
                                     {"scratch", no_argument, nullptr, 's'},
                                     {"no-scratch", no_argument, nullptr, 'S'},
                                     {"file-system", required_argument, nullptr, 'f'},
                                     {"help", no_argument, nullptr, 'h'},
                                     {nullptr, 0, nullptr, 0}};
    for (int letter; (letter = getopt_long(argc, argv, "l:D:eEsSf:h", options, nullptr)) != -1;) {
        switch (letter) {
        case 'l':
            if (!parseNumber(optarg, &arguments.limit)) return false;
            break;
        case 'D':
            if (!parseNumber(optarg, &arguments.days)) return false;
            break;
        case 'e':
        case 'E':
            setFlag(arguments, ZVK_GDG_EMPTY, letter == 'e');
            break;
        case 's':
        case 'S':
            setFlag(arguments, ZVK_GDG_SCRATCH, letter == 's');
            break;
        case 'f':
            arguments.fileSystem = optarg;
            break;
        case 'h':
            *helped = true;
            return true;
        default:
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0)) {
        help(stdout);
        return 0;
    }
    if (argc > 1 && strcmp(argv[1], "--version") == 0) {
        puts("kvr2-gdg " KVR2_RELEASE);
        return 0;
    }
    const Command *wanted = nullptr;
    for (const Command &command : kCommands)
        if (argc > 1 && strcmp(argv[1], command.name) == 0) wanted = &command;
    Arguments arguments;
    bool helped = false;
    bool good = wanted && parseOptions(argc - 1, argv + 1, arguments, &helped);
    if (helped) {
        help(stdout);
        return 0;
    }
    bool attributesGiven = arguments.limit >= 0 || arguments.days >= 0 || arguments.flags >= 0;
    int first = 1 + optind;
    if (!good || first >= argc || (attributesGiven && !wanted->takesAttributes)) {
        fputs("kvr2-gdg: wrong usage; kvr2-gdg --help tells how\n", stderr);
        return kUsage;
    }
    int status = 0;
    for (int i = first; i < argc; i++) {
        errno = 0;
        if (wanted->run(argv[i], arguments) == 0) continue;
        // The library has said why, for most reasons; this line says for which group, and nothing
        // fails in silence.
        fprintf(stderr, "kvr2-gdg: %s %s: %s\n", wanted->name, argv[i],
                errno ? strerror(errno) : "no such group or generation");
        status = kFailed;
    }
    return status;
}
