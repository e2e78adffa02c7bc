// kvrcob: the command.
//
//   kvrcob hello.cbl                 makes ./hello
//   kvrcob -o pay pay.cbl tax.cbl    several sources, one program
//   kvrcob -m tax.cbl                TAX.so, for a dynamic CALL
//   kvrcob run hello.cbl [ARGS...]   compiles into a cache, then runs it
//   kvrcob check *.cbl               diagnostics only
//
// Sources become C in a temporary directory, and the system's C compiler (CC, else cc) makes the
// rest.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "cobol/driver/workshop.h"
#include "cobol/emit/emitter.h"
#include "cobol/syntax/parser.h"
#include "cobol/text/preprocessor.h"

namespace kvrcob {
namespace {

const char kVersion[] = KVRCOB_VERSION;

const char kHelp[] = "usage: kvrcob [options] source...\n"
                     "       kvrcob run [options] source [argument...]\n"
                     "       kvrcob check [options] source...\n"
                     "\n"
                     "  -o FILE          the program's name (default: that of the first source)\n"
                     "  -m               make loadable modules NAME.so, one for each outermost program\n"
                     "  -c, -S, -E       stop after the object file, the C text, COPY and REPLACE\n"
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

struct Options {
    enum Mode { Program, Module, Object, Assembly, Preprocess, Check, Run } mode = Program;
    std::string output;
    std::vector<std::string> sources, linker, arguments, objects;
    TextOptions text;
    CopyPath copy;
    EmitOptions emit;
    std::string optimisation; // as it was asked for; empty: kvrcob chooses
    bool debug = false, verbose = false, dependencies = false, list = false, keep = false;
};

bool exists(const std::string &path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

std::string directoryOf(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string stemOf(const std::string &path)
{
    if (path == "-") return "a.out"; // the source is standard input
    size_t slash = path.rfind('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// Library and headers, beside the command: in the build tree build/bin, build/kvrcob/lib, include;
// installed bin, lib, include.
struct Home {
    std::string include, library;
};

Home findHome()
{
    char buffer[4096];
    ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    std::string bin = n > 0 ? directoryOf(std::string(buffer, static_cast<size_t>(n))) : ".";
    std::string root = directoryOf(bin);
    Home home;
    home.library = exists(root + "/kvrcob/lib") ? root + "/kvrcob/lib" : root + "/lib";
    if (exists(root + "/include/kvr2/kvrcob.h"))
        home.include = root + "/include";
    else if (exists(directoryOf(root) + "/include/kvr2/kvrcob.h"))
        home.include = directoryOf(root) + "/include";
    return home;
}

bool writeFile(const std::string &path, const std::string &text)
{
    FILE *f = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
    if (!f) {
        diagnostics().fatal("cannot write " + path + reason());
        return false;
    }
    bool good = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    if (f != stdout) good = std::fclose(f) == 0 && good;
    if (!good) diagnostics().fatal("cannot write " + path + reason());
    return good;
}

// One source as C; empty after errors.
struct Translated {
    std::string c;
    std::vector<std::string> programs, dependencies;
};

const char *usageName(const Item &item)
{
    switch (item.usage) {
    case Usage::Display:
        return item.elementary() ? "DISPLAY" : "GROUP";
    case Usage::Binary:
        return "BINARY";
    case Usage::Native:
        return "COMP-5";
    case Usage::Packed:
        return "PACKED-DECIMAL";
    case Usage::Float:
        return "COMP-1";
    case Usage::Double:
        return "COMP-2";
    case Usage::Index:
        return "INDEX";
    case Usage::Pointer:
        return "POINTER";
    case Usage::ProcedurePointer:
        return "PROCEDURE-POINTER";
    default:
        return "OTHER";
    }
}

void listItem(const Item &item, int depth)
{
    std::printf("  %02d  %*s%-*s %8u %8u  %s", item.level, depth * 2, "", 32 - depth * 2 > 1 ? 32 - depth * 2 : 1,
                item.name ? wordText(item.name).c_str() : "FILLER", item.offset, item.size,
                item.elementary() ? usageName(item) : "GROUP");
    if (item.occurs) std::printf(" OCCURS %u", item.occursMax);
    if (item.redefines)
        std::printf(" REDEFINES %s", item.redefines->name ? wordText(item.redefines->name).c_str() : "FILLER");
    std::putchar('\n');
    for (const Item *child : item.children) listItem(*child, depth + 1);
}

void listing(const Group &group, uint32_t file)
{
    const SourceFile &source = sources()[file];
    for (size_t i = 0; i < source.lineStarts.size(); i++) {
        Spot spot{file, static_cast<uint32_t>(i + 1), 1, 1};
        std::string_view line = sources().line(spot);
        std::printf("%6zu  %.*s\n", i + 1, static_cast<int>(line.size()), line.data());
    }
    auto show = [](auto &self, const Program &p) -> void {
        std::printf("\nProgram %s\n  Level  Name                           Offset   Length  Usage\n",
                    wordText(p.name).c_str());
        for (const File *f : p.files)
            for (const Item *record : f->records) listItem(*record, 0);
        for (const Item *record : p.records) listItem(*record, 0);
        for (const Program *inner : p.nested) self(self, *inner);
    };
    for (const Program *p : group.programs) show(show, *p);
}

// A source with its tree and names, of which C is to be made.
struct Unit {
    Group *group = nullptr;
    Meaning *meaning = nullptr;
    uint32_t file = 0;
    Translated out;
};

Unit readUnit(const std::string &path, const Options &options)
{
    Unit unit;
    Translated &out = unit.out;
    int file = sources().open(path, Spot{});
    if (file < 0) {
        diagnostics().fatal("cannot read " + path + reason());
        return unit;
    }
    unit.file = static_cast<uint32_t>(file);
    TextOptions text = options.text;
    if (options.verbose) {
        SourceFormat format = text.format != SourceFormat::Unknown
                                  ? text.format
                                  : guessFormat(sources()[static_cast<uint32_t>(file)].text);
        std::fprintf(stderr, "%s: %s form\n", path.c_str(),
                     format == SourceFormat::Free       ? "free"
                     : format == SourceFormat::Variable ? "variable"
                                                        : "fixed");
    }
    Group *group = new Group();
    group->tokens = readSource(static_cast<uint32_t>(file), text, options.copy, out.dependencies);
    if (options.mode == Options::Preprocess) {
        out.c = printTokens(group->tokens);
        return unit;
    }
    Parser(*group).parse();
    unit.group = group;
    unit.meaning = new Meaning(*group);
    unit.meaning->analyse();
    return unit;
}

void emitUnit(Unit &unit, const Options &options, bool mainProgram)
{
    EmitOptions emit = options.emit;
    emit.mainProgram = mainProgram;
    emit.readable = options.mode == Options::Assembly;
    Emitter emitter(*unit.meaning, emit);
    unit.out.c = emitter.emit();
    for (const Program *p : unit.group->programs) unit.out.programs.push_back(wordText(p->name));
    if (options.list) listing(*unit.group, unit.file);
    if (diagnostics().errors()) unit.out.c.clear();
}

// All sources are read before C is made of the first one, for it may use functions of the others.
std::vector<Translated> translate(const Options &options)
{
    std::vector<Unit> units;
    for (const std::string &path : options.sources) units.push_back(readUnit(path, options));
    for (Unit &unit : units)
        for (const Unit &other : units) {
            if (&other == &unit || !unit.group || !other.group) continue;
            for (Program *p : other.group->programs)
                if (p->isFunction) unit.group->elsewhere.push_back(p);
        }
    std::vector<Translated> translated;
    for (size_t i = 0; i < units.size(); i++) {
        bool mainProgram = i == 0 && options.mode != Options::Module && options.mode != Options::Object;
        if (units[i].group) emitUnit(units[i], options, mainProgram);
        translated.push_back(std::move(units[i].out));
    }
    return translated;
}

[[noreturn]] void usage(const std::string &text)
{
    std::fprintf(stderr, "kvrcob: %s\nTry kvrcob --help.\n", text.c_str());
    std::exit(2);
}

void parseOptions(int argc, char **argv, Options &o)
{
    int i = 1;
    auto value = [&](const std::string &option) -> std::string {
        if (i + 1 >= argc) usage("the option " + option + " needs a value");
        return argv[++i];
    };
    for (; i < argc; i++) {
        std::string a = argv[i];
        if (o.mode == Options::Run && !o.sources.empty()) {
            // After the source come the program's arguments.
            if (a == "--") i++;
            for (; i < argc; i++) o.arguments.push_back(argv[i]);
            return;
        }
        if ((a == "run" || a == "check") && o.mode == Options::Program && o.sources.empty()) {
            o.mode = a == "run" ? Options::Run : Options::Check;
        } else if (a.empty() || a[0] != '-' || a == "-") {
            size_t dot = a.rfind('.');
            std::string extension = dot == std::string::npos ? "" : a.substr(dot);
            if (extension == ".o" || extension == ".a" || extension == ".so" || extension == ".c")
                o.objects.push_back(a);
            else
                o.sources.push_back(a);
        } else if (a == "--help") {
            std::fputs(kHelp, stdout);
            std::exit(0);
        } else if (a == "--version") {
            std::printf("kvrcob %s\n", kVersion);
            std::exit(0);
        } else if (a == "-o") {
            o.output = value(a);
        } else if (a == "-m") {
            o.mode = Options::Module;
        } else if (a == "-c") {
            o.mode = Options::Object;
        } else if (a == "-S") {
            o.mode = Options::Assembly;
        } else if (a == "-E") {
            o.mode = Options::Preprocess;
        } else if (a == "-v") {
            o.verbose = true;
        } else if (a == "-g") {
            o.debug = o.emit.debugMap = true;
        } else if (a == "-MD") {
            o.dependencies = true;
        } else if (a == "--list") {
            o.list = true;
        } else if (a == "--save-temps" || a == "-save-temps") {
            o.keep = true;
        } else if (a == "-fixed") {
            o.text.format = SourceFormat::Fixed;
        } else if (a == "-free") {
            o.text.format = SourceFormat::Free;
        } else if (a == "-variable") {
            o.text.format = SourceFormat::Variable;
        } else if (a.rfind("-ftabstop=", 0) == 0) {
            o.text.tabStop = std::atoi(a.c_str() + 10);
            if (o.text.tabStop < 1 || o.text.tabStop > 100) usage("-ftabstop takes a number from 1 to 100");
        } else if (a.rfind("-fcheck", 0) == 0) {
            if (a != "-fcheck=all" && a != "-fcheck" && a != "-fcheck=none") usage("-fcheck takes all or none");
            o.emit.check = a != "-fcheck=none";
        } else if (a == "-fno-trunc") {
            o.emit.truncate = false;
        } else if (a == "-ftrunc") {
            o.emit.truncate = true;
        } else if (a == "-febcdic") {
            o.emit.ebcdic = true;
        } else if (a == "-fdiagnostics-format=json") {
            diagnostics().json = true;
        } else if (a == "-fdiagnostics-format=text") {
            diagnostics().json = false;
        } else if (a == "-Werror") {
            diagnostics().warningsAreErrors = true;
        } else if (a == "-w") {
            diagnostics().disabled.insert("all");
        } else if (a.rfind("-Wno-", 0) == 0) {
            diagnostics().disabled.insert(a.substr(5));
        } else if (a.rfind("-W", 0) == 0) {
            std::string name = a.substr(2);
            if (name == "all" || name == "extra") {
                diagnostics().disabled.clear();
            } else {
                diagnostics().enabled.insert(name);
                diagnostics().disabled.erase(name);
            }
        } else if (a.rfind("-I", 0) == 0) {
            o.copy.directories.push_back(a.size() > 2 ? a.substr(2) : value(a));
        } else if (a.rfind("-D", 0) == 0) {
            std::string definition = a.size() > 2 ? a.substr(2) : value(a);
            size_t equal = definition.find('=');
            std::string name = definition.substr(0, equal);
            for (char &c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            o.text.defines[name] = equal == std::string::npos ? "1" : definition.substr(equal + 1);
        } else if (a == "-O0" || a == "-O1" || a == "-O2" || a == "-O") {
            o.optimisation = a;
        } else if (a.rfind("-L", 0) == 0 || a.rfind("-l", 0) == 0) {
            o.linker.push_back(a.size() > 2 ? a : a + value(a));
        } else {
            usage("there is no option " + a);
        }
    }
}

// The hash of what a cached program is made of.
std::string hashOf(const std::vector<std::string> &parts)
{
    uint64_t a = 1469598103934665603u, b = 7809847782465536322u;
    for (const std::string &part : parts) {
        for (unsigned char c : part) {
            a = (a ^ c) * 1099511628211u;
            b = (b + c) * 6364136223846793005u + 1442695040888963407u;
        }
        a = (a ^ 0xFF) * 1099511628211u;
        b += part.size();
    }
    char text[40];
    std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(a),
                  static_cast<unsigned long long>(b));
    return text;
}

// A compilation overwrites none of its sources, and says before its work that a result has no
// place.
bool outputsHavePlaces(const Options &o, const std::vector<std::string> &outputs)
{
    for (const std::string &output : outputs) {
        struct stat result, source;
        for (const std::string &path : o.sources)
            if (stat(output.c_str(), &result) == 0 && stat(path.c_str(), &source) == 0 &&
                result.st_ino == source.st_ino && result.st_dev == source.st_dev) {
                diagnostics().fatal("the result " + output + " would overwrite the source; name another with -o");
                return false;
            }
        if (output != "-" && !canWrite(output)) return false;
    }
    return true;
}

// What the mode makes, in the current folder unless -o says otherwise.
std::vector<std::string> outputsOf(const Options &o, const std::vector<Translated> &translated)
{
    std::vector<std::string> outputs;
    if (o.mode == Options::Check || o.mode == Options::Run) return outputs;
    if (!o.output.empty()) return {o.output};
    if (o.mode == Options::Program) return {stemOf(o.sources[0])};
    for (size_t i = 0; i < translated.size(); i++) {
        if (o.mode == Options::Module)
            for (const std::string &program : translated[i].programs) outputs.push_back(program + ".so");
        else if (o.mode != Options::Preprocess)
            outputs.push_back(stemOf(o.sources[i]) + (o.mode == Options::Object ? ".o" : ".c"));
    }
    return outputs;
}

// Two sources of one program cannot hold programs of one name.
bool eachProgramOnce(const Options &o, const std::vector<Translated> &translated)
{
    for (size_t i = 0; i < translated.size(); i++)
        for (const std::string &name : translated[i].programs)
            for (size_t j = 0; j < i; j++)
                if (std::count(translated[j].programs.begin(), translated[j].programs.end(), name)) {
                    diagnostics().fatal("there is a program " + name + " in " + o.sources[j] + " and one in " +
                                        o.sources[i]);
                    return false;
                }
    return true;
}

// The path in the cache of `run` for what these sources make; empty if there can be no cache.
std::string cachedProgram(const Options &o, const Home &home, const std::vector<Translated> &translated)
{
    std::string cache;
    if (const char *x = std::getenv("XDG_CACHE_HOME"))
        cache = x;
    else if (const char *h = std::getenv("HOME"))
        cache = std::string(h) + "/.cache";
    else
        return "";
    mkdir(cache.c_str(), 0777);
    cache += "/kvrcob";
    mkdir(cache.c_str(), 0777);
    if (access(cache.c_str(), W_OK | X_OK) != 0) return "";
    std::vector<std::string> parts = {kVersion, o.optimisation, home.include, o.debug ? "g" : "",
                                      o.emit.check ? "check" : ""};
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    struct stat info;
    if (n > 0 && stat(std::string(self, static_cast<size_t>(n)).c_str(), &info) == 0)
        parts.push_back(std::to_string(info.st_mtime) + "." + std::to_string(info.st_size));
    for (const Translated &t : translated) {
        // But for WHEN-COMPILED, which would make each translation another program.
        parts.push_back(t.c);
        static const std::string mark = "whenCompiled[17] __attribute__((unused)) = \"";
        for (size_t at = 0; (at = parts.back().find(mark, at)) != std::string::npos;) {
            at += mark.size();
            parts.back().replace(at, 16, "");
        }
    }
    for (const std::string &l : o.linker) parts.push_back(l);
    for (const std::string &l : o.objects) parts.push_back(l);
    return cache + "/" + hashOf(parts);
}

// The C compiler makes one result. It appears in its place when it is whole, so that of two
// compilations at once one wins.
bool makeResult(std::vector<std::string> command, const std::string &output, const Options &o, Workshop &shop)
{
    struct stat info;
    bool direct = stat(output.c_str(), &info) == 0 && !S_ISREG(info.st_mode); // /dev/null, for one
    std::string place = direct ? output : output + "." + std::to_string(getpid());
    if (!direct) shop.litter(place);
    command.insert(command.end(), {"-o", place});
    int result = runCommand(command, o.verbose);
    if (interrupted()) return false;
    if (result == kCannotRun) {
        diagnostics().fatal("there is no C compiler " + command[0] + ": install one, or name it in CC");
        return false;
    }
    if (result != 0) {
        diagnostics().fatal("the C compiler failed; unless it says that a library or object file is missing or the "
                            "disk is full, this is a fault of kvrcob");
        return false;
    }
    if (!direct && rename(place.c_str(), output.c_str()) != 0) {
        diagnostics().fatal("cannot write " + output + reason());
        return false;
    }
    return true;
}

// C that is longer is compiled without optimisation, unless an option asks for it: what is one
// function takes the C compiler a time that grows faster than its length.
constexpr size_t kLongC = 2 << 20;

// The C compiler and its options. CC may hold several words.
std::vector<std::string> compilerCommand(const Options &o, const Home &home, size_t longest)
{
    const std::string level = !o.optimisation.empty() ? o.optimisation : longest > kLongC ? "-O0" : "-O1";
    std::vector<std::string> command;
    const char *cc = std::getenv("CC");
    std::string word;
    for (char c : std::string(cc ? cc : "") + " ") {
        if (c != ' ' && c != '\t')
            word += c;
        else if (!word.empty())
            command.push_back(word), word.clear();
    }
    if (command.empty()) command.push_back("cc");
    command.insert(command.end(), {"-std=gnu11", "-fno-strict-aliasing", "-fwrapv", "-fno-gcse", "-fno-tree-pta", level,
                                   "-I" + home.include, o.debug ? "-g" : "-g1"});
    return command;
}

// Objects, modules or the program, from the C texts.
bool build(const Options &o, const Home &home, const std::vector<Translated> &translated, Workshop &shop)
{
    size_t longest = 0;
    for (const Translated &t : translated) longest = std::max(longest, t.c.size());
    const std::vector<std::string> compiler = compilerCommand(o, home, longest);
    std::vector<std::string> files, link = {"-L" + home.library};
    for (size_t i = 0; i < translated.size(); i++) {
        files.push_back(shop.file(std::to_string(i) + "_" + stemOf(o.sources[i]) + ".c"));
        if (!writeFile(files.back(), translated[i].c)) return false;
    }
    if (home.library != "/usr/lib") link.insert(link.end(), {"-Wl,-rpath," + home.library, "-Wl,--disable-new-dtags"});
    link.insert(link.end(), o.linker.begin(), o.linker.end());
    link.insert(link.end(), {"-lkvr2_64r", "-lm"});

    if (o.mode == Options::Object || o.mode == Options::Module) {
        for (size_t i = 0; i < files.size(); i++) {
            std::vector<std::string> command = compiler, outputs;
            if (o.mode == Options::Object) {
                command.insert(command.end(), {"-fPIC", "-c", files[i]});
                outputs = {stemOf(o.sources[i]) + ".o"};
            } else {
                // One module a source, under the name of each of its outermost programs: one file,
                // so that a program has its storage once, whatever name brought the module in.
                command.insert(command.end(), {"-fPIC", "-shared", files[i]});
                command.insert(command.end(), link.begin(), link.end());
                for (const std::string &program : translated[i].programs) outputs.push_back(program + ".so");
            }
            if (!o.output.empty()) outputs = {o.output};
            if (!outputs.empty() && !makeResult(command, outputs[0], o, shop)) return false;
            for (size_t other = 1; other < outputs.size(); other++)
                if (!alsoNamed(outputs[0], outputs[other], shop)) return false;
        }
        return true;
    }
    std::vector<std::string> command = compiler;
    command.insert(command.end(), files.begin(), files.end());
    command.insert(command.end(), o.objects.begin(), o.objects.end());
    command.push_back("-rdynamic");
    command.insert(command.end(), link.begin(), link.end());
    return makeResult(command, o.output.empty() ? stemOf(o.sources[0]) : o.output, o, shop);
}

int compile(Options &o)
{
    if (o.sources.empty()) usage("there is no source");
    if (o.sources.size() > 1 && !o.output.empty() && o.mode != Options::Program && o.mode != Options::Run)
        usage("-o goes with one source here");
    Home home = findHome();
    if (const char *path = std::getenv("COBCPY")) {
        std::string all = path;
        size_t from = 0;
        while (from <= all.size()) {
            size_t to = all.find(':', from);
            if (to == std::string::npos) to = all.size();
            if (to > from) o.copy.directories.push_back(all.substr(from, to - from));
            from = to + 1;
        }
    }

    const std::vector<Translated> translated = translate(o);
    if (diagnostics().errors()) return 1;
    if (!outputsHavePlaces(o, outputsOf(o, translated))) return 1;
    if (o.mode == Options::Check) return 0;
    if (o.mode == Options::Preprocess) {
        for (const Translated &t : translated)
            if (!writeFile(o.output.empty() ? "-" : o.output, t.c)) return 1;
        return 0;
    }
    if (o.mode == Options::Assembly) {
        for (size_t i = 0; i < translated.size(); i++)
            if (!writeFile(o.output.empty() ? stemOf(o.sources[i]) + ".c" : o.output, translated[i].c)) return 1;
        return 0;
    }

    if (o.mode != Options::Module && o.mode != Options::Object && !eachProgramOnce(o, translated)) return 1;

    std::string runProgram;
    bool made = false;
    if (o.mode == Options::Run) {
        runProgram = cachedProgram(o, home, translated);
        made = !runProgram.empty() && exists(runProgram);
    }
    // Without a cache the program is in the temporary folder, and is gone when it has been started.
    int program = -1;
    if (!made) {
        Workshop shop;
        shop.keep = o.keep;
        if (!shop.open()) return 1;
        if (o.mode == Options::Run) o.output = runProgram.empty() ? shop.folder() + "/program" : runProgram;
        if (!build(o, home, translated, shop)) {
            shop.keep = shop.keep && !interrupted();
            return interrupted() ? 128 + interrupted() : 1;
        }
        if (o.mode == Options::Run && runProgram.empty()) {
            program = open(o.output.c_str(), O_RDONLY | O_CLOEXEC);
            shop.litter(o.output);
        }
    }
    if (o.dependencies) {
        std::string target = o.output.empty() ? stemOf(o.sources[0]) : o.output, text = target + ":";
        for (size_t i = 0; i < translated.size(); i++) {
            text += " " + o.sources[i];
            for (const std::string &d : translated[i].dependencies) text += " " + d;
        }
        if (!writeFile(target + ".d", text + "\n")) return 1;
    }
    if (o.mode == Options::Run) {
        std::vector<char *> argv;
        std::string name = stemOf(o.sources[0]);
        argv.push_back(name.data());
        for (std::string &a : o.arguments) argv.push_back(a.data());
        argv.push_back(nullptr);
        for (int signal : {SIGINT, SIGTERM, SIGHUP})
            if (interrupted() == signal) return 128 + signal;
        if (program >= 0)
            fexecve(program, argv.data(), environ);
        else
            execv(runProgram.c_str(), argv.data());
        diagnostics().fatal("cannot run " + (program >= 0 ? o.output : runProgram) + reason());
        return 1;
    }
    return 0;
}

} // namespace
} // namespace kvrcob

int main(int argc, char **argv)
{
    using namespace kvrcob;
    // A compilation is short and its texts are long: what is freed is used again, not given back.
    mallopt(M_MMAP_THRESHOLD, 32 << 20); // more is refused
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_TOP_PAD, 64 << 20);
    diagnostics().sources = &sources();
    Options options;
    parseOptions(argc, argv, options);
    return compile(options);
}
