#include "support/child.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <poll.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::map<std::string, void (*)()> &pieces()
{
    static std::map<std::string, void (*)()> table;
    return table;
}

struct Pipe {
    int readEnd = -1, writeEnd = -1;
    Pipe()
    {
        int ends[2];
        if (pipe(ends) != 0) abort();
        readEnd = ends[0];
        writeEnd = ends[1];
    }
};

void applyOptions(const ChildOptions &options)
{
    for (const auto &[name, value] : options.env) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) abort();
    rlimit core{};
    getrlimit(RLIMIT_CORE, &core);
    core.rlim_cur = 0; // a test that wants a core file can raise it again
    setrlimit(RLIMIT_CORE, &core);
}

// Moves bytes between the child's pipes and the strings until both of its outputs are closed or
// time is up.
void exchange(ChildRun &run, pid_t pid, int inputEnd, int outEnd, int errEnd, const ChildOptions &options)
{
    size_t sent = 0;
    auto deadline = time(nullptr) + options.seconds;
    if (options.input.empty()) {
        close(inputEnd);
        inputEnd = -1;
    }
    while (outEnd >= 0 || errEnd >= 0) {
        pollfd waits[3] = {{outEnd, POLLIN, 0}, {errEnd, POLLIN, 0}, {inputEnd, POLLOUT, 0}};
        int left = static_cast<int>(deadline - time(nullptr));
        if (left <= 0 || (poll(waits, 3, left * 1000) == 0)) {
            run.timedOut = true;
            kill(pid, SIGKILL);
            break;
        }
        char buffer[65536];
        auto drain = [&](int &end, short events, std::string &into) {
            if (end < 0 || !(events & (POLLIN | POLLHUP))) return;
            ssize_t got = read(end, buffer, sizeof buffer);
            if (got > 0) {
                into.append(buffer, static_cast<size_t>(got));
            } else {
                close(end);
                end = -1;
            }
        };
        drain(outEnd, waits[0].revents, run.out);
        drain(errEnd, waits[1].revents, run.err);
        if (inputEnd >= 0 && (waits[2].revents & (POLLOUT | POLLERR))) {
            ssize_t put = write(inputEnd, options.input.data() + sent, options.input.size() - sent);
            if (put > 0) sent += static_cast<size_t>(put);
            if (put < 0 || sent == options.input.size()) {
                close(inputEnd);
                inputEnd = -1;
            }
        }
    }
    for (int end : {inputEnd, outEnd, errEnd})
        if (end >= 0) close(end);
}

ChildRun runForked(const std::function<void()> &body, const ChildOptions &options)
{
    fflush(nullptr);
    Pipe in, out, err;
    pid_t pid = fork();
    if (pid < 0) abort();
    if (pid == 0) {
        dup2(in.readEnd, 0);
        dup2(out.writeEnd, 1);
        dup2(err.writeEnd, 2);
        for (const Pipe &each : {in, out, err}) {
            close(each.readEnd);
            close(each.writeEnd);
        }
        signal(SIGPIPE, SIG_DFL);
        applyOptions(options);
        body();
        exit(0);
    }
    close(in.readEnd);
    close(out.writeEnd);
    close(err.writeEnd);
    auto previous = signal(SIGPIPE, SIG_IGN);
    ChildRun run;
    exchange(run, pid, in.writeEnd, out.readEnd, err.readEnd, options);
    signal(SIGPIPE, previous);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) run.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
    return run;
}

} // namespace

PieceRegistration::PieceRegistration(const char *name, void (*body)())
{
    if (!pieces().emplace(name, body).second) {
        fprintf(stderr, "piece %s stands twice\n", name);
        abort();
    }
}

bool runRequestedPiece(int argc, char **argv)
{
    if (argc != 3 || strcmp(argv[1], "--piece") != 0) return false;
    auto found = pieces().find(argv[2]);
    if (found == pieces().end()) {
        fprintf(stderr, "no piece %s\n", argv[2]);
        exit(125);
    }
    found->second();
    return true;
}

ChildRun runChild(const std::function<void()> &body, const ChildOptions &options) { return runForked(body, options); }

ChildRun runPiece(const std::string &name, const ChildOptions &options)
{
    char self[4096];
    ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0) abort();
    self[length] = 0;
    return runCommand({self, "--piece", name}, options);
}

ChildRun runCommand(const std::vector<std::string> &command, const ChildOptions &options)
{
    return runForked(
        [&] {
            std::vector<char *> arguments;
            for (const std::string &word : command) arguments.push_back(const_cast<char *>(word.c_str()));
            arguments.push_back(nullptr);
            execvp(arguments[0], arguments.data());
            fprintf(stderr, "%s: %s\n", arguments[0], strerror(errno));
            _exit(126);
        },
        options);
}

TemporaryDirectory::TemporaryDirectory()
{
    const char *base = getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/kvr2-test-XXXXXX";
    if (!mkdtemp(pattern.data())) abort();
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string readFile(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

void writeFile(const std::string &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary) << content;
}
