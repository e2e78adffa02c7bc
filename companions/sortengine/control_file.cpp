// The SORT-CONTROL file; see control_file.h. Lines are NAME=value:
//
//     * nightly jobs
//     MEMORY=512M
//     WORKDIR=/var/tmp
//     STATISTICS=YES
#include "control_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

bool parseMemory(const char *value, SortSettings *settings)
{
    char *end;
    if (*value < '0' || *value > '9') return false;
    uint64_t number = strtoull(value, &end, 10);
    int shift = 0;
    switch (*end) {
    case 'k':
    case 'K':
        shift = 10;
        break;
    case 'm':
    case 'M':
        shift = 20;
        break;
    case 'g':
    case 'G':
        shift = 30;
        break;
    case 0:
        break;
    default:
        return false;
    }
    if (number == 0 || number > UINT64_MAX >> 20 >> shift || (*end && end[1])) return false;
    settings->memory = number << shift;
    return true;
}

bool parseWorkDirectory(const char *value, SortSettings *settings)
{
    return *value && snprintf(settings->workDirectory, sizeof settings->workDirectory, "%s", value) <
                         static_cast<int>(sizeof settings->workDirectory);
}

bool parseStatistics(const char *value, SortSettings *settings)
{
    settings->statistics = strcasecmp(value, "YES") == 0;
    return settings->statistics || strcasecmp(value, "NO") == 0;
}

struct Name {
    const char *name;
    bool (*parse)(const char *value, SortSettings *settings);
};
constexpr Name kNames[] = {{"MEMORY", parseMemory}, {"WORKDIR", parseWorkDirectory}, {"STATISTICS", parseStatistics}};

bool parseLine(char *line, size_t length, SortSettings *settings)
{
    if (memchr(line, 0, length)) return false;
    while (length && strchr(" \t\r\n", line[length - 1])) line[--length] = 0;
    while (*line == ' ' || *line == '\t') line++;
    if (!*line || *line == '*' || *line == '#') return true;
    char *equals = strchr(line, '=');
    if (!equals) return false;
    *equals = 0;
    for (const Name &name : kNames)
        if (strcasecmp(line, name.name) == 0) return name.parse(equals + 1, settings);
    return false;
}

bool parseFile(FILE *file, SortSettings *settings)
{
    char *line = nullptr;
    size_t room = 0;
    ssize_t length;
    bool good = true;
    while (good && (length = getline(&line, &room, file)) > 0)
        good = parseLine(line, static_cast<size_t>(length), settings);
    free(line);
    return good && !ferror(file);
}

// The number in a file of one number, or none.
uint64_t numberIn(const char *path, uint64_t none)
{
    FILE *file = fopen(path, "re");
    if (!file) return none;
    unsigned long long number = none;
    if (fscanf(file, "%llu", &number) != 1) number = none; // "max"
    fclose(file);
    return number;
}

// What the groups of control that this process is in leave of their memory; the tightest counts.
uint64_t groupMemory()
{
    uint64_t least = UINT64_MAX;
    FILE *file = fopen("/proc/self/cgroup", "re");
    if (!file) return least;
    char line[4096];
    while (fgets(line, sizeof line, file)) {
        line[strcspn(line, "\n")] = 0;
        bool unified = strncmp(line, "0::", 3) == 0;
        char *path = unified ? line + 3 : strstr(line, ":memory:");
        if (!path) continue;
        if (!unified) path += strlen(":memory:");
        // From the process's own group up to the root.
        for (;;) {
            char limit[8192], used[8192];
            const char *root = unified ? "/sys/fs/cgroup" : "/sys/fs/cgroup/memory";
            snprintf(limit, sizeof limit, "%s%s/%s", root, path, unified ? "memory.max" : "memory.limit_in_bytes");
            snprintf(used, sizeof used, "%s%s/%s", root, path, unified ? "memory.current" : "memory.usage_in_bytes");
            uint64_t most = numberIn(limit, UINT64_MAX), now = numberIn(used, 0);
            if (most != UINT64_MAX) least = std::min(least, most > now ? most - now : 0);
            char *slash = strrchr(path, '/');
            if (!slash || !path[1]) break;
            slash[slash == path] = 0;
        }
    }
    fclose(file);
    return least;
}

// What a limit of the process leaves; `field` of /proc/self/statm is what it counts, in pages.
uint64_t limitedMemory(int resource, int field, uint64_t page)
{
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return UINT64_MAX;
    unsigned long long pages[6] = {};
    if (FILE *file = fopen("/proc/self/statm", "re")) {
        for (auto &count : pages)
            if (fscanf(file, "%llu", &count) != 1) break;
        fclose(file);
    }
    uint64_t used = pages[field] * page;
    // Half of it: the worker's stack, the buffers of files and runs, and the program itself count
    // too.
    return limit.rlim_cur > used ? (limit.rlim_cur - used) / 2 : 0;
}

// An eighth of the machine's memory, but no more than half of what is free now, to this process and
// to its groups.
uint64_t sensibleMemory()
{
    auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    uint64_t all = static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES)) * page,
             unused = static_cast<uint64_t>(sysconf(_SC_AVPHYS_PAGES)) * page;
    constexpr int wholeSize = 0, dataSize = 5;
    unused = std::min(
        {unused, groupMemory(), limitedMemory(RLIMIT_AS, wholeSize, page), limitedMemory(RLIMIT_DATA, dataSize, page)});
    return std::max<uint64_t>(std::min(all / 8, unused / 2), 1u << 20);
}

} // namespace

bool readSettings(SortSettings *settings, const char *controlFile, const SortEighth &eighth, const char *tempDirectory)
{
    *settings = {};
    settings->memory = eighth.memory;
    snprintf(settings->workDirectory, sizeof settings->workDirectory, "%s",
             tempDirectory && *tempDirectory ? tempDirectory : ".");
    bool good = true;
    if (controlFile && *controlFile) {
        FILE *file = fopen(controlFile, "re");
        good = file ? parseFile(file, settings) : errno == ENOENT || errno == ENOTDIR;
        if (file) fclose(file);
    }
    if (!settings->memory) settings->memory = sensibleMemory();
    return good;
}
