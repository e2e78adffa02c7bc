// The temporary folder of a compilation, the C compiler's run, and how results get to their places.
//
// A compilation leaves nothing but its result, whatever ends it but SIGKILL. The signals that end a
// command are taken from the moment at which there is something to remove: they end the C compiler,
// which removes its own pieces, and kvrcob then goes the ordinary way out.
#include "cobol/driver/workshop.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
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

void catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = endChild;
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGXCPU}) {
        struct sigaction before = {};
        // Under nohup, and in the background of some shells, it stays ignored.
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

bool Workshop::open()
{
    catchSignals();
    const char *temporary = std::getenv("TMPDIR");
    outer_ = temporary ? temporary : "";
    folder_ = (outer_.empty() ? "/tmp" : outer_) + "/kvrcob.XXXXXX";
    if (mkdtemp(folder_.data())) {
        setenv("TMPDIR", folder_.c_str(), 1); // for the C compiler, which may be killed, too
        return true;
    }
    diagnostics().fatal("cannot make a temporary directory " + folder_ + reason());
    folder_.clear();
    return false;
}

Workshop::~Workshop()
{
    if (folder_.empty()) return;
    if (outer_.empty())
        unsetenv("TMPDIR");
    else
        setenv("TMPDIR", outer_.c_str(), 1);
    std::error_code failed;
    if (keep)
        std::fprintf(stderr, "kvrcob: the C text is in %s\n", folder_.c_str());
    else
        std::filesystem::remove_all(folder_, failed);
}

int runCommand(const std::vector<std::string> &command, Telling telling)
{
    if (telling == Telling::Verbose) {
        for (const std::string &word : command) std::fprintf(stderr, "%s ", word.c_str());
        std::fputc('\n', stderr);
    }
    std::vector<char *> argv;
    argv.reserve(command.size() + 1);
    for (const std::string &word : command) argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    if (caught) return 128 + caught;

    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    if (telling == Telling::Silent)
        for (int stream : {STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&streams, stream, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    errno = posix_spawnp(&pid, argv[0], &streams, nullptr, argv.data(), environ);
    const int failure = errno;
    posix_spawn_file_actions_destroy(&streams);
    errno = failure;
    if (failure) return kCannotRun;

    child = pid;
    if (caught) kill(pid, caught);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
    child = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

std::string directoryOf(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

// Where symbolic links lead in the end, also to a file that is not there yet.
static std::string throughLinks(std::string path)
{
    char target[4096];
    for (int links = 0; links < 40; links++) {
        const ssize_t n = readlink(path.c_str(), target, sizeof target);
        if (n <= 0 || static_cast<size_t>(n) == sizeof target) break;
        const std::string next(target, static_cast<size_t>(n));
        path = next[0] == '/' ? "" : directoryOf(path) + "/";
        path += next;
    }
    return path;
}

static bool cannotWrite(const std::string &path)
{
    diagnostics().fatal("cannot write " + path + reason());
    return false;
}

bool canWrite(const std::string &path)
{
    struct stat info;
    const bool there = stat(path.c_str(), &info) == 0, device = there && !S_ISREG(info.st_mode);
    if (there && S_ISDIR(info.st_mode))
        errno = EISDIR;
    else if (access(device ? path.c_str() : directoryOf(throughLinks(path)).c_str(), W_OK) == 0)
        return true;
    return cannotWrite(path);
}

bool Result::begin(const std::string &output)
{
    output_ = output;
    struct stat info;
    if (stat(output.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
        path_ = output;
        return true;
    }
    place_ = throughLinks(output);
    folder_ = directoryOf(place_) + "/.kvrcob.XXXXXX";
    if (!mkdtemp(folder_.data())) {
        folder_.clear();
        return cannotWrite(output);
    }
    path_ = folder_ + "/result"; // a name that is never too long
    return true;
}

bool Result::take() { return folder_.empty() || rename(path_.c_str(), place_.c_str()) == 0 || cannotWrite(output_); }

Result::~Result()
{
    std::error_code failed;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, failed);
}

bool alsoNamed(const std::string &path, const std::string &other)
{
    namespace fs = std::filesystem;
    Result result;
    if (!result.begin(other)) return false;
    std::error_code failed;
    fs::create_hard_link(path, result.path(), failed);
    if (failed) fs::copy_file(path, result.path(), failed);
    if (failed) diagnostics().fatal("cannot write " + other + ": " + failed.message());
    return !failed && result.take();
}

bool writeFile(const std::string &path, const std::string &text)
{
    if (path == "-") return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() || cannotWrite(path);
    catchSignals();
    Result result;
    if (!result.begin(path)) return false;
    FILE *f = std::fopen(result.path().c_str(), "wb");
    if (!f) return cannotWrite(path);
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    if (std::fclose(f) != 0 || !written) return cannotWrite(path);
    return result.take();
}

} // namespace kvrcob
