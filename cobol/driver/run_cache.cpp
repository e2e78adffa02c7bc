// See run_cache.h. A program's name in the cache is the hash of all that it is made of.
#include "cobol/driver/run_cache.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include "cobol/diagnostics.h"

namespace kvrcob {

// The hash of what a cached program is made of.
static std::string hashOf(const std::vector<std::string> &parts)
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
    std::vector<std::string> parts = {KVRCOB_VERSION, o.optimisation, home.include, o.debug ? "g" : "",
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

int start(Options &o, const std::string &path, int program)
{
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
        execv(path.c_str(), argv.data());
    diagnostics().fatal("cannot run " + path + reason());
    return 1;
}

} // namespace kvrcob
