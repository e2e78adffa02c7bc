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
    char status[32], statement[32]; /* 31 characters; empty: there was none */
    char location[256];
    char file[64]; /* its status and name; empty if it was of no file */
    /* The latest file verb, until its status is looked at: at the latest when its program ends. */
    const FCB *pending;
    const char *pendingFile, *pendingStatement, *pendingLocation;
} KvrException;

/* One for all sources of a program. */
KvrException kvr_exception __attribute__((weak));

/* The texts are copied: they are of a module that CANCEL may unload. */
KVR_SHARED void kvr_note_exception(const char *status, const char *statement, const char *location)
{
    snprintf(kvr_exception.status, sizeof kvr_exception.status, "%-31.31s", status);
    snprintf(kvr_exception.statement, sizeof kvr_exception.statement, "%-31.31s", statement);
    snprintf(kvr_exception.location, sizeof kvr_exception.location, "%s", location);
    kvr_exception.file[0] = 0;
}

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
    kvr_note_exception(names[status / 10], e->pendingStatement, e->pendingLocation);
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
    kvr_note_exception(status, statement, location);
}

KVR_SHARED void kvr_forget_exception(void) { memset(&kvr_exception, 0, sizeof kvr_exception); }

/* The text of one of the four functions; its length. It stays until the next exception. */
KVR_SHARED int64_t kvr_exception_text(const char *function, uint8_t **text)
{
    const KvrException *e = &kvr_exception;
    const char *what;
    kvr_settle_exception();
    if (strcmp(function, "EXCEPTION-FILE") == 0)
        what = e->file[0] ? e->file : "00";
    else if (strcmp(function, "EXCEPTION-LOCATION") == 0)
        what = e->location[0] ? e->location : " ";
    else if (!e->status[0])
        what = "                               ";
    else
        what = strcmp(function, "EXCEPTION-STATUS") == 0 ? e->status : e->statement;
    *text = (uint8_t *)(intptr_t)what;
    return (int64_t)strlen(what);
}

#endif
