// The C compiler: where library and headers are for it, what it is told, and where its results go.
#include "cobol/driver/c_compiler.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include "cobol/diagnostics.h"

namespace kvrcob {

static bool exists(const std::string &path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

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

std::vector<std::string> outputsOf(const Options &o, const std::vector<Translated> &translated, size_t i)
{
    if (!o.output.empty()) return {o.output};
    std::vector<std::string> outputs;
    switch (o.mode) {
    case Options::Program:
        return {stemOf(o.sources.empty() ? o.objects[0] : o.sources[0])};
    case Options::Object:
        return {stemOf(o.sources[i]) + ".o"};
    case Options::Assembly:
        return {stemOf(o.sources[i]) + ".c"};
    case Options::Module:
        for (const std::string &program : translated[i].programs) outputs.push_back(program + ".so");
        return outputs;
    default:
        return {};
    }
}

std::string dependenciesFile(const Options &o, size_t i)
{
    std::string base = o.output;
    if (base.empty() || base == "-") return stemOf(o.sources[i]) + ".d";
    for (std::string_view extension : {".o", ".so", ".c"})
        if (base.ends_with(extension)) return base.substr(0, base.size() - extension.size()) + ".d";
    return base + ".d";
}

// The C compiler makes one result.
static bool makeResult(std::vector<std::string> command, const std::string &output, const Options &o)
{
    Result result;
    if (!result.begin(output)) return false;
    command.insert(command.end(), {"-o", result.path()});
    const int status = runCommand(command, o.verbose ? Telling::Verbose : Telling::Plain);
    if (interrupted()) return false;
    if (status == kCannotRun) {
        // A folder in PATH that may not be looked into makes it EACCES.
        if (errno == ENOENT || (errno == EACCES && command[0].find('/') == std::string::npos))
            diagnostics().fatal("there is no C compiler " + command[0] + ": install one, or name it in CC");
        else
            diagnostics().fatal("cannot run the C compiler " + command[0] + reason());
        return false;
    }
    if (status != 0) {
        diagnostics().fatal("the C compiler failed; unless it says that a library or object file is missing or the "
                            "disk is full, this is a fault of kvrcob");
        return false;
    }
    return result.take();
}

// C that is longer is compiled without optimisation, unless an option asks for it: what is one
// function takes the C compiler a time that grows faster than its length.
constexpr size_t kLongC = 2 << 20;

std::vector<std::string> compilerWords()
{
    std::vector<std::string> words;
    const char *cc = std::getenv("CC");
    std::string word;
    for (char c : std::string(cc ? cc : "") + " ") {
        if (c != ' ' && c != '\t')
            word += c;
        else if (!word.empty())
            words.push_back(word), word.clear();
    }
    if (words.empty()) words.push_back("cc");
    return words;
}

// Two passes of GCC gain nothing here and take long for long functions. Other compilers do not know
// these options; a dry run tells which it is.
static std::vector<std::string> ownOptions(std::vector<std::string> compiler)
{
    compiler.insert(compiler.end(), {"-###", "-fno-tree-pta", "-x", "c", "/dev/null"});
    if (runCommand(compiler, Telling::Silent) != 0) return {};
    return {"-fno-gcse", "-fno-tree-pta"};
}

// The C compiler and its options.
static std::vector<std::string> compilerCommand(const Options &o, const Home &home, size_t longest)
{
    const std::string level = !o.optimisation.empty() ? o.optimisation : longest > kLongC ? "-O0" : "-O1";
    std::vector<std::string> command = compilerWords(), own = ownOptions(command);
    command.insert(command.end(), {"-std=gnu11", "-fno-strict-aliasing", "-fwrapv"});
    command.insert(command.end(), own.begin(), own.end());
    command.insert(command.end(), {level, "-I" + home.include, o.debug ? "-g" : "-g1"});
    return command;
}

bool build(const Options &o, const Home &home, const std::vector<Translated> &translated, const Workshop &shop)
{
    size_t longest = 0;
    for (const Translated &t : translated) longest = std::max(longest, t.c.size());
    const std::vector<std::string> compiler = compilerCommand(o, home, longest);
    std::vector<std::string> files, link = {"-L" + home.library};
    for (size_t i = 0; i < translated.size(); i++) {
        files.push_back(shop.folder() + "/" + std::to_string(i) + "_" + stemOf(o.sources[i]).substr(0, 200) + ".c");
        if (!writeFile(files.back(), translated[i].c)) return false;
    }
    if (home.library != "/usr/lib")
        link.insert(link.end(), {"-Xlinker", "-rpath", "-Xlinker", home.library, "-Wl,--disable-new-dtags"});
    // A library of programs is asked for by no symbol: CALL looks for them by name.
    link.insert(link.end(), {"-Wl,--push-state", "-Wl,--no-as-needed"});
    for (const std::string &object : o.objects)
        if (object.ends_with(".so")) link.push_back(object);
    link.insert(link.end(), o.linker.begin(), o.linker.end());
    link.insert(link.end(), {"-Wl,--pop-state", "-lkvr2_64r", "-lm"});

    if (o.mode == Options::Object || o.mode == Options::Module) {
        for (size_t i = 0; i < files.size(); i++) {
            std::vector<std::string> command = compiler;
            command.insert(command.end(), {"-fPIC", o.mode == Options::Object ? "-c" : "-shared", files[i]});
            if (o.mode == Options::Module) command.insert(command.end(), link.begin(), link.end());
            // One module a source, under the name of each of its outermost programs: one file, so
            // that a program has its storage once, whatever name brought the module in.
            const std::vector<std::string> outputs = outputsOf(o, translated, i);
            if (!outputs.empty() && !makeResult(command, outputs[0], o)) return false;
            for (size_t other = 1; other < outputs.size(); other++)
                if (!alsoNamed(outputs[0], outputs[other])) return false;
        }
        return true;
    }
    std::vector<std::string> command = compiler;
    command.insert(command.end(), files.begin(), files.end());
    for (const std::string &object : o.objects)
        if (!object.ends_with(".so")) command.push_back(object);
    command.push_back("-rdynamic");
    command.insert(command.end(), link.begin(), link.end());
    return makeResult(command, outputsOf(o, translated, 0)[0], o);
}

} // namespace kvrcob
