// The C compiler: where library and headers are for it, what it is told, and where its results go.
#include "cobol/driver/c_compiler.h"

#include <algorithm>
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

static std::string directoryOf(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
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

// The C compiler makes one result. It appears in its place when it is whole, so that of two
// compilations at once one wins.
static bool makeResult(std::vector<std::string> command, const std::string &output, const Options &o, Workshop &shop)
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
static std::vector<std::string> compilerCommand(const Options &o, const Home &home, size_t longest)
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

} // namespace kvrcob
