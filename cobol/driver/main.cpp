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
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "cobol/driver/c_compiler.h"
#include "cobol/driver/listing.h"
#include "cobol/driver/run_cache.h"
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

// -MD: what the result depends on, as make reads it.
bool writeDependencies(const Options &o, const std::vector<Translated> &translated)
{
    std::string target = o.output.empty() ? stemOf(o.sources[0]) : o.output, text = target + ":";
    for (size_t i = 0; i < translated.size(); i++) {
        text += " " + o.sources[i];
        for (const std::string &d : translated[i].dependencies) text += " " + d;
    }
    return writeFile(target + ".d", text + "\n");
}

int compile(Options &o)
{
    if (o.sources.empty()) usage("there is no source");
    if (o.sources.size() > 1 && !o.output.empty() && o.mode != Options::Program && o.mode != Options::Run)
        usage("-o goes with one source here");
    Home home = findHome();

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
        made = !runProgram.empty() && access(runProgram.c_str(), F_OK) == 0;
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
    if (o.dependencies && !writeDependencies(o, translated)) return 1;
    if (o.mode == Options::Run) return start(o, program >= 0 ? o.output : runProgram, program);
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
