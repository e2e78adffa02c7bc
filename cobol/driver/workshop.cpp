// The temporary folder of a compilation, and the C compiler's run.
//
// A compilation leaves nothing but its result, whatever ends it. SIGINT, SIGTERM and SIGHUP are
// taken from the moment at which the folder is there: they end the C compiler, which removes its
// own pieces, and kvrcob then goes the ordinary way out.
#include "cobol/driver/workshop.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cobol/diagnostics.h"

namespace kvrcob {

std::string reason() { return std::string(": ") + std::strerror(errno); }

static volatile sig_atomic_t caught, child;

static void endChild(int signal)
{
    caught = signal;
    if (child > 0) kill(static_cast<pid_t>(child), signal);
}

int interrupted() { return caught; }

bool Workshop::open()
{
    struct sigaction action = {};
    action.sa_handler = endChild;
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        // Under nohup, and in the background of some shells, it stays ignored.
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    const char *temporary = std::getenv("TMPDIR");
    folder_ = std::string(temporary && *temporary ? temporary : "/tmp") + "/kvrcob.XXXXXX";
    if (mkdtemp(folder_.data())) return true;
    diagnostics().fatal("cannot make a temporary directory " + folder_ + reason());
    folder_.clear();
    return false;
}

Workshop::~Workshop()
{
    for (const std::string &path : files_)
        if (!keep || path.compare(0, folder_.size(), folder_) != 0) unlink(path.c_str());
    if (folder_.empty()) return;
    if (keep)
        std::fprintf(stderr, "kvrcob: the C text is in %s\n", folder_.c_str());
    else
        rmdir(folder_.c_str());
}

std::string Workshop::file(const std::string &name)
{
    files_.push_back(folder_ + "/" + name);
    return files_.back();
}

int runCommand(const std::vector<std::string> &command, bool verbose)
{
    if (verbose) {
        for (const std::string &word : command) std::fprintf(stderr, "%s ", word.c_str());
        std::fputc('\n', stderr);
    }
    std::vector<char *> argv;
    argv.reserve(command.size() + 1);
    for (const std::string &word : command) argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    if (caught) return 128 + caught;
    pid_t pid = fork();
    if (pid < 0) return kCannotRun;
    if (pid == 0) {
        execvp(argv[0], argv.data());
        _exit(kCannotRun);
    }
    child = pid;
    if (caught) kill(pid, caught);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
    child = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

bool canWrite(const std::string &path)
{
    struct stat info;
    size_t slash = path.rfind('/');
    std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    bool there = stat(path.c_str(), &info) == 0;
    if (there && S_ISDIR(info.st_mode))
        errno = EISDIR;
    else if (access(there && !S_ISREG(info.st_mode) ? path.c_str() : folder.c_str(), W_OK) == 0)
        return true;
    diagnostics().fatal("cannot write " + path + reason());
    return false;
}

bool alsoNamed(const std::string &path, const std::string &other, Workshop &shop)
{
    namespace fs = std::filesystem;
    const std::string place = other + "." + std::to_string(getpid());
    shop.litter(place);
    std::error_code failed;
    fs::create_hard_link(path, place, failed);
    if (failed) fs::copy_file(path, place, failed);
    if (!failed) fs::rename(place, other, failed);
    if (failed) diagnostics().fatal("cannot write " + other + ": " + failed.message());
    return !failed;
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

} // namespace kvrcob
