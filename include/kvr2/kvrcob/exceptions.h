/**
 * What EXCEPTION-STATUS and its like tell of the latest exception of the run unit.
 */
#ifndef KVR2_KVRCOB_EXCEPTIONS_H
#define KVR2_KVRCOB_EXCEPTIONS_H

#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/kvrcob/base.h"

typedef struct KvrException {
    const char *status, *statement, *location; /* null: there was none */
    char file[64];                             /* its status and name; empty if it was of no file */
    /* The latest file verb, until its status is looked at. */
    const FCB *pending;
    const char *pendingFile, *pendingStatement, *pendingLocation;
} KvrException;

/* One for all sources of a program. */
KvrException kvr_exception __attribute__((weak));

KVR_SHARED void kvr_settle_exception(void)
{
    static const char *const names[] = {"",
                                        "EC-I-O-AT-END",
                                        "EC-I-O-INVALID-KEY",
                                        "EC-I-O-PERMANENT-ERROR",
                                        "EC-I-O-LOGIC-ERROR",
                                        "EC-I-O-RECORD-OPERATION",
                                        "EC-I-O-FILE-SHARING",
                                        "EC-I-O",
                                        "EC-I-O",
                                        "EC-I-O-IMP"};
    KvrException *e = &kvr_exception;
    int status = e->pending ? e->pending->status : 0;
    e->pending = 0;
    if (status < 10 || status > 99) return;
    e->status = names[status / 10];
    e->statement = e->pendingStatement;
    e->location = e->pendingLocation;
    snprintf(e->file, sizeof e->file, "%02d%s", status, e->pendingFile);
}

KVR_SHARED void kvr_verb_begins(const FCB *fcb, const char *file, const char *statement, const char *location)
{
    kvr_settle_exception();
    kvr_exception.pending = fcb;
    kvr_exception.pendingFile = file;
    kvr_exception.pendingStatement = statement;
    kvr_exception.pendingLocation = location;
}

KVR_SHARED void kvr_raise(const char *status, const char *statement, const char *location)
{
    kvr_settle_exception();
    kvr_exception.status = status;
    kvr_exception.statement = statement;
    kvr_exception.location = location;
    kvr_exception.file[0] = 0;
}

/* Status and statement have 31 characters. */
KVR_SHARED int64_t kvr_exception_text(const char *function, uint8_t **text)
{
    static char padded[32];
    const char *what;
    kvr_settle_exception();
    if (strcmp(function, "EXCEPTION-FILE") == 0) {
        what = kvr_exception.file[0] ? kvr_exception.file : "00";
    } else if (strcmp(function, "EXCEPTION-LOCATION") == 0) {
        what = kvr_exception.location ? kvr_exception.location : " ";
    } else {
        what = strcmp(function, "EXCEPTION-STATUS") == 0 ? kvr_exception.status : kvr_exception.statement;
        snprintf(padded, sizeof padded, "%-31s", what ? what : "");
        what = padded;
    }
    *text = (uint8_t *)(intptr_t)what;
    return (int64_t)strlen(what);
}

#endif
