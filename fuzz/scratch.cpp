// See fuzz.h.
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

#include "fuzz.h"

static constexpr unsigned kSeconds = 20; // that a child may take

static pid_t owner;

static void removeScratch()
{
    if (getpid() == owner && chdir("/") == 0) std::filesystem::remove_all(fuzz::scratch());
}

const std::string &fuzz::scratch()
{
    // Never destroyed: it is needed when the process ends.
    static const std::string &path = *new std::string([] {
        char name[] = "/tmp/kvr2-fuzz-XXXXXX";
        if (!mkdtemp(name) || chdir(name) != 0) abort();
        owner = getpid();
        atexit(removeScratch);
        return std::string(name);
    }());
    return path;
}

void fuzz::emptyScratch()
{
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator(scratch()))
        std::filesystem::remove_all(entry.path(), ignored);
}

void fuzz::putFile(const std::string &path, const void *bytes, size_t size)
{
    FILE *file = fopen(path.c_str(), "wb");
    if (!file || fwrite(bytes, 1, size, file) != size || fclose(file) != 0) abort();
}

void fuzz::inChild(const std::function<void()> &body)
{
    fflush(nullptr);
    pid_t child = fork();
    if (child < 0) abort();
    if (child == 0) {
        alarm(kSeconds);
        body();
        fflush(nullptr);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    fprintf(stderr, "the child ended with %#x\n", static_cast<unsigned>(status));
    abort();
}
