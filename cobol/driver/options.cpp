// The command line, and what --help says of it.
#include "cobol/driver/options.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cobol/diagnostics.h"

namespace kvrcob {

static const char kHelp[] =
    "usage: kvrcob [options] source...\n"
    "       kvrcob run [options] source [argument...]\n"
    "       kvrcob check [options] source...\n"
    "\n"
    "  -o FILE          the program's name (default: that of the first source)\n"
    "  -m               make loadable modules NAME.so, one for each outermost program\n"
    "  -c, -S, -E       stop after the object file, the C text, COPY and REPLACE;\n"
    "                   objects are linked by kvrcob -o FILE a.o b.o\n"
    "  -I DIR           look for copybooks here, too (also COBCPY)\n"
    "  -fixed, -free, -variable   the reference format (default: told from the source)\n"
    "  -ftabstop=N      columns from tab to tab (8)\n"
    "  -D NAME=VALUE    a value for conditional compilation\n"
    "  -O0, -O1, -O2, -g   as for cc\n"
    "  -fcheck=all      check subscripts, reference modification and numeric content at run time\n"
    "  -fno-trunc       binary items are not cut to their pictures\n"
    "  -febcdic         texts are ordered as in EBCDIC if the program names no order\n"
    "  -W..., -Wno-..., -Werror, -w   warnings\n"
    "  -fdiagnostics-format=json   one JSON object for each message\n"
    "  --list           print the source with the map of its data\n"
    "  -MD              write a file of dependencies for make\n"
    "  -L, -l           handed on to the linker\n"
    "  -v, --help, --version\n";

std::string stemOf(const std::string &path)
{
    if (path == "-") return "a.out"; // the source is standard input
    size_t slash = path.rfind('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

void usage(const std::string &text)
{
    std::fprintf(stderr, "kvrcob: %s\nTry kvrcob --help.\n", text.c_str());
    std::exit(2);
}

namespace {

// Options that are one word and mean one thing.
struct Switch {
    std::string_view word;
    void (*set)(Options &);
};

bool isVerb(Options::Mode mode) { return mode == Options::Run || mode == Options::Check; }

// Of several such options the one that stops first counts, as with cc.
void stopAfter(Options &o, Options::Mode mode) { o.mode = isVerb(o.mode) ? mode : std::max(o.mode, mode); }

constexpr Switch kSwitches[] = {
    {"-m",
     [](Options &o) {
         o.module = true;
         stopAfter(o, Options::Module);
     }},
    {"-c", [](Options &o) { stopAfter(o, Options::Object); }},
    {"-S", [](Options &o) { stopAfter(o, Options::Assembly); }},
    {"-E", [](Options &o) { stopAfter(o, Options::Preprocess); }},
    {"-v", [](Options &o) { o.verbose = true; }},
    {"-g", [](Options &o) { o.debug = o.emit.debugMap = true; }},
    {"-MD", [](Options &o) { o.dependencies = true; }},
    {"--list", [](Options &o) { o.list = true; }},
    {"--save-temps", [](Options &o) { o.keep = true; }},
    {"-save-temps", [](Options &o) { o.keep = true; }},
    {"-fixed", [](Options &o) { o.text.format = SourceFormat::Fixed; }},
    {"-free", [](Options &o) { o.text.format = SourceFormat::Free; }},
    {"-variable", [](Options &o) { o.text.format = SourceFormat::Variable; }},
    {"-fcheck", [](Options &o) { o.emit.check = true; }},
    {"-fcheck=all", [](Options &o) { o.emit.check = true; }},
    {"-fcheck=none", [](Options &o) { o.emit.check = false; }},
    {"-fno-trunc", [](Options &o) { o.emit.truncate = false; }},
    {"-ftrunc", [](Options &o) { o.emit.truncate = true; }},
    {"-febcdic", [](Options &o) { o.emit.ebcdic = true; }},
    {"-fdiagnostics-format=json", [](Options &) { diagnostics().json = true; }},
    {"-fdiagnostics-format=text", [](Options &) { diagnostics().json = false; }},
    {"-Werror", [](Options &) { diagnostics().warningsAreErrors = true; }},
    {"-Wno-error", [](Options &) { diagnostics().warningsAreErrors = false; }},
    {"-w", [](Options &) { diagnostics().disabled.insert("all"); }},
    {"-Wall", [](Options &) { diagnostics().disabled.clear(); }},
    {"-Wextra", [](Options &) { diagnostics().disabled.clear(); }},
    {"-O", [](Options &o) { o.optimisation = "-O"; }},
    {"-O0", [](Options &o) { o.optimisation = "-O0"; }},
    {"-O1", [](Options &o) { o.optimisation = "-O1"; }},
    {"-O2", [](Options &o) { o.optimisation = "-O2"; }},
    {"--help",
     [](Options &o) {
         std::fputs(kHelp, stdout);
         o.answered = true;
     }},
    {"--version",
     [](Options &o) {
         std::printf("kvrcob %s\n", KVRCOB_VERSION);
         o.answered = true;
     }},
};

constexpr const char *kExclusive = "run and check go without -m, -c, -S and -E";

bool isSwitch(std::string_view word, Options &o)
{
    const bool verb = isVerb(o.mode);
    for (const Switch &s : kSwitches)
        if (s.word == word) {
            s.set(o);
            if (verb && !isVerb(o.mode)) usage(kExclusive);
            return true;
        }
    return false;
}

void define(Options &o, const std::string &definition)
{
    size_t equal = definition.find('=');
    std::string name = definition.substr(0, equal);
    if (name.empty()) usage("-D takes NAME or NAME=VALUE");
    for (char &c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::string value = equal == std::string::npos ? "1" : definition.substr(equal + 1);
    const char first = value.empty() ? 0 : value.front();
    if (value.size() > 1 && (first == '"' || first == '\'') && value.back() == first)
        value = value.substr(1, value.size() - 2); // a literal
    o.text.defines[name] = value;
}

// A source, or what is for the C compiler to link.
void fileWord(Options &o, const std::string &path)
{
    size_t dot = path.rfind('.');
    std::string extension = dot == std::string::npos ? "" : path.substr(dot);
    const bool linked = extension == ".o" || extension == ".a" || extension == ".so" || extension == ".c";
    (linked ? o.objects : o.sources).push_back(path);
}

// The words of the command line, one after the other.
struct Words {
    int i, argc;
    char **argv;

    // What an option has after it, in its own word or in the next one.
    std::string value(const std::string &word, size_t size)
    {
        if (word.size() > size) return word.substr(size);
        if (i + 1 >= argc) usage("the option " + word + " needs a value");
        return argv[++i];
    }
};

// Options with a value, or with a name in them.
void optionWord(Options &o, const std::string &a, Words &words)
{
    if (a == "-o") {
        o.output = words.value(a, 2);
        if (o.output.empty()) usage("the option -o needs a value");
    } else if (a.starts_with("-ftabstop=")) {
        const char *end = a.data() + a.size();
        const auto [rest, failure] = std::from_chars(a.data() + std::strlen("-ftabstop="), end, o.text.tabStop);
        if (failure != std::errc() || rest != end || o.text.tabStop < 1 || o.text.tabStop > 100)
            usage("-ftabstop takes a number from 1 to 100");
    } else if (a.starts_with("-fcheck")) {
        usage("-fcheck takes all or none");
    } else if (a.starts_with("-W")) {
        const bool off = a.starts_with("-Wno-");
        diagnostics().choose(a.substr(off ? 5 : 2), !off);
    } else if (a.starts_with("-I")) {
        o.copy.directories.push_back(words.value(a, 2));
    } else if (a.starts_with("-D")) {
        define(o, words.value(a, 2));
    } else if (a.starts_with("-L") || a.starts_with("-l")) {
        o.linker.push_back(a.substr(0, 2) + words.value(a, 2));
    } else {
        usage("there is no option " + a);
    }
}

void readWords(int argc, char **argv, Options &o)
{
    Words words{1, argc, argv};
    for (; words.i < argc && !o.answered; words.i++) {
        const std::string a = argv[words.i];
        if (o.mode == Options::Run && !o.sources.empty()) {
            // After the source come the program's arguments.
            o.arguments.assign(argv + words.i + (a == "--" ? 1 : 0), argv + argc);
            return;
        }
        if ((a == "run" || a == "check") && !isVerb(o.mode) && o.sources.empty()) {
            if (o.mode != Options::Program) usage(kExclusive); // a source of that name is ./run
            o.mode = a == "run" ? Options::Run : Options::Check;
        } else if (a.empty() || a[0] != '-' || a == "-")
            fileWord(o, a);
        else if (!isSwitch(a, o))
            optionWord(o, a, words);
    }
}

} // namespace

// COBCPY: folders of copybooks, after those of -I.
static void readCopyPath(CopyPath &copy)
{
    if (const char *path = std::getenv("COBCPY")) {
        std::string all = path;
        size_t from = 0;
        while (from <= all.size()) {
            size_t to = all.find(':', from);
            if (to == std::string::npos) to = all.size();
            if (to > from) copy.directories.push_back(all.substr(from, to - from));
            from = to + 1;
        }
    }
}

bool parseOptions(int argc, char **argv, Options &o)
{
    readWords(argc, argv, o);
    readCopyPath(o.copy);
    diagnostics().tabStop = o.text.tabStop;
    const bool verb = isVerb(o.mode);
    if (verb && !o.output.empty()) usage("-o names what run and check do not make");
    // These make nothing that could depend on a file.
    if (verb || o.mode == Options::Preprocess) o.dependencies = false;
    return o.answered;
}

} // namespace kvrcob
