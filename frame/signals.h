// The signals that a run unit traps, and how each is treated. The entry for handlers stands in
// kvr2/signals.h.
#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>

#include "kvr2/signals.h"

// What happens after a row's routine has run.
enum ZvkSignalClass : uint64_t {
    kSignalReturn = 0, // back to the interrupted code
    kSignalJump = 1,   // longjmp to a process-wide buffer
    kSignalPass = 2,   // on to the action that was there before
    kSignalDefault = 3 // default action, raised again
};

using ZvkSignalRoutine = void (*)(int signal, siginfo_t *info, void *context);

// One row; a table ends with a row of signal 0.
struct ZvkSignalRow {
    const char *name;
    int32_t signal;
    uint32_t extraFlags; // added to sa_flags
    uint64_t signalClass;
    ZvkSignalRoutine routine; // in the template an initial handler; in an installed table what default_sigrtn runs
    struct sigaction action;
    struct sigaction previous;
};
static_assert(sizeof(struct sigaction) == 152 && sizeof(ZvkSignalRow) == 336 && offsetof(ZvkSignalRow, action) == 32);

// A table of the template's size; null without storage. Fill sets it to the template.
ZvkSignalRow *zvkNewSignalTable();
void zvkFillSignalTable(ZvkSignalRow *table);

// Installs handlers for all rows of a table and pushes it. Null table: the default one; null
// handler: default_sigrtn.
void zvkSignalInstall(ZvkSignalRow *table, ZvkSignalRoutine handler, ZvkSignalRoutine routine);

// Pops the table on top and reinstates what each of its rows found.
void zvkSignalRestore();

// Gives the alternate signal stack back, if it is ours and not in use.
void zvkSignalStackRelease();

// The row of a signal in a table, or the table's end row.
ZvkSignalRow *zvkSignalRow(ZvkSignalRow *table, int signal);

// The instruction that a signal interrupted, from the handler's third argument.
void *zvkSignalLocation(const void *context);
