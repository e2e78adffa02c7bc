// The device streams: console, SYSIN, SYSOUT, SYSPUNCH and the message stream, bound to files or to
// the standard streams on first use.
#pragma once

#include <cstdint>
#include <cstdio>

// Binds a stream of Proccom, if it is not bound yet: A console input, D console output, I SYSIN, M
// messages, O SYSOUT, P SYSPUNCH. Each looks at its environment variables; a file that cannot be
// opened leaves the default, which for SYSPUNCH is none.
void openDeviceStream(uint8_t letter);

// A stream of Proccom as it is now, null before its first use; another thread may be binding it.
inline FILE *zvkBoundStream(FILE *const &stream) { return __atomic_load_n(&stream, __ATOMIC_ACQUIRE); }

// The file name for an output: COBOUTDIR in front, and for a value ending in "%", or none, the
// program, the time and the process id behind. `fresh` 1 takes the time anew, else it is the time
// of the first call in the process. The result is a static buffer.
char *expandOutputName(const char *value, int32_t fresh, const char *defaultWord);
