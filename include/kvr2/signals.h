/**
 * Signals: a crash in COBOL ends with a readable message, a traceback and, on request, a core file.
 *
 * While the option TRAP is on, each run unit installs `default_sigrtn` for the signals of its
 * table. It explains the fault in words on stderr and runs `_zvkSignal`; what happens then depends
 * on the signal:
 *
 * | Signals | Effect |
 * |---|---|
 * | SIGWINCH | the terminal's size is read again |
 * | SIGUSR1, SIGUSR2, SIGCONT, SIGXCPU, SIGXFSZ | a line and a traceback; the program goes on |
 * | SIGPIPE, SIGIO | ignored: a write to a closed pipe fails with EPIPE |
 * | all others | message 995, traceback, end of the run unit; a core file first where TRAP asks for one |
 *
 * Environment: `traceback_lines` (first character other than "0": tracebacks with source lines),
 * `COBCORE` (name of core files).
 */
#ifndef KVR2_SIGNALS_H
#define KVR2_SIGNALS_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * The handler that run units install; a host that manages signals itself can call it from its own
 * handler.
 *
 * @param signal   signal number
 * @param info     a `siginfo_t *`, as the kernel gives it to a handler with SA_SIGINFO
 * @param context  a `ucontext_t *`, likewise
 * @threads any; SIGSEGV is handled on an alternate stack of 32,768 bytes
 */
ZVK_EXPORT void default_sigrtn(int signal, void *info, void *context);

/**
 * What a run unit does at a signal: reports, makes a core file if asked, ends the run unit with
 * message 995. Signals that do not end programs return. While a signal or an abort is in progress
 * it returns at once.
 *
 * @param signal, info, context  as for `default_sigrtn`
 * @messages 995
 */
ZVK_EXPORT void _zvkSignal(int signal, void *info, void *context);

ZVK_END_DECLS

#endif
