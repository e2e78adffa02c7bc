// See run_cache.h. A program's name in the cache is the hash of all that it is made of.
#include "cobol/driver/run_cache.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
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

// The folder of cached programs, or nothing where there is none that is the user's own: what is in
// it is run, so nobody else may write there, nor put another folder in its place.
static std::string cacheFolder()
{
    const char *cache = std::getenv("XDG_CACHE_HOME"), *home = std::getenv("HOME");
    std::string folder;
    if (cache && *cache == '/') // a relative one does not count
        folder = cache;
    else if (home && *home == '/')
        folder = std::string(home) + "/.cache";
    else
        return "";
    mkdir(folder.c_str(), 0700);
    struct stat around, own;
    if (stat(folder.c_str(), &around) != 0) return "";
    if ((around.st_mode & (S_IWGRP | S_IWOTH)) && !(around.st_mode & S_ISVTX)) return "";
    folder += "/kvrcob";
    mkdir(folder.c_str(), 0700);
    if (lstat(folder.c_str(), &own) != 0 || !S_ISDIR(own.st_mode) || own.st_uid != geteuid()) return "";
    if ((own.st_mode & (S_IWGRP | S_IWOTH)) || access(folder.c_str(), W_OK | X_OK) != 0) return "";
    return folder;
}

// Removes what nobody has run for a month, and what a killed compilation left.
static void prune(const std::string &folder)
{
    namespace fs = std::filesystem;
    constexpr time_t kMonth = 30 * 24 * 60 * 60;
    std::error_code failed;
    for (fs::directory_iterator file(folder, failed), end; !failed && file != end; file.increment(failed)) {
        const std::string path = file->path();
        struct stat info;
        std::error_code ignored;
        if (lstat(path.c_str(), &info) == 0 && info.st_mtime < time(nullptr) - kMonth) fs::remove_all(path, ignored);
    }
}

// What tells that a file is another one than before.
static std::string stampOf(const std::string &path)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return path;
    return path + " " + std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec) + " " +
           std::to_string(info.st_size) + " " + std::to_string(info.st_ino);
}

// The headers that the C text includes.
static void addHeaders(const Home &home, std::vector<std::string> &parts)
{
    namespace fs = std::filesystem;
    std::vector<std::string> stamps;
    std::error_code failed;
    for (fs::recursive_directory_iterator file(home.include + "/kvr2", failed), end; !failed && file != end;
         file.increment(failed))
        stamps.push_back(stampOf(file->path()));
    std::sort(stamps.begin(), stamps.end());
    parts.insert(parts.end(), stamps.begin(), stamps.end());
}

// What is linked with the sources. A library of -l may lie in a folder of -L.
static void addLinked(const Options &o, std::vector<std::string> &parts)
{
    if (o.linker.empty() && o.objects.empty()) return;
    char folder[4096];
    parts.push_back(getcwd(folder, sizeof folder) ? folder : "");
    for (const std::string &object : o.objects) parts.push_back(stampOf(object));
    for (const std::string &word : o.linker) {
        parts.push_back(word);
        if (!word.starts_with("-L")) continue;
        for (const std::string &library : o.linker)
            if (library.starts_with("-l"))
                for (const char *extension : {".a", ".so"})
                    parts.push_back(stampOf(word.substr(2) + "/lib" + library.substr(2) + extension));
    }
}

// But for WHEN-COMPILED, which would make each translation another program.
static std::string withoutTime(std::string c)
{
    static const std::string mark = "whenCompiled[17] __attribute__((unused)) = \"";
    for (size_t at = 0; (at = c.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        c.replace(at, 16, "");
    }
    return c;
}

std::string cachedProgram(const Options &o, const Home &home, const std::vector<Translated> &translated)
{
    const std::string folder = cacheFolder();
    if (folder.empty()) return "";
    std::vector<std::string> parts = {KVRCOB_VERSION, o.optimisation, home.include, home.library, o.debug ? "g" : ""};
    const std::vector<std::string> compiler = compilerWords();
    parts.insert(parts.end(), compiler.begin(), compiler.end());
    parts.push_back(stampOf("/proc/self/exe"));
    addHeaders(home, parts);
    for (const Translated &t : translated) parts.push_back(withoutTime(t.c));
    addLinked(o, parts);

    std::string program = folder + "/" + hashOf(parts);
    if (isInCache(program))
        utimensat(AT_FDCWD, program.c_str(), nullptr, 0); // it is in use
    else
        prune(folder);
    return program;
}

bool isInCache(const std::string &path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_size > 0 &&
           access(path.c_str(), X_OK) == 0;
}

int start(Options &o, const std::string &path, int program)
{
    std::vector<char *> argv;
    std::string name = stemOf(o.sources[0]);
    argv.push_back(name.data());
    for (std::string &a : o.arguments) argv.push_back(a.data());
    argv.push_back(nullptr);
    if (interrupted() || std::fflush(stdout) != 0) return 1; // main says why
    if (program >= 0)
        fexecve(program, argv.data(), environ);
    else
        execv(path.c_str(), argv.data());
    diagnostics().fatal("cannot run " + path + reason());
    return 1;
}

} // namespace kvrcob
