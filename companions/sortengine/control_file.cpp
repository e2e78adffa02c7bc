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

// An eighth of the machine's memory, but no more than half of what is free now.
uint64_t sensibleMemory()
{
    auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    uint64_t all = static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES)) * page,
             unused = static_cast<uint64_t>(sysconf(_SC_AVPHYS_PAGES)) * page;
    return std::max<uint64_t>(std::min(all / 8, unused / 2), 16u << 20);
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
