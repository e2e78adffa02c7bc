// Deleting and looking at a generation's file, by file system; see generation_files.h.
//
// Plain files are the system's. A "jgt" file is several files with dots and "@" around one base
// name. The files of the servers behind "hdk" and "rql" are reached through their administration
// commands only; names go into a command in single quotes.
#include "fileio/generation_files.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <unistd.h>

#include "base/shell_word.h"
#include "fileio/generation_catalogue.h"

namespace {

std::string quoted(const std::string &text)
{
    std::string word(4 * text.size() + 3, 0);
    quoteShellWord(text.c_str(), word.data(), word.size());
    return word.c_str();
}

// Runs a command quietly; a failure counts as "no such file".
int run(const std::string &command)
{
    if (system((command + " 1>/dev/null 2>&1").c_str()) == 0) return 0;
    errno = ENOENT;
    return -1;
}

struct Path {
    std::string directory, base;
    explicit Path(const std::string &file)
    {
        size_t slash = file.rfind('/');
        directory = slash == std::string::npos ? "." : file.substr(0, slash);
        base = slash == std::string::npos ? file : file.substr(slash + 1);
    }
};

int deleteJgt(const char *file)
{
    Path path(file);
    run("rm -f " + quoted(path.directory + "/." + path.base) + ".@*.QVREA");
    run("rm -f " + quoted(path.directory + "/" + path.base) + ".@*");
    unlink((path.directory + "/.@" + path.base + ".QVREA").c_str());
    unlink((path.directory + "/@" + path.base).c_str());
    unlink((path.directory + "/." + path.base + ".QVRMAP").c_str());
    unlink((path.directory + "/." + path.base + ".QVREA").c_str());
    return unlink(file);
}

int statJgt(const char *file, struct stat *result)
{
    Path path(file);
    struct stat companion;
    if (stat(file, result) != 0) return -1;
    return stat((path.directory + "/." + path.base + ".QVREA").c_str(), &companion);
}

// "/.:/txmn/hdk/server/name" becomes the server and the name.
int runServer(const char *verb, const std::string &file)
{
    Path path(file);
    return run(std::string("hdkadmin ") + verb + " file -server " + quoted(path.directory) + " " + quoted(path.base));
}

// "schema.table" under a quoted table name.
int runDatabase(const char *verb, const std::string &file)
{
    std::string base = Path(file).base;
    size_t dot = base.find('.');
    if (dot == std::string::npos) {
        errno = ENOENT;
        return -1;
    }
    return run(std::string("rql ") + verb + " table " +
               quoted(base.substr(0, dot) + ".\"" + base.substr(dot + 1) + "\""));
}

int presentNow(int rc, struct stat *result)
{
    if (rc != 0) return rc;
    memset(result, 0, sizeof *result);
    result->st_mode = S_IFREG;
    result->st_mtime = time(nullptr);
    return 0;
}

} // namespace

int zvkGdsStat(uint32_t fsCode, const char *file, struct stat *result)
{
    switch (fsCode) {
    case kGdgJgt:
        return statJgt(file, result);
    case kGdgHdk:
        return presentNow(runServer("query", file), result);
    case kGdgRql:
        return presentNow(runDatabase("describe", file), result);
    default:
        return stat(file, result);
    }
}

int zvkGdsDelete(uint32_t fsCode, const char *file)
{
    switch (fsCode) {
    case kGdgJgt:
        return deleteJgt(file);
    case kGdgHdk:
        return runServer("destroy", file);
    case kGdgRql:
        return runDatabase("drop", file);
    default:
        return unlink(file);
    }
}
