/**
 * DELETE FILE: a file that is closed goes away.
 *
 * The library finds the name as OPEN does, so the file is opened for INPUT, without USE procedure
 * and message, and its name is taken from there. Status 41: it is open; 05: there is no such file;
 * 30: the system does not let it go, or it is no single file.
 */
#ifndef KVR2_KVRCOB_DELETE_FILE_H
#define KVR2_KVRCOB_DELETE_FILE_H

#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include <errno.h>
#include <unistd.h>

#include "kvr2/kvrcob/base.h"

/* The store of an indexed file and its lock file are beside it. */
KVR_SHARED void kvr_delete_beside(const char *name)
{
    static const char *const ends[] = {".mdb", ".mdb-lock"};
    char path[4200];
    int i;
    for (i = 0; i < 2; i++)
        if (snprintf(path, sizeof path, "%s%s", name, ends[i]) < (int)sizeof path) unlink(path);
}

KVR_SHARED void kvr_delete_file(FCB *fcb, IPCB *element, FIB *fib)
{
    uint8_t status[2], *statusField = status, **statusBase = fib->statusBase;
    uint32_t statusOffset = fib->statusOffset;
    void **useTable = fcb->useTable;
    uint16_t result = 41;
    if (fcb->mode == 0) {
        fib->statusBase = &statusField;
        fib->statusOffset = 0;
        fcb->useTable = 0;
        fcb->requestedMode = ZVK_OPEN_INPUT;
        fcb->statement = 0;
        fcb->open(fcb, element);
        result = fcb->status;
        if (result < 10 && fcb->mode != 0) {
            int absent = result == 5 || !fcb->fileName;
            char *name = absent ? 0 : strdup(fcb->fileName);
            fcb->closeOptions = 0;
            fcb->close(fcb, element);
            /* Without storage for the name nothing is deleted, and it is said. */
            result = name ? (unlink(name) == 0 ? 0 : errno == ENOENT ? 5 : 30) : absent ? 5 : 30;
            if (result == 0 && fib->organization & ZVK_FILE_INDEXED) kvr_delete_beside(name);
            free(name);
        } else if (result == 35) {
            result = 5;
        }
        fib->statusBase = statusBase;
        fib->statusOffset = statusOffset;
        fcb->useTable = useTable;
    }
    fcb->currentVerb = ZVK_VERB_DELETE;
    zvkSetStatus(fcb, result, 0);
    zvkFinishVerb(fcb, element, ZVK_VERB_DELETE);
}

#endif
