// Names of output files: COBOUTDIR, and for a value that ends in "%" the program, time, zone and
// process id.
//
//     SYSOUT=/tmp/out%   in program LEDGER   ->   /tmp/out.LEDGER.20240607.101530.004711+0100.1234
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/time.h>

#include "base/environment.h"
#include "frame/device_streams.h"
#include "frame/run_unit.h"

namespace {

constexpr size_t kNameSize = 4096;

struct Stamp {
    char time[32];
    int microseconds;
    int zoneHours, zoneMinutes;
    long pid;
};

void stampTime(Stamp &stamp)
{
    timeval now{};
    gettimeofday(&now, nullptr);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    strftime(stamp.time, sizeof stamp.time, "%Y%m%d.%H%M%S", &parts);
    stamp.microseconds = static_cast<int>(now.tv_usec);
}

// The stamp of this process, taken at its first use.
Stamp &processStamp()
{
    static Stamp stamp;
    static bool taken;
    if (!taken) {
        taken = true;
        stamp.pid = _zvkProccom ? _zvkProccom->pid : 0;
        tzset();
        stamp.zoneHours = static_cast<int>(timezone / 3600);
        stamp.zoneMinutes = static_cast<int>(timezone % 3600 / 60);
        stampTime(stamp);
    }
    return stamp;
}

// COBOUTDIR with a "/" at its end, or nothing; read once.
const char *outputDirectory()
{
    static char directory[kNameSize + 1];
    static bool read;
    if (!read) {
        read = true;
        const char *value = environmentText("COBOUTDIR");
        snprintf(directory, kNameSize, "%s", value ? value : "");
        size_t length = strlen(directory);
        if (length && directory[length - 1] != '/') strcpy(directory + length, "/");
    }
    return directory;
}

// The main program's name and a ".", or nothing.
void programName(char (&name)[32])
{
    name[0] = 0;
    Runcom *runcom = zvkCurrentRuncom();
    if (!runcom || !zvkHasProgram(runcom->main) || !runcom->main->name) return;
    size_t length = runcom->main->nameLength < sizeof name - 2 ? runcom->main->nameLength : sizeof name - 2;
    memcpy(name, runcom->main->name, length);
    strcpy(name + length, ".");
}

bool endsInAloneMark(const char *value, size_t length) { return length == 1 || value[length - 2] == '/'; }

} // namespace

char *expandOutputName(const char *value, int32_t fresh, const char *defaultWord)
{
    static char result[kNameSize];
    const char *prefix = outputDirectory();
    Stamp stamp = processStamp();
    if (fresh == 1) stampTime(stamp);
    char program[32];
    programName(program);

    size_t length = value ? strlen(value) : 0;
    const char *word = defaultWord ? defaultWord : "";
    constexpr size_t limit = kNameSize - 1;
    if (length == 0) {
        if (defaultWord)
            snprintf(result, limit, "%s%s.%s%s.%6.6d%+2.2d%2.2d.%ld", prefix, word, program, stamp.time,
                     stamp.microseconds, stamp.zoneHours, stamp.zoneMinutes, stamp.pid);
        else
            snprintf(result, limit, "%s%s.%6.6d%+2.2d%2.2d.%ld", program, stamp.time, stamp.microseconds,
                     stamp.zoneHours, stamp.zoneMinutes, stamp.pid);
        return result;
    }
    if (value[0] == '.' || value[0] == '/') prefix = "";
    if (value[length - 1] != '%') {
        snprintf(result, limit, "%s%s", prefix, value);
        return result;
    }
    int width = static_cast<int>(length < limit ? length - 1 : limit);
    snprintf(result, limit, "%s%*.*s%s.%s%s.%6.6d%+2.2d%2.2d.%ld", prefix, width, width, value,
             endsInAloneMark(value, length) ? word : "", program, stamp.time, stamp.microseconds, stamp.zoneHours,
             stamp.zoneMinutes, stamp.pid);
    return result;
}
