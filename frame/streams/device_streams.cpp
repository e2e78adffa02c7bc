// Binding of the device streams; see device_streams.h.
#include "frame/device_streams.h"
#include "base/environment.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <unistd.h>

#include "frame/locks.h"
#include "frame/message_calls.h"
#include "frame/run_unit.h"

namespace {

struct Device {
    uint8_t letter;
    FILE *Proccom::*stream;
    ZvkWindowSize Proccom::*window; // null for a stream without a terminal size
    const char *variables[3];       // the first that is set wins
    const char *mode;
    const char *defaultWord; // null: the value is the file's name as it is
    const char *title;       // of the notice that a file is being created
};

constexpr Device kDevices[] = {
    {'A', &Proccom::conIn, &Proccom::winStdin, {"CONSOLE"}, "r", nullptr, nullptr},
    {'D', &Proccom::conOut, &Proccom::winStdout, {"CONSOLE"}, "a", "tty", "CONSOLE"},
    {'I', &Proccom::sysin, &Proccom::winStdin, {"SYSIN", "SYSIPT"}, "r", nullptr, nullptr},
    {'M', &Proccom::msgs, &Proccom::winStderr, {"COBMSGS"}, "a", "stderr", "COBMSGS"},
    {'O', &Proccom::sysout, &Proccom::winStdout, {"SYSOUT", "SYSLIST", "SYSLST"}, "a", "stdout", "SYSOUT"},
    {'P', &Proccom::syspunch, nullptr, {"SYSPUNCH", "SYSPCH"}, "w", "syspunch", "SYSPUNCH"},
};

FILE *defaultStream(uint8_t letter)
{
    switch (letter) {
    case 'A':
    case 'I':
        return stdin;
    case 'M':
        return stderr;
    case 'P':
        return nullptr;
    default:
        return stdout;
    }
}

// The value of the first of a device's variables that is set; null if none is, or it is empty.
const char *assignedName(const Device &device)
{
    for (const char *variable : device.variables) {
        const char *value = variable ? environmentValue(variable) : nullptr;
        if (value) return *value ? value : nullptr;
    }
    return nullptr;
}

FILE *openAssigned(const Device &device, const char *value, char (&name)[4096])
{
    snprintf(name, sizeof name, "%s", device.defaultWord ? expandOutputName(value, 0, device.defaultWord) : value);
    FILE *stream = fopen(device.defaultWord ? name : value, device.mode);
    if (stream && device.defaultWord && strcmp(name, value) != 0) printf("Creating %s file: %s\n", device.title, name);
    return stream;
}

void recordWindow(const Device &device, FILE *stream)
{
    if (!device.window || !stream) return;
    ZvkWindowSize &window = _zvkProccom->*device.window;
    if (isatty(fileno(stream)) == 1)
        ioctl(fileno(stream), TIOCGWINSZ, &window);
    else
        window = ZvkWindowSize{};
}

// What a failed open of a device's file is reported with, after the binding: the message itself
// binds the message stream.
struct Failure {
    bool happened = false;
    char file[4096];
    int error;
};

void report(const Device &device, const Failure &failure, const FILE *stream)
{
    const char *instead = stream == stdin    ? "the standard input"
                          : stream == stdout ? "the standard output"
                          : stream == stderr ? "the standard error stream"
                                             : "no file";
    msg::deviceFileNotOpened(device.variables[0], failure.file, strerrordesc_np(failure.error), instead,
                             ZVK_MSG_INFORM | ZVK_MSG_NO_TRACEBACK);
}

} // namespace

void openDeviceStream(uint8_t letter)
{
    if (!_zvkProccom) return;
    for (const Device &device : kDevices) {
        if (device.letter != letter) continue;
        FILE *&bound = _zvkProccom->*device.stream;
        if (zvkBoundStream(bound)) return;
        ZvkGuard guard(&streamMutex);
        if (bound) return;
        const char *value = assignedName(device);
        Failure failure;
        FILE *stream = value ? openAssigned(device, value, failure.file) : nullptr;
        failure.happened = value && !stream;
        failure.error = errno;
        if (!stream) stream = defaultStream(letter);
        recordWindow(device, stream);
        __atomic_store_n(&bound, stream, __ATOMIC_RELEASE);
        guard.release();
        if (failure.happened) report(device, failure, stream);
        return;
    }
}
