// The command line, and what --help says of it.
#include "cobol/driver/options.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "cobol/diagnostics.h"

namespace kvrcob {

static const char kHelp[] =
    "usage: kvrcob [options] source...\n"
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

static void readWords(int argc, char **argv, Options &o)
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
            std::printf("kvrcob %s\n", KVRCOB_VERSION);
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

void parseOptions(int argc, char **argv, Options &o)
{
    readWords(argc, argv, o);
    readCopyPath(o.copy);
}

} // namespace kvrcob
