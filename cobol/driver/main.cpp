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
//
//   options.cpp      the command line
//   c_compiler.cpp   from C texts to programs
//   workshop.cpp     the temporary folder, and running a command
//   run_cache.cpp    what `run` keeps
//   listing.cpp      --list
//   allocation.cpp   memory
#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <malloc.h>
#include <map>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "cobol/driver/c_compiler.h"
#include "cobol/driver/listing.h"
#include "cobol/driver/run_cache.h"
#include "cobol/emit/emitter.h"
#include "cobol/syntax/parser.h"

namespace kvrcob {
namespace {

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
    group->defines = text.defines;
    for (const std::string &name : text.changed) group->defines.erase(name);
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

void emitUnit(Unit &unit, const Options &options, EmitOptions::MainFunction main)
{
    EmitOptions emit = options.emit;
    emit.main = main;
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
        const auto main = options.module                    ? EmitOptions::NoMain
                          : options.mode == Options::Object ? EmitOptions::MainIfFirst
                          : i == 0                          ? EmitOptions::Main
                                                            : EmitOptions::NoMain;
        if (units[i].group) emitUnit(units[i], options, main);
        translated.push_back(std::move(units[i].out));
    }
    return translated;
}

// All that the command is to write; standard output is no file.
std::vector<std::string> filesToWrite(const Options &o, const std::vector<Translated> &translated)
{
    std::vector<std::string> files;
    const bool joined = o.mode == Options::Program || o.mode == Options::Preprocess;
    for (size_t i = 0; i < (joined ? 1 : translated.size()); i++) {
        for (const std::string &output : outputsOf(o, translated, i))
            if (output != "-") files.push_back(output);
        if (o.dependencies && !translated.empty()) files.push_back(dependenciesFile(o, i));
    }
    return files;
}

// What is read, by the identity of its file.
std::map<std::pair<dev_t, ino_t>, std::string> filesRead(const Options &o, const std::vector<Translated> &translated)
{
    std::map<std::pair<dev_t, ino_t>, std::string> files;
    const auto note = [&files](const std::vector<std::string> &paths) {
        struct stat info;
        for (const std::string &path : paths)
            if (stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode)) files[{info.st_dev, info.st_ino}] = path;
    };
    for (const Translated &t : translated) note(t.dependencies);
    note(o.objects);
    note(o.sources);
    return files;
}

// A compilation overwrites nothing that it reads and no result by another, and says before its work
// that a result has no place.
bool outputsHavePlaces(const Options &o, const std::vector<Translated> &translated)
{
    const auto inputs = filesRead(o, translated);
    std::set<std::string> before;
    for (const std::string &file : filesToWrite(o, translated)) {
        struct stat info;
        const auto input = stat(file.c_str(), &info) == 0 ? inputs.find({info.st_dev, info.st_ino}) : inputs.end();
        if (input != inputs.end()) {
            const bool source = std::count(o.sources.begin(), o.sources.end(), input->second);
            diagnostics().fatal("the result " + file + " would overwrite " +
                                (source ? "the source" : input->second + ", which it is made of") +
                                "; name another with -o");
            return false;
        }
        if (!before.insert(file).second) {
            diagnostics().fatal("two of the results are called " + file);
            return false;
        }
        if (!canWrite(file)) return false;
    }
    return true;
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

// A name as make reads it. In a target "%" would make a pattern.
std::string makeWord(const std::string &name, bool target)
{
    std::string word;
    for (char c : name) {
        if (c == '$') word += '$';
        if (c == ' ' || c == '#' || c == ':' || (target && c == '%')) word += '\\';
        word += c;
    }
    return word;
}

// -MD: what the results depend on.
bool writeDependencies(const Options &o, const std::vector<Translated> &translated)
{
    const bool joined = o.mode == Options::Program;
    for (size_t i = 0; i < (joined ? 1 : translated.size()); i++) {
        std::string text, separator;
        for (const std::string &output : outputsOf(o, translated, i))
            text += std::exchange(separator, " ") + makeWord(output, true);
        text += ":";
        std::set<std::string> named;
        for (size_t j = i; j < (joined ? translated.size() : i + 1); j++) {
            if (named.insert(o.sources[j]).second) text += " " + makeWord(o.sources[j], false);
            for (const std::string &copied : translated[j].dependencies)
                if (named.insert(copied).second) text += " " + makeWord(copied, false);
        }
        if (!writeFile(dependenciesFile(o, i), text + "\n")) return false;
    }
    return true;
}

// -E and -S.
bool writeTexts(const Options &o, const std::vector<Translated> &translated)
{
    for (size_t i = 0; i < translated.size(); i++) {
        const std::vector<std::string> outputs = outputsOf(o, translated, i);
        if (!writeFile(outputs.empty() ? "-" : outputs[0], translated[i].c)) return false;
    }
    return true;
}

// Programs, modules, objects.
bool buildAll(const Options &o, const Home &home, const std::vector<Translated> &translated)
{
    Workshop shop;
    shop.keep = o.keep;
    if (shop.open() && build(o, home, translated, shop)) return true;
    shop.keep = shop.keep && !interrupted();
    return false;
}

// Without a cache the program is in the temporary folder, and is gone when it has been started.
int runWithoutCache(Options &o, const Home &home, const std::vector<Translated> &translated)
{
    int program = -1;
    {
        Workshop shop;
        shop.keep = o.keep;
        if (!shop.open()) return 1;
        o.output = shop.folder() + "/program";
        if (!build(o, home, translated, shop)) return 1;
        program = open(o.output.c_str(), O_RDONLY | O_CLOEXEC);
    }
    return start(o, o.output, program);
}

int run(Options &o, const Home &home, const std::vector<Translated> &translated)
{
    o.output = cachedProgram(o, home, translated);
    if (o.output.empty()) return runWithoutCache(o, home, translated);
    if (!isInCache(o.output)) {
        std::remove(o.output.c_str()); // whatever is there is not to be followed
        if (!buildAll(o, home, translated)) return 1;
    }
    return start(o, o.output, -1);
}

int compile(Options &o)
{
    if (o.sources.empty() && (o.objects.empty() || o.mode != Options::Program)) usage("there is no source");
    if (o.sources.size() > 1 && !o.output.empty() && o.mode != Options::Program) usage("-o goes with one source here");
    const Home home = findHome();
    const std::vector<Translated> translated = translate(o);
    if (diagnostics().errors() || !outputsHavePlaces(o, translated)) return 1;
    const bool oneProgram = o.mode == Options::Program || o.mode == Options::Run;
    if (oneProgram && !eachProgramOnce(o, translated)) return 1;

    bool good = true;
    switch (o.mode) {
    case Options::Check:
        break;
    case Options::Preprocess:
    case Options::Assembly:
        good = writeTexts(o, translated);
        break;
    case Options::Run:
        return run(o, home, translated);
    default:
        good = buildAll(o, home, translated);
    }
    return good && (!o.dependencies || writeDependencies(o, translated)) ? 0 : 1;
}

// What was printed has arrived, or that is an error.
int printed(int status)
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return status;
    diagnostics().fatal("cannot write standard output" + reason());
    return status ? status : 1;
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
    const bool asked = parseOptions(argc, argv, options);
    const int status = printed(asked ? 0 : compile(options));
    return interrupted() ? 128 + interrupted() : status;
}
