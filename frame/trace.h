// Trace lines of the frame, on stderr while `Proccom.debug` is set (environment __ZVKDEBUG).
#pragma once

#include <cstdio>

#include "frame/run_unit.h"

inline bool zvkTracing() { return _zvkProccom && _zvkProccom->debug; }

#define ZVK_TRACE(...)                                                                                                 \
    do {                                                                                                               \
        if (zvkTracing()) fprintf(stderr, __VA_ARGS__);                                                                \
    } while (0)

// A program's name for the conversion "%*.*s": width, precision, text. An unknown program shows as
// "?".
struct ZvkTracedName {
    int length;
    const char *text;
    explicit ZvkTracedName(const PCB *pcb)
        : length(zvkHasProgram(pcb) && pcb->name ? static_cast<int>(pcb->nameLength) : 1),
          text(zvkHasProgram(pcb) && pcb->name ? pcb->name : "?")
    {
    }
};
#define ZVK_NAME_ARGS(name) (name).length, (name).length, (name).text
